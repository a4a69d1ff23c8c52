// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the reference host may do with the reference imaging library beyond the plugin interface: reach a
// picture's planes, name its colours, watch what is drawn.
#pragma once

#include "Painter.h"
#include "Picture.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace imaging {

/// The picture's planes; they stay where they are for the picture's lifetime. Rows are padded to a
/// multiple of 64 bytes.
MappedNV12 planesOf(zelvo::ZelvoPicture& picture);

/// The planes behind a target made by ZelvoPicture::makeRenderTarget; null planes for any other target.
MappedNV12 planesOf(IRenderTarget& target);

/// A picture whose planes are somebody else's, who keeps them for the picture's lifetime. `planes` has sizes above 0
/// and its strides filled in.
std::shared_ptr<zelvo::ZelvoPicture> wrapPlanes(MappedNV12 const& planes);

/// A picture from the pool without copying anything into it (contents undefined). The pool keeps the
/// memory of pictures that were let go and hands it out again for the same size.
std::shared_ptr<zelvo::ZelvoPicture> takePicture(zelvo::ZelvoPicturePool& pool, unsigned width, unsigned height);

enum class ColorMatrix {
    Auto,  ///< BT.709 for 720 lines and more, BT.601 below
    Bt601,
    Bt709,
};

/// How pen colours become luma and chroma. The default is Auto in limited range.
void setColor(Painter& painter, ColorMatrix matrix, bool fullRange);

inline constexpr int kLargestOutline = 128;

/// A dark rim, so many pixels wide, around every text from now on: 0 to kLargestOutline, else the nearest of both. 0,
/// the default, draws what the plugin asks for and nothing else. Measured boxes include the rim.
void setOutline(Painter& painter, int pixels);

struct DrawnText {
    std::string text;
    int x = 0;
    int y = 0;
    int pixelSize = 0;
    Pen pen;
    // The box that was to be drawn last, which is the text's own when it has one.
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// Whether texts and boxes that are reported are drawn too.
enum class RecordedTexts { Left, Drawn };

/// From now on texts are reported instead of drawn, or as well, with their boxes; measuring goes on as usual.
/// An empty observer ends that.
void recordTexts(Painter& painter, std::function<void(DrawnText const&)> observer,
                 RecordedTexts texts = RecordedTexts::Left);

/// Opens the font for `family` so that the first text costs no more than any other: "" means DejaVu Sans or what
/// fontconfig offers in its place, generic names ("monospace") mean what fontconfig has for them, every other must be
/// installed. Throws std::runtime_error naming the family and the cure when it is not, has no digits or cannot be
/// opened; then the font is as before.
void openFonts(Painter& painter, std::string const& family = "");

}  // namespace imaging
