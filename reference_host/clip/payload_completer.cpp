// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The order matters: nothing is derived from constants, which may hold for no packet that says where they were true.
#include "clip/payload_completer.h"

namespace clip {

void PayloadCompleter::complete(std::string const& producer, SwJsonObject& payload)
{
    derived_.addTo(payload);
    auto const constants = constants_.find(producer);
    if (constants != constants_.end()) {
        payload.addMissing(SwJsonObject(constants->second));
    }
}

}  // namespace clip
