// Texts of one or more lines: measured, drawn, and remembered as long as they stay the same.
#pragma once

#include "color.h"
#include "fonts.h"
#include "geometry.h"
#include "glyph_cache.h"
#include "line_composer.h"
#include "lru_cache.h"
#include "shaper.h"
#include "typesetter.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

/// Bounds of the memory for composed lines.
inline constexpr std::size_t kLineCacheBytes = std::size_t{16} << 20;
inline constexpr std::size_t kLineCacheEntries = 4096;
/// Working memory for a line that is composed: a taller one is drawn in bands.
inline constexpr std::int64_t kBandBytes = std::int64_t{4} << 20;

/// Bytes that the renderer's caches hold, each within its bound.
struct CachedBytes {
    std::size_t glyphs = 0;
    std::size_t words = 0;
    std::size_t lines = 0;
};

class TextRenderer {
public:
    TextRenderer();

    /// See imaging::openFonts.
    void openFonts(std::string const& family);

    /// The text's box: its lines' boxes and all ink. A line's box is as wide as its letters advance and as high
    /// as the font's ascent and descent, and wider by the stroke's reach on each side; the first one's top-left
    /// corner is the anchor. Nothing for an empty text, a size out of range or without fonts.
    std::optional<Box> measure(std::string_view text, int x, int y, LineStyle const& style);

    /// Blends the text's coverage; `target` has planes, sizes above 0 and strides filled in.
    void draw(MappedNV12 const& target, std::string_view text, int x, int y, LineStyle const& style,
              YCbCr const& color);

    CachedBytes cachedBytes() const;

private:
    /// One line of the text laid out last.
    struct Line {
        std::string_view text;
        std::int64_t baseline = 0;  ///< below the anchor
        SetLine set;
        std::uint64_t hash = 0;
        bool isPlaced = false;  ///< false while the line cache spares it
        std::size_t firstGlyph = 0;
        std::size_t glyphCount = 0;
    };
    /// A composed line. Even anchors and odd ones have different chroma, so they are kept apart.
    struct CachedLine {
        std::string text;
        LineStyle style;
        int parity = 0;
        SetLine set;
        PackedCoverage coverage;
    };

    bool isReady(std::string_view text, LineStyle const& style);
    void layOut(std::string_view text, int x, int y, LineStyle const& style);
    void layOutLine(std::string_view text, std::int64_t baseline);
    void place(Line& line);
    int parityOf(Line const& line) const;
    CachedLine* findCached(Line const& line);
    void drawLine(MappedNV12 const& target, Line& line, YCbCr const& color);
    void keep(Line const& line, CoverageView const& view);

    Fonts fonts_;
    Shaper shaper_;
    GlyphCache glyphs_;
    Typesetter typesetter_;
    LineComposer composer_;
    LruCache<CachedLine> cachedLines_;
    /// Hashes of lines drawn lately: what is drawn a second time is worth remembering.
    std::array<std::uint64_t, 4096> drawnBefore_{};

    // The text laid out last: measuring and then drawing it takes one layout.
    std::string text_;
    LineStyle style_;
    int x_ = 0;
    int y_ = 0;
    Box box_;  ///< relative to the anchor
    std::vector<Line> lines_;
    std::vector<PlacedGlyph> placed_;
};

}  // namespace imaging
