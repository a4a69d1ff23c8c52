// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where a block's text and box stand in the picture, in pixels. Everything is computed in single
// precision and scaled by the picture's height.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace stanag_overlay {

/// Sizes in a configuration are pixels in a picture of this many lines.
inline constexpr float kReferenceLines = 1080.0F;
/// Space between text and box edge at that height.
inline constexpr float kMarginPx = 5.0F;
/// Not scaled.
inline constexpr float kCornerRadiusPx = 4.0F;

/// Drops the fraction; values beyond int saturate, not-a-number gives 0.
inline int truncateToInt(float value)
{
    // 2^31 is the first float above the range: the largest int itself is no float.
    if (value >= 2147483648.0F) {
        return std::numeric_limits<int>::max();
    }
    if (value < -2147483648.0F) {
        return std::numeric_limits<int>::min();
    }
    return std::isnan(value) ? 0 : static_cast<int>(value);
}

/// Nearest integer, halves away from zero; saturates like truncateToInt.
inline int roundHalfAway(float value)
{
    return truncateToInt(std::round(value));
}

/// Sum that wraps: a box measured at the edge of int stays defined.
inline int addWrapping(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

/// An odd coordinate moves up by one, an even one stays: chroma covers two by two pixels. -3 gives -2.
inline int makeEven(int value)
{
    return static_cast<int>((static_cast<std::uint32_t>(value) + 1U) & ~std::uint32_t{1});
}

/// A corner's coordinate from a fraction of the picture's side.
inline int anchorPx(float sidePx, float fraction)
{
    return makeEven(truncateToInt(sidePx * fraction));
}

/// Pen thickness in pixels for a configured one: at least 1.
inline int penThicknessPx(float scale, std::int32_t thickness)
{
    int const scaled = roundHalfAway(scale * static_cast<float>(thickness));
    return scaled <= 0 ? 1 : scaled;
}

}  // namespace stanag_overlay
