// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Extended precision: 64 bits of fraction, the long double of an x86 processor. Elsewhere a long double has 113, and
// the same text and the same payload would be another number. Whoever computes in long double rounds here after each
// conversion and operation, so that a configuration means the same on every processor; on x86 nothing is to be done.
// Internal to this project: not installed, not included by public headers.
#pragma once

#include <array>
#include <bit>
#include <cerrno>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <locale.h>
#include <stdlib.h>

namespace sw_detail {

static_assert(LDBL_MANT_DIG == 64 || LDBL_MANT_DIG == 113, "other widths of long double are not rounded to 64 bits");
static_assert(LDBL_MAX_EXP == 16384 && LDBL_MIN_EXP == -16381, "both widths have the exponents of 15 bits");

/// The nearest number of 64 bits of fraction, halves to even; infinite beyond the largest one, and below the smallest
/// normal one with fewer bits. `Number` is long double; where that has 64 bits, tests take another type of 113.
template <typename Number>
Number extended(Number number)
{
    if constexpr (std::numeric_limits<Number>::digits == 64) {
        return number;
    } else {
        // Sign, 15 bits of exponent and 112 of fraction are one whole number, so that a fraction that overflows goes
        // on into the exponent, and infinity follows the largest number.
        constexpr int kSurplusBits = 49;
        constexpr std::uint64_t kSurplus = (std::uint64_t{1} << kSurplusBits) - 1;
        constexpr std::uint64_t kExponent = 0x7FFF000000000000;
        constexpr std::size_t kLow = std::endian::native == std::endian::little ? 0 : 1;
        static_assert(sizeof(Number) == 16);
        auto bits = std::bit_cast<std::array<std::uint64_t, 2>>(number);
        std::uint64_t& low = bits[kLow];
        std::uint64_t& high = bits[1 - kLow];
        if ((high & kExponent) == kExponent) {
            return number;  // infinity and not-a-number
        }
        std::uint64_t const isOdd = (low >> kSurplusBits) & 1;
        std::uint64_t const before = low;
        low += kSurplus / 2 + isOdd;
        high += low < before ? 1 : 0;
        low &= ~kSurplus;
        return std::bit_cast<Number>(bits);
    }
}

/// As readExtended() below; `convert` is the reading of the wide type.
template <typename Number>
Number readExtendedWith(Number (*convert)(char const*, char**, locale_t), char const* text, char** end, locale_t locale)
{
    errno = 0;
    Number const wide = convert(text, end, locale);
    Number const number = extended(wide);
    if constexpr (std::numeric_limits<Number>::digits != 64) {
        // What is rounded up to the smallest normal number has lost nothing that counts.
        constexpr Number kTooSmall = static_cast<Number>(LDBL_MIN) * (1 - static_cast<Number>(0x1p-65L));
        Number const size = wide < 0 ? -wide : wide;
        bool const isInexact = errno == ERANGE || number < wide || number > wide;
        bool const isInfinite = number - number != 0;
        errno = isInexact && (isInfinite || size < kTooSmall) ? ERANGE : 0;
    }
    return number;
}

/// Reads a number as strtold_l does where long double has 64 bits of fraction: "0.1" is
/// 0xCCCCCCCCCCCCCCCDp-67 everywhere. Afterwards errno is ERANGE when the number is too large for that, or so small
/// that it lost bits; else 0. Where long double is wider a text is rounded twice, which tells only when it is nearer to
/// the middle between two numbers than 113 bits can show: that takes more than 20 decimals, more than 32 digits or an
/// exponent, and then bad luck.
inline long double readExtended(char const* text, char** end, locale_t locale)
{
    return readExtendedWith(strtold_l, text, end, locale);
}

}  // namespace sw_detail
