// Paints the map of the made flight's ground. Every shape repeats after the map's 1024 m, so that it has no
// seam. Used by ground_picture.cpp.
#include "ground_texture.h"

#include "ground_paint.h"

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

GroundTexture::Level firstLevel(GroundPaint const& paint)
{
    GroundTexture::Level level;
    level.sizeBits = GroundTexture::kSizeBits;
    level.luma.resize(static_cast<std::size_t>(kSize) * kSize);
    level.chroma.resize(level.luma.size() / 2);
    for (int row = 0; row < kSize; row += 2) {
        for (int column = 0; column < kSize; column += 2) {
            Yuv texel[4];
            for (int i = 0; i < 4; ++i) {
                Rgb const& color = paint.at(column + i % 2, row + i / 2);
                texel[i] = toYuv(color.r, color.g, color.b);
                level.luma[static_cast<std::size_t>(row + i / 2) * kSize + static_cast<std::size_t>(column + i % 2)] =
                    texel[i].y;
            }
            std::size_t const pair = static_cast<std::size_t>(row / 2) * kSize + static_cast<std::size_t>(column);
            level.chroma[pair] = mean(texel[0].u, texel[1].u, texel[2].u, texel[3].u);
            level.chroma[pair + 1] = mean(texel[0].v, texel[1].v, texel[2].v, texel[3].v);
        }
    }
    return level;
}

/// A plane at half its size; `channels` bytes belong together.
std::vector<std::uint8_t> halved(std::vector<std::uint8_t> const& plane, int size, int channels)
{
    auto const at = [&](int column, int row, int channel) -> int {
        return plane[static_cast<std::size_t>((row * size + column) * channels + channel)];
    };
    std::vector<std::uint8_t> half;
    half.reserve(plane.size() / 4);
    for (int row = 0; row < size; row += 2) {
        for (int column = 0; column < size; column += 2) {
            for (int channel = 0; channel < channels; ++channel) {
                half.push_back(mean(at(column, row, channel), at(column + 1, row, channel),
                                    at(column, row + 1, channel), at(column + 1, row + 1, channel)));
            }
        }
    }
    return half;
}

}  // namespace

Yuv toYuv(double red, double green, double blue)
{
    double const luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    auto const toByte = [](double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 16.0, 240.0)); };
    return {toByte(16.0 + 219.0 * std::clamp(luma, 0.0, 1.0)), toByte(128.0 + 224.0 * (blue - luma) / 1.8556),
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
    paint.paintTrees();
    levels_.push_back(firstLevel(paint));
    for (int i = 1; i < kLevels; ++i) {
        Level const& above = levels_.back();
        int const size = 1 << above.sizeBits;
        Level next{above.sizeBits - 1, halved(above.luma, size, 1), halved(above.chroma, size / 2, 2)};
        levels_.push_back(std::move(next));
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
