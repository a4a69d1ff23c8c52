// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Conversion to and from NV12: every family of pixel formats, odd and tiny sizes, colours kept.
#include "media/frame_converter.h"
#include "planes.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace {

using media::ColorFormat;
using media::FrameConverter;
using media::FramePtr;
using media_test::Planes;

FramePtr makeFrame(AVPixelFormat format, int width, int height)
{
    FramePtr frame = media::makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    return frame;
}

/// A picture of one colour in any format, made from 8-bit 4:4:4.
FramePtr uniform(AVPixelFormat format, int width, int height, std::array<int, 3> yuv)
{
    FramePtr full = makeFrame(AV_PIX_FMT_YUV444P, width, height);
    for (std::size_t plane = 0; plane < 3; ++plane) {
        std::memset(full->data[plane], yuv[plane],
                    static_cast<std::size_t>(full->linesize[plane]) * static_cast<std::size_t>(height));
    }
    FramePtr frame = makeFrame(format, width, height);
    media::ScalerPtr const scaler(sws_getContext(width, height, AV_PIX_FMT_YUV444P, width, height, format,
                                                 SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    EXPECT_NE(scaler, nullptr);
    sws_scale(scaler.get(), full->data, full->linesize, 0, height, frame->data, frame->linesize);
    return frame;
}

struct FormatRow {
    char const* name;
    AVPixelFormat format;
    std::array<int, 3> expected;  ///< of limited-range Y 142, Cb 119, Cr 76
    int tolerance;
    bool fullRange;
};

class AnyFormat : public testing::TestWithParam<FormatRow> {};

TEST_P(AnyFormat, BecomesNv12OfTheSameColor)
{
    FormatRow const& row = GetParam();
    for (auto const& [width, height] : {std::pair{64, 48}, std::pair{33, 17}}) {
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        FramePtr const frame = uniform(row.format, width, height, {142, 119, 76});
        ColorFormat const color = media::nv12ColorOf(*frame);
        EXPECT_EQ(color.fullRange, row.fullRange);
        Planes planes(width, height);
        FrameConverter().toNv12(*frame, planes.mapped(), color);
        EXPECT_NEAR(planes.y(width / 2, height / 2), row.expected[0], row.tolerance);
        EXPECT_NEAR(planes.c(width / 2 / 2 * 2, height / 4), row.expected[1], row.tolerance);
        EXPECT_NEAR(planes.c(width / 2 / 2 * 2 + 1, height / 4), row.expected[2], row.tolerance);
        EXPECT_NEAR(planes.y(width - 1, height - 1), row.expected[0], row.tolerance) << "last pixel";
        EXPECT_TRUE(planes.guarded());
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, AnyFormat,
                         testing::Values(FormatRow{"yuv420p", AV_PIX_FMT_YUV420P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuv422p", AV_PIX_FMT_YUV422P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuv444p", AV_PIX_FMT_YUV444P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuv411p", AV_PIX_FMT_YUV411P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuv410p", AV_PIX_FMT_YUV410P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuva420p", AV_PIX_FMT_YUVA420P, {142, 119, 76}, 0, false},
                                         FormatRow{"yuv420p10", AV_PIX_FMT_YUV420P10LE, {142, 119, 76}, 1, false},
                                         FormatRow{"yuv444p12", AV_PIX_FMT_YUV444P12LE, {142, 119, 76}, 1, false},
                                         FormatRow{"p010", AV_PIX_FMT_P010LE, {142, 119, 76}, 1, false},
                                         FormatRow{"nv12", AV_PIX_FMT_NV12, {142, 119, 76}, 0, false},
                                         FormatRow{"nv21", AV_PIX_FMT_NV21, {142, 119, 76}, 0, false},
                                         FormatRow{"yuyv422", AV_PIX_FMT_YUYV422, {142, 119, 76}, 0, false},
                                         FormatRow{"uyvy422", AV_PIX_FMT_UYVY422, {142, 119, 76}, 0, false},
                                         FormatRow{"rgb24", AV_PIX_FMT_RGB24, {142, 119, 76}, 2, false},
                                         FormatRow{"bgra", AV_PIX_FMT_BGRA, {142, 119, 76}, 2, false},
                                         FormatRow{"gbrp", AV_PIX_FMT_GBRP, {142, 119, 76}, 2, false},
                                         FormatRow{"rgb48", AV_PIX_FMT_RGB48LE, {142, 119, 76}, 2, false},
                                         // 142 of 16..235 is 147 of 0..255; chroma widens likewise.
                                         FormatRow{"yuvj420p", AV_PIX_FMT_YUVJ420P, {147, 118, 69}, 1, true},
                                         FormatRow{"yuvj444p", AV_PIX_FMT_YUVJ444P, {147, 118, 69}, 1, true},
                                         FormatRow{"gray", AV_PIX_FMT_GRAY8, {147, 128, 128}, 1, true},
                                         FormatRow{"gray16", AV_PIX_FMT_GRAY16LE, {147, 128, 128}, 1, true}),
                         [](auto const& row) { return row.param.name; });

/// Widths below, at and beside what is stored at once.
class PlanarWidth : public testing::TestWithParam<int> {};

TEST_P(PlanarWidth, KeepsEverySampleExactly)
{
    int const width = GetParam();
    constexpr int kHeight = 19;
    int const chromaWidth = (width + 1) / 2;
    FramePtr const frame = makeFrame(AV_PIX_FMT_YUV420P, width, kHeight);
    auto const sample = [](int plane, int column, int row) { return (plane * 50 + row * 3 + column) % 256; };
    auto const fill = [&frame, sample](int plane, int columns, int rows) {
        auto const index = static_cast<std::size_t>(plane);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                frame->data[index][row * frame->linesize[index] + column] =
                    static_cast<std::uint8_t>(sample(plane, column, row));
            }
        }
    };
    fill(0, width, kHeight);
    fill(1, chromaWidth, 10);
    fill(2, chromaWidth, 10);
    Planes planes(width, kHeight);
    FrameConverter().toNv12(*frame, planes.mapped(), {});
    for (int row = 0; row < kHeight; ++row) {
        for (int column = 0; column < width; ++column) {
            ASSERT_EQ(planes.y(column, row), sample(0, column, row)) << column << "," << row;
        }
    }
    for (int row = 0; row < 10; ++row) {
        for (int pair = 0; pair < chromaWidth; ++pair) {
            ASSERT_EQ(planes.c(pair * 2, row), sample(1, pair, row)) << pair << "," << row;
            ASSERT_EQ(planes.c(pair * 2 + 1, row), sample(2, pair, row)) << pair << "," << row;
        }
    }
    EXPECT_TRUE(planes.guarded());
}

INSTANTIATE_TEST_SUITE_P(FrameConverter, PlanarWidth, testing::Values(1, 15, 16, 31, 32, 33, 35, 192, 207));

TEST(FrameConverter, TakesEverySizeDownToOnePixel)
{
    for (int width = 1; width <= 9; ++width) {
        for (int height = 1; height <= 9; ++height) {
            for (AVPixelFormat const format :
                 {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_RGB24,
                  AV_PIX_FMT_BGRA, AV_PIX_FMT_GBRP, AV_PIX_FMT_RGB48LE}) {
                SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " format " +
                             std::to_string(format));
                FramePtr const frame = uniform(format, width, height, {142, 119, 76});
                Planes planes(width, height);
                FrameConverter().toNv12(*frame, planes.mapped(), {});
                ASSERT_NEAR(planes.y(width - 1, height - 1), 142, 2);
                EXPECT_NEAR(planes.c(0, 0), 119, 2);
                EXPECT_NEAR(planes.c(1, 0), 76, 2);
                EXPECT_NEAR(planes.c(planes.chromaWidth - 2, planes.chromaHeight - 1), 119, 2);
                EXPECT_NEAR(planes.c(planes.chromaWidth - 1, planes.chromaHeight - 1), 76, 2);
                ASSERT_TRUE(planes.guarded());
            }
        }
    }
}

TEST(FrameConverter, ScalesAPictureOfAnotherSizeMidway)
{
    FrameConverter converter;
    Planes planes(64, 48);
    for (auto const& [width, height] : {std::pair{64, 48}, std::pair{160, 120}, std::pair{31, 7}, std::pair{64, 48}}) {
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        converter.toNv12(*uniform(AV_PIX_FMT_YUV420P, width, height, {100, 90, 200}), planes.mapped(), {});
        EXPECT_EQ(planes.y(63, 47), 100);
        EXPECT_EQ(planes.c(62, 23), 90);
        EXPECT_EQ(planes.c(63, 23), 200);
        EXPECT_TRUE(planes.guarded());
    }
}

TEST(FrameConverter, ChangesRangeOnlyWhenThePlanesAskForIt)
{
    FramePtr const frame = uniform(AV_PIX_FMT_YUV420P, 32, 32, {235, 128, 128});
    Planes planes(32, 32);
    FrameConverter().toNv12(*frame, planes.mapped(), ColorFormat{true, false});
    EXPECT_EQ(planes.y(16, 16), 255);
    FrameConverter().toNv12(*frame, planes.mapped(), ColorFormat{false, false});
    EXPECT_EQ(planes.y(16, 16), 235);
}

struct ColorRow {
    char const* name;
    AVPixelFormat format;
    int height;
    AVColorRange range;
    AVColorSpace space;
    ColorFormat expected;
};

class Nv12Color : public testing::TestWithParam<ColorRow> {};

TEST_P(Nv12Color, FollowsTheMarksOfTheFrame)
{
    ColorRow const& row = GetParam();
    FramePtr const frame = media::makeFrame();
    frame->format = row.format;
    frame->width = 64;
    frame->height = row.height;
    frame->color_range = row.range;
    frame->colorspace = row.space;
    EXPECT_EQ(media::nv12ColorOf(*frame), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Nv12Color,
    testing::Values(
        ColorRow{
            "unmarked_719", AV_PIX_FMT_YUV420P, 719, AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED, {false, false}},
        ColorRow{
            "unmarked_720", AV_PIX_FMT_YUV420P, 720, AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED, {false, true}},
        ColorRow{"marked_601_at_1080", AV_PIX_FMT_YUV420P, 1080, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M, {false, false}},
        ColorRow{"marked_709_at_480", AV_PIX_FMT_YUV420P, 480, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, {false, true}},
        ColorRow{"full_range", AV_PIX_FMT_YUV420P, 480, AVCOL_RANGE_JPEG, AVCOL_SPC_UNSPECIFIED, {true, false}},
        ColorRow{"yuvj", AV_PIX_FMT_YUVJ422P, 480, AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED, {true, false}},
        ColorRow{"gray_unmarked", AV_PIX_FMT_GRAY8, 480, AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED, {true, false}},
        ColorRow{"gray_limited", AV_PIX_FMT_GRAY8, 480, AVCOL_RANGE_MPEG, AVCOL_SPC_UNSPECIFIED, {false, false}},
        ColorRow{"rgb_480", AV_PIX_FMT_RGB24, 480, AVCOL_RANGE_JPEG, AVCOL_SPC_RGB, {false, false}},
        ColorRow{"rgb_1080", AV_PIX_FMT_RGB24, 1080, AVCOL_RANGE_JPEG, AVCOL_SPC_RGB, {false, true}}),
    [](auto const& row) { return row.param.name; });

}  // namespace
