// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Decides when a block is shown: reads the "condition" member of a block and evaluates it per frame.
#pragma once

#include "stanag_overlay_records.h"
#include "stanag_overlay_runtime.h"

#include "SwJson.h"

#include <cstdint>

namespace stanag_overlay {

enum class Visibility : std::int32_t {
    Hidden = 0,   ///< draw nothing
    Refresh = 1,  ///< draw; the text may be expanded anew
    Keep = 2,     ///< draw the text already held
};

class OverlayConditionEvaluator {
public:
    /// Reads `item`'s "condition" into `cond`, which comes in with its defaults. A condition that is
    /// missing, no object, or without a non-empty string "key" leaves it disabled.
    /// {"condition": {"key": "k", "value": 3}} gives Equals with the value "3".
    void parse(SwJsonObject const& item, ConditionCfg& cond) const;

    /// What to do with the block at `nowNs` (the frame's time). The show delay waits while strictly less than
    /// showAfterNs has passed, the keep period lasts while at most keepAfterNs has. A null root or an
    /// absent key makes the condition false. Writes only the runtime's two condition times.
    Visibility visibility(OverlayCfg const& cfg, OverlayRuntime& runtime, SwJsonObject const* root,
                          std::uint64_t nowNs) const;
};

}  // namespace stanag_overlay
