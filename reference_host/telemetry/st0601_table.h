// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The items of MISB ST 0601 that become payload keys: one flat table for reading, writing and the docs.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace telemetry {

/// How an item's bytes become a value. n is the tag's own width in bits, u and s the unsigned and the signed
/// (two's complement) integer in the bytes.
enum class Rule {
    Text,         ///< UTF-8
    WideText,     ///< UTF-16
    Count,        ///< u, as an integer
    SignedCount,  ///< s, as an integer
    TwiceCount,   ///< 2 u, as an integer
    Whole,        ///< u, as a double
    SignedWhole,  ///< s, as a double
    Range,        ///< low + (high - low) u / (2^n - 1)
    Symmetric,    ///< high s / (2^(n-1) - 1); the most negative code means "no value"
    Imapb,        ///< MISB ST 1201 floating point to integer mapping from low to high, any length
    Float         ///< IEEE 754 binary32 or binary64; not-a-number and infinities mean "no value"
};

struct TableRow {
    std::uint32_t tag = 0;
    std::string_view key;   ///< payload key, with its unit
    std::string_view item;  ///< what it is, for people
    Rule rule = Rule::Count;
    std::uint32_t width = 0;  ///< bytes; the usual length of an Imapb item; 0: any length
    double low = 0.0;         ///< range; unused by counts and texts
    double high = 0.0;        ///< a negative one turns the sign of a Symmetric item round
};

/// All rows in the order of their tags, without the checksum (tag 1).
std::span<TableRow const> st0601Table();

/// The row of a tag, null for a tag that gives no key of its own.
TableRow const* findRow(std::uint32_t tag);

/// The tags that the mapping treats in a way of their own.
namespace tag {
inline constexpr std::uint32_t kChecksum = 1;
inline constexpr std::uint32_t kHeading = 5;
inline constexpr std::uint32_t kPitch = 6;
inline constexpr std::uint32_t kRoll = 7;
inline constexpr std::uint32_t kGenericFlags = 47;
inline constexpr std::uint32_t kSecuritySet = 48;
inline constexpr std::uint32_t kMovingTargets = 74;
inline constexpr std::uint32_t kFullPitch = 90;
inline constexpr std::uint32_t kFullRoll = 91;
}  // namespace tag

/// Keys that the mapping names.
inline constexpr std::string_view kHeadingKey = "heading_deg";
inline constexpr std::string_view kPitchKey = "pitch_deg";
inline constexpr std::string_view kRollKey = "roll_deg";
inline constexpr std::string_view kFlagsKey = "generic_flags";

/// A second key that a tag gives.
inline constexpr std::string_view kYawKey = "yaw_deg";                    ///< tag 5, beside heading_deg
inline constexpr std::string_view kLaserKey = "laser_range_enabled";      ///< bit 0 of tag 47
inline constexpr std::string_view kShortPitchKey = "platform_pitch_deg";  ///< tag 6 beside tag 90
inline constexpr std::string_view kShortRollKey = "platform_roll_deg";    ///< tag 7 beside tag 91

}  // namespace telemetry
