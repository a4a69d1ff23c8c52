// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Background boxes: every pixel and every chroma sample against a plain model.
#include "imaging/rounded_box.h"

#include "imaging/nv12_blend.h"
#include "test_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

using imaging::Box;
using imaging::YCbCr;
using imaging_test::TestPicture;

constexpr YCbCr kColor{200, 60, 220};

/// How many of a pixel's points are inside the rounded box, 0 to 255.
int modelCoverage(Box const& box, double radius, int x, int y)
{
    if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) {
        return 0;
    }
    constexpr int kPoints = 48;
    int inside = 0;
    for (int i = 0; i < kPoints * kPoints; ++i) {
        int const line = i / kPoints;
        double const px = x + (i % kPoints + 0.5) / kPoints;
        double const py = y + (line + 0.5) / kPoints;
        // The nearest point of the box without its rounded border.
        double const nearX =
            std::clamp(px, static_cast<double>(box.left) + radius, static_cast<double>(box.right) - radius);
        double const nearY =
            std::clamp(py, static_cast<double>(box.top) + radius, static_cast<double>(box.bottom) - radius);
        inside += std::hypot(px - nearX, py - nearY) <= radius ? 1 : 0;
    }
    return static_cast<int>(std::lround(255.0 * inside / (kPoints * kPoints)));
}

int modelLevel(int before, int over, int coverage, int weight)
{
    int const partial = imaging::partialWeight(static_cast<std::uint8_t>(coverage), weight);
    return imaging::blendLevel(static_cast<std::uint8_t>(before), static_cast<std::uint8_t>(over), partial);
}

struct Case {
    int width, height;
    Box box;
    float opacity;
    float radius;
};

void PrintTo(Case const& c, std::ostream* out)
{
    *out << c.width << "x" << c.height << " box " << c.box.left << "," << c.box.top << "," << c.box.right << ","
         << c.box.bottom << " opacity " << c.opacity << " radius " << c.radius;
}

/// Where the box is straight every level is the model's; a corner's coverage may differ by three of 255.
void expectLikeModel(Case const& c)
{
    SCOPED_TRACE(testing::PrintToString(c));
    TestPicture before(c.width, c.height, 0, 0, 5, 3);
    TestPicture after(c.width, c.height, 0, 0, 5, 3);
    before.fillWithNoise(11);
    after.fillWithNoise(11);
    imaging::BoxRenderer().draw(after.planes(), c.box, c.opacity, c.radius, kColor);
    ASSERT_TRUE(after.guardsAreWhole());

    double const radius = std::min({static_cast<double>(c.radius), static_cast<double>(c.box.width()) / 2,
                                    static_cast<double>(c.box.height()) / 2});
    int const weight = static_cast<int>(std::lround(c.opacity * 256.0F));
    auto const coverage = [&](int x, int y) {
        return modelCoverage(c.box, radius, std::min(x, c.width - 1), std::min(y, c.height - 1));
    };
    auto const isCorner = [&](int x, int y) {
        Box const straight{c.box.left, c.box.top, c.box.right, c.box.bottom};
        double const fromSide = static_cast<double>(std::min(x - straight.left, straight.right - 1 - x));
        double const fromEnd = static_cast<double>(std::min(y - straight.top, straight.bottom - 1 - y));
        return fromSide > -2 && fromEnd > -2 && fromSide < radius && fromEnd < radius;
    };
    auto const tolerance = [&](int x, int y) { return isCorner(x, y) || isCorner(x + 1, y + 1) ? 3 : 0; };
    for (int y = 0; y < c.height; ++y) {
        for (int x = 0; x < c.width; ++x) {
            int const model = coverage(x, y);
            ASSERT_NEAR(after.y(x, y), modelLevel(before.y(x, y), kColor.y, model, weight), tolerance(x, y))
                << "luma " << x << ", " << y;
        }
    }
    for (int row = 0; row < after.chromaHeight(); ++row) {
        for (int pair = 0; pair < after.chromaWidth(); ++pair) {
            int const model = imaging::meanOfFour(coverage(2 * pair, 2 * row), coverage(2 * pair + 1, 2 * row),
                                                  coverage(2 * pair, 2 * row + 1), coverage(2 * pair + 1, 2 * row + 1));
            ASSERT_NEAR(after.cb(pair, row), modelLevel(before.cb(pair, row), kColor.cb, model, weight),
                        tolerance(2 * pair, 2 * row))
                << "Cb " << pair << ", " << row;
            ASSERT_NEAR(after.cr(pair, row), modelLevel(before.cr(pair, row), kColor.cr, model, weight),
                        tolerance(2 * pair, 2 * row))
                << "Cr " << pair << ", " << row;
        }
    }
}

TEST(RoundedBox, StraightAtEveryParity)
{
    for (int left = 4; left < 6; ++left) {
        for (int top = 4; top < 6; ++top) {
            for (int right = 20; right < 22; ++right) {
                for (int bottom = 11; bottom < 13; ++bottom) {
                    expectLikeModel({31, 17, {left, top, right, bottom}, 0.5F, 0});
                }
            }
        }
    }
}

TEST(RoundedBox, RoundedAtManyRadii)
{
    for (float const radius : {0.3F, 1.0F, 2.5F, 4.0F, 7.7F, 12.0F, 100.0F}) {
        expectLikeModel({64, 40, {5, 6, 59, 35}, 0.75F, radius});
        expectLikeModel({64, 40, {6, 4, 11, 36}, 0.75F, radius});
    }
}

TEST(RoundedBox, ClippedOnAllSides)
{
    for (int const dx : {-30, -13, 0, 15, 33}) {
        for (int const dy : {-17, -7, 0, 9, 21}) {
            expectLikeModel({33, 21, Box{2, 2, 31, 19}.movedBy(dx, dy), 0.6F, 4});
        }
    }
}

TEST(RoundedBox, OddPictureEdgesHaveFullChroma)
{
    expectLikeModel({7, 5, {-10, -10, 20, 20}, 1.0F, 4});
    expectLikeModel({1, 1, {0, 0, 1, 1}, 1.0F, 0});
    expectLikeModel({1, 1, {-5, -5, 6, 6}, 0.5F, 2});
    expectLikeModel({9, 7, {8, 6, 9, 7}, 1.0F, 0});
}

TEST(RoundedBox, RandomBoxesOnSmallPictures)
{
    std::minstd_rand random(3);
    auto const below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int i = 0; i < 300; ++i) {
        int const left = below(60) - 20;
        int const top = below(40) - 20;
        expectLikeModel({1 + below(40),
                         1 + below(20),
                         {left, top, left + 1 + below(40), top + 1 + below(30)},
                         static_cast<float>(below(101)) / 100.0F,
                         static_cast<float>(below(200)) / 10.0F});
    }
}

TEST(RoundedBox, LargeCornersAreLikeSmallOnes)
{
    expectLikeModel({80, 80, {-100, -100, 75, 75}, 0.9F, 87.5F});
    expectLikeModel({80, 80, {3, 3, 300, 300}, 0.9F, 140.0F});
}

struct NothingRow {
    std::string name;
    Box box;
    float opacity;
};

class DrawsNothing : public testing::TestWithParam<NothingRow> {};

TEST_P(DrawsNothing, Rows)
{
    TestPicture before(16, 8);
    TestPicture after(16, 8);
    imaging::BoxRenderer().draw(after.planes(), GetParam().box, GetParam().opacity, 4, kColor);
    EXPECT_EQ(after.pixels(), before.pixels());
    EXPECT_TRUE(after.guardsAreWhole());
}

constexpr std::int64_t kMost = std::numeric_limits<int>::max();
constexpr std::int64_t kLeast = std::numeric_limits<int>::min();

INSTANTIATE_TEST_SUITE_P(
    Boxes, DrawsNothing,
    testing::Values(NothingRow{"NoWidth", {4, 2, 4, 6}, 1}, NothingRow{"TurnedAround", {9, 6, 2, 1}, 1},
                    NothingRow{"NoOpacity", {2, 2, 9, 6}, 0}, NothingRow{"NegativeOpacity", {2, 2, 9, 6}, -3},
                    NothingRow{"NotANumber", {2, 2, 9, 6}, std::numeric_limits<float>::quiet_NaN()},
                    NothingRow{"LeftOfThePicture", {-9, 2, 0, 6}, 1}, NothingRow{"Below", {2, 8, 9, 20}, 1},
                    NothingRow{"FarAway", {kMost - 5, kMost - 5, kMost, kMost}, 1},
                    NothingRow{"FarTheOtherWay", {kLeast, kLeast, kLeast + 9, kLeast + 9}, 1}),
    [](auto const& row) { return row.param.name; });

TEST(RoundedBox, LargestBoxWithAnyRadiusCoversThePicture)
{
    for (float const radius :
         {0.0F, 4.0F, 1e30F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), -4.0F}) {
        TestPicture picture(15, 7);
        imaging::BoxRenderer().draw(picture.planes(), {kLeast, kLeast, kMost, kMost}, 7.0F, radius, kColor);
        EXPECT_EQ(picture.y(0, 0), kColor.y) << radius;
        EXPECT_EQ(picture.y(14, 6), kColor.y) << radius;
        EXPECT_EQ(picture.cr(7, 3), kColor.cr) << radius;
        EXPECT_TRUE(picture.guardsAreWhole()) << radius;
    }
}

TEST(RoundedBox, KeptCornerChangesWithTheRadius)
{
    imaging::BoxRenderer renderer;
    TestPicture first(32, 32);
    renderer.draw(first.planes(), {2, 2, 30, 30}, 1, 9, kColor);
    EXPECT_EQ(first.y(2, 2), 0);
    renderer.draw(first.planes(), {2, 2, 30, 30}, 1, 0, kColor);
    EXPECT_EQ(first.y(2, 2), kColor.y);
}

}  // namespace
