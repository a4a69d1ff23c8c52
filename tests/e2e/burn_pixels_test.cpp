// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The whole way proved in the pixels: a made flight is burnt losslessly and decoded again. Text stands
// where the configuration says, looks as the painter draws it, and nothing outside the boxes has changed.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include "Painter.h"
#include "imaging/imaging_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Pictures = std::vector<std::shared_ptr<zelvo::ZelvoPicture>>;

struct Block {
    std::string format;
    int textSize;
    int thickness;
    float x;
    float y;
    std::array<unsigned char, 3> text;
    std::array<unsigned char, 3> background;
    float opacity;
};

std::vector<Block> const kBlocks = {
    {R"(LAT %sensor_lat_deg\nLON %sensor_lon_deg)", 60, 1, 0.02F, 0.03F, {255, 255, 255}, {0, 0, 0}, 0.5F},
    {R"(HDG %{heading_deg} deg)", 96, 4, 0.35F, 0.81F, {255, 224, 64}, {0, 0, 96}, 0.8F},
    // Reaches beyond the right border.
    {R"(edge %sensor_alt_m)", 80, 2, 0.9F, 0.5F, {16, 255, 16}, {128, 0, 0}, 1.0F},
};

std::string colorText(std::array<unsigned char, 3> const& rgb)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", rgb[0], rgb[1], rgb[2]);
    return text.data();
}

std::string configText()
{
    std::string text = R"({"overlay":[)";
    for (Block const& block : kBlocks) {
        text += text.back() == '}' ? "," : "";
        text += R"({"decimals":5,"formatString":")" + block.format + R"(","textSize":)" +
                std::to_string(block.textSize) + R"(,"thickness":)" + std::to_string(block.thickness) +
                R"(,"position":{"x":)" + std::to_string(block.x) + R"(,"y":)" + std::to_string(block.y) +
                R"(},"textColor":")" + colorText(block.text) + R"(","bgColor":")" + colorText(block.background) +
                R"(","bgAlpha":)" + std::to_string(block.opacity) + "}";
    }
    return text + "]}";
}

struct Box {
    int left;
    int top;
    int right;
    int bottom;

    bool holds(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

int even(int value)
{
    return (value + 1) & ~1;
}

/// Draws the block as the configuration says and gives the box that it may touch.
Box drawExpected(Painter& painter, MappedNV12 const& planes, Block const& block, std::string const& text)
{
    float const scale = static_cast<float>(planes.height) / 1080.0F;
    int const x = even(static_cast<int>(static_cast<float>(planes.width) * block.x));
    int const y = even(static_cast<int>(static_cast<float>(planes.height) * block.y));
    int const size = static_cast<int>(scale * static_cast<float>(block.textSize));
    int const pen = std::max(1, static_cast<int>(std::round(scale * static_cast<float>(block.thickness))));
    painter.setPenThickness(static_cast<unsigned char>(pen));
    Box box{};
    EXPECT_TRUE(painter.measureTextBBox(text, x, y, size, 0, 0, &box.left, &box.top, &box.right, &box.bottom));
    float const margin = scale * 5.0F;
    int const pad = static_cast<int>(std::lroundf(margin));
    box = {even(box.left - pad), even(box.top - pad), even(box.right + pad), even(box.bottom + pad)};
    painter.setPenRGB(block.background[0], block.background[1], block.background[2]);
    painter.drawBackgroundMapped(planes, box.left, box.top, box.right, box.bottom, block.opacity, 4.0F, margin);
    painter.setPenRGB(block.text[0], block.text[1], block.text[2]);
    painter.drawTextMapped(planes, x, y, text, TextStyle{size, 0, 0});
    return box;
}

bool sameRow(std::uint8_t const* a, int aStride, std::uint8_t const* b, int bStride, int row, int bytes)
{
    return std::memcmp(a + static_cast<std::ptrdiff_t>(row) * aStride, b + static_cast<std::ptrdiff_t>(row) * bStride,
                       static_cast<std::size_t>(bytes)) == 0;
}

void expectSamePicture(MappedNV12 const& got, MappedNV12 const& expected)
{
    ASSERT_EQ(got.width, expected.width);
    ASSERT_EQ(got.height, expected.height);
    for (int row = 0; row < got.height; ++row) {
        ASSERT_TRUE(sameRow(got.y, got.yStride, expected.y, expected.yStride, row, got.width)) << "luma row " << row;
    }
    int const chromaBytes = (got.width + 1) / 2 * 2;
    for (int row = 0; row < (got.height + 1) / 2; ++row) {
        ASSERT_TRUE(sameRow(got.uv, got.uvStride, expected.uv, expected.uvStride, row, chromaBytes))
            << "chroma row " << row;
    }
}

/// Counts luma pixels that differ, inside the boxes and outside, and chroma pairs that differ outside.
struct Changes {
    int inside = 0;
    int outside = 0;
    int chromaOutside = 0;
};

Changes changesOf(MappedNV12 const& before, MappedNV12 const& after, std::vector<Box> const& boxes)
{
    Changes changes;
    auto const inBox = [&boxes](int x, int y) {
        return std::any_of(boxes.begin(), boxes.end(), [x, y](Box const& box) { return box.holds(x, y); });
    };
    for (int y = 0; y < before.height; ++y) {
        for (int x = 0; x < before.width; ++x) {
            if (before.y[y * before.yStride + x] != after.y[y * after.yStride + x]) {
                ++(inBox(x, y) ? changes.inside : changes.outside);
            }
            int const pair = y / 2 * before.uvStride + x / 2 * 2;
            int const other = y / 2 * after.uvStride + x / 2 * 2;
            if (!inBox(x, y) && std::memcmp(before.uv + pair, after.uv + other, 2) != 0) {
                ++changes.chromaOutside;
            }
        }
    }
    return changes;
}

struct CodecRow {
    char const* name;
    char const* output;
    std::vector<std::string> options;
    char const* size;
};

class BurnPixels : public testing::TestWithParam<CodecRow> {};

TEST_P(BurnPixels, ShowTheTextWhereItBelongsAndNothingElse)
{
    CodecRow const& row = GetParam();
    media_test::TempFolder const folder;
    std::string const clip = folder.file("flight.ts");
    std::string const config = folder.file("c.json");
    std::string const output = folder.file(row.output);
    e2e::writeFile(config, configText());
    ASSERT_EQ(e2e::run({"sample", clip, "--seconds", "0.6", "--size", row.size, "--fps", "25"}).exitCode, 0);
    std::vector<std::string> arguments = {"burn", clip, "-c", config, "-o", output};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    e2e::Result const burnt = e2e::run(arguments);
    ASSERT_EQ(burnt.exitCode, 0) << burnt.err;
    std::vector<std::string> const lines = e2e::linesOf(e2e::run({"text", clip, "-c", config}).out);

    Pictures const before = clip_test::picturesOf(clip);
    Pictures const after = clip_test::picturesOf(output);
    ASSERT_EQ(before.size(), 15U);
    ASSERT_EQ(after.size(), before.size());
    ASSERT_EQ(lines.size(), before.size());
    Painter painter;
    imaging::openFonts(painter);
    for (std::size_t number = 0; number < before.size(); ++number) {
        SCOPED_TRACE("frame " + std::to_string(number));
        SwJsonObject const line = clip_test::parseLine(lines[number]);
        SwJsonArray const& draws = line["draws"].toArray();
        ASSERT_EQ(draws.size(), kBlocks.size());
        MappedNV12 const source = imaging::planesOf(*before[number]);
        MappedNV12 const result = imaging::planesOf(*after[number]);
        zelvo::ZelvoPicturePool pool;
        auto const expected = pool.clone(*before[number]);
        std::vector<Box> boxes;
        for (std::size_t block = 0; block < kBlocks.size(); ++block) {
            SwJsonObject const& draw = draws[block].toObject();
            boxes.push_back(
                drawExpected(painter, imaging::planesOf(*expected), kBlocks[block], draw["text"].toString()));
        }
        expectSamePicture(result, imaging::planesOf(*expected));
        Changes const changes = changesOf(source, result, boxes);
        EXPECT_GT(changes.inside, 200);
        EXPECT_EQ(changes.outside, 0);
        EXPECT_EQ(changes.chromaOutside, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BurnPixels,
    testing::Values(CodecRow{"ffv1_in_mkv", "o.mkv", {"--video-codec", "ffv1"}, "320x240"},
                    CodecRow{"h264_lossless_in_ts", "o.ts", {"--video-codec", "libx264", "--crf", "0"}, "320x240"},
                    CodecRow{"rawvideo_in_nut", "o.nut", {"--video-codec", "rawvideo"}, "322x182"}),
    [](auto const& row) { return row.param.name; });

TEST(Text, TellsAnchorsAndSizes)
{
    media_test::TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), configText());
    ASSERT_EQ(
        e2e::run({"sample", folder.file("f.ts"), "--seconds", "0.2", "--size", "320x240", "--fps", "25"}).exitCode, 0);
    e2e::Result const result = e2e::run({"text", folder.file("f.ts"), "-c", folder.file("c.json")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 5U);
    for (std::size_t number = 0; number < lines.size(); ++number) {
        SCOPED_TRACE(lines[number]);
        SwJsonObject const line = clip_test::parseLine(lines[number]);
        EXPECT_EQ(line["frame"].toInt(), static_cast<std::int64_t>(number));
        EXPECT_DOUBLE_EQ(line["pts"].toDouble(), 1.0 + 0.04 * static_cast<double>(number));
        SwJsonArray const& draws = line["draws"].toArray();
        ASSERT_EQ(draws.size(), 3U);
        struct Place {
            int x;
            int y;
            int size;
        };
        std::vector<Place> const places = {{6, 8, 13}, {112, 194, 21}, {288, 120, 17}};
        for (std::size_t block = 0; block < 3; ++block) {
            SwJsonObject const& draw = draws[block].toObject();
            EXPECT_EQ(draw["x"].toInt(), places[block].x);
            EXPECT_EQ(draw["y"].toInt(), places[block].y);
            EXPECT_EQ(draw["size"].toInt(), places[block].size);
        }
    }
}

}  // namespace
