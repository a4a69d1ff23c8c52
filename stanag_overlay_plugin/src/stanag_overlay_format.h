// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Turns a block's template into the text that is drawn.
#pragma once

#include "stanag_overlay_records.h"
#include "stanag_overlay_runtime.h"

#include "SwJson.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stanag_overlay {

class OverlayTextFormatter {
public:
    /// Replaces every %name and %{any name} by its formatted value, left to right, one lookup each;
    /// "%%" is a percent sign. An empty template lists `availableKeys` with their values, one a line.
    /// Malformed constructs are copied as they are: "100%" gives "100%", "%{abc" gives "%{abc".
    std::string expandTemplate(std::string const& tmpl, SwJsonObject const* root, OverlayCfg const& cfg,
                               OverlayRuntime& runtime, std::uint64_t nowNs,
                               std::vector<std::string> const& availableKeys) const;

    /// The text of one key: checked, formatted, held over gaps and limited in its changes as the block's
    /// format for that key says; the missing placeholder when there is nothing to show.
    std::string lookupFormatted(SwJsonObject const* root, std::string const& key, OverlayCfg const& cfg,
                                OverlayRuntime& runtime, std::uint64_t nowNs) const;
};

}  // namespace stanag_overlay
