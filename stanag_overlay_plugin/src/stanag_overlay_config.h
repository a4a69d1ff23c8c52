// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration as a whole: the parser that turns its text into records and never fails loudly, with the records
// and the published schema.
#pragma once

#include "stanag_overlay_records.h"
#include "stanag_overlay_schema.h"

#include <string>
#include <vector>

namespace stanag_overlay {

/// Reads the configuration text.
class OverlayConfigParser {
public:
    /// One record per object in the root's "overlay" array, in order. Unreadable text, trailing text, a
    /// root that is no object, and a missing or odd "overlay" give an empty list; a member of the wrong
    /// kind is ignored or read as a neutral value; numbers are clamped; unknown keys are ignored.
    /// Throws nothing for bad content; on standard error stand at most the JSON reader's lines about texts of
    /// digits that are no number. {"overlay":[1,"a",{}]} gives one record of defaults.
    std::vector<OverlayCfg> parse(std::string const& text) const;
};

}  // namespace stanag_overlay
