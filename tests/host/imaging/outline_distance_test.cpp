// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Distances from outlines: straight edges exactly, curves within the closeness of their segments.
#include "imaging/outline_distance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

/// An outline of one contour, its coordinates in pixels, y upwards.
class Contour {
public:
    Contour& point(double x, double y) { return add(x, y, FT_CURVE_TAG_ON); }
    Contour& conicControl(double x, double y) { return add(x, y, FT_CURVE_TAG_CONIC); }
    Contour& cubicControl(double x, double y) { return add(x, y, FT_CURVE_TAG_CUBIC); }

    std::vector<float> distances(std::size_t width, std::size_t height, float reach)
    {
        FT_Outline outline{};
        ends_ = {static_cast<short>(points_.size() - 1)};
        outline.n_contours = points_.empty() ? 0 : 1;
        outline.n_points = static_cast<short>(points_.size());
        outline.points = points_.data();
        outline.tags = tags_.data();
        outline.contours = ends_.data();
        return imaging::distancesTo(outline, width, height, reach);
    }

private:
    Contour& add(double x, double y, char tag)
    {
        points_.push_back({std::lround(x * 64), std::lround(y * 64)});
        tags_.push_back(tag);
        return *this;
    }

    std::vector<FT_Vector> points_;
    std::vector<char> tags_;
    std::array<short, 1> ends_{};
};

Contour segment(double x0, double y0, double x1, double y1)
{
    Contour contour;
    contour.point(x0, y0).point(x1, y1);
    return contour;
}

TEST(OutlineDistance, WithoutAnOutlineEveryPixelIsBeyondReach)
{
    EXPECT_EQ(Contour().distances(3, 2, 4.0F), std::vector<float>(6, 5.0F));
}

TEST(OutlineDistance, PictureWithoutPixelsHasNone)
{
    EXPECT_TRUE(segment(0, 0, 4, 4).distances(0, 0, 2.0F).empty());
    EXPECT_TRUE(segment(0, 0, 4, 4).distances(0, 3, 2.0F).empty());
}

TEST(OutlineDistance, IsMeasuredFromThePixelsCentresAndRowsCountFromTheTop)
{
    // A line along the bottom row's lower edge; distances rise by one a row.
    EXPECT_EQ(segment(0, 0, 3, 0).distances(3, 3, 10.0F),
              (std::vector<float>{2.5F, 2.5F, 2.5F, 1.5F, 1.5F, 1.5F, 0.5F, 0.5F, 0.5F}));
}

TEST(OutlineDistance, ColumnsCountFromTheLeft)
{
    EXPECT_EQ(segment(1, 0, 1, 1).distances(4, 1, 10.0F), (std::vector<float>{0.5F, 0.5F, 1.5F, 2.5F}));
}

TEST(OutlineDistance, CoordinatesAreSixtyFourthsOfAPixel)
{
    EXPECT_EQ(segment(0, 33.0 / 64, 2, 33.0 / 64).distances(2, 1, 10.0F), (std::vector<float>{1.0F / 64, 1.0F / 64}));
}

TEST(OutlineDistance, BesideASegmentsEndItIsTheDistanceToTheEnd)
{
    // From (2, 0) the centre (5.5, 0.5) is 3.5 and 0.5 away, (2.5, 0.5) half a pixel in both.
    auto const distances = segment(0, 0, 2, 0).distances(6, 1, 10.0F);
    EXPECT_FLOAT_EQ(distances[1], 0.5F);
    EXPECT_FLOAT_EQ(distances[2], std::sqrt(0.5F));
    EXPECT_FLOAT_EQ(distances[5], std::sqrt(12.5F));
}

TEST(OutlineDistance, SegmentWithoutLengthIsAPoint)
{
    auto const distances = segment(0.5, 0.5, 0.5, 0.5).distances(4, 4, 10.0F);
    EXPECT_FLOAT_EQ(distances[12], 0.0F);
    EXPECT_FLOAT_EQ(distances[15], 3.0F);
    EXPECT_FLOAT_EQ(distances[0], 3.0F);
    EXPECT_FLOAT_EQ(distances[1 * 4 + 2], std::sqrt(8.0F));
}

TEST(OutlineDistance, ContourIsClosed)
{
    // The edge from the last point back to the first is the upper one.
    Contour square;
    square.point(1, 4).point(1, 1).point(4, 1).point(4, 4);
    EXPECT_EQ(square.distances(5, 5, 10.0F)[0 * 5 + 2], 0.5F);
    // Inside the square distances count as well: its middle is one and a half from every edge.
    EXPECT_EQ(square.distances(5, 5, 10.0F)[2 * 5 + 2], 1.5F);
    EXPECT_FLOAT_EQ(square.distances(5, 5, 10.0F)[0], std::sqrt(0.5F));
}

TEST(OutlineDistance, NearestOfAllSegmentsCounts)
{
    Contour corner;
    corner.point(0, 0).point(6, 0).point(0, 0).point(0, 6);
    auto const distances = corner.distances(6, 6, 10.0F);
    EXPECT_EQ(distances[5 * 6 + 4], 0.5F);
    EXPECT_EQ(distances[1 * 6 + 0], 0.5F);
    EXPECT_EQ(distances[2 * 6 + 2], 2.5F);
}

TEST(OutlineDistance, UpToReachIsExactAndBeyondItIsOnlyLarger)
{
    auto const distances = segment(0, 0, 12, 0).distances(12, 12, 2.5F);
    for (std::size_t row = 0; row < 12; ++row) {
        float const exact = 11.5F - static_cast<float>(row);
        for (std::size_t column = 0; column < 12; ++column) {
            float const distance = distances[row * 12 + column];
            if (exact <= 2.5F) {
                EXPECT_EQ(distance, exact) << row << " " << column;
            } else {
                EXPECT_GT(distance, 2.5F) << row << " " << column;
                EXPECT_LE(distance, 3.5F) << row << " " << column;
            }
        }
    }
    EXPECT_EQ(distances[0], 3.5F);
}

TEST(OutlineDistance, OutlineBesideThePictureReachesIn)
{
    EXPECT_EQ(segment(-2, 0, -2, 1).distances(3, 1, 10.0F), (std::vector<float>{2.5F, 3.5F, 4.5F}));
    EXPECT_EQ(segment(-50, 0, -50, 1).distances(2, 1, 3.0F), (std::vector<float>{4.0F, 4.0F}));
    EXPECT_EQ(segment(50, 0, 50, 1).distances(2, 1, 3.0F), (std::vector<float>{4.0F, 4.0F}));
}

/// The distance of a pixel's centre from a circle around the middle of a square picture.
float distanceToCircle(std::size_t row, std::size_t column, float middle, float radius)
{
    float const x = static_cast<float>(column) + 0.5F - middle;
    float const y = static_cast<float>(row) + 0.5F - middle;
    return std::abs(std::hypot(x, y) - radius);
}

TEST(OutlineDistance, CubicCurvesAreFollowedClosely)
{
    constexpr double kHandle = 0.5522847498;  // makes a cubic a quarter of a circle, 0.0003 of the radius off
    constexpr double r = 12;
    Contour circle;
    for (int quarter = 0; quarter < 4; ++quarter) {
        double const c = quarter == 0 ? 1 : quarter == 2 ? -1 : 0;
        double const s = quarter == 1 ? 1 : quarter == 3 ? -1 : 0;
        circle.point(16 + r * c, 16 + r * s);
        circle.cubicControl(16 + r * (c - kHandle * s), 16 + r * (s + kHandle * c));
        circle.cubicControl(16 + r * (kHandle * c - s), 16 + r * (kHandle * s + c));
    }
    auto const distances = circle.distances(32, 32, 40.0F);
    for (std::size_t row = 0; row < 32; ++row) {
        for (std::size_t column = 0; column < 32; ++column) {
            ASSERT_NEAR(distances[row * 32 + column], distanceToCircle(row, column, 16, 12), 0.06F)
                << row << " " << column;
        }
    }
}

TEST(OutlineDistance, ConicCurvesAreFollowedClosely)
{
    // The parabola y = x * x / 16 + 4 from x = 0 to 16 with its chord above it; its points are (t, t * t / 16 + 4).
    Contour parabola;
    parabola.point(0, 4).conicControl(8, 4).point(16, 20);
    auto const distances = parabola.distances(16, 24, 40.0F);
    for (std::size_t row = 0; row < 24; ++row) {
        for (std::size_t column = 0; column < 16; ++column) {
            double const x = static_cast<double>(column) + 0.5;
            double const y = 23.5 - static_cast<double>(row);
            double exact = std::abs(x - y + 4) / std::sqrt(2.0);  // from the chord y = x + 4, where it is nearest
            bool const besideTheChord = x + y >= 4 && x + y <= 36;
            exact = besideTheChord ? exact : 100;
            for (double t = 0; t <= 16; t += 1.0 / 128) {
                exact = std::min(exact, std::hypot(x - t, y - t * t / 16 - 4));
            }
            ASSERT_NEAR(distances[row * 16 + column], exact, 0.05) << row << " " << column;
        }
    }
}

}  // namespace
