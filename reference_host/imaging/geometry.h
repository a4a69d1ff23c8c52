// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Boxes in 64 bits, in which neither far anchors nor long texts overflow.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace imaging {

/// Pixels from `left`, `top` inclusive to `right`, `bottom` exclusive.
struct Box {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
    std::int64_t width() const { return right - left; }
    std::int64_t height() const { return bottom - top; }
    bool contains(Box const& other) const
    {
        return left <= other.left && top <= other.top && right >= other.right && bottom >= other.bottom;
    }
    Box movedBy(std::int64_t x, std::int64_t y) const { return {left + x, top + y, right + x, bottom + y}; }

    friend bool operator==(Box const&, Box const&) = default;
};

/// The pixels in both; empty when there are none.
inline Box intersectionOf(Box const& a, Box const& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

/// The smallest box around both; an empty box adds nothing.
inline Box unionOf(Box const& a, Box const& b)
{
    if (a.isEmpty() || b.isEmpty()) {
        return a.isEmpty() ? b : a;
    }
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

/// The nearest int.
inline int saturateToInt(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// The even number at or below.
constexpr std::int64_t floorToEven(std::int64_t value)
{
    return value & ~std::int64_t{1};
}

/// The even number at or above.
constexpr std::int64_t ceilToEven(std::int64_t value)
{
    return (value + 1) & ~std::int64_t{1};
}

}  // namespace imaging
