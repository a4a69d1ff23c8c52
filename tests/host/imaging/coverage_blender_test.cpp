// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Coverage pictures blended whole and cut: every pixel of both planes.
#include "imaging/coverage_blender.h"

#include "test_picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using imaging::CoverageView;
using imaging::Span;
using imaging_test::TestPicture;

constexpr imaging::YCbCr kInk{200, 90, 170};
constexpr int kGround = 40;
constexpr int kNeutral = 128;

/// Four by four pixels of full coverage at (left, top).
class Square {
public:
    Square(std::int64_t left, std::int64_t top) : left_(left), top_(top) {}
    CoverageView view() const { return {left_, top_, luma_, chroma_, coverage_.data(), coverage_.data()}; }

private:
    std::int64_t left_;
    std::int64_t top_;
    std::vector<Span> luma_{{0, 0, 4, 0}, {1, 0, 4, 4}, {2, 0, 4, 8}, {3, 0, 4, 12}};
    std::vector<Span> chroma_{{0, 0, 4, 0}, {1, 0, 4, 4}};
    std::vector<std::uint8_t> coverage_ = std::vector<std::uint8_t>(16, 255);
};

/// Expects ink in the pixels from (left, top) to (right, bottom), all even, and the ground everywhere else.
void expectInk(TestPicture const& picture, int left, int top, int right, int bottom)
{
    for (int y = 0; y < picture.planes().height; ++y) {
        for (int x = 0; x < picture.planes().width; ++x) {
            bool const inked = x >= left && x < right && y >= top && y < bottom;
            ASSERT_EQ(picture.y(x, y), inked ? kInk.y : kGround) << x << " " << y;
            ASSERT_EQ(picture.cb(x / 2, y / 2), inked ? kInk.cb : kNeutral) << x << " " << y;
            ASSERT_EQ(picture.cr(x / 2, y / 2), inked ? kInk.cr : kNeutral) << x << " " << y;
        }
    }
    EXPECT_TRUE(picture.guardsAreWhole());
}

TEST(CoverageBlender, BlendsAtThePlaceOfTheView)
{
    TestPicture const picture(12, 8, kGround, kNeutral, 6);
    imaging::CoverageBlender().blendWhole(picture.planes(), Square(4, 2).view(), 0, 0, kInk);
    expectInk(picture, 4, 2, 8, 6);
}

TEST(CoverageBlender, MovesTheView)
{
    TestPicture const picture(12, 8, kGround, kNeutral, 6);
    imaging::CoverageBlender().blendWhole(picture.planes(), Square(-100, 50).view(), 108, -46, kInk);
    expectInk(picture, 8, 4, 12, 8);
}

TEST(CoverageBlender, HalfCoverageGoesHalfTheWay)
{
    TestPicture const picture(2, 2, 100, 100);
    std::vector<Span> const luma{{0, 1, 1, 0}};
    std::vector<Span> const chroma{{0, 0, 2, 1}};
    std::vector<std::uint8_t> const coverage{128, 64, 64};
    imaging::CoverageBlender().blendWhole(picture.planes(), {0, 0, luma, chroma, coverage.data(), coverage.data()}, 0,
                                          0, {200, 0, 255});
    EXPECT_EQ(picture.y(0, 0), 100);
    EXPECT_EQ(picture.y(1, 0), 150);
    EXPECT_EQ(picture.cb(0, 0), 75);
    EXPECT_EQ(picture.cr(0, 0), 139);
}

struct Cut {
    char const* name;
    std::int64_t x;
    std::int64_t y;
    int left, top, right, bottom;  ///< of the ink
};

class VisibleCoverage : public testing::TestWithParam<Cut> {};

TEST_P(VisibleCoverage, IsWhatLiesInThePicture)
{
    TestPicture const picture(12, 8, kGround, kNeutral, 6);
    auto const& cut = GetParam();
    imaging::CoverageBlender blender;
    blender.blendVisible(picture.planes(), Square(2, 2).view(), cut.x - 2, cut.y - 2, kInk);
    expectInk(picture, cut.left, cut.top, cut.right, cut.bottom);
}

INSTANTIATE_TEST_SUITE_P(Rows, VisibleCoverage,
                         testing::Values(Cut{"All", 4, 2, 4, 2, 8, 6}, Cut{"Left", -2, 2, 0, 2, 2, 6},
                                         Cut{"Top", 4, -2, 4, 0, 8, 2}, Cut{"Right", 10, 2, 10, 2, 12, 6},
                                         Cut{"Bottom", 4, 6, 4, 6, 8, 8}, Cut{"TwoEdges", -2, -2, 0, 0, 2, 2},
                                         Cut{"JustLeftOfIt", -4, 2, 0, 0, 0, 0}, Cut{"JustBelow", 4, 8, 0, 0, 0, 0},
                                         Cut{"JustRightOfIt", 12, 2, 0, 0, 0, 0}, Cut{"JustAbove", 4, -4, 0, 0, 0, 0},
                                         Cut{"FarAway", -1'000'000, 2'000'000, 0, 0, 0, 0}),
                         [](auto const& row) { return row.param.name; });

TEST(CoverageBlender, CutSpanKeepsTheCoverageOfItsColumns)
{
    TestPicture const picture(4, 2, 0, kNeutral);
    std::vector<Span> const luma{{0, 0, 6, 0}};
    std::vector<std::uint8_t> const coverage{10, 20, 30, 255, 50, 60};
    imaging::CoverageBlender().blendVisible(picture.planes(), {-2, 0, luma, {}, coverage.data(), nullptr}, 0, 0,
                                            {255, kNeutral, kNeutral});
    EXPECT_EQ(picture.y(0, 0), 30);
    EXPECT_EQ(picture.y(1, 0), 255);
    EXPECT_EQ(picture.y(2, 0), 50);
    EXPECT_EQ(picture.y(3, 0), 60);
}

TEST(CoverageBlender, OddPictureIsReachedUpToItsLastEvenColumnAndRow)
{
    TestPicture const picture(7, 5, kGround, kNeutral);
    imaging::CoverageBlender().blendVisible(picture.planes(), Square(2, 0).view(), 0, 0, kInk);
    expectInk(picture, 2, 0, 6, 4);
}

}  // namespace
