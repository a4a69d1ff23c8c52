// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pictures that the editor shows: any frame of a clip with any configuration, as the command that makes one
// annotated picture would give it.
#pragma once

#include "SwJson.h"
#include "check/config_text.h"
#include "clip/annotated_clip.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace editor {

/// What is known of the clip as a whole.
struct ClipFacts {
    std::string name;  ///< of the file, without its folders
    int width = 0;     ///< of the first picture, pixels
    int height = 0;
    std::optional<double> seconds;        ///< length; empty when unknown
    std::optional<std::uint64_t> frames;  ///< empty as long as nobody has come to the clip's end
    double frameSeconds = 0.0;            ///< how long a picture is shown, on average
};

/// Which frame is asked for. What lies before the clip is its first frame, what lies behind it the last one.
struct Place {
    std::optional<std::uint64_t> frame;  ///< number from 1; empty: `seconds` counts
    double seconds = 0.0;                ///< after the first picture: the frame that is shown then

    static Place at(double seconds) { return {std::nullopt, seconds}; }
    static Place ofFrame(std::uint64_t number) { return {number, 0.0}; }
};

/// A block that is drawn: its box with the margin, and where its text stands. Pixels; right and bottom are outside.
struct Box {
    std::size_t block = 0;  ///< of the configuration's items, from 0
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int anchorX = 0;
    int anchorY = 0;
};

/// One picture as the page shows it.
struct Shown {
    std::uint64_t frame = 0;  ///< number from 1
    double seconds = 0.0;     ///< after the first picture
    bool last = false;        ///< no frame follows
    int width = 0;            ///< pixels
    int height = 0;
    std::vector<std::uint8_t> rgb;          ///< rows from the top, three bytes a pixel, no padding
    std::vector<Box> boxes;                 ///< of the blocks that are drawn, in the order of drawing
    SwJsonObject values;                    ///< every telemetry key of this frame, derived ones included
    std::optional<check::TextFault> fault;  ///< of the configuration's text; then nothing is drawn
};

/// Every picture is the one that a full run draws there, with the colours of its PNG. Another configuration for the
/// same frame costs the plugin, the drawing and the colours; the next frame costs one decoded picture more; a frame
/// behind or far ahead is found by the packets up to it and decoded from the key picture before, but for a few pictures
/// back, which are kept.
///
/// The plugin sees the frames before again whenever the configuration changes: those within the configuration's memory
/// (clip/config_memory.h), or all when that has no bound, which takes about a second for each hour of clip.
///
/// What was read of the clip is kept, some 100 MB for an hour, and pictures of 64 MB.
///
/// One thread at a time may use it. Everything throws std::runtime_error with one line when the clip cannot be read.
class Preview {
public:
    /// Opens the clip, which must be a file, as telemetry must that is not the clip's. The source's configuration does
    /// not count.
    explicit Preview(clip::ClipSource source);
    ~Preview();
    Preview(Preview const&) = delete;
    Preview& operator=(Preview const&) = delete;

    ClipFacts facts() const;
    /// The keys that the clip delivers, sorted. The first call reads the whole file.
    std::vector<std::string> const& keys();
    /// The keys that can be derived from them, sorted.
    std::vector<std::string> const& derivableKeys();
    /// The plugin's description of its configuration, with these keys.
    std::string const& schema();

    /// The frame with the configuration's text drawn on it; items whose index is among `hidden` are left out.
    Shown show(std::string const& configText, Place const& place, std::vector<std::size_t> const& hidden = {});

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace editor
