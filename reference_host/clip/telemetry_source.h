// All telemetry packets of a clip or a telemetry file, in stream order; no picture is decoded.
#pragma once

#include "clip/clip_telemetry.h"
#include "telemetry/telemetry.h"

#include <functional>
#include <string>

namespace clip {

/// Calls `onPacket` for each telemetry packet of `input`: anything FFmpeg reads, "-", or raw KLV. With
/// `telemetryFile` that file is read instead. Throws std::runtime_error with one line.
TelemetrySummary forEachPacket(std::string const& input, std::string const& telemetryFile,
                               std::function<void(telemetry::Packet const&)> const& onPacket);

}  // namespace clip
