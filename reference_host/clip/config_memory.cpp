// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looks through a configuration for everything that makes a picture depend on time.
#include "clip/config_memory.h"

#include "SwJson.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

namespace clip {
namespace {

constexpr double kMostMs = 60000.0;
constexpr std::array<std::string_view, 3> kDurations{"holdLastMs", "showAfterMs", "keepAfterMs"};

constexpr double kNoBound = std::numeric_limits<double>::infinity();

/// Infinite for what is no number of zero or more.
double plainNumber(SwJsonValue const& value)
{
    double const number = value.isInt()      ? static_cast<double>(value.toInt())
                          : value.isDouble() ? value.toDouble()
                                             : kNoBound;
    return number >= 0.0 ? number : kNoBound;
}

/// The milliseconds that a member adds, infinite when nothing bounds it.
double memoryMsOf(std::string_view name, SwJsonValue const& value)
{
    if (std::find(kDurations.begin(), kDurations.end(), name) != kDurations.end()) {
        return plainNumber(value);
    }
    bool const isPeriod = (name == "refreshEveryMs" && plainNumber(value) != 0.0) ||
                          (name == "updateEveryNFrames" && plainNumber(value) != 0.0 && plainNumber(value) != 1.0);
    return isPeriod ? kNoBound : 0.0;
}

}  // namespace

std::optional<std::uint64_t> memoryNsOf(std::string const& config)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(config, SwString(), error);
    SwJsonValue const root(document.object());
    double milliseconds = 0.0;
    std::vector<SwJsonValue const*> waiting{&root};
    while (!waiting.empty()) {
        SwJsonValue const& value = *waiting.back();
        waiting.pop_back();
        for (auto const& [name, member] : value.toObject()) {
            milliseconds += memoryMsOf(name, member);
            waiting.push_back(&member);
        }
        for (SwJsonValue const& item : value.toArray()) {
            waiting.push_back(&item);
        }
    }
    constexpr double kNsPerMs = 1e6;
    return milliseconds <= kMostMs ? std::optional(static_cast<std::uint64_t>(std::ceil(milliseconds * kNsPerMs)))
                                   : std::nullopt;
}

}  // namespace clip
