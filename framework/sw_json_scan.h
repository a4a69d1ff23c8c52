// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The tokens of JSON text: white space, strings and numbers of a zero-terminated text. Internal.
// Each step takes the cursor and gives the new one, null after a problem; so it stays in a register of the processor.
// All of them may look at the terminator, which is neither white space nor digit nor letter.
#pragma once

#include "sw_text.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#ifdef __SSE2__
#include <bit>
#include <emmintrin.h>
#endif

namespace sw_detail {

/// Where a step failed and why.
struct JsonProblem {
    /// Notes it and gives what the step has to return.
    char const* note(char const* where, std::string_view what)
    {
        at = where;
        message = what;
        return nullptr;
    }
    char const* at = nullptr;
    std::string_view message;
};

/// A letter of isalpha in the "C" locale.
inline bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

inline char const* skipSpace(char const* at)
{
    while (isSpace(*at)) {
        ++at;
    }
    return at;
}

/// The first byte of [at, end) that ends a plain run of a string: quote, backslash, control character. While reading
/// these end what can be taken as it is, while writing they need an escape.
inline char const* endOfPlainRun(char const* at, char const* end)
{
#ifdef __SSE2__
    __m128i const quotes = _mm_set1_epi8('"');
    __m128i const backslashes = _mm_set1_epi8('\\');
    __m128i const lastControls = _mm_set1_epi8(0x1F);
    for (; end - at >= 16; at += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
        __m128i const controls = _mm_cmpeq_epi8(_mm_max_epu8(bytes, lastControls), lastControls);
        __m128i const ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, quotes), _mm_cmpeq_epi8(bytes, backslashes));
        auto const marks = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(controls, ends)));
        if (marks != 0) {
            return at + std::countr_zero(marks);
        }
    }
#endif
    while (at != end && *at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= 0x20U) {
        ++at;
    }
    return at;
}

/// Decodes the string whose opening quote is at `at`, of a text that ends at `end`.
char const* scanString(char const* at, char const* end, std::string& decoded, JsonProblem& problem);

/// Decodes the escape whose first hex digit is at `at`, with its low surrogate, and appends its UTF-8.
char const* scanUnicodeEscape(char const* at, char const* end, std::string& out, JsonProblem& problem);

/// Steps over digits and adds them to the number, which is meaningless once there are too many.
inline char const* scanDigits(char const* at, std::uint64_t& number)
{
    for (; isDigit(*at); ++at) {
        number = number * 10U + static_cast<std::uint64_t>(*at - '0');
    }
    return at;
}

/// The token [start, end) by the rules of strtod in the "C" locale: false on a range error, in either direction.
bool readDouble(char const* start, char const* end, double& number);

/// Of digits around one point, when both the digits as one number and the power of ten that divides them are doubles:
/// then the one rounding of the division gives the nearest double. False for other tokens.
inline bool readShortDouble(char const* start, char const* end, std::uint64_t digits, std::ptrdiff_t decimals,
                            double& number)
{
    constexpr std::ptrdiff_t kMostBytes = 20;  // sign, point, 18 digits: their number fits 64 bits
    static constexpr double kPowers[kMostBytes] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    if (end - start > kMostBytes || digits > std::uint64_t{1} << 53U) {
        return false;
    }
    // No branch on the sign, which nobody can predict.
    number = std::copysign(static_cast<double>(digits) / kPowers[decimals], *start == '-' ? -1.0 : 1.0);
    return true;
}

}  // namespace sw_detail
