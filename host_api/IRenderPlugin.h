// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

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
    /// The plugin's name, which lives as long as its library.
    virtual char const* getName() const = 0;
    /// Unique per live instance, stable for its lifetime.
    virtual std::string getUuid() const = 0;
    /// Types of the inputs that the plugin draws from, such as "stanag.v1".
    virtual std::vector<std::string> input_types() const = 0;
    /// One record per input type, in the same order.
    virtual std::vector<RenderInputRequirement> input_requirements() const = 0;
    /// More diagnostics on standard error. Off at first; may be called at any time.
    virtual void enableDebug(bool on) = 0;
    /// Hands over what stays the host's. False when the plugin cannot work with it; a later call replaces
    /// what an earlier one gave.
    virtual bool init(RenderInit const& init) = 0;
    /// A description of the accepted configuration, from which a host can build a form.
    virtual std::string getConfigList() = 0;
    /// Replaces the configuration, before or after init. A text that cannot be read is no error: see the
    /// plugin for what it then does.
    virtual void setConfig(std::string config) = 0;
    /// Draws on one frame; does nothing before init. Exceptions of the host's objects pass through. Holds and delays
    /// run by the steady clock unless a FrameTime says the frame's time.
    virtual void render(RenderContext& context) = 0;
};
