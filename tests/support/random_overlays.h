// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Random configurations, telemetry and times for property tests: ordinary values mixed with every awkward one
// we know, few keys and hundreds of them. One seed, one sequence.
#pragma once

#include "stanag_overlay_config.h"

#include "SwJson.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace stanag_overlay {

class RandomOverlays {
public:
    explicit RandomOverlays(std::uint32_t seed) : random_(seed) {}

    /// 0 to limit - 1.
    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <typename T>
    T const& oneOf(std::vector<T> const& choices)
    {
        return choices[below(choices.size())];
    }

    /// Other keys from now on: the usual seven alone, or with up to 300 more that are hard to tell apart.
    void chooseKeys();
    /// A block with template, up to 40 formats, condition and look. Durations are some tens of nanoseconds.
    OverlayCfg block();
    /// Values of every kind under most of the keys, put in without any order.
    SwJsonObject payload();
    /// A step in time of the size of the durations, or any other one.
    std::uint64_t step() { return oneIn(50) ? random_() : below(4) * 10; }
    /// Every key that templates, conditions and payloads use.
    std::vector<std::string> const& keys() const { return keys_; }

private:
    static std::vector<std::string> usualKeys() { return {"a", "b", "alt_m", "utc_timestamp_us", "a b", "", "x.y-z%"}; }
    std::string name();
    std::string key() { return oneIn(4) ? oneOf(keys_) : oneOf(shown_); }
    double number();
    std::string text();
    SwJsonValue value();
    std::string datePattern();
    FormatSpec format();
    ConditionCfg condition();
    std::string templateText();
    std::uint64_t duration() { return oneIn(2) ? 0 : below(6) * 10; }

    std::mt19937_64 random_;
    std::vector<std::string> keys_ = usualKeys();
    std::vector<std::string> shown_ = keys_;  ///< those that a block prefers
};

/// Time zones, each a rule of its own, so that no zone files are needed; the last is none.
std::vector<std::string> const& timeZones();

/// The text of a configuration of these blocks, as near as text can say it: times are in milliseconds there, and
/// the parser clamps.
std::string configText(std::vector<OverlayCfg> const& blocks);

}  // namespace stanag_overlay
