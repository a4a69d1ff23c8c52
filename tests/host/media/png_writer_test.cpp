// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// PNG output, read back with libpng.
#include "media/png_writer.h"
#include "planes.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <png.h>
#include <stdexcept>
#include <vector>

namespace {

using media_test::Planes;
using media_test::TempFolder;

struct Rgb {
    int r;
    int g;
    int b;
};

struct Image {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::uint8_t> bytes;

    Rgb at(std::size_t x, std::size_t y) const
    {
        std::size_t const start = (y * width + x) * 3;
        return {bytes[start], bytes[start + 1], bytes[start + 2]};
    }
};

Image readPng(std::string const& path)
{
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, path.c_str()) == 0) {
        throw std::runtime_error(png.message);
    }
    png.format = PNG_FORMAT_RGB;
    Image image{png.width, png.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(png))};
    png_image_finish_read(&png, nullptr, image.bytes.data(), 0, nullptr);
    return image;
}

void expectColor(Rgb color, Rgb expected)
{
    EXPECT_NEAR(color.r, expected.r, 2);
    EXPECT_NEAR(color.g, expected.g, 2);
    EXPECT_NEAR(color.b, expected.b, 2);
}

Planes onecolor(int width, int height, int y, int cb, int cr)
{
    Planes planes(width, height);
    for (int row = 0; row < height; ++row) {
        std::memset(&planes.y(0, row), y, static_cast<std::size_t>(width));
    }
    for (int row = 0; row < planes.chromaHeight; ++row) {
        for (int byte = 0; byte < planes.chromaWidth; byte += 2) {
            planes.c(byte, row) = static_cast<std::uint8_t>(cb);
            planes.c(byte + 1, row) = static_cast<std::uint8_t>(cr);
        }
    }
    return planes;
}

TEST(PngWriter, WritesTheColorsOfThePlanes)
{
    TempFolder const folder;
    std::string const path = folder.file("a.png");
    // Pure red in both matrices (BT.601 and BT.709, limited range), and in full range.
    Planes bt601 = onecolor(16, 8, 81, 90, 240);
    media::writePng(path, bt601.mapped(), {false, false});
    expectColor(readPng(path).at(8, 4), {255, 0, 0});
    Planes bt709 = onecolor(16, 8, 63, 102, 240);
    media::writePng(path, bt709.mapped(), {false, true});
    expectColor(readPng(path).at(8, 4), {255, 0, 0});
    Planes full = onecolor(16, 8, 76, 85, 255);
    media::writePng(path, full.mapped(), {true, false});
    expectColor(readPng(path).at(8, 4), {254, 0, 0});
}

TEST(PngWriter, TakesOddAndTinySizes)
{
    TempFolder const folder;
    for (auto const& [width, height] : {std::pair{1, 1}, std::pair{3, 1}, std::pair{1, 5}, std::pair{17, 9}}) {
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        Planes planes = onecolor(width, height, 235, 128, 128);
        media::writePng(folder.file("a.png"), planes.mapped(), {});
        Image const image = readPng(folder.file("a.png"));
        EXPECT_EQ(image.width, static_cast<unsigned>(width));
        EXPECT_EQ(image.height, static_cast<unsigned>(height));
        expectColor(image.at(image.width - 1, image.height - 1), {255, 255, 255});
    }
}

TEST(PngWriter, NamesTheFileWhenTheDiskIsFull)
{
    Planes planes = onecolor(64, 64, 100, 128, 128);
    try {
        media::writePng("/dev/full", planes.mapped(), {});
        FAIL() << "nothing thrown";
    } catch (std::runtime_error const& failure) {
        EXPECT_STREQ(failure.what(), "/dev/full: cannot be written: No space left on device; free some space or choose "
                                     "another folder");
    }
}

}  // namespace
