// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Outlines become coverage: trimmed, padded, shifted, stroked.
#include "imaging/glyph_cache.h"
#include "imaging/shaper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

using imaging::GlyphImage;
using imaging::GlyphKey;

class Glyphs : public testing::Test {
protected:
    Glyphs() { fonts_.open(""); }

    GlyphKey key(char32_t character, int size, int thickness = 1, int phase = 0) const
    {
        hb_codepoint_t glyph = 0;
        hb_font_get_nominal_glyph(fonts_.font(0).shapingFont(), character, &glyph);
        return {glyph, static_cast<std::uint16_t>(size), 0, static_cast<std::uint8_t>(thickness),
                static_cast<std::uint8_t>(phase)};
    }
    GlyphImage image(char32_t character, int size, int thickness = 1, int phase = 0) const
    {
        return imaging::rasterize(fonts_, key(character, size, thickness, phase));
    }

    imaging::Fonts fonts_;
};

/// Coverage at (x, y) of the glyph's own coordinates.
int coverageAt(GlyphImage const& image, int x, int y)
{
    int const column = x - image.left;
    int const row = y - image.top;
    bool const inside = column >= 0 && column < image.width && row >= 0 && row < image.height;
    return inside ? image.coverage.data()[std::ptrdiff_t{row} * image.stride + column] : 0;
}

long inkOf(GlyphImage const& image)
{
    return std::accumulate(image.coverage.begin(), image.coverage.end(), 0L);
}

TEST_F(Glyphs, AreTrimmedToTheirInkAndPaddedToBlocks)
{
    for (char32_t const character : U"AgiW.@\u00C5") {
        for (int const size : {7, 20, 64, 200}) {
            auto const glyph = image(character, size);
            if (glyph.width == 0) {
                continue;
            }
            ASSERT_EQ(glyph.stride % 16, 0);
            ASSERT_GE(glyph.stride, glyph.width);
            ASSERT_EQ(glyph.coverage.size(), static_cast<std::size_t>(glyph.stride * glyph.height));
            int left = 0;
            int right = 0;
            int top = 0;
            int bottom = 0;
            for (int row = 0; row < glyph.height; ++row) {
                left += coverageAt(glyph, glyph.left, glyph.top + row);
                right += coverageAt(glyph, glyph.left + glyph.width - 1, glyph.top + row);
                for (int column = glyph.width; column < glyph.stride; ++column) {
                    ASSERT_EQ(glyph.coverage[static_cast<std::size_t>(row * glyph.stride + column)], 0);
                }
            }
            for (int column = 0; column < glyph.width; ++column) {
                top += coverageAt(glyph, glyph.left + column, glyph.top);
                bottom += coverageAt(glyph, glyph.left + column, glyph.top + glyph.height - 1);
            }
            EXPECT_TRUE(left > 0 && right > 0 && top > 0 && bottom > 0)
                << static_cast<unsigned>(character) << " " << size;
        }
    }
}

TEST_F(Glyphs, WithoutOutlineHaveNoInk)
{
    EXPECT_EQ(image(U' ', 40).width, 0);
    EXPECT_EQ(image(U' ', 40, 9).width, 0);
    EXPECT_EQ(imaging::rasterize(fonts_, {0xFFFFFF, 20, 0, 1, 0}).width, 0);
}

TEST_F(Glyphs, MoveByQuarterPixels)
{
    auto centreOfMass = [&](int phase) {
        auto const glyph = image(U'l', 20, 1, phase);
        long moment = 0;
        for (int y = glyph.top; y < glyph.top + glyph.height; ++y) {
            for (int x = glyph.left; x < glyph.left + glyph.width; ++x) {
                moment += long{x} * coverageAt(glyph, x, y);
            }
        }
        return static_cast<double>(moment) / static_cast<double>(inkOf(glyph));
    };
    for (int phase = 1; phase < imaging::kPhases; ++phase) {
        // Coverage does not tell where in its pixel the ink is, so the centre of mass follows within a little.
        EXPECT_NEAR(centreOfMass(phase) - centreOfMass(0), phase / 4.0, 0.07) << phase;
    }
}

TEST_F(Glyphs, StrokeOfAStraightStemIsThicknessMinusOneWider)
{
    // Across the middle of a vertical stem the coverage adds up to its width.
    auto widthOfStem = [&](int thickness) {
        auto const glyph = image(U'l', 100, thickness);
        double sum = 0;
        for (int x = glyph.left; x < glyph.left + glyph.width; ++x) {
            sum += coverageAt(glyph, x, -40) / 255.0;
        }
        return sum;
    };
    double const plain = widthOfStem(1);
    for (int thickness = 2; thickness <= 16; ++thickness) {
        EXPECT_NEAR(widthOfStem(thickness), plain + thickness - 1, 0.05) << thickness;
    }
}

TEST_F(Glyphs, StrokedOnesCoverAllThatThinnerOnesDo)
{
    for (char32_t const character : U"eoB8@&\u0639") {
        auto thinner = image(character, 24, 1);
        for (int thickness = 2; thickness <= 16; ++thickness) {
            auto thicker = image(character, 24, thickness);
            for (int y = thinner.top; y < thinner.top + thinner.height; ++y) {
                for (int x = thinner.left; x < thinner.left + thinner.width; ++x) {
                    // A level or two is lost where the curves are approximated.
                    ASSERT_GE(coverageAt(thicker, x, y) + 3, coverageAt(thinner, x, y))
                        << static_cast<unsigned>(character) << " thickness " << thickness << " at " << x << ", " << y;
                }
            }
            thinner = std::move(thicker);
        }
    }
}

TEST_F(Glyphs, CounterThatTheStrokeClosesStaysClosed)
{
    // The hole of an 'o' of 24 pixels is about 8 pixels wide and 10 high: no stroke of 12 or more leaves it open.
    auto const open = image(U'o', 24, 1);
    int const x = open.left + open.width / 2;
    int const y = open.top + open.height / 2;
    EXPECT_EQ(coverageAt(open, x, y), 0);
    for (int thickness = 12; thickness <= 60; thickness += 4) {
        EXPECT_EQ(coverageAt(image(U'o', 24, thickness), x, y), 255) << thickness;
    }
}

TEST_F(Glyphs, InkStaysWithinTheStrokesReach)
{
    auto const plain = image(U'Q', 50, 1);
    for (int thickness = 2; thickness <= 16; ++thickness) {
        auto const stroked = image(U'Q', 50, thickness);
        int const reach = thickness / 2;
        EXPECT_GE(stroked.left, plain.left - reach) << thickness;
        EXPECT_GE(stroked.top, plain.top - reach) << thickness;
        EXPECT_LE(stroked.left + stroked.width, plain.left + plain.width + reach) << thickness;
        EXPECT_LE(stroked.top + stroked.height, plain.top + plain.height + reach) << thickness;
    }
}

TEST_F(Glyphs, CacheStaysWithinItsBound)
{
    imaging::GlyphCache cache(fonts_);
    for (int size = 100; size < 400; ++size) {
        cache.image(key(U'W', size));
        ASSERT_LE(cache.cachedBytes(), imaging::kGlyphCacheBytes);
    }
    EXPECT_GT(cache.cachedBytes(), imaging::kGlyphCacheBytes / 2);
}

TEST_F(Glyphs, LargerThanTheWholeCacheAreMadeEachTimeAndNotKept)
{
    imaging::GlyphCache cache(fonts_, 2000);
    auto const small = key(U'i', 20);
    cache.image(small);
    auto const bytes = cache.cachedBytes();
    ASSERT_GT(bytes, 0U);
    for (int round = 0; round < 2; ++round) {
        auto const& large = cache.image(key(U'W', 200));
        EXPECT_EQ(large.coverage, image(U'W', 200).coverage);
        EXPECT_EQ(cache.cachedBytes(), bytes);
        cache.forgetLent();
    }
    cache.image(small);
    EXPECT_EQ(cache.cachedBytes(), bytes);
}

}  // namespace
