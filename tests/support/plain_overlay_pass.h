// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A whole frame written the plain way: objects copied at every step, the inputs grouped anew each frame,
// conditions and texts by the plain units. Shares no code with the plugin but the configuration parser, the
// records and the clock: the plugin is held against it call by call, and races it in benchmarks.
#pragma once

#include "stanag_overlay_config.h"
#include "stanag_overlay_runtime.h"

#include "RenderContext.h"
#include "SwJson.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stanag_overlay::plain {

/// As StanagOverlayPlugin, its state open to look at. A configuration goes straight into `overlays`.
class OverlayPass {
public:
    void init(RenderInit const& init);
    void render(RenderContext& context);

    std::vector<OverlayCfg> overlays;
    std::vector<OverlayRuntime> runtimes;
    std::vector<std::string> availableKeys;
    bool debug = false;
    std::uint64_t missCount = 0;
    std::uint64_t nextFallbackLogNs = 0;

private:
    void countMiss(RenderContext const& context, std::uint64_t nowNs, unsigned long missing, unsigned long lookback);
    bool map(RenderContext& context);
    void draw(RenderContext const& context, OverlayCfg const& block, std::string const& text, float width,
              float height);

    Painter* painter_ = nullptr;
    IRenderBackend* backend_ = nullptr;
};

}  // namespace stanag_overlay::plain
