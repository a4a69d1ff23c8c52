// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a telemetry packet's payload still lacks when a picture gets it.
#pragma once

#include "SwJson.h"
#include "telemetry/derived_keys.h"
#include "telemetry/key_selection.h"

#include <map>
#include <string>

namespace clip {

class PayloadCompleter {
public:
    /// Makes the derived keys that are named.
    explicit PayloadCompleter(telemetry::KeySelection const& keys) : derived_(keys) {}

    /// What holds for the producer's packets that do not say otherwise; null is a word too.
    void setConstants(std::string const& producer, SwJsonObject constants)
    {
        constants_.insert_or_assign(producer, std::move(constants));
    }

    /// Adds the keys that are derived from the packet's own, then the constants that it lacks.
    void complete(std::string const& producer, SwJsonObject& payload);

private:
    telemetry::DerivedKeyMaker derived_;
    std::map<std::string, SwJsonObject> constants_;  ///< by producer
};

}  // namespace clip
