// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The scenes that all painters draw: six blocks of three lines on NV12 pictures.
#pragma once

#include "Picture.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace painter_bench {

inline constexpr int kBlocks = 6;

struct Scene {
    std::string name;  ///< as the table shows it
    int scale = 1;     ///< of 1920x1080 with texts of 28 pixels
    bool isChanging = false;
    std::size_t pictures = 1;  ///< that are drawn on in turn
    int outline = 0;           ///< pixels of a dark rim around the texts

    int width() const { return 1920 * scale; }
    int height() const { return 1080 * scale; }
    int textSize() const { return 28 * scale; }
    /// Distance of a box's edges from its text.
    int margin() const { return 6 * scale; }
    int left(int block) const { return (block % 2 == 0 ? 24 : 760) * scale; }
    int top(int block) const { return (24 + 176 * block) * scale; }
};

/// A frame's text for each block.
using Texts = std::array<std::string, kBlocks>;

/// Three lines of about 60 characters a block; with a changing scene the numbers differ in every frame.
Texts textsOf(Scene const& scene, int frame);

/// Pictures that are drawn on in turn, as a video's are. With many of them none is still in the processor's nearer
/// caches from the frame before.
class PictureRing {
public:
    explicit PictureRing(Scene const& scene);
    /// The planes of the picture for a frame; one block of memory, chroma right behind luma.
    MappedNV12 const& planesOf(int frame) const { return planes_[static_cast<std::size_t>(frame) % planes_.size()]; }
    /// Bytes from the first of luma to the end of chroma.
    static std::size_t bytesOf(MappedNV12 const& planes);
    /// Paints a ground of waves over all pictures.
    void fillGround();

private:
    std::vector<std::unique_ptr<zelvo::ZelvoPicture>> pictures_;
    std::vector<MappedNV12> planes_;
};

/// Something that draws a scene's blocks, text on a half-opaque black box.
class Drawer {
public:
    virtual ~Drawer() = default;
    /// Draws the next frame's texts on `planes`.
    virtual void draw(MappedNV12 const& planes, Texts const& texts) = 0;
};

std::unique_ptr<Drawer> makeOurs(Scene const& scene);
/// Reads and writes each byte of our boxes once: what no painter can beat.
std::unique_ptr<Drawer> makeLowerLimit(Scene const& scene);
/// FFmpeg's drawtext filters, through libavfilter.
std::unique_ptr<Drawer> makeDrawtext(Scene const& scene);
/// libass through its own API, its bitmaps blended as FFmpeg's ass filter does.
std::unique_ptr<Drawer> makeLibass(Scene const& scene);
/// GStreamer's textoverlay elements.
std::unique_ptr<Drawer> makeTextoverlay(Scene const& scene);

}  // namespace painter_bench
