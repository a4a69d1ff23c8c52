// The interface of a render plugin, found through class_loader under the base name "IRenderPlugin".
#pragma once

#include "RenderContext.h"
#include "RenderInput.h"

#include <string>
#include <vector>

class IRenderPlugin {
public:
    // The order of these virtual operations is the interface: hosts and plugins are built apart.
    virtual ~IRenderPlugin() = default;
    virtual char const* getName() const = 0;
    /// Unique per live instance, stable for its lifetime.
    virtual std::string getUuid() const = 0;
    virtual std::vector<std::string> input_types() const = 0;
    virtual std::vector<RenderInputRequirement> input_requirements() const = 0;
    virtual void enableDebug(bool on) = 0;
    virtual bool init(RenderInit const& init) = 0;
    /// A description of the accepted configuration.
    virtual std::string getConfigList() = 0;
    virtual void setConfig(std::string config) = 0;
    /// Draws on one frame. Exceptions of the host's objects pass through.
    virtual void render(RenderContext& context) = 0;
};
