// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pixel loops as they are defined; the vector forms in nv12_blend.cpp are tested against these.
#include "imaging/nv12_blend.h"

#include <algorithm>

namespace imaging::plain {
namespace {

std::uint8_t* addressOf(PlanePlace const& place, Span const& span)
{
    return place.plane + (place.origin + span.row * place.stride + span.column);
}

}  // namespace

void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level)
{
    for (std::size_t s = 0; s < count; ++s) {
        auto* const luma = addressOf(place, spans[s]);
        for (std::int32_t i = 0; i < spans[s].length; ++i) {
            luma[i] = blendInk(luma[i], level, coverage[spans[s].offset + static_cast<std::uint32_t>(i)]);
        }
    }
}

void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr)
{
    for (std::size_t s = 0; s < count; ++s) {
        auto* const chroma = addressOf(place, spans[s]);
        for (std::int32_t i = 0; i < spans[s].length; ++i) {
            auto const level = i % 2 == 0 ? cb : cr;
            chroma[i] = blendInk(chroma[i], level, coverage[spans[s].offset + static_cast<std::uint32_t>(i)]);
        }
    }
}

void blendLumaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t level,
                   int weight)
{
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const luma = first + static_cast<std::ptrdiff_t>(row) * stride;
        std::transform(luma, luma + width, luma, [&](std::uint8_t under) { return blendLevel(under, level, weight); });
    }
}

void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight)
{
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const chroma = first + static_cast<std::ptrdiff_t>(row) * stride;
        for (std::size_t i = 0; i < pairs; ++i) {
            chroma[2 * i] = blendLevel(chroma[2 * i], cb, weight);
            chroma[2 * i + 1] = blendLevel(chroma[2 * i + 1], cr, weight);
        }
    }
}

void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows)
{
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const under = to + static_cast<std::ptrdiff_t>(row) * toStride;
        auto const* const over = from + static_cast<std::ptrdiff_t>(row) * fromStride;
        for (std::size_t i = 0; i < width; ++i) {
            under[i] = std::max(under[i], over[i]);
        }
    }
}

void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to)
{
    for (std::size_t i = 0; i < pairs; ++i) {
        to[2 * i] = to[2 * i + 1] = meanOfFour(upper[2 * i], upper[2 * i + 1], lower[2 * i], lower[2 * i + 1]);
    }
}

}  // namespace imaging::plain
