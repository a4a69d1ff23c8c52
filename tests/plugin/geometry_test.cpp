// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Scaling and rounding of sizes and positions.
#include "overlay_geometry.h"

#include <gtest/gtest.h>

#include <limits>

using namespace stanag_overlay;

TEST(Geometry, MakeEvenMovesOddUp)
{
    struct Row {
        int value;
        int expected;
    };
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    for (Row const& row : {Row{0, 0}, Row{1, 2}, Row{2, 2}, Row{959, 960}, Row{539, 540}, Row{-1, 0}, Row{-2, -2},
                           Row{-3, -2}, Row{kMax - 1, kMax - 1}, Row{kMax, kMin}, Row{kMin, kMin}}) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(makeEven(row.value), row.expected);
    }
}

TEST(Geometry, TruncateSaturates)
{
    struct Row {
        float value;
        int expected;
    };
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (Row const& row : {Row{21.33F, 21}, Row{21.99F, 21}, Row{-1.9F, -1}, Row{2147483520.0F, 2147483520},
                           Row{2147483648.0F, kMax}, Row{-2147483648.0F, kMin}, Row{-3e9F, kMin}, Row{kInfinity, kMax},
                           Row{-kInfinity, kMin}, Row{std::numeric_limits<float>::quiet_NaN(), 0}}) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(truncateToInt(row.value), row.expected);
    }
}

TEST(Geometry, RoundsHalvesAwayFromZero)
{
    struct Row {
        float value;
        int expected;
    };
    for (Row const& row : {Row{0.5F, 1}, Row{1.5F, 2}, Row{2.5F, 3}, Row{-0.5F, -1}, Row{-2.5F, -3}, Row{0.49F, 0},
                           Row{3.33F, 3}, Row{1e20F, std::numeric_limits<int>::max()}}) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(roundHalfAway(row.value), row.expected);
    }
}

TEST(Geometry, PenIsAtLeastOnePixel)
{
    EXPECT_EQ(penThicknessPx(1.0F, 16), 16);
    EXPECT_EQ(penThicknessPx(720.0F / 1080.0F, 1), 1);
    EXPECT_EQ(penThicknessPx(0.5F, 5), 3);
    EXPECT_EQ(penThicknessPx(0.01F, 16), 1);
    EXPECT_EQ(penThicknessPx(0.0F, 1), 1);
    EXPECT_EQ(penThicknessPx(16.0F, 16), 256);
}

TEST(Geometry, SumWraps)
{
    EXPECT_EQ(addWrapping(10, -3), 7);
    EXPECT_EQ(addWrapping(std::numeric_limits<int>::max(), 1), std::numeric_limits<int>::min());
    EXPECT_EQ(addWrapping(std::numeric_limits<int>::min(), -1), std::numeric_limits<int>::max());
}

TEST(Geometry, AnchorOfOddPicture)
{
    EXPECT_EQ(anchorPx(1919.0F, 0.5F), 960);
    EXPECT_EQ(anchorPx(1079.0F, 0.5F), 540);
    EXPECT_EQ(anchorPx(1920.0F, 0.005F), 10);
    EXPECT_EQ(anchorPx(1080.0F, 1.0F), 1080);
    EXPECT_EQ(anchorPx(0.0F, 0.5F), 0);
}

TEST(Geometry, AnchorDropsTheFraction)
{
    EXPECT_EQ(anchorPx(870.0F, 0.01F), 8);
}

TEST(Geometry, AnchorIsComputedInSinglePrecision)
{
    // In double precision the products stay just below 5 and 9.
    EXPECT_EQ(anchorPx(1000.0F, 0.005F), 6);
    EXPECT_EQ(anchorPx(1000.0F, 0.009F), 10);
}
