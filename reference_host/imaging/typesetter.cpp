// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Cuts a line into words and places their glyphs; between the text renderer and the shaper.
#include "imaging/typesetter.h"

#include "sw_text.h"
#include "sw_utf8.h"

namespace imaging {
namespace {

constexpr int kSpacesInTab = 4;
/// Bytes after which even a mark begins a new word.
constexpr std::size_t kLongestCluster = 4 * kLongestWord;

bool standsAlone(char c)
{
    return sw_detail::isDigit(c) || c == ' ' || c == '\t';
}

/// True when the character at `offset` is combined with the one before it.
bool isExtension(std::string_view text, std::size_t offset)
{
    // No mark has a lead byte below that of U+0300.
    constexpr std::uint8_t kFirstMarkLead = 0xCC;
    return offset < text.size() && static_cast<std::uint8_t>(text[offset]) >= kFirstMarkLead &&
           extendsCluster(sw_utf8::codePointAt(text, offset).value);
}

/// Bytes of the word that `text` begins with: one character that stands alone, or all up to the next such one.
std::size_t wordLength(std::string_view text)
{
    std::size_t end = sw_utf8::codePointAt(text, 0).bytes;
    bool const alone = standsAlone(text[0]) && !isExtension(text, end);
    while (!alone && end < text.size()) {
        bool const extension = isExtension(text, end);
        if (standsAlone(text[end]) && !isExtension(text, end + 1)) {
            break;
        }
        std::size_t const next = end + sw_utf8::codePointAt(text, end).bytes;
        if (next > (extension ? kLongestCluster : kLongestWord)) {
            break;
        }
        end = next;
    }
    return end;
}

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
{
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

}  // namespace

SetLine Typesetter::set(std::string_view line, LineStyle const& style, std::vector<PlacedGlyph>& placed)
{
    Pen pen{style, 0, {}, placed};
    if (mayReadRightToLeft(line)) {
        setMixedLine(line, pen);
    } else {
        setRun(line, Direction::LeftToRight, pen);
    }
    pen.line.advance = -floorDivide(-pen.position * style.pixelSize, kUnitsPerEm);
    return pen.line;
}

void Typesetter::setMixedLine(std::string_view line, Pen& pen)
{
    for (auto const& run : runs_.runsOf(line)) {
        setRun(run.text, run.direction, pen);
    }
}

void Typesetter::setRun(std::string_view run, Direction direction, Pen& pen)
{
    if (direction == Direction::RightToLeft) {
        words_.clear();
        for (; !run.empty(); run.remove_prefix(words_.back().size())) {
            words_.push_back(run.substr(0, wordLength(run)));
        }
        for (auto word = words_.rbegin(); word != words_.rend(); ++word) {
            setWord(*word, direction, pen);
        }
        return;
    }
    while (!run.empty()) {
        std::size_t const length = wordLength(run);
        setWord(run.substr(0, length), direction, pen);
        run.remove_prefix(length);
    }
}

void Typesetter::setWord(std::string_view word, Direction direction, Pen& pen)
{
    if (word == "\t") {
        pen.position += kSpacesInTab * shaper_.shapeAscii(' ').advance;
    } else if (word.size() == 1 && direction == Direction::LeftToRight && static_cast<unsigned char>(word[0]) < 0x80) {
        place(shaper_.shapeAscii(word[0]), pen);
    } else {
        place(shaper_.shape(word, direction), pen);
    }
}

void Typesetter::place(ShapedWord const& word, Pen& pen)
{
    LineStyle const& style = pen.style;
    int const phases = style.pixelSize <= kLargestSubPixelSize ? kPhases : 1;
    std::int64_t const unitsPerStep = kUnitsPerEm / phases;
    for (auto const& glyph : word.glyphs) {
        std::int64_t const steps =
            floorDivide((pen.position + glyph.x) * style.pixelSize + unitsPerStep / 2, unitsPerStep);
        std::int64_t const x = floorDivide(steps, phases);
        std::int64_t const y = -floorDivide(std::int64_t{glyph.y} * style.pixelSize + kUnitsPerEm / 2, kUnitsPerEm);
        PlacedGlyph const placed{x, static_cast<std::int32_t>(y), glyph.glyph, glyph.font,
                                 static_cast<std::uint8_t>(steps - x * phases)};
        auto const& image = glyphs_.image(placed.key(style));
        if (image.width > 0) {
            std::int64_t const left = x + image.left;
            std::int64_t const top = y + image.top;
            pen.line.ink = unionOf(pen.line.ink, {left, top, left + image.width, top + image.height});
            pen.placed.push_back(placed);
        }
    }
    pen.position += word.advance;
}

}  // namespace imaging
