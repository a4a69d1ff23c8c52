// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How far back what a configuration shows can depend on earlier frames.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace clip {

/// Nanoseconds before a frame beyond which no frame can change what the plugin draws on it; empty when there is no such
/// bound, or one of more than a minute. A block remembers values for as long as they are held, and its condition for
/// its delays; one may follow the other, so that the bound is the sum of all durations, rather more than needed. Texts
/// of a `refreshEveryMs` or an `updateEveryNFrames` go back to whenever they began: they have no bound, and neither has
/// what is not written as a plain number. Holds for clips in which every frame after the first telemetry has telemetry,
/// which TelemetryFeed sees to.
/// {"overlay":[{"formats":{"a":{"holdLastMs":500}},"condition":{"key":"a","showAfterMs":250}}]} gives 750,000,000.
std::optional<std::uint64_t> memoryNsOf(std::string const& config);

}  // namespace clip
