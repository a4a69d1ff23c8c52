// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The keys that the host itself delivers, beside those of the telemetry.
#pragma once

#include "SwJson.h"
#include "telemetry/key_selection.h"

#include <cstdint>

namespace clip {

/// The producer of these keys; it comes last, so that keys of the telemetry win.
inline constexpr char const* kHostProducer = "host";

/// Rounds to whole microseconds: differences of times carry digits that no clock has.
double toMicroseconds(double seconds);

/// `telemetry_age_s`: how much older the newest telemetry packet is than the picture; `video_time_s`: the picture's
/// time after the clip's first one; `frame_index`: its number, counted from 0. Seconds are in whole microseconds.
SwJsonObject hostKeys(double telemetryAgeSeconds, double videoSeconds, std::uint64_t frameNumber);
/// Whether any of them is wanted.
bool wantsHostKeys(telemetry::KeySelection const& keys);

}  // namespace clip
