// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Paints the map of the made flight's ground. Every shape repeats after the map's 1024 m, so that it has no
// seam. Used by ground_picture.cpp.
#include "flight/ground_texture.h"

#include "flight/ground_paint.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace flight {
namespace {

constexpr int kSize = 1 << GroundTexture::kSizeBits;
constexpr double kMapM = kSize * GroundTexture::kTexelM;

/// Four bytes to one, rounded.
std::uint8_t mean(int a, int b, int c, int d)
{
    return static_cast<std::uint8_t>((a + b + c + d + 2) / 4);
}

/// Planes of bytes, from which the levels are packed.
struct Planes {
    std::size_t size = 0;  ///< a power of two
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> chroma;  ///< Cb Cr pairs at half the size
};

Planes toPlanes(GroundPaint const& paint)
{
    Planes planes{kSize, std::vector<std::uint8_t>(static_cast<std::size_t>(kSize) * kSize), {}};
    planes.chroma.reserve(planes.luma.size() / 2);
    for (int row = 0; row < kSize; row += 2) {
        for (int column = 0; column < kSize; column += 2) {
            Yuv texel[4];
            for (int i = 0; i < 4; ++i) {
                int const x = column + i % 2;
                int const y = row + i / 2;
                texel[i] = toYuv(paint.at(x, y));
                planes.luma[static_cast<std::size_t>(y) * kSize + static_cast<std::size_t>(x)] = texel[i].y;
            }
            planes.chroma.push_back(mean(texel[0].u, texel[1].u, texel[2].u, texel[3].u));
            planes.chroma.push_back(mean(texel[0].v, texel[1].v, texel[2].v, texel[3].v));
        }
    }
    return planes;
}

/// A plane at half its size; `channels` bytes belong together.
std::vector<std::uint8_t> halved(std::vector<std::uint8_t> const& plane, std::size_t size, std::size_t channels)
{
    auto const at = [&](std::size_t column, std::size_t row, std::size_t channel) -> int {
        return plane[(row * size + column) * channels + channel];
    };
    std::vector<std::uint8_t> half;
    half.reserve(plane.size() / 4);
    for (std::size_t row = 0; row < size; row += 2) {
        for (std::size_t column = 0; column < size; column += 2) {
            for (std::size_t channel = 0; channel < channels; ++channel) {
                half.push_back(mean(at(column, row, channel), at(column + 1, row, channel),
                                    at(column, row + 1, channel), at(column + 1, row + 1, channel)));
            }
        }
    }
    return half;
}

/// Two bytes in one number, the first in the low byte.
std::uint16_t pack(std::uint8_t first, std::uint8_t second)
{
    return static_cast<std::uint16_t>(first | (second << 8U));
}

GroundTexture::Level packed(Planes const& planes, int sizeBits)
{
    GroundTexture::Level level;
    level.sizeBits = sizeBits;
    std::size_t const size = planes.size;
    std::size_t const mask = size - 1;
    auto const luma = [&](std::size_t x, std::size_t y) { return planes.luma[(y & mask) * size + (x & mask)]; };
    std::size_t const pitch = GroundTexture::Level::pitchOf(size);
    level.luma.resize(pitch * size);
    for (std::size_t y = 0; y < size; ++y) {
        for (std::size_t x = 0; x <= size; ++x) {
            level.luma[y * pitch + x] = pack(luma(x, y), luma(x, y + 1));
        }
    }
    std::size_t const half = size / 2;
    std::size_t const halfPitch = GroundTexture::Level::pitchOf(half);
    level.chroma.resize(halfPitch * (half + 1));
    for (std::size_t y = 0; y <= half; ++y) {
        for (std::size_t x = 0; x <= half; ++x) {
            std::size_t const pair = ((y & (half - 1)) * half + (x & (half - 1))) * 2;
            level.chroma[y * halfPitch + x] = pack(planes.chroma[pair], planes.chroma[pair + 1]);
        }
    }
    return level;
}

}  // namespace

Yuv toYuv(Rgb color)
{
    double const red = std::min(static_cast<double>(color.r), 1.0);
    double const green = std::min(static_cast<double>(color.g), 1.0);
    double const blue = std::min(static_cast<double>(color.b), 1.0);
    double const luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    auto const toByte = [](double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 16.0, 240.0)); };
    return {toByte(16.0 + 219.0 * luma), toByte(128.0 + 224.0 * (blue - luma) / 1.8556),
            toByte(128.0 + 224.0 * (red - luma) / 1.5748)};
}

GroundTexture::GroundTexture()
{
    GroundPaint paint(kSize, kTexelM);
    paint.paintFields();
    paint.paintRiver();
    paint.paintRoads();
    paint.paintSolarFarm();
    paint.paintYards();
    paint.paintTarget();
    paint.plantTrees();
    trees_ = paint.trees();
    Planes planes = toPlanes(paint);
    for (int i = 0; i < kLevels; ++i) {
        levels_.push_back(packed(planes, kSizeBits - i));
        planes = {planes.size / 2, halved(planes.luma, planes.size, 1), halved(planes.chroma, planes.size / 2, 2)};
    }
}

GroundTexture const& GroundTexture::shared()
{
    static GroundTexture const texture;
    return texture;
}

std::vector<House> const& houses()
{
    static std::vector<House> const village = {
        {-40, 26, 8, 9, 5, 4.5, 3.0, 0},    {-66, 34, -12, 7, 4.5, 4.5, 2.8, 1}, {-30, -38, 30, 12, 5.5, 5.0, 3.2, 2},
        {36, 34, 84, 7, 4.5, 4.5, 2.6, 0},  {62, 30, 5, 8, 5, 4.5, 3.0, 1},      {88, 38, -8, 7, 4.5, 4.5, 2.8, 3},
        {-92, 30, 3, 6, 4.5, 4.5, 2.6, 0},  {-148, 28, 70, 8, 5, 4.8, 3.0, 1},   {-172, 44, 10, 7, 4.5, 4.5, 2.8, 0},
        {-84, 84, 40, 7, 5, 4.5, 2.8, 0},   {-58, 92, -20, 8, 4.5, 4.5, 2.8, 2}, {-22, 88, 6, 7, 4.5, 4.5, 2.6, 1},
        {14, 92, -5, 8, 5, 4.8, 3.0, 0},    {48, 96, 12, 6, 4.5, 4.5, 2.6, 3},   {-104, -52, 78, 14, 6.5, 6.0, 3.4, 3},
        {-78, -70, -12, 10, 5, 5.0, 3, 2},  {40, -30, 12, 13, 6.5, 5.5, 3.0, 3}, {16, -56, 12, 7, 4.5, 4.5, 2.8, 0},
        {-196, 120, 20, 9, 5, 4.5, 3, 0},   {150, 96, -15, 8, 5, 4.5, 2.8, 1},   {210, 30, 4, 9, 5, 4.5, 3.0, 0},
        {-230, -110, 50, 15, 7, 6, 3.4, 2}, {260, -180, 15, 8, 5, 4.5, 2.8, 0},  {-60, -210, 5, 13, 6, 5.5, 3, 3},
    };
    return village;
}

double pavedRoadY(double x)
{
    double const turn = 2.0 * std::numbers::pi / kMapM;
    return 62.0 + 14.0 * std::sin(turn * x) + 5.0 * std::sin(3.0 * turn * x + 1.0);
}

double trackX(double y)
{
    double const turn = 2.0 * std::numbers::pi / kMapM;
    return -118.0 + 22.0 * std::sin(turn * y + 0.6) + 6.0 * std::sin(4.0 * turn * y);
}

}  // namespace flight
