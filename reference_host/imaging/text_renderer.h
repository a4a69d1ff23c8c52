// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts of one or more lines: measured, drawn, and remembered as long as they stay the same.
#pragma once

#include "imaging/color.h"
#include "imaging/coverage_blender.h"
#include "imaging/fonts.h"
#include "imaging/geometry.h"
#include "imaging/glyph_cache.h"
#include "imaging/line_cache.h"
#include "imaging/line_composer.h"
#include "imaging/shaper.h"
#include "imaging/text_layout.h"
#include "imaging/typesetter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace imaging {

/// Lines with a larger picture of coverage or a longer text are composed at every draw.
inline constexpr std::int64_t kLargestKeptLine = kLineCacheBytes / 8;
inline constexpr std::size_t kLongestKeptLine = std::size_t{64} << 10;
/// Working memory for lines that are composed: higher ones are drawn in bands.
inline constexpr std::int64_t kBandBytes = std::int64_t{4} << 20;

/// Bytes that the renderer's caches hold, each within its bound.
struct CachedBytes {
    std::size_t glyphs = 0;
    std::size_t words = 0;
    std::size_t lines = 0;
    std::size_t measures = 0;
    std::size_t directions = 0;
};

class TextRenderer {
public:
    TextRenderer();

    /// Opens the fonts of `family` as Fonts::open does, and forgets everything drawn with others. Without it the first
    /// text opens "". Throws std::runtime_error naming the family and the cure; the fonts are then as before.
    void openFonts(std::string const& family);

    /// The text's box as TextLayout gives it. Nothing for an empty text, a size out of range or without fonts.
    std::optional<Box> measure(std::string_view text, int x, int y, LineStyle const& style);

    /// Blends the text's coverage; `target` has planes, sizes above 0 and strides filled in. Draws nothing where
    /// `measure` gives nothing.
    void draw(MappedNV12 const& target, std::string_view text, int x, int y, LineStyle const& style,
              YCbCr const& color);

    CachedBytes cachedBytes() const;

private:
    bool isReady(std::string_view text, LineStyle const& style);
    void drawGroup(MappedNV12 const& target, LineGroup const& group, YCbCr const& color);
    void drawInBands(MappedNV12 const& target, LineGroup const& group, Box const& window, YCbCr const& color);
    PackedCoverage const* remembered(LineGroup const& group);
    PackedCoverage pack(LineGroup const& group);
    CoverageView compose(LineGroup const& group, Box const& window, Box const& picture);

    Fonts fonts_;
    Shaper shaper_;
    GlyphCache glyphs_;
    Typesetter typesetter_;
    TextLayout layout_;
    LineComposer composer_;
    CoverageCache composed_;
    CoverageBlender blender_;
};

}  // namespace imaging
