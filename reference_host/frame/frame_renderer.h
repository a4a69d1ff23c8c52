// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The host's side of a frame: builds the render context, calls the plugin, gives back the picture.
#pragma once

#include "IRenderPlugin.h"
#include "Painter.h"
#include "Picture.h"
#include "RenderContext.h"
#include "frame/look.h"
#include "frame/mapped_backend.h"
#include "frame/plugin_loader.h"
#include "frame/telemetry_timeline.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace frame {

class FrameRenderer {
public:
    /// Loads plugin and fonts. Throws std::runtime_error with one line.
    explicit FrameRenderer(Look look = {}, std::vector<std::string> const& pluginFolders = programFolders());

    /// How texts look from now on. Throws std::runtime_error with one line when there is no such font; then all is as
    /// before.
    void setLook(Look look);

    /// The plugin's description of its configuration once it has seen a frame with these telemetry keys.
    std::string schemaFor(SwJsonObject keys);
    /// For setConfig and getConfigList.
    IRenderPlugin& plugin() { return plugin_.get(); }
    /// For its colour format and for recording texts.
    Painter& painter() { return painter_; }
    /// A picture with undefined contents; its memory is used again.
    std::shared_ptr<zelvo::ZelvoPicture> takePicture(unsigned width, unsigned height);

    /// Lets the plugin draw on a frame: the picture that comes back is `source` itself when nothing was
    /// drawn, else its annotated copy. `producers` are all that could deliver telemetry, `choices` what
    /// they deliver for this frame. `frameIndex` counts from 1.
    std::shared_ptr<zelvo::ZelvoPicture> render(std::uint64_t frameIndex,
                                                std::shared_ptr<zelvo::ZelvoPicture> const& source,
                                                std::vector<std::string> const& producers,
                                                std::vector<Choice> const& choices);
    /// The same for a picture that nobody else reads: it is not copied but drawn on.
    void renderOnto(std::uint64_t frameIndex, std::shared_ptr<zelvo::ZelvoPicture> const& picture,
                    std::vector<std::string> const& producers, std::vector<Choice> const& choices);

    /// Lets the plugin see a frame whose picture nobody wants: holds, delays and numbers go on as if it had been drawn,
    /// but nothing is drawn and no context is made.
    void pass(std::uint64_t frameIndex, std::vector<std::string> const& producers, std::vector<Choice> const& choices);

private:
    void render_(RenderContext& context, std::uint64_t frameIndex, zelvo::ZelvoPicture const& picture,
                 std::vector<std::string> const& producers, std::vector<Choice> const& choices);

    Look look_;
    // In this order: the plugin ends before what it was given.
    Painter painter_;
    MappedBackend backend_;
    std::shared_ptr<zelvo::ZelvoPicturePool> pool_;
    std::unique_ptr<RenderContext> passing_;  ///< kept from frame to frame with its mapped picture
    LoadedPlugin plugin_;
};

}  // namespace frame
