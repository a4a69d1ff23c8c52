// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Glyphs laid over each other in windows of any parity, the chroma that follows, and the packed copy.
#include "imaging/line_composer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace {

using imaging::Box;
using imaging::CoverageView;
using imaging::LineStyle;
using imaging::PlacedGlyph;
using imaging::Span;

constexpr Box kEndless{-1'000'000, -1'000'000, 1'000'000, 1'000'000};

/// Luma coverage of the picture's pixel (x, y).
int lumaAt(CoverageView const& view, std::int64_t x, std::int64_t y)
{
    for (auto const& span : view.lumaSpans) {
        std::int64_t const column = x - view.left - span.column;
        if (span.row == y - view.top && column >= 0 && column < span.length) {
            return view.luma[span.offset + static_cast<std::uint32_t>(column)];
        }
    }
    return 0;
}

/// Coverage of the first (`part` 0) or second byte of the sample of chroma that holds the picture's pixel (x, y).
int chromaAt(CoverageView const& view, std::int64_t x, std::int64_t y, int part = 0)
{
    std::int64_t const byte = imaging::floorToEven(x) + part;
    for (auto const& span : view.chromaSpans) {
        std::int64_t const column = byte - view.left - span.column;
        if (span.row == (imaging::floorToEven(y) - view.top) / 2 && column >= 0 && column < span.length) {
            return view.chroma[span.offset + static_cast<std::uint32_t>(column)];
        }
    }
    return 0;
}

class Composer : public testing::Test {
protected:
    Composer() { fonts_.open(""); }

    PlacedGlyph letter(char character, std::int64_t x = 0) const
    {
        PlacedGlyph placed;
        placed.x = x;
        placed.glyph = FT_Get_Char_Index(fonts_.font(0).face(), static_cast<FT_ULong>(character));
        return placed;
    }
    /// What the glyph by itself has at (x, y) when its origin is (0, 0).
    int inkAt(PlacedGlyph const& glyph, std::int64_t x, std::int64_t y)
    {
        auto const& image = glyphs_.image(glyph.key(kStyle));
        std::int64_t const column = x - image.left;
        std::int64_t const row = y - image.top;
        bool const inside = column >= 0 && column < image.width && row >= 0 && row < image.height;
        return inside ? image.coverage.data()[row * image.stride + column] : 0;
    }
    CoverageView compose(std::vector<PlacedGlyph> const& placed, Box const& window, std::int64_t x, std::int64_t y,
                         Box const& picture = kEndless)
    {
        composer_.begin(window, picture);
        composer_.lay(placed, kStyle, x, y);
        return composer_.finish();
    }

    static constexpr LineStyle kStyle{30, 1};
    imaging::Fonts fonts_;
    imaging::GlyphCache glyphs_{fonts_};
    imaging::LineComposer composer_{glyphs_};
};

struct SpanShape {
    std::int32_t row;
    std::int32_t column;
    std::int32_t length;
    friend bool operator==(SpanShape const&, SpanShape const&) = default;
};

std::vector<SpanShape> shapesOf(std::span<Span const> spans)
{
    std::vector<SpanShape> shapes;
    for (auto const& span : spans) {
        shapes.push_back({span.row, span.column, span.length});
    }
    return shapes;
}

TEST_F(Composer, EvenWindowHasAllItsRows)
{
    auto const view = compose({}, {2, 4, 10, 8}, 0, 0);
    EXPECT_EQ(view.left, 2);
    EXPECT_EQ(view.top, 4);
    EXPECT_EQ(shapesOf(view.lumaSpans), (std::vector<SpanShape>{{0, 0, 8}, {1, 0, 8}, {2, 0, 8}, {3, 0, 8}}));
    EXPECT_EQ(shapesOf(view.chromaSpans), (std::vector<SpanShape>{{0, 0, 8}, {1, 0, 8}}));
    for (std::int64_t y = 4; y < 8; ++y) {
        for (std::int64_t x = 2; x < 10; ++x) {
            EXPECT_EQ(lumaAt(view, x, y), 0);
            EXPECT_EQ(chromaAt(view, x, y), 0);
        }
    }
}

TEST_F(Composer, OddWindowCountsFromTheEvenPixelBefore)
{
    auto const view = compose({}, {3, 5, 8, 8}, 0, 0);
    EXPECT_EQ(view.left, 2);
    EXPECT_EQ(view.top, 4);
    EXPECT_EQ(shapesOf(view.lumaSpans), (std::vector<SpanShape>{{1, 1, 5}, {2, 1, 5}, {3, 1, 5}}));
    EXPECT_EQ(shapesOf(view.chromaSpans), (std::vector<SpanShape>{{0, 0, 6}, {1, 0, 6}}));
}

TEST_F(Composer, WindowLeftOfAndAboveThePictureIsEvenToo)
{
    auto const view = compose({}, {-3, -1, 1, 1}, 0, 0);
    EXPECT_EQ(view.left, -4);
    EXPECT_EQ(view.top, -2);
    EXPECT_EQ(shapesOf(view.lumaSpans), (std::vector<SpanShape>{{1, 1, 4}, {2, 1, 4}}));
}

TEST_F(Composer, GlyphStandsAtItsPlace)
{
    PlacedGlyph glyph = letter('R', 5);
    glyph.y = -2;
    auto const view = compose({glyph}, {100, 60, 160, 110}, 110, 100);
    for (std::int64_t y = 60; y < 110; ++y) {
        for (std::int64_t x = 100; x < 160; ++x) {
            ASSERT_EQ(lumaAt(view, x, y), inkAt(glyph, x - 115, y - 98)) << x << " " << y;
        }
    }
}

TEST_F(Composer, WhereGlyphsOverlapTheLargerCoverageCounts)
{
    auto const first = letter('O');
    auto const second = letter('X', 7);
    auto const view = compose({first, second}, {0, -30, 50, 10}, 0, 0);
    int shared = 0;
    for (std::int64_t y = -30; y < 10; ++y) {
        for (std::int64_t x = 0; x < 50; ++x) {
            int const a = inkAt(first, x, y);
            int const b = inkAt(second, x - 7, y);
            shared += a > 0 && b > 0 ? 1 : 0;
            ASSERT_EQ(lumaAt(view, x, y), std::max(a, b)) << x << " " << y;
        }
    }
    EXPECT_GT(shared, 20);
}

TEST_F(Composer, EachLineIsLaidOverTheLast)
{
    auto const glyph = letter('H');
    composer_.begin({0, -30, 50, 10}, kEndless);
    composer_.lay(std::vector{glyph}, kStyle, 0, 0);
    composer_.lay(std::vector{glyph}, kStyle, 20, 3);
    auto const view = composer_.finish();
    for (std::int64_t y = -30; y < 10; ++y) {
        for (std::int64_t x = 0; x < 50; ++x) {
            ASSERT_EQ(lumaAt(view, x, y), std::max(inkAt(glyph, x, y), inkAt(glyph, x - 20, y - 3))) << x << " " << y;
        }
    }
}

TEST_F(Composer, WindowShowsItsPartOfTheWhole)
{
    auto const glyph = letter('W');
    for (Box const window : {Box{3, -15, 12, -4}, Box{4, -14, 5, -13}, Box{-5, -40, 9, -9}, Box{15, -10, 60, 20}}) {
        auto const view = compose({glyph}, window, 0, 0);
        for (std::int64_t y = window.top - 2; y < window.bottom + 2; ++y) {
            for (std::int64_t x = window.left - 2; x < window.right + 2; ++x) {
                bool const inside = x >= window.left && x < window.right && y >= window.top && y < window.bottom;
                ASSERT_EQ(lumaAt(view, x, y), inside ? inkAt(glyph, x, y) : 0) << x << " " << y;
            }
        }
    }
}

TEST_F(Composer, GlyphBesideTheWindowLeavesNothing)
{
    auto const view = compose({letter('W', 1'000)}, {0, 0, 8, 8}, 0, 0);
    EXPECT_TRUE(std::all_of(view.lumaSpans.begin(), view.lumaSpans.end(), [&](Span const& span) {
        return std::all_of(view.luma + span.offset, view.luma + span.offset + span.length,
                           [](auto c) { return c == 0; });
    }));
}

TEST_F(Composer, ChromaIsTheMeanOfFourPixelsTwice)
{
    auto const glyph = letter('S', 1);
    auto const view = compose({glyph}, {0, -28, 30, 4}, 0, -1);
    int partial = 0;
    for (std::int64_t y = -28; y < 4; y += 2) {
        for (std::int64_t x = 0; x < 30; x += 2) {
            int const sum =
                lumaAt(view, x, y) + lumaAt(view, x + 1, y) + lumaAt(view, x, y + 1) + lumaAt(view, x + 1, y + 1);
            ASSERT_EQ(chromaAt(view, x, y, 0), (sum + 2) / 4) << x << " " << y;
            ASSERT_EQ(chromaAt(view, x, y, 1), (sum + 2) / 4) << x << " " << y;
            partial += sum > 0 && sum < 4 * 255 ? 1 : 0;
        }
    }
    EXPECT_GT(partial, 10);
}

TEST_F(Composer, AtAnOddEndOfThePictureChromaIsTheMeanOfThePixelsInside)
{
    // A picture that ends in the middle of an E's stem and arms: 7 columns and 9 rows of it.
    auto const glyph = letter('E');
    Box const picture{0, 0, 7, 9};
    auto const view = compose({glyph}, picture, 0, 12, picture);
    for (std::int64_t y = 0; y < 9; y += 2) {
        for (std::int64_t x = 0; x < 7; x += 2) {
            int sum = 0;
            int pixels = 0;
            for (std::int64_t row = y; row < std::min<std::int64_t>(y + 2, 9); ++row) {
                for (std::int64_t column = x; column < std::min<std::int64_t>(x + 2, 7); ++column) {
                    sum += lumaAt(view, column, row);
                    ++pixels;
                }
            }
            ASSERT_EQ(chromaAt(view, x, y), (2 * sum + pixels) / (2 * pixels)) << x << " " << y;
        }
    }
    EXPECT_GT(chromaAt(view, 6, 8) + chromaAt(view, 6, 4) + chromaAt(view, 2, 8), 0);
}

TEST_F(Composer, AtAnOddEndOfTheWindowAloneChromaCountsThePixelsBeyondAsEmpty)
{
    auto const glyph = letter('E');
    auto const view = compose({glyph}, {0, 0, 7, 9}, 0, 12, {0, 0, 20, 20});
    for (std::int64_t y = 0; y < 9; y += 2) {
        int const sum = lumaAt(view, 6, y) + (y + 1 < 9 ? lumaAt(view, 6, y + 1) : 0);
        ASSERT_EQ(chromaAt(view, 6, y), (sum + 2) / 4) << y;
    }
}

TEST_F(Composer, BeginStartsEmpty)
{
    compose({letter('W')}, {0, -30, 40, 10}, 0, 0);
    auto const view = compose({}, {0, -30, 40, 10}, 0, 0);
    for (std::int64_t y = -30; y < 10; ++y) {
        for (std::int64_t x = 0; x < 40; ++x) {
            ASSERT_EQ(lumaAt(view, x, y), 0);
            ASSERT_EQ(chromaAt(view, x, y), 0);
        }
    }
}

/// Rows of luma coverage, all of one length, and one row of chroma that is empty.
struct Rows {
    explicit Rows(std::vector<std::vector<std::uint8_t>> const& rows)
    {
        for (auto const& row : rows) {
            spans.push_back({static_cast<std::int32_t>(spans.size()), 0, static_cast<std::int32_t>(row.size()),
                             static_cast<std::uint32_t>(luma.size())});
            luma.insert(luma.end(), row.begin(), row.end());
        }
    }
    CoverageView view(std::int64_t left, std::int64_t top) const
    {
        return {left, top, spans, {}, luma.data(), nullptr};
    }

    std::vector<Span> spans;
    std::vector<std::uint8_t> luma;
};

TEST(PackedCoverage, IsEmptyWithoutCoverage)
{
    auto const packed = imaging::LineComposer::pack(Rows({{0, 0, 0}, {0, 0, 0}}).view(4, 6), 0, 0);
    EXPECT_TRUE(packed.lumaSpans.empty());
    EXPECT_TRUE(packed.chromaSpans.empty());
    EXPECT_TRUE(packed.luma.empty());
    EXPECT_EQ(packed.bytes(), 0U);
}

TEST(PackedCoverage, IsMovedAndBeginsWithACoveredColumn)
{
    auto const packed = imaging::LineComposer::pack(Rows({{0, 0, 9, 8}, {0, 7, 0, 0}}).view(14, 26), 10, 20);
    EXPECT_EQ(packed.left, 4);
    EXPECT_EQ(packed.top, 6);
    EXPECT_EQ(shapesOf(packed.lumaSpans), (std::vector<SpanShape>{{0, 2, 2}, {1, 1, 3}}));
    EXPECT_EQ(packed.luma, (std::vector<std::uint8_t>{9, 8, 7, 0, 0}));
    EXPECT_EQ(lumaAt(packed.view(), 6, 6), 9);
    EXPECT_EQ(lumaAt(packed.view(), 5, 7), 7);
}

TEST(PackedCoverage, LeavesOutWideGapsOnly)
{
    std::vector<std::uint8_t> row(300, 0);
    row[0] = 1;
    row[100] = 2;
    row[299] = 3;
    auto const packed = imaging::LineComposer::pack(Rows({row}).view(0, 0), 0, 0);
    // Whole blocks of 64 bytes, as long as one has coverage; the last one ends with the row.
    EXPECT_EQ(shapesOf(packed.lumaSpans), (std::vector<SpanShape>{{0, 0, 128}, {0, 299, 1}}));
}

TEST_F(Composer, PackedCopyCoversTheSame)
{
    auto const glyph = letter('g', 3);
    auto const view = compose({glyph, letter('.', 200)}, {1, -25, 240, 11}, 0, 0);
    auto const packed = imaging::LineComposer::pack(view, -6, 8);
    for (std::int64_t y = -26; y < 12; ++y) {
        for (std::int64_t x = 0; x < 240; ++x) {
            ASSERT_EQ(lumaAt(packed.view(), x + 6, y - 8), lumaAt(view, x, y)) << x << " " << y;
            ASSERT_EQ(chromaAt(packed.view(), x + 6, y - 8, 0), chromaAt(view, x, y, 0)) << x << " " << y;
            ASSERT_EQ(chromaAt(packed.view(), x + 6, y - 8, 1), chromaAt(view, x, y, 1)) << x << " " << y;
        }
    }
    EXPECT_LT(packed.luma.size(), 239U * 36U / 2U);
    EXPECT_EQ(packed.bytes(), packed.luma.capacity() + packed.chroma.capacity() +
                                  (packed.lumaSpans.capacity() + packed.chromaSpans.capacity()) * sizeof(Span));
}

}  // namespace
