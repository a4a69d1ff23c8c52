// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where pictures of another shape stand, and that all around them is black.
#include "media/fitted_picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using media::FittedBox;

struct Row {
    int outerWidth;
    int outerHeight;
    AVRational outerPixel;
    int width;
    int height;
    AVRational pixel;
    FittedBox box;
};

TEST(FittedPicture, KeepsItsShapeInTheMiddle)
{
    for (Row const& row : {
             Row{1920, 1080, {1, 1}, 640, 480, {1, 1}, {240, 0, 1440, 1080}},
             Row{640, 480, {1, 1}, 1920, 1080, {1, 1}, {0, 60, 640, 360}},
             Row{96, 64, {0, 1}, 160, 90, {0, 1}, {0, 4, 96, 54}},
             Row{96, 64, {0, 1}, 48, 32, {0, 1}, {0, 0, 96, 64}},
             Row{96, 64, {0, 1}, 64, 96, {0, 1}, {26, 0, 42, 64}},
             // Pixels that are not square: 720x576 of 16:15 has the shape of 4:3.
             Row{640, 480, {1, 1}, 720, 576, {16, 15}, {0, 0, 640, 480}},
             Row{720, 576, {16, 15}, 1280, 720, {1, 1}, {0, 72, 720, 432}},
             // Shapes that nobody sends must not leave the picture.
             Row{96, 64, {1, 1}, 10000, 1, {1, 1}, {0, 30, 96, 2}},
             Row{97, 65, {1, 1}, 97, 65, {1, 1}, {0, 0, 96, 64}},
             Row{97, 65, {1, 1}, 1, 10000, {1, 1}, {46, 0, 2, 64}},
         }) {
        FittedBox const box =
            media::fitInto(row.outerWidth, row.outerHeight, row.outerPixel, row.width, row.height, row.pixel);
        EXPECT_EQ(box, row.box) << row.width << "x" << row.height << " in " << row.outerWidth << "x" << row.outerHeight
                                << ": " << box.x << "," << box.y << " " << box.width << "x" << box.height;
    }
}

TEST(FittedPicture, StandsInBlack)
{
    for (bool const fullRange : {false, true}) {
        std::vector<std::uint8_t> y(8 * 6, 77);
        std::vector<std::uint8_t> uv(8 * 3, 77);
        std::vector<std::uint8_t> innerY(4 * 2);
        std::vector<std::uint8_t> innerUv(4);
        for (std::size_t at = 0; at < innerY.size(); ++at) {
            innerY[at] = static_cast<std::uint8_t>(100 + at);
        }
        for (std::size_t at = 0; at < innerUv.size(); ++at) {
            innerUv[at] = static_cast<std::uint8_t>(200 + at);
        }
        // Seven columns; the eighth is padding.
        MappedNV12 outer{y.data(), uv.data(), 7, 6, 8, 8};
        MappedNV12 const inner{innerY.data(), innerUv.data(), 4, 2, 0, 0};
        media::placeInto(outer, {2, 2, 4, 2}, inner, {fullRange, false});
        for (int row = 0; row < 6; ++row) {
            for (int column = 0; column < 8; ++column) {
                bool const inside = row >= 2 && row < 4 && column >= 2 && column < 6;
                int const expected = inside ? 100 + (row - 2) * 4 + column - 2 : column == 7 ? 77 : fullRange ? 0 : 16;
                EXPECT_EQ(y[static_cast<std::size_t>(row * 8 + column)], expected) << row << " " << column;
            }
        }
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 8; ++column) {
                bool const inside = row == 1 && column >= 2 && column < 6;
                EXPECT_EQ(uv[static_cast<std::size_t>(row * 8 + column)], inside ? 200 + column - 2 : 128)
                    << row << " " << column;
            }
        }
    }
}

}  // namespace
