// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The layout of a text: its lines, their places, and which of them are drawn as one.
#pragma once

#include "imaging/fonts.h"
#include "imaging/geometry.h"
#include "imaging/line_cache.h"
#include "imaging/line_composer.h"
#include "imaging/typesetter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

/// Consecutive lines whose ink shares rows of chroma; as a rule one line. Lines without ink are in no group.
struct LineGroup {
    std::string_view text;  ///< from the first line's beginning to the last one's end
    std::size_t firstLine = 0;
    std::size_t endLine = 0;
    Box ink;  ///< relative to the anchor
};

/// Where a line begins: the pen's first place on the baseline, less the stroke's reach.
struct LineOrigin {
    std::int64_t x = 0;
    std::int64_t y = 0;
};

/// Holds the text laid out last, so that measuring and then drawing a text takes one layout.
class TextLayout {
public:
    /// Both outlive the layout.
    TextLayout(Fonts const& fonts, Typesetter& typesetter) : fonts_(fonts), typesetter_(typesetter) {}

    /// Lays out `text` with its anchor, the top-left corner of the first line's box, at (x, y). A line feed ends a
    /// line; a carriage return before it, or at the text's end, is none of the line. Fonts are open.
    void set(std::string_view text, int x, int y, LineStyle const& style);

    /// The text's box: its lines' boxes and all ink. A line's box is as wide as its letters advance and as high
    /// as the font's ascent and descent, and wider by the stroke's reach on each side.
    Box box() const { return box_.movedBy(x_, y_); }

    /// From top to bottom; good until the next `set`, as is what is asked about them.
    std::vector<LineGroup> const& groups() const { return groups_; }
    Box inkOf(LineGroup const& group) const { return group.ink.movedBy(x_, y_); }
    /// Of its first line.
    LineOrigin originOf(LineGroup const& group) const { return {x_, y_ + lines_[group.firstLine].baseline}; }
    LineKey keyOf(LineGroup const& group) const;

    /// Lays the group's glyphs into the composer's picture.
    void layGlyphs(LineGroup const& group, LineComposer& composer);
    /// Remembers the measures of the group's lines: such a line is not set again before its glyphs are laid.
    void keepMeasures(LineGroup const& group);

    /// Forgets everything; needed when other fonts were opened.
    void clear();

    /// Of the measures.
    std::size_t cachedBytes() const { return measures_.bytes(); }

private:
    /// All positions are relative to the anchor.
    struct Line {
        std::string_view text;
        std::int64_t baseline = 0;
        SetLine set;
        bool isPlaced = false;  ///< false while remembered measures spare it
        std::size_t firstGlyph = 0;
        std::size_t glyphCount = 0;
    };

    void giveBackLongText();
    void splitIntoLines();
    void addLine(std::string_view text, std::int64_t baseline);
    void place(Line& line);
    void addInkToBox();
    void groupLines();

    Fonts const& fonts_;
    Typesetter& typesetter_;
    MeasureCache measures_;

    std::string text_;
    LineStyle style_;
    std::int64_t x_ = 0;  ///< the anchor
    std::int64_t y_ = 0;
    Box box_;  ///< relative to the anchor
    std::vector<Line> lines_;
    std::vector<LineGroup> groups_;
    std::vector<PlacedGlyph> placed_;
};

}  // namespace imaging
