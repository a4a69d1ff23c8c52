// What only the host knows about a frame, as telemetry.
#include "clip/host_keys.h"

#include <cmath>

namespace clip {

double toMicroseconds(double seconds)
{
    return std::round(seconds * 1e6) / 1e6;
}

SwJsonObject hostKeys(double telemetryAgeSeconds, double videoSeconds, std::uint64_t frameNumber)
{
    return {{"frame_index", SwJsonValue(frameNumber)},
            {"telemetry_age_s", SwJsonValue(toMicroseconds(telemetryAgeSeconds))},
            {"video_time_s", SwJsonValue(toMicroseconds(videoSeconds))}};
}

}  // namespace clip
