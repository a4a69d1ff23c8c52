// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Setting one line: text to glyphs at pixel positions.
#pragma once

#include "imaging/bidi.h"
#include "imaging/geometry.h"
#include "imaging/glyph_cache.h"
#include "imaging/shaper.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace imaging {

/// Sizes that can be set; beyond them a text cannot be measured.
inline constexpr int kLargestPixelSize = 2048;
/// Up to this size glyphs stand at quarters of a pixel, above it at whole ones.
inline constexpr int kLargestSubPixelSize = 96;

/// How a line looks, as far as its glyphs are concerned.
struct LineStyle {
    int pixelSize = 1;  ///< 1 to kLargestPixelSize
    int thickness = 1;  ///< of the pen, 1 to kLargestThickness
    int room = 0;       ///< pixels left free around the stroke, for a rim that is drawn apart

    /// How far stroke and room reach beyond the outline, rounded up to whole pixels.
    int reach() const { return thickness / 2 + room; }
    friend bool operator==(LineStyle const&, LineStyle const&) = default;
};

/// A glyph whose origin stands at pixel (x, y) of the line's own coordinates.
struct PlacedGlyph {
    std::int64_t x = 0;
    std::int32_t y = 0;
    std::uint32_t glyph = 0;
    FontId font = 0;
    std::uint8_t phase = 0;

    GlyphKey key(LineStyle const& style) const
    {
        return {glyph, static_cast<std::uint16_t>(style.pixelSize), font, static_cast<std::uint16_t>(style.thickness),
                phase};
    }
};

/// A line that has been set. The pen starts at (0, 0) on the baseline; y counts downwards.
struct SetLine {
    std::int64_t advance = 0;  ///< width of the line in pixels, rounded up
    Box ink;                   ///< of all glyphs; empty without ink
};

class Typesetter {
public:
    Typesetter(Shaper& shaper, GlyphCache& glyphs) : shaper_(shaper), glyphs_(glyphs) {}

    /// Sets `line` (UTF-8 without line feeds) and appends its glyphs from left to right. Right-to-left parts
    /// stand in the order in which they are read; the first letter with a direction decides the line's. A
    /// tabulator is four spaces wide. Each ASCII digit is set by itself, so that numbers keep their width
    /// whatever their digits are.
    SetLine set(std::string_view line, LineStyle const& style, std::vector<PlacedGlyph>& placed);

    /// Of the directions of lines.
    std::size_t cachedBytes() const { return runs_.cachedBytes(); }

private:
    struct Pen {
        LineStyle style;
        std::int64_t position = 0;  ///< kUnitsPerEm
        SetLine line;
        std::vector<PlacedGlyph>& placed;
    };

    void setRun(std::string_view run, Direction direction, Pen& pen);
    void setMixedLine(std::string_view line, Pen& pen);
    void setWord(std::string_view word, Direction direction, Pen& pen);
    void place(ShapedWord const& word, Pen& pen);

    Shaper& shaper_;
    GlyphCache& glyphs_;
    RunCache runs_;
    std::vector<std::string_view> words_;  ///< of the run being set from right to left
};

}  // namespace imaging
