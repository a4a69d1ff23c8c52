// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One glyph's outline as coverage.
#pragma once

#include "imaging/fonts.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace imaging {

/// Glyph positions between whole pixels are told apart in this many steps.
inline constexpr int kPhases = 4;

/// Which picture of a glyph is meant.
struct GlyphKey {
    std::uint32_t glyph = 0;      ///< index in the font, or kMissingGlyph
    std::uint16_t pixelSize = 0;  ///< of the em square, at least 1
    FontId font = 0;
    std::uint16_t thickness = 1;  ///< of the pen, at least 1: the outline is stroked thickness - 1 pixels wide
    std::uint8_t phase = 0;       ///< shift to the right in 1/kPhases pixel

    friend bool operator==(GlyphKey const&, GlyphKey const&) = default;
};

/// Coverage of the smallest rectangle that holds all of a glyph's ink. Rows are padded with zeros to a
/// multiple of 16 bytes. Without ink all sizes are 0.
struct GlyphImage {
    std::int32_t left = 0;  ///< of the glyph's origin, in pixels
    std::int32_t top = 0;   ///< of the baseline, counted downwards: negative above it
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t stride = 0;
    std::vector<std::uint8_t> coverage;
};

/// Rasterises a glyph, hinted vertically only. A glyph that the font cannot give has no ink.
GlyphImage rasterize(Fonts const& fonts, GlyphKey const& key);

}  // namespace imaging
