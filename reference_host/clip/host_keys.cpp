// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What only the host knows about a frame, as telemetry.
#include "clip/host_keys.h"

#include <cmath>

namespace clip {
namespace {

constexpr char const* kFrameIndex = "frame_index";
constexpr char const* kTelemetryAge = "telemetry_age_s";
constexpr char const* kVideoTime = "video_time_s";

}  // namespace

double toMicroseconds(double seconds)
{
    return std::round(seconds * 1e6) / 1e6;
}

SwJsonObject hostKeys(double telemetryAgeSeconds, double videoSeconds, std::uint64_t frameNumber)
{
    return {{kFrameIndex, SwJsonValue(frameNumber)},
            {kTelemetryAge, SwJsonValue(toMicroseconds(telemetryAgeSeconds))},
            {kVideoTime, SwJsonValue(toMicroseconds(videoSeconds))}};
}

bool wantsHostKeys(telemetry::KeySelection const& keys)
{
    return keys.wants(kFrameIndex) || keys.wants(kTelemetryAge) || keys.wants(kVideoTime);
}

}  // namespace clip
