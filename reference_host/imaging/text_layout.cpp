// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Splits a text into lines, has them set where their measures are unknown, and groups them for drawing.
#include "imaging/text_layout.h"

#include <algorithm>
#include <span>

namespace imaging {
namespace {

/// Layouts of longer texts are given back with the next text.
constexpr std::size_t kKeptTextBytes = std::size_t{64} << 10;

}  // namespace

void TextLayout::set(std::string_view text, int x, int y, LineStyle const& style)
{
    bool const sameLines = text == text_ && style == style_;
    bool const sameRows = ((y ^ y_) & 1) == 0;
    x_ = x;
    y_ = y;
    if (sameLines && sameRows) {
        return;
    }
    if (!sameLines) {
        giveBackLongText();
        text_ = text;
        style_ = style;
        splitIntoLines();
        addInkToBox();
    }
    groupLines();
}

void TextLayout::clear()
{
    measures_.clear();
    text_.clear();
    lines_.clear();
    groups_.clear();
}

void TextLayout::giveBackLongText()
{
    if (text_.size() > kKeptTextBytes) {
        std::string().swap(text_);
        std::vector<Line>().swap(lines_);
        std::vector<LineGroup>().swap(groups_);
        std::vector<PlacedGlyph>().swap(placed_);
    }
}

void TextLayout::splitIntoLines()
{
    lines_.clear();
    placed_.clear();
    auto const metrics = fonts_.lineMetrics(style_.pixelSize);
    std::int64_t const reach = style_.reach();
    std::int64_t const pitch = std::int64_t{metrics.ascent} + metrics.descent + 2 * reach;
    std::string_view rest = text_;
    box_ = {};
    for (std::int64_t top = 0;; top += pitch) {
        auto const end = rest.find('\n');
        auto line = rest.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        addLine(line, top + reach + metrics.ascent);
        box_.right = std::max(box_.right, lines_.back().set.advance + 2 * reach);
        box_.bottom = top + pitch;
        if (end == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(end + 1);
    }
}

void TextLayout::addLine(std::string_view text, std::int64_t baseline)
{
    Line line{text, baseline, {}, false, 0, 0};
    if (auto const* const known = measures_.find({text, style_})) {
        line.set = *known;
    } else {
        place(line);
    }
    lines_.push_back(line);
}

void TextLayout::place(Line& line)
{
    line.firstGlyph = placed_.size();
    line.set = typesetter_.set(line.text, style_, placed_);
    line.glyphCount = placed_.size() - line.firstGlyph;
    line.isPlaced = true;
}

void TextLayout::addInkToBox()
{
    for (auto const& line : lines_) {
        if (!line.set.ink.isEmpty()) {
            Box const ink = line.set.ink.movedBy(style_.reach(), line.baseline);
            box_ = {std::min(box_.left, ink.left), std::min(box_.top, ink.top), std::max(box_.right, ink.right),
                    std::max(box_.bottom, ink.bottom)};
        }
    }
}

void TextLayout::groupLines()
{
    groups_.clear();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        auto const& line = lines_[i];
        if (line.set.ink.isEmpty()) {
            continue;
        }
        Box const ink = line.set.ink.movedBy(style_.reach(), line.baseline);
        bool const sharesRows =
            !groups_.empty() && floorToEven(y_ + ink.top) < ceilToEven(y_ + groups_.back().ink.bottom);
        if (!sharesRows) {
            groups_.push_back({line.text, i, i + 1, ink});
            continue;
        }
        auto& group = groups_.back();
        auto const* const begin = group.text.data();
        group.text = {begin, static_cast<std::size_t>(line.text.data() + line.text.size() - begin)};
        group.endLine = i + 1;
        group.ink = unionOf(group.ink, ink);
    }
}

LineKey TextLayout::keyOf(LineGroup const& group) const
{
    auto const origin = originOf(group);
    return {group.text, style_, static_cast<int>((origin.x & 1) | (origin.y & 1) << 1)};
}

void TextLayout::layGlyphs(LineGroup const& group, LineComposer& composer)
{
    for (std::size_t i = group.firstLine; i < group.endLine; ++i) {
        auto& line = lines_[i];
        if (!line.isPlaced) {
            place(line);
        }
        std::span<PlacedGlyph const> const glyphs(placed_.data() + line.firstGlyph, line.glyphCount);
        composer.lay(glyphs, style_, x_ + style_.reach(), y_ + line.baseline);
    }
}

void TextLayout::keepMeasures(LineGroup const& group)
{
    for (std::size_t i = group.firstLine; i < group.endLine; ++i) {
        measures_.keep({lines_[i].text, style_}, lines_[i].set);
    }
}

}  // namespace imaging
