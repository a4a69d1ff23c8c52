// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which telemetry a clip is shown with, as a person says it on the command line.
#pragma once

#include <optional>
#include <string>

namespace clip {

struct TelemetryOptions {
    std::string file{};                     ///< telemetry file; empty: the clip's own telemetry
    double offsetSeconds = 0.0;             ///< later by this much; earlier when negative
    std::optional<double> maxAgeSeconds{};  ///< older packets count as gone; 0: none does; empty: by kind of source
    std::string stream{};                   ///< the KLV stream to take, see StreamChoice; empty: all
};

}  // namespace clip
