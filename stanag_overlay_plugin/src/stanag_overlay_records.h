// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What one block of the configuration becomes: its look, its condition and the formats of its keys. Read by every later
// step, written only by the parser.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace stanag_overlay {

enum class TimestampUnit : std::int32_t { Seconds = 0, Milliseconds = 1, Microseconds = 2 };

enum class ConditionOp : std::int32_t {
    Exists = 0,
    Equals = 1,
    NotEquals = 2,
    GreaterThan = 3,
    GreaterOrEqual = 4,
    LessThan = 5,
    LessOrEqual = 6,
};

/// How one telemetry key is shown inside one block. Its own defaults apply, not the block's.
struct FormatSpec {
    bool date = false;                             ///< show the value as date and time; takes precedence over decimals
    std::int32_t decimals = -1;                    ///< digits after the point; below 0: the value's plain text form
    bool trimTrailingZeros = false;                ///< the block's default is true
    std::string dateFormat = "%H:%M:%S %d-%m-%Y";  ///< strftime pattern
    TimestampUnit timestampUnit = TimestampUnit::Milliseconds;
    bool localTime = false;  ///< process time zone instead of UTC
    std::string missingPlaceholder = "--";
    bool hasMin = false;
    bool hasMax = false;
    double minValue = 0.0;                   ///< inclusive; meaningful only with hasMin
    double maxValue = 0.0;                   ///< inclusive; meaningful only with hasMax
    std::vector<std::string> invalidValues;  ///< text forms of values to treat as missing
    std::uint64_t holdLastNs = 0;            ///< keep the last text this long over gaps; 0 = off
    std::uint64_t refreshEveryNs = 0;        ///< change the text at most once in this time; 0 = off
};

/// When a block is shown.
struct ConditionCfg {
    bool enabled = false;  ///< false: always shown
    std::string key;       ///< telemetry key that is tested
    ConditionOp op = ConditionOp::Exists;
    std::string value;  ///< operand in its text form
    bool hasBitmask = false;
    std::uint64_t bitmask = 0;      ///< applied to the key's integer value before comparing
    std::uint64_t showAfterNs = 0;  ///< the condition must hold this long before the block shows
    std::uint64_t keepAfterNs = 0;  ///< the block stays this long after the condition ended
};

/// One block of text. The order of the fields is that of the published records.
struct OverlayCfg {
    std::int32_t thickness = 1;  ///< 1..16, pixels at 1080 lines
    std::uint8_t textR = 255;
    std::uint8_t textG = 255;
    std::uint8_t textB = 255;
    std::int32_t textSize = 16;  ///< 6..256, pixels at 1080 lines
    float posX = 0.005F;         ///< 0..1 of the picture's width
    float posY = 0.009F;         ///< 0..1 of the picture's height
    std::uint8_t bgR = 0;
    std::uint8_t bgG = 0;
    std::uint8_t bgB = 0;
    float bgAlpha = 0.5F;        ///< 0..1, opacity of the box behind the text
    std::string formatString;    ///< template; empty lists all keys
    std::int32_t decimals = -1;  ///< -1..12 for keys without a format of their own; -1: plain text form
    bool trimTrailingZeros = true;
    std::string missingPlaceholder = "--";
    ConditionCfg condition;
    std::unordered_map<std::string, FormatSpec> formats;  ///< by telemetry key, exact and case-sensitive
    std::int32_t updateEveryNFrames = 1;                  ///< 1..120
};

}  // namespace stanag_overlay
