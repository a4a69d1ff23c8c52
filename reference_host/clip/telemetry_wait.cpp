// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The expectation behind the bounded wait for telemetry; used by the live telemetry.
#include "clip/telemetry_wait.h"

namespace clip {
namespace {

/// Times of telemetry and pictures come from different clocks of the sender.
constexpr double kJitterSeconds = 0.005;

/// Packets further apart than this tell nothing of the next one.
constexpr double kLongestInterval = 10.0;

}  // namespace

void TelemetryWait::arrived(double seconds)
{
    waitsInVain_ = false;
    if (newest_ && seconds <= *newest_) {
        return;  // several packets of one time, or disorder
    }
    interval_ = newest_ && seconds - *newest_ < kLongestInterval ? std::optional(seconds - *newest_) : std::nullopt;
    newest_ = seconds;
}

bool TelemetryWait::expectsFor(double seconds) const
{
    return newest_ && interval_ && !waitsInVain_ && seconds >= *newest_ + *interval_ - kJitterSeconds;
}

}  // namespace clip
