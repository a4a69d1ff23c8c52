// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Every telemetry key that a clip delivers anywhere.
#pragma once

#include "SwJson.h"
#include "clip/clip_telemetry.h"
#include "clip/telemetry_options.h"

#include <string>
#include <vector>

namespace clip {

struct DeliveredKeys {
    SwJsonObject newest;  ///< each key with its last value; the host's own among them when there is any telemetry
    TelemetrySummary summary;
};

/// Reads the whole telemetry, as forEachPacket does.
DeliveredKeys deliveredKeys(std::string const& input, TelemetryOptions const& options);

/// The keys that can be derived from them, sorted.
std::vector<std::string> derivableKeys(DeliveredKeys const& delivered);

}  // namespace clip
