// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Composes the coverage of lines from their glyphs; between the text renderer and the pixel loops.
#include "imaging/line_composer.h"

#include <algorithm>

namespace imaging {
namespace {

constexpr std::size_t kBlock = 16;
/// A gap in the coverage narrower than the widest vector costs less than another span.
constexpr std::size_t kGap = 64;

/// Copies what is covered of the spans' rows: runs that begin with a covered column and go on in whole blocks as
/// long as the next one is covered.
void packSpans(std::span<Span const> rows, std::uint8_t const* coverage, std::size_t block, std::vector<Span>& spans,
               std::vector<std::uint8_t>& packed)
{
    auto const isCovered = [](std::uint8_t c) { return c != 0; };
    for (auto const& row : rows) {
        auto const* const begin = coverage + row.offset;
        auto const* const end = begin + row.length;
        for (auto const* first = std::find_if(begin, end, isCovered); first != end;) {
            auto const* last = first;
            auto const* next = first;
            while (next != end && std::any_of(next, std::min(next + block, end), isCovered)) {
                last = std::min(next + block, end);
                next = last;
            }
            spans.push_back({row.row, row.column + static_cast<std::int32_t>(first - begin),
                             static_cast<std::int32_t>(last - first), static_cast<std::uint32_t>(packed.size())});
            packed.insert(packed.end(), first, last);
            first = std::find_if(last, end, isCovered);
        }
    }
}

}  // namespace

void LineComposer::begin(Box const& window, Box const& picture)
{
    window_ = window;
    picture_ = picture;
    width_ = static_cast<std::size_t>(ceilToEven(window.right) - floorToEven(window.left));
    height_ = static_cast<std::size_t>(ceilToEven(window.bottom) - floorToEven(window.top));
    // Glyphs are laid in whole blocks, whose zeros may reach beyond the window.
    stride_ = (width_ + 2 * kBlock - 1) / kBlock * kBlock;
    luma_.assign(stride_ * height_, 0);
    chroma_.resize(width_ * (height_ / 2));
}

void LineComposer::lay(std::span<PlacedGlyph const> placed, LineStyle const& style, std::int64_t x, std::int64_t y)
{
    for (auto const& glyph : placed) {
        auto const& image = glyphs_.image(glyph.key(style));
        layGlyph(image, x + glyph.x + image.left, y + glyph.y + image.top);
    }
}

void LineComposer::layGlyph(GlyphImage const& image, std::int64_t left, std::int64_t top)
{
    Box const glyph{left, top, left + image.width, top + image.height};
    Box const visible = intersectionOf(glyph, window_);
    if (visible.isEmpty()) {
        return;
    }
    auto* const to = luma_.data() + (visible.top - floorToEven(window_.top)) * static_cast<std::ptrdiff_t>(stride_) +
                     (visible.left - floorToEven(window_.left));
    auto const* const from =
        image.coverage.data() + (visible.top - glyph.top) * image.stride + (visible.left - glyph.left);
    auto const width = visible == glyph ? image.stride : visible.width();
    layCoverage(to, static_cast<std::ptrdiff_t>(stride_), from, image.stride, static_cast<std::size_t>(width),
                static_cast<std::size_t>(visible.height()));
}

CoverageView LineComposer::finish()
{
    repeatOddEdges();
    makeChroma();
    lumaSpans_.clear();
    auto const firstColumn = static_cast<std::int32_t>(window_.left & 1);
    auto const firstRow = static_cast<std::int32_t>(window_.top & 1);
    for (std::int32_t row = firstRow; row < firstRow + window_.height(); ++row) {
        auto const offset = static_cast<std::size_t>(row) * stride_ + static_cast<std::size_t>(firstColumn);
        lumaSpans_.push_back(
            {row, firstColumn, static_cast<std::int32_t>(window_.width()), static_cast<std::uint32_t>(offset)});
    }
    return {
        floorToEven(window_.left), floorToEven(window_.top), lumaSpans_, chromaSpans_, luma_.data(), chroma_.data()};
}

void LineComposer::repeatOddEdges()
{
    // The mean over the pixels that exist is the mean over all four once these stand in for the missing ones.
    if (window_.right == picture_.right && window_.right % 2 != 0) {
        for (std::size_t row = 0; row < height_; ++row) {
            auto* const last = luma_.data() + row * stride_ + width_ - 1;
            last[0] = last[-1];
        }
    }
    if (window_.bottom == picture_.bottom && window_.bottom % 2 != 0) {
        auto* const last = luma_.data() + (height_ - 1) * stride_;
        std::copy_n(last - stride_, width_, last);
    }
}

void LineComposer::makeChroma()
{
    chromaSpans_.clear();
    for (std::size_t row = 0; row < height_ / 2; ++row) {
        auto const* const upper = luma_.data() + 2 * row * stride_;
        halveCoverage(upper, upper + stride_, width_ / 2, chroma_.data() + row * width_);
        chromaSpans_.push_back({static_cast<std::int32_t>(row), 0, static_cast<std::int32_t>(width_),
                                static_cast<std::uint32_t>(row * width_)});
    }
}

PackedCoverage LineComposer::pack(CoverageView const& view, std::int64_t x, std::int64_t y)
{
    PackedCoverage packed;
    packed.left = view.left - x;
    packed.top = view.top - y;
    packSpans(view.lumaSpans, view.luma, kGap, packed.lumaSpans, packed.luma);
    packSpans(view.chromaSpans, view.chroma, kGap, packed.chromaSpans, packed.chroma);
    packed.luma.shrink_to_fit();
    packed.chroma.shrink_to_fit();
    packed.lumaSpans.shrink_to_fit();
    packed.chromaSpans.shrink_to_fit();
    return packed;
}

}  // namespace imaging
