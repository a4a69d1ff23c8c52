// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A key that only one packet of an hour holds counts as any other: all packets are read.
#include "clip/delivered_keys.h"

#include "clip/host_keys.h"
#include "clip/telemetry_source.h"
#include "telemetry/derived_keys.h"

#include <algorithm>

namespace clip {

DeliveredKeys deliveredKeys(std::string const& input, TelemetryOptions const& options)
{
    DeliveredKeys delivered;
    SwJsonObject& newest = delivered.newest;
    delivered.summary = forEachPacket(input, options, [&newest](FoundPacket const& found) {
        for (auto const& [key, value] : found.packet.payload) {
            newest.insertOrAssign(key, value);
        }
    });
    if (!newest.empty()) {
        for (auto const& [key, value] : hostKeys(0.0, 0.0, 0)) {
            newest.insertOrAssign(key, value);
        }
    }
    return delivered;
}

std::vector<std::string> derivableKeys(DeliveredKeys const& delivered)
{
    std::vector<std::string> const keys = delivered.newest.keys();
    std::vector<std::string> derivable;
    for (telemetry::DerivedKey const& each : telemetry::derivableFrom({keys.begin(), keys.end()})) {
        derivable.push_back(each.key);
    }
    std::sort(derivable.begin(), derivable.end());
    derivable.erase(std::unique(derivable.begin(), derivable.end()), derivable.end());
    return derivable;
}

}  // namespace clip
