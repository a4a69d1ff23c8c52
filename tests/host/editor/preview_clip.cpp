// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry in which every rule about time has something to do.
#include "preview_clip.h"

#include "clips.h"

#include <cstdint>

namespace editor_test {
namespace {

/// Telemetry that turns, has gaps and keys that come and go.
SwJsonObject telemetryAt(int number)
{
    if (number < 3 || number % 40 > 30) {
        return {};
    }
    SwJsonObject payload{{"heading_deg", SwJsonValue((number * 7) % 360)},
                         {"utc_timestamp_us", SwJsonValue(std::int64_t{1700000000000000} + number * 40000)}};
    if (number % 20 < 12) {
        payload["sensor_lat_deg"] = SwJsonValue(40.5 + 0.01 * (number % 100));
        payload["sensor_lon_deg"] = SwJsonValue(8.25);
    }
    if (number > 100) {
        payload["sensor_alt_m"] = SwJsonValue(1000.0 + number);
    }
    return payload;
}

clip_test::ClipSpec specOf(std::string const& path, std::string const& codec)
{
    clip_test::ClipSpec spec;
    spec.path = path;
    spec.width = 320;
    spec.height = 240;
    spec.codec = codec;
    spec.frames = kFrames;
    spec.klvStreams.emplace_back();
    for (int number = 0; number < kFrames; ++number) {
        spec.klvStreams.front().push_back(telemetryAt(number));
    }
    return spec;
}

}  // namespace

std::string makeClip(std::string const& path, std::string const& codec)
{
    clip_test::makeClip(specOf(path, codec));
    return path;
}

clip::ClipSource sourceOf(std::string const& input, std::string const& config)
{
    clip::ClipSource source;
    source.input = input;
    source.config = config;
    return source;
}

}  // namespace editor_test
