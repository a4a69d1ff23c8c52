// Random configurations, telemetry and times for property tests: ordinary values mixed with every awkward one
// we know. One seed, one sequence.
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

    /// A block with template, formats, condition and look. Durations are some tens of nanoseconds.
    OverlayCfg block();
    /// Values of every kind under most of the keys.
    SwJsonObject payload();
    /// A step in time of the size of the durations, or any other one.
    std::uint64_t step() { return oneIn(50) ? random_() : below(4) * 10; }
    /// Every key that templates, conditions and payloads use.
    std::vector<std::string> const& keys() const { return keys_; }

private:
    std::string key() { return oneOf(keys_); }
    double number();
    std::string text();
    SwJsonValue value();
    FormatSpec format();
    ConditionCfg condition();
    std::string templateText();
    std::uint64_t duration() { return oneIn(2) ? 0 : below(6) * 10; }

    std::mt19937_64 random_;
    std::vector<std::string> const keys_ = {"a", "b", "alt_m", "utc_timestamp_us", "a b", "", "x.y-z%"};
};

}  // namespace stanag_overlay
