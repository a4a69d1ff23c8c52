// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The common way to burn text into video, as an opponent: FFmpeg's drawtext filter, one for each block, in a graph of
// one thread that draws on NV12 pictures in place.
#pragma once

#include "Picture.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

/// One block as drawtext gets it: white text on a half-opaque black box.
struct DrawtextBlock {
    std::string text;  ///< shown on every picture; empty when each picture brings the text with it
    int x = 0;         ///< pixels
    int y = 0;         ///< pixels
    int fontSize = 0;  ///< pixels
    int margin = 5;    ///< pixels between the text and the box's edges
    int outline = 0;   ///< pixels of a black rim around the text
};

/// Throws std::runtime_error when the filters cannot be had.
class DrawtextOpponent {
public:
    DrawtextOpponent(int width, int height, std::vector<DrawtextBlock> const& blocks);
    ~DrawtextOpponent();
    DrawtextOpponent(DrawtextOpponent const&) = delete;
    DrawtextOpponent& operator=(DrawtextOpponent const&) = delete;

    /// Sends a picture of the graph's size through the filters. It is never copied: drawing is all that is paid for.
    /// `texts` are those of blocks without one, by the block's number; they travel as metadata of the picture, the
    /// way that needs no new filter when they change.
    void draw(MappedNV12 const& picture, std::span<std::string const> texts = {});

private:
    struct Graph;
    std::unique_ptr<Graph> graph_;
};
