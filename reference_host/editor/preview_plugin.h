// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin behind the preview: brought to any frame with any configuration, it draws and tells where.
#pragma once

#include "SwJson.h"
#include "clip/clip_frames.h"
#include "clip/frame_pictures.h"
#include "clip/placed_blocks.h"
#include "frame/frame_renderer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace editor {

/// A configuration as a preview draws it.
struct PreviewConfig {
    std::string text;
    std::string numbered;  ///< the same with its blocks' numbers for colours
};

/// The configuration without the items whose index is hidden; the others keep their numbers. `text` is that of `root`.
PreviewConfig previewConfig(std::string const& text, SwJsonObject const& root, std::vector<std::size_t> const& hidden);

/// A picture with the blocks that were drawn on it.
struct DrawnPicture {
    std::shared_ptr<zelvo::ZelvoPicture> picture;  ///< the undrawn one when nothing was drawn
    std::vector<clip::DrawnBlock> blocks;
};

class PreviewPlugin {
public:
    /// Loads plugin and fonts. Throws std::runtime_error with one line.
    explicit PreviewPlugin(frame::Look const& look);

    /// Draws on a copy of the frame's picture what a full run draws there. The frames up to it must be known.
    DrawnPicture draw(PreviewConfig const& config, clip::ClipFrames const& frames, clip::UndrawnPicture const& undrawn);
    /// The frames of the last call are gone: others come.
    void forget();

private:
    void bringTo_(clip::ClipFrames const& frames, std::size_t number);
    std::vector<clip::DrawnBlock> place_(clip::ClipFrames const& frames, clip::UndrawnPicture const& undrawn,
                                         std::vector<frame::Choice> const& choices);

    // Two plugins that see the same frames: one draws, one tells the blocks by their colours.
    frame::FrameRenderer drawing_;
    frame::FrameRenderer placing_;
    std::shared_ptr<zelvo::ZelvoPicture> canvas_;  ///< for the second; nothing is drawn on it
    std::vector<clip::DrawnBlock> placed_;
    PreviewConfig config_;
    std::optional<std::uint64_t> memoryNs_;         ///< of this configuration; empty: without bound
    std::optional<clip::TelemetryView> telemetry_;  ///< as this configuration sees it
    std::optional<std::size_t> seen_;               ///< the last frame that the plugins have seen; empty: none
};

}  // namespace editor
