// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a burn did, for those who run many: one JSON object, also when it failed.
#pragma once

#include "cli/commands.h"
#include "clip/clip_telemetry.h"
#include "clip/live_clip.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct BurnReport {
    int exitCode = 0;
    std::string error;          ///< the line that tells why it failed; empty when it did not
    std::uint64_t frames = 0;   ///< written
    double videoSeconds = 0.0;  ///< how long those are shown
    clip::TelemetryCounts telemetry;
    std::optional<clip::LiveCounts> live;  ///< of burn --live
    std::vector<std::string> warnings;     ///< the first kMostWarnings of them
    std::uint64_t warningsLeftOut = 0;     ///< the further ones

    /// Live work goes on for weeks.
    static constexpr std::size_t kMostWarnings = 1000;
};

/// What the process has used.
struct UsedResources {
    double processorSeconds = 0.0;  ///< of all threads, the system's work for them included
    double wallSeconds = 0.0;
    double peakMemoryMiB = 0.0;  ///< resident
};

/// Says each remark and keeps it for the summary.
void warnAll(BurnReport& report, std::vector<std::string> const& remarks);

/// The object, one member a line, always the same members in the same order; "live" only for live work. Ends with a
/// line feed.
std::string summaryText(BurnOptions const& options, BurnReport const& report, UsedResources const& used);

/// Runs the burn and writes the summary that the options ask for, whether the burn ends or throws; gives the exit code
/// or throws on. A place that cannot be written to is refused before the burn begins. A summary that then cannot be
/// written all the same is a failure, of which the output knows nothing.
int summarised(BurnOptions const& options, std::function<int(BurnReport&)> const& burn);

}  // namespace cli
