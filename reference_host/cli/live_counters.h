// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What live work says of itself every few seconds.
#pragma once

#include "clip/live_clip.h"

#include <chrono>
#include <optional>
#include <string>

namespace cli {

/// "250 pictures, 3 dropped, 1 reopened, telemetry 0.020 s old, delay 45 ms": all since the beginning, but the age that
/// telemetry has now ("no telemetry" without) and the greatest delay since the last line.
std::string liveLine(clip::LiveCounts const& counts, std::optional<double> telemetryAge, double delaySeconds);

/// The line, every ten seconds.
class LiveReports {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit LiveReports(Time begin);

    /// A picture was sent so long after its packet had been read.
    void sent(double delaySeconds);
    /// Whether a line is due; not again for ten seconds, also when nobody has asked for longer.
    bool isDue(Time now);
    /// The line, with the greatest delay since the last one.
    std::string take(clip::LiveCounts const& counts, std::optional<double> telemetryAge);

private:
    Time next_;
    double delay_ = 0.0;
};

}  // namespace cli
