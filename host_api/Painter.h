// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The host's drawing facility: pen, measuring, boxes and text on a mapped NV12 picture. The imaging library implements
// it.
#pragma once

#include "Picture.h"

#include <cstdint>
#include <memory>
#include <string>

struct Pen {
    std::uint8_t r = 255;
    std::uint8_t g = 255;
    std::uint8_t b = 255;
    std::uint8_t thickness = 1;  ///< stroke width of text in pixels

    friend bool operator==(Pen const& a, Pen const& b)
    {
        return a.r == b.r && a.g == b.g && a.b == b.b && a.thickness == b.thickness;
    }
};

/// How a text is set. The last two fields are reserved and 0.
struct TextStyle {
    int pixelSize = 0;  ///< height of the font's em square in pixels
    int reserved1 = 0;
    int reserved2 = 0;
};

class Painter {
public:
    Painter();
    ~Painter();
    Painter(Painter const&) = delete;
    Painter& operator=(Painter const&) = delete;

    Pen getPen() const;
    void setPen(Pen const& pen);
    /// Stroke width in pixels of the texts that follow.
    void setPenThickness(unsigned char thickness);
    /// Colour of the draws that follow.
    void setPenRGB(unsigned char r, unsigned char g, unsigned char b);

    /// The box that drawTextMapped would ink for the same text, anchor and size with the current pen
    /// thickness: `left`, `top` inclusive, `right`, `bottom` exclusive, in pixels. The anchor is the
    /// top-left corner of the first line's box; a line feed starts a new line. The three integers are
    /// the fields of a TextStyle. False, with the outputs untouched, when the text cannot be measured.
    bool measureTextBBox(std::string const& text, int x, int y, int pixelSize, int reserved1, int reserved2, int* left,
                         int* top, int* right, int* bottom) const;

    /// Blends a box in the pen colour: opacity 0..1, corner radius in pixels, and the margin in pixels
    /// that the box already includes. Clipped to the picture.
    void drawBackgroundMapped(MappedNV12 const& target, int left, int top, int right, int bottom, float opacity,
                              float cornerRadius, float margin);

    /// Draws the text in the pen colour and thickness. Clipped to the picture.
    void drawTextMapped(MappedNV12 const& target, int x, int y, std::string const& text, TextStyle const& style);

    struct Impl;
    Impl& impl() { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};
