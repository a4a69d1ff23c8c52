// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Number narrowings shared by the framework's units. Internal.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace sw_detail {

/// The float nearest to a double. From halfway between the largest float and the next power of two on,
/// that is infinity, as IEEE 754 has it; the cast itself only sees numbers that have a nearest float.
inline float nearestFloat(double number)
{
    constexpr double kRoundsToInfinity = 0x1.FFFFFFp127;
    if (std::abs(number) >= kRoundsToInfinity) {
        return std::copysign(std::numeric_limits<float>::infinity(), number < 0.0 ? -1.0F : 1.0F);
    }
    return static_cast<float>(number);
}

/// A size as an int; what lies beyond becomes the greatest one.
inline int saturatedInt(std::size_t size)
{
    constexpr int kMost = std::numeric_limits<int>::max();
    return size < static_cast<std::size_t>(kMost) ? static_cast<int>(size) : kMost;
}

/// A whole number as a 64-bit integer; what lies beyond, infinities included, becomes the nearest limit.
inline std::int64_t saturatedInt64(double whole)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (whole >= kTwoTo63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (whole < -kTwoTo63) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(whole);
}

}  // namespace sw_detail
