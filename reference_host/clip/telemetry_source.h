// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// All telemetry packets of a clip or a telemetry file, in stream order; no picture is decoded.
#pragma once

#include "clip/clip_telemetry.h"
#include "clip/telemetry_options.h"
#include "telemetry/telemetry.h"

#include <functional>
#include <optional>
#include <string>

namespace clip {

/// A packet and where it stands.
struct FoundPacket {
    telemetry::Packet packet;  ///< its time is the one that it carries
    /// Seconds after the first picture; empty when it comes from no clip.
    std::optional<double> placeSeconds{};
};

/// Calls `onPacket` for each telemetry packet of `input`: anything FFmpeg reads, "-", raw KLV or JSON Lines. When the
/// options name a file, that is read instead. Of several streams only the chosen one is taken, and all times come
/// with the offset. Throws std::runtime_error with one line, media::UnknownChoice for a stream that cannot be meant.
TelemetrySummary forEachPacket(std::string const& input, TelemetryOptions const& options,
                               std::function<void(FoundPacket&)> const& onPacket);

}  // namespace clip
