// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands behind the opaque painter.
#pragma once

#include "Painter.h"
#include "imaging/imaging_access.h"
#include "imaging/rounded_box.h"
#include "imaging/text_renderer.h"

struct Painter::Impl {
    Pen pen;
    imaging::ColorMatrix matrix = imaging::ColorMatrix::Auto;
    bool fullRange = false;
    int outline = 0;  ///< pixels of the dark rim around texts
    std::function<void(imaging::DrawnText const&)> observer;
    imaging::RecordedTexts recorded = imaging::RecordedTexts::Left;
    imaging::DrawnText observed;  ///< its box; the rest comes with the text
    imaging::TextRenderer texts;
    imaging::BoxRenderer boxes;

    /// Of a text with its rim, which is a wider stroke, and of the text itself; both have their glyphs at the same
    /// places.
    imaging::LineStyle rimStyle(int pixelSize) const { return {pixelSize, penThickness() + 2 * outline, 0}; }
    imaging::LineStyle textStyle(int pixelSize) const { return {pixelSize, penThickness(), outline}; }

    imaging::YCbCr colorOn(MappedNV12 const& target) const;
    imaging::YCbCr rimColorOn(MappedNV12 const& target) const;

private:
    int penThickness() const { return pen.thickness > 1 ? pen.thickness : 1; }
};
