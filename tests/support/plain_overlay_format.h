// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The formatter written the plain way: every number and date through a stream of the global locale, every
// template byte by byte. It shares no code with the plugin's formatter, so that the two check each other in
// tests/plugin/format_property_test.cpp and race each other in benchmarks.
//
// Two limits: a global locale that groups digits groups them here too, and numbers with more than some
// thousand decimals ask more of the stream than it can give.
#pragma once

#include "stanag_overlay_config.h"
#include "stanag_overlay_runtime.h"

#include "SwJson.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stanag_overlay::plain {

/// As OverlayTextFormatter::expandTemplate.
std::string expandTemplate(std::string const& tmpl, SwJsonObject const* root, OverlayCfg const& cfg,
                           OverlayRuntime& runtime, std::uint64_t nowNs, std::vector<std::string> const& availableKeys);

/// As OverlayTextFormatter::lookupFormatted.
std::string lookupFormatted(SwJsonObject const* root, std::string const& key, OverlayCfg const& cfg,
                            OverlayRuntime& runtime, std::uint64_t nowNs);

}  // namespace stanag_overlay::plain
