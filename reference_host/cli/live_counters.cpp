// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The line of counters of live work.
#include "cli/live_counters.h"

#include "sw_number_text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cli {
namespace {

constexpr auto kReportEvery = std::chrono::seconds(10);

}  // namespace

std::string liveLine(clip::LiveCounts const& counts, std::optional<double> telemetryAge, double delaySeconds)
{
    std::string const age = telemetryAge ? "telemetry " + sw_text::secondsText(*telemetryAge) + " old" : "no telemetry";
    return sw_text::counted(counts.pictures, "picture", "pictures") + ", " + std::to_string(counts.dropped) +
           " dropped, " + std::to_string(counts.reopened) + " reopened, " + age + ", delay " +
           std::to_string(std::llround(delaySeconds * 1e3)) + " ms";
}

LiveReports::LiveReports(Time begin) : next_(begin + kReportEvery) {}

void LiveReports::sent(double delaySeconds)
{
    delay_ = std::max(delay_, delaySeconds);
}

bool LiveReports::isDue(Time now)
{
    if (now < next_) {
        return false;
    }
    next_ += (now - next_) / kReportEvery * kReportEvery + kReportEvery;
    return true;
}

std::string LiveReports::take(clip::LiveCounts const& counts, std::optional<double> telemetryAge)
{
    return liveLine(counts, telemetryAge, std::exchange(delay_, 0.0));
}

}  // namespace cli
