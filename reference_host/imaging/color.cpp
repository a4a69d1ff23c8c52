// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// RGB to YCbCr after ITU-R BT.601 and BT.709; used once for each draw.
#include "imaging/color.h"

#include <algorithm>
#include <cmath>

namespace imaging {
namespace {

constexpr int kFirstLineCountOfBt709 = 720;

/// Nearest level, halves away from zero, held to 0..255.
std::uint8_t toLevel(double value)
{
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

}  // namespace

YCbCr toYCbCr(std::uint8_t r, std::uint8_t g, std::uint8_t b, ColorMatrix matrix, bool fullRange, int pictureHeight)
{
    bool const is709 =
        matrix == ColorMatrix::Bt709 || (matrix == ColorMatrix::Auto && pictureHeight >= kFirstLineCountOfBt709);
    double const kr = is709 ? 0.2126 : 0.299;
    double const kb = is709 ? 0.0722 : 0.114;
    double const red = r / 255.0;
    double const green = g / 255.0;
    double const blue = b / 255.0;
    double const luma = kr * red + (1 - kr - kb) * green + kb * blue;
    double const cb = (blue - luma) / (2 * (1 - kb));
    double const cr = (red - luma) / (2 * (1 - kr));
    if (fullRange) {
        return {toLevel(255 * luma), toLevel(128 + 255 * cb), toLevel(128 + 255 * cr)};
    }
    return {toLevel(16 + 219 * luma), toLevel(128 + 224 * cb), toLevel(128 + 224 * cr)};
}

}  // namespace imaging
