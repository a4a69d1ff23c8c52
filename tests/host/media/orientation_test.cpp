// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures turned upright: which sample goes where, and what is said of the picture afterwards.
#include "media/orientation.h"

#include "planes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace {

using media::Orientation;
using media_test::Planes;

constexpr std::int32_t kOne = 65536;

struct TurnRow {
    char const* name;
    std::array<std::int32_t, 4> abcd;  ///< x' = a x + c y, y' = b x + d y
    Orientation expected;
    /// Where the corners of the picture "12 / 34" end up, row by row.
    char const* corners;
};

class Turn : public testing::TestWithParam<TurnRow> {};

std::optional<Orientation> orientationOf(std::array<std::int32_t, 4> const& abcd)
{
    std::array<std::int32_t, 9> const matrix = {abcd[0], abcd[1], 0, abcd[2], abcd[3], 0, 7, 7, 1 << 30};
    return media::orientationOf(matrix.data());
}

TEST_P(Turn, PutsCornersWhereTheMatrixSays)
{
    TurnRow const& row = GetParam();
    std::optional<Orientation> const orientation = orientationOf(row.abcd);
    ASSERT_TRUE(orientation.has_value());
    EXPECT_EQ(*orientation, row.expected);
    Planes from(2, 2);
    from.y(0, 0) = '1';
    from.y(1, 0) = '2';
    from.y(0, 1) = '3';
    from.y(1, 1) = '4';
    Planes to(2, 2);
    media::turnUpright(from.mapped(), to.mapped(), *orientation);
    std::string const corners = {static_cast<char>(to.y(0, 0)), static_cast<char>(to.y(1, 0)),
                                 static_cast<char>(to.y(0, 1)), static_cast<char>(to.y(1, 1))};
    EXPECT_EQ(corners, row.corners);
}

/// Against the definition, for sizes that are odd and larger than a block.
TEST_P(Turn, MovesEverySampleOfBothPlanes)
{
    Orientation const turn = GetParam().expected;
    for (int const width : {1, 2, 31, 33, 70}) {
        for (int const height : {1, 2, 35, 64}) {
            SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
            Planes from(width, height);
            from.fillPattern(5);
            Planes to(turn.swapsAxes ? height : width, turn.swapsAxes ? width : height);
            media::turnUpright(from.mapped(), to.mapped(), turn);
            EXPECT_TRUE(to.guarded());
            for (int y = 0; y < to.height; ++y) {
                for (int x = 0; x < to.width; ++x) {
                    int const u = turn.flipsX ? to.width - 1 - x : x;
                    int const v = turn.flipsY ? to.height - 1 - y : y;
                    ASSERT_EQ(to.y(x, y), turn.swapsAxes ? from.y(v, u) : from.y(u, v)) << x << "," << y;
                }
            }
            int const pairs = to.chromaWidth / 2;
            for (int y = 0; y < to.chromaHeight; ++y) {
                for (int byte = 0; byte < to.chromaWidth; ++byte) {
                    int const x = byte / 2;
                    int const u = turn.flipsX ? pairs - 1 - x : x;
                    int const v = turn.flipsY ? to.chromaHeight - 1 - y : y;
                    int const part = byte % 2;
                    ASSERT_EQ(to.c(byte, y), turn.swapsAxes ? from.c(2 * v + part, u) : from.c(2 * u + part, v))
                        << byte << "," << y;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Turn,
                         testing::Values(TurnRow{"none", {kOne, 0, 0, kOne}, {false, false, false}, "1234"},
                                         TurnRow{"clockwise", {0, kOne, -kOne, 0}, {true, true, false}, "3142"},
                                         TurnRow{"half_turn", {-kOne, 0, 0, -kOne}, {false, true, true}, "4321"},
                                         TurnRow{"counter_clockwise", {0, -kOne, kOne, 0}, {true, false, true}, "2413"},
                                         TurnRow{"mirrored", {-kOne, 0, 0, kOne}, {false, true, false}, "2143"},
                                         TurnRow{"upside_down", {kOne, 0, 0, -kOne}, {false, false, true}, "3412"},
                                         TurnRow{"transposed", {0, kOne, kOne, 0}, {true, false, false}, "1324"},
                                         TurnRow{"transposed_back", {0, -kOne, -kOne, 0}, {true, true, true}, "4231"}),
                         [](auto const& row) { return row.param.name; });

TEST(OrientationOf, OtherThanRightAnglesIsNone)
{
    EXPECT_EQ(orientationOf({46341, 46341, -46341, 46341}), std::nullopt) << "half a quarter turn";
    EXPECT_EQ(orientationOf({0, 0, 0, 0}), std::nullopt);
    EXPECT_EQ(orientationOf({kOne, 0, 0, 0}), std::nullopt);
}

TEST(Upright, SwapsSizesAndPixelShapeWithTheAxes)
{
    media::PictureTraits stored;
    stored.width = 720;
    stored.height = 480;
    stored.sampleAspect = {8, 9};
    stored.interlaced = true;
    stored.topFieldFirst = true;
    stored.chromaLocation = AVCHROMA_LOC_LEFT;
    media::PictureTraits const turned = media::upright(stored, {true, true, false});
    EXPECT_EQ(turned.width, 480);
    EXPECT_EQ(turned.height, 720);
    EXPECT_EQ(turned.sampleAspect.num, 9);
    EXPECT_EQ(turned.sampleAspect.den, 8);
    EXPECT_FALSE(turned.interlaced);
    EXPECT_EQ(turned.chromaLocation, AVCHROMA_LOC_UNSPECIFIED);

    media::PictureTraits const halfTurned = media::upright(stored, {false, true, true});
    EXPECT_EQ(halfTurned.width, 720);
    EXPECT_EQ(halfTurned.sampleAspect.num, 8);
    EXPECT_TRUE(halfTurned.interlaced);
    EXPECT_FALSE(halfTurned.topFieldFirst) << "the lower field's lines are the upper ones now";

    EXPECT_EQ(media::upright(stored, {}).chromaLocation, AVCHROMA_LOC_LEFT);
    stored.sampleAspect = {0, 1};
    EXPECT_EQ(media::upright(stored, {true, true, false}).sampleAspect.num, 0) << "unknown stays unknown";
}

}  // namespace
