// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pen colours as luma and chroma.
#include "imaging/color.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using imaging::ColorMatrix;
using imaging::YCbCr;

struct Row {
    std::string name;
    int r, g, b;
    ColorMatrix matrix;
    bool fullRange;
    int lines;
    YCbCr expected;
};

class Colors : public testing::TestWithParam<Row> {};

TEST_P(Colors, BecomeLumaAndChroma)
{
    auto const& row = GetParam();
    auto const actual = imaging::toYCbCr(static_cast<std::uint8_t>(row.r), static_cast<std::uint8_t>(row.g),
                                         static_cast<std::uint8_t>(row.b), row.matrix, row.fullRange, row.lines);
    EXPECT_EQ(int{actual.y}, int{row.expected.y});
    EXPECT_EQ(int{actual.cb}, int{row.expected.cb});
    EXPECT_EQ(int{actual.cr}, int{row.expected.cr});
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Colors,
    testing::Values(Row{"Black", 0, 0, 0, ColorMatrix::Auto, false, 1080, {16, 128, 128}},
                    Row{"White", 255, 255, 255, ColorMatrix::Auto, false, 1080, {235, 128, 128}},
                    Row{"Red709", 255, 0, 0, ColorMatrix::Bt709, false, 480, {63, 102, 240}},
                    Row{"Green709", 0, 255, 0, ColorMatrix::Bt709, false, 480, {173, 42, 26}},
                    Row{"Blue709", 0, 0, 255, ColorMatrix::Bt709, false, 480, {32, 240, 118}},
                    Row{"Red601", 255, 0, 0, ColorMatrix::Bt601, false, 1080, {81, 90, 240}},
                    Row{"Green601", 0, 255, 0, ColorMatrix::Bt601, false, 1080, {145, 54, 34}},
                    Row{"Blue601", 0, 0, 255, ColorMatrix::Bt601, false, 1080, {41, 240, 110}},
                    Row{"AutoBelow720Lines", 255, 0, 0, ColorMatrix::Auto, false, 719, {81, 90, 240}},
                    Row{"AutoFrom720Lines", 255, 0, 0, ColorMatrix::Auto, false, 720, {63, 102, 240}},
                    Row{"FullRangeWhite", 255, 255, 255, ColorMatrix::Auto, true, 1080, {255, 128, 128}},
                    Row{"FullRangeRed601", 255, 0, 0, ColorMatrix::Bt601, true, 480, {76, 85, 255}}),
    [](auto const& row) { return row.param.name; });

}  // namespace
