// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin: selects the frame's telemetry, decides which blocks are shown, expands their texts and
// draws them. The way of a frame is render() in StanagOverlayPlugin.cpp.
#pragma once

#include "stanag_overlay_condition.h"
#include "stanag_overlay_config.h"
#include "stanag_overlay_format.h"
#include "stanag_overlay_runtime.h"

#include "RenderBase.h"
#include "SwJson.h"

#include <cstdint>
#include <string>
#include <vector>

/// Not locked: the host calls setConfig, getConfigList and render of one instance from one thread at a
/// time.
class StanagOverlayPlugin : public RenderBase {
public:
    StanagOverlayPlugin() = default;

    char const* getName() const override;
    /// "stanagoverlay-" and the object's address in decimal.
    std::string getUuid() const override;
    std::vector<std::string> input_types() const override;
    /// With debug on, frames without telemetry are reported on standard error, rate-limited.
    void enableDebug(bool on) override;
    /// Takes backend and painter, which stay the host's; always true.
    bool init(RenderInit const& init) override;
    /// The JSON Schema of the configuration; "availableKeys" lists the keys of the last telemetry found.
    std::string getConfigList() override;
    /// Replaces the blocks and forgets everything that was held for the old ones, also when the text is the
    /// same. A text that cannot be read leaves no blocks; see OverlayConfigParser.
    void setConfig(std::string config) override;
    /// Draws the blocks on the frame's writable copy. A frame without telemetry, picture, render target or
    /// mapping is left as it is. Throws std::runtime_error "LazyDetachedPicture has no readable picture"
    /// when the picture vanishes meanwhile; exceptions of the host's objects pass through, the pen is then
    /// not restored. A registered conversion that throws only makes its payload empty.
    void render(RenderContext& context) override;

private:
    /// Merges the producers' payloads into `root`; true when there is any value. A key that several
    /// producers deliver keeps the value of the first one. Counts the producers without an input and those
    /// whose values come from an earlier frame.
    bool selectStanagRoot_(RenderContext const& context, SwJsonObject& root, unsigned long& providersMissing,
                           unsigned long& providersUsingLookback);
    void countMiss_(std::uint64_t frameIndex, std::uint64_t nowNs, unsigned long providersMissing,
                    unsigned long providersUsingLookback);
    void updateAvailableKeys_(SwJsonObject const& root);
    /// Makes the context's mapping one of `backend_`; false when the picture cannot be mapped.
    bool mapPicture_(RenderContext& context);
    void drawBlocks_(RenderContext const& context, zelvo::ZelvoPicture const& picture, SwJsonObject const& root,
                     std::uint64_t nowNs);

    Painter* painter_ = nullptr;         // not owned
    IRenderBackend* backend_ = nullptr;  // not owned
    mutable std::string uuid_;
    std::vector<stanag_overlay::OverlayCfg> overlays_;
    std::vector<stanag_overlay::OverlayRuntime> runtimes_;  // one per block
    std::vector<std::string> availableKeys_;                // of the last telemetry found, in byte order
    stanag_overlay::ConfigSchemaBuilder schemaBuilder_;
    stanag_overlay::OverlayConfigParser parser_;
    stanag_overlay::OverlayTextFormatter formatter_;
    stanag_overlay::OverlayConditionEvaluator evaluator_;
    bool debug_ = false;
    std::uint64_t missCount_ = 0;                 // frames without telemetry in a row
    std::uint64_t nextFallbackLogNs_ = 0;         // the frames' time
    std::uint64_t fallbackLogIntervalMs_ = 2000;  // least spacing of the fallback lines
    std::uint64_t fallbackLogEveryN_ = 60;        // and one on every 60th miss in a row
};
