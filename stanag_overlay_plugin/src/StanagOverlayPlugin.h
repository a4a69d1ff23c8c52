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
    std::string getConfigList() override;
    /// Replaces the blocks and forgets everything that was held for the old ones.
    void setConfig(std::string config) override;
    void render(RenderContext& context) override;

private:
    bool selectStanagRoot_(RenderContext const& context, SwJsonObject& root, unsigned long& providersMissing,
                           unsigned long& providersUsingLookback);

    Painter* painter_ = nullptr;         // not owned
    IRenderBackend* backend_ = nullptr;  // not owned
    mutable std::string uuid_;
    std::vector<stanag_overlay::OverlayCfg> overlays_;
    std::vector<stanag_overlay::OverlayRuntime> runtimes_;
    std::vector<std::string> availableKeys_;
    stanag_overlay::ConfigSchemaBuilder schemaBuilder_;
    stanag_overlay::OverlayConfigParser parser_;
    stanag_overlay::OverlayTextFormatter formatter_;
    stanag_overlay::OverlayConditionEvaluator evaluator_;
    bool debug_ = false;
    std::uint64_t missCount_ = 0;
    std::uint64_t nextFallbackLogNs_ = 0;
    std::uint64_t fallbackLogIntervalMs_ = 2000;
    std::uint64_t fallbackLogEveryN_ = 60;
};
