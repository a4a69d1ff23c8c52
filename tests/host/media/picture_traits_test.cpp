// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What is kept of a decoded picture beside its contents.
#include "media/picture_traits.h"

#include <gtest/gtest.h>

namespace {

using media::PictureTraits;

media::FramePtr frameOf(int width, int height, AVPixelFormat format = AV_PIX_FMT_YUV420P)
{
    media::FramePtr frame = media::makeFrame();
    frame->width = width;
    frame->height = height;
    frame->format = format;
    return frame;
}

TEST(PictureTraits, UnmarkedPictureStaysUnmarked)
{
    PictureTraits const traits = media::traitsOf(*frameOf(640, 480));
    EXPECT_EQ(traits.width, 640);
    EXPECT_EQ(traits.height, 480);
    EXPECT_EQ(traits.colorSpace, AVCOL_SPC_UNSPECIFIED);
    EXPECT_EQ(traits.primaries, AVCOL_PRI_UNSPECIFIED);
    EXPECT_EQ(traits.transfer, AVCOL_TRC_UNSPECIFIED);
    EXPECT_EQ(traits.chromaLocation, AVCHROMA_LOC_UNSPECIFIED);
    EXPECT_EQ(traits.sampleAspect.num, 0);
    EXPECT_FALSE(traits.interlaced);
    EXPECT_FALSE(traits.topFieldFirst);
    EXPECT_FALSE(traits.color.fullRange);
    EXPECT_FALSE(traits.color.bt709);
}

TEST(PictureTraits, MarksAreKept)
{
    auto const frame = frameOf(1920, 1080);
    frame->colorspace = AVCOL_SPC_BT470BG;
    frame->color_primaries = AVCOL_PRI_BT470BG;
    frame->color_trc = AVCOL_TRC_GAMMA28;
    frame->color_range = AVCOL_RANGE_JPEG;
    frame->chroma_location = AVCHROMA_LOC_TOPLEFT;
    frame->sample_aspect_ratio = {16, 11};
    PictureTraits const traits = media::traitsOf(*frame);
    EXPECT_EQ(traits.colorSpace, AVCOL_SPC_BT470BG);
    EXPECT_EQ(traits.primaries, AVCOL_PRI_BT470BG);
    EXPECT_EQ(traits.transfer, AVCOL_TRC_GAMMA28);
    EXPECT_EQ(traits.chromaLocation, AVCHROMA_LOC_TOPLEFT);
    EXPECT_EQ(traits.sampleAspect.num, 16);
    EXPECT_EQ(traits.sampleAspect.den, 11);
    EXPECT_TRUE(traits.color.fullRange);
    EXPECT_FALSE(traits.color.bt709) << "the mark counts, not the size";
}

TEST(PictureTraits, FieldsAreKept)
{
    auto const frame = frameOf(720, 576);
    frame->interlaced_frame = 1;
    EXPECT_TRUE(media::traitsOf(*frame).interlaced);
    EXPECT_FALSE(media::traitsOf(*frame).topFieldFirst);
    frame->top_field_first = 1;
    EXPECT_TRUE(media::traitsOf(*frame).topFieldFirst);
}

struct RgbRow {
    char const* name;
    int height;
    AVColorSpace matrix;
    bool bt709;
};

class RgbTraits : public testing::TestWithParam<RgbRow> {};

TEST_P(RgbTraits, NameTheMatrixThatThePictureHasAsNv12)
{
    auto const frame = frameOf(1280, GetParam().height, AV_PIX_FMT_GBRP);
    frame->colorspace = AVCOL_SPC_RGB;
    frame->color_range = AVCOL_RANGE_JPEG;
    PictureTraits const traits = media::traitsOf(*frame);
    EXPECT_EQ(traits.colorSpace, GetParam().matrix);
    EXPECT_EQ(traits.color.bt709, GetParam().bt709);
    EXPECT_FALSE(traits.color.fullRange);
}

// The matrix of high definition from 720 lines on.
INSTANTIATE_TEST_SUITE_P(Rows, RgbTraits,
                         testing::Values(RgbRow{"standard", 719, AVCOL_SPC_SMPTE170M, false},
                                         RgbRow{"high", 720, AVCOL_SPC_BT709, true}),
                         [](auto const& row) { return row.param.name; });

}  // namespace
