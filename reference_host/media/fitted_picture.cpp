// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bars around pictures whose shape is not the output's; used for live pictures that change their size.
#include "media/fitted_picture.h"

#include "media/nv12_strides.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace media {
namespace {

double aspectOf(AVRational pixel)
{
    return pixel.num > 0 && pixel.den > 0 ? av_q2d(pixel) : 1.0;
}

/// The nearest even number, from 2 to the largest even one within `most`.
int evenWithin(double length, int most)
{
    constexpr double kHalf = 0.5;
    int const even = 2 * static_cast<int>(std::lround(std::clamp(length, 0.0, double(most)) * kHalf));
    return std::clamp(even, 2, std::max(2, most / 2 * 2));
}

int evenMiddle(int outer, int inner)
{
    return (outer - inner) / 4 * 2;
}

void fillRows(std::uint8_t* plane, int stride, int rows, int bytes, int value)
{
    for (std::ptrdiff_t row = 0; row < rows; ++row) {
        std::memset(plane + row * stride, value, static_cast<std::size_t>(bytes));
    }
}

void copyRows(std::uint8_t* to, int toStride, std::uint8_t const* from, int fromStride, int rows, int bytes)
{
    for (std::ptrdiff_t row = 0; row < rows; ++row) {
        std::memcpy(to + row * toStride, from + row * fromStride, static_cast<std::size_t>(bytes));
    }
}

}  // namespace

FittedBox fitInto(int outerWidth, int outerHeight, AVRational outerPixel, int width, int height, AVRational pixel)
{
    double const shape = width * aspectOf(pixel) / (height * aspectOf(outerPixel));
    FittedBox box;
    box.width = evenWithin(outerHeight * shape, outerWidth);
    box.height = evenWithin(outerWidth / shape, outerHeight);
    box.x = evenMiddle(outerWidth, box.width);
    box.y = evenMiddle(outerHeight, box.height);
    return box;
}

void placeInto(MappedNV12 const& outer, FittedBox const& box, MappedNV12 const& inner, ColorFormat color)
{
    constexpr int kBlackLimited = 16;
    constexpr int kNoColor = 128;
    int const evenWidth = (outer.width + 1) / 2 * 2;
    int const yStride = lumaStride(outer);
    int const uvStride = chromaStride(outer);
    fillRows(outer.y, yStride, outer.height, outer.width, color.fullRange ? 0 : kBlackLimited);
    fillRows(outer.uv, uvStride, (outer.height + 1) / 2, evenWidth, kNoColor);
    copyRows(outer.y + std::ptrdiff_t{box.y} * yStride + box.x, yStride, inner.y, lumaStride(inner), box.height,
             box.width);
    copyRows(outer.uv + std::ptrdiff_t{box.y / 2} * uvStride + box.x, uvStride, inner.uv, chromaStride(inner),
             box.height / 2, box.width);
}

}  // namespace media
