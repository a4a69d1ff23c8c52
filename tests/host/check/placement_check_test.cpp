// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Blocks on a picture: what is told of their boxes, and what is wrong with their places.
#include "check/placement_check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using check::PlacedBlock;

constexpr check::PictureSize kPicture{1280, 720};

/// A box with its text's anchor four pixels inside.
PlacedBlock block(std::size_t number, int left, int top, int right, int bottom, int textHeight = 20)
{
    return {number, left + 4, top + 4, left, top, right, bottom, textHeight};
}

std::string findingsOf(std::vector<PlacedBlock> const& blocks, check::PictureSize const& picture = kPicture)
{
    std::string lines;
    for (check::Finding const& finding : check::checkPlacement(blocks, picture)) {
        lines += finding.place + ": " + finding.text + "\n";
    }
    return lines;
}

TEST(BoxText, NamesPixelsFractionsAndBetterPositions)
{
    // 324 wide: centred at 478, anchor 482 / 1280; flush right at 944, anchor 948. 78 high: at 321, anchor 325 / 720;
    // at the bottom at 622, anchor 626.
    EXPECT_EQ(check::boxText(block(0, 12, 20, 336, 98), kPicture),
              "box 12,20 to 336,98 of 1280x720 (0.0094,0.0278 to 0.2625,0.1361); centred \"x\": 0.3766, \"y\": 0.4514; "
              "flush right \"x\": 0.7406; at the bottom \"y\": 0.8694");
}

TEST(BoxText, MarginIsThatOfTheNearerSide)
{
    EXPECT_EQ(check::boxText(block(0, 1156, 600, 1260, 690), kPicture),
              "box 1156,600 to 1260,690 of 1280x720 (0.9031,0.8333 to 0.9844,0.9583); centred \"x\": 0.4625, \"y\": "
              "0.4431; flush right \"x\": 0.9063; at the bottom \"y\": 0.8389")
        << "it stays where it is";
}

TEST(BoxText, BlockInTheMiddleHasNoMarginToKeep)
{
    // 20 wide and high: a tenth of 1280 and of 720 is left beside it.
    EXPECT_EQ(check::boxText(block(0, 630, 350, 650, 370), kPicture),
              "box 630,350 to 650,370 of 1280x720 (0.4922,0.4861 to 0.5078,0.5139); centred \"x\": 0.4953, \"y\": "
              "0.4917; flush right \"x\": 0.8875; at the bottom \"y\": 0.8778");
}

TEST(BoxText, BoxBeyondTheEdgeGetsNoMargin)
{
    EXPECT_EQ(check::boxText(block(0, -10, 0, 90, 20), kPicture),
              "box -10,0 to 90,20 of 1280x720 (-0.0078,0 to 0.0703,0.0278); centred \"x\": 0.4641, \"y\": 0.4917; "
              "flush right \"x\": 0.925; at the bottom \"y\": 0.9778");
}

TEST(BoxText, AxisThatDoesNotFitIsLeftOut)
{
    EXPECT_EQ(
        check::boxText(block(0, 0, 0, 1300, 20), kPicture),
        "box 0,0 to 1300,20 of 1280x720 (0,0 to 1.0156,0.0278); centred \"y\": 0.4917; at the bottom \"y\": 0.9778");
    EXPECT_EQ(check::boxText(block(0, 0, 0, 1300, 730), kPicture),
              "box 0,0 to 1300,730 of 1280x720 (0,0 to 1.0156,1.0139)");
}

TEST(Placement, GoodBlocksGiveNoFinding)
{
    EXPECT_EQ(findingsOf({}), "");
    EXPECT_EQ(findingsOf({block(0, 0, 0, 1280, 40), block(1, 0, 40, 640, 720), block(2, 640, 40, 1280, 720)}), "")
        << "edges may touch";
}

TEST(Placement, CutBoxes)
{
    EXPECT_EQ(findingsOf({block(3, -2, 10, 60, 40)}),
              "overlay[3]: the box reaches beyond the picture of 1280x720: 2 pixels at the left\n");
    EXPECT_EQ(
        findingsOf({block(0, -20, -6, 1281, 760)}),
        "overlay[0]: the box reaches beyond the picture of 1280x720: 20 pixels at the left, 6 pixels at the top, 1 "
        "pixel at the right, 40 pixels at the bottom\n");
}

TEST(Placement, OverlapsAreToldWithTheLaterBlock)
{
    EXPECT_EQ(findingsOf({block(0, 10, 10, 100, 60), block(2, 200, 10, 300, 60), block(5, 90, 50, 210, 90)}),
              "overlay[5]: overlaps overlay[0] at 90,50 to 100,60\n"
              "overlay[5]: overlaps overlay[2] at 200,50 to 210,60\n");
}

TEST(Placement, TextsBelowNinePixelsAreTooSmall)
{
    EXPECT_EQ(findingsOf({block(0, 10, 10, 100, 60, 9)}), "");
    EXPECT_EQ(findingsOf({block(0, 10, 10, 100, 60, 8)}),
              "overlay[0]: the text is 8 pixels high on 720 lines, too small to read; \"textSize\" 14 makes it 9\n");
    EXPECT_EQ(findingsOf({block(0, 10, 10, 100, 60, 1)}, {320, 240}),
              "overlay[0]: the text is 1 pixel high on 240 lines, too small to read; \"textSize\" 41 makes it 9\n");
}

}  // namespace
