// Texts of one or more lines: measured, drawn, and remembered as long as they stay the same.
#pragma once

#include "imaging/color.h"
#include "imaging/fonts.h"
#include "imaging/geometry.h"
#include "imaging/glyph_cache.h"
#include "imaging/line_composer.h"
#include "imaging/lru_cache.h"
#include "imaging/shaper.h"
#include "imaging/typesetter.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

/// Bounds of the memory for composed lines and for their measures.
inline constexpr std::size_t kLineCacheBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMeasureCacheBytes = std::size_t{1} << 20;
inline constexpr std::size_t kLineCacheEntries = 4096;
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
    /// One line of the text laid out last. All positions are relative to the anchor.
    struct Line {
        std::string_view text;
        std::int64_t baseline = 0;
        SetLine set;
        bool isPlaced = false;  ///< false while a cache spares it
        std::size_t firstGlyph = 0;
        std::size_t glyphCount = 0;
    };
    /// Consecutive lines whose ink shares rows of chroma; as a rule one line.
    struct Group {
        std::string_view text;
        std::size_t firstLine = 0;
        std::size_t endLine = 0;
        Box ink;
    };
    struct CachedMeasure {
        std::string text;
        LineStyle style;
        SetLine set;
    };
    /// A composed group. Even anchors and odd ones have different chroma, so they are kept apart.
    struct CachedGroup {
        std::string text;
        LineStyle style;
        int parity = 0;
        PackedCoverage coverage;
    };

    bool isReady(std::string_view text, LineStyle const& style);
    void layOut(std::string_view text, int x, int y, LineStyle const& style);
    void splitIntoLines();
    void addLine(std::string_view text, std::int64_t baseline);
    void place(Line& line);
    void groupLines();
    int parityOf(Group const& group) const;
    std::uint64_t hashOf(Group const& group) const;
    void drawGroup(MappedNV12 const& target, Group const& group, YCbCr const& color);
    CoverageView compose(Group const& group, Box const& window, Box const& picture);
    PackedCoverage const* find(Group const& group);
    bool isWorthKeeping(Group const& group);
    PackedCoverage const& keep(Group const& group);
    void keepMeasures(Group const& group);
    void drawKept(MappedNV12 const& target, Group const& group, PackedCoverage const& kept, YCbCr const& color);

    Fonts fonts_;
    Shaper shaper_;
    GlyphCache glyphs_;
    Typesetter typesetter_;
    LineComposer composer_;
    LruCache<CachedMeasure> measures_;
    LruCache<CachedGroup> composed_;
    /// Hashes of groups drawn lately: what is drawn a second time is worth remembering.
    std::array<std::uint64_t, 4096> drawnBefore_{};

    // The text laid out last: measuring and then drawing it takes one layout.
    std::string text_;
    LineStyle style_;
    std::int64_t x_ = 0;  ///< the anchor
    std::int64_t y_ = 0;
    Box box_;
    std::vector<Line> lines_;
    std::vector<Group> groups_;
    std::vector<PlacedGlyph> placed_;

    // The parts inside the picture of spans that its edges cut.
    std::vector<Span> cutLuma_;
    std::vector<Span> cutChroma_;
};

}  // namespace imaging
