// White space and strings: scanning steps of the JSON reader over a zero-terminated text. Internal.
// All of them may look at the terminator, which is neither white space nor digit nor letter.
#pragma once

#include "SwString.h"
#include "sw_text.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace sw_detail {

/// Quicker than isSpace, and false for every byte of compact text outside strings.
inline bool mayBeSpace(char byte)
{
    return static_cast<unsigned char>(byte) <= ' ';
}
/// A letter of isalpha in the "C" locale.
inline bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

/// The first of the bytes, counted from the one that stands first in memory, that is not zero.
inline int firstMarked(std::uint64_t bytes)
{
    return (std::endian::native == std::endian::little ? std::countr_zero(bytes) : std::countl_zero(bytes)) / 8;
}

inline char const* skipSpace(char const* at, char const* end)
{
    // Most often there is none, or one byte, or the indent of a file made for reading: eight blanks at a time.
    constexpr std::uint64_t kEightBlanks = 0x2020202020202020U;
    while (mayBeSpace(*at) && isSpace(*at)) {
        ++at;
        if (!mayBeSpace(*at)) {
            return at;
        }
        std::uint64_t others = 0;
        for (; others == 0 && end - at >= 8; at += others == 0 ? 8 : firstMarked(others)) {
            std::memcpy(&others, at, sizeof others);
            others ^= kEightBlanks;
        }
    }
    return at;
}

/// The first byte of [at, end) that ends a plain run of a string: quote, backslash, control character.
inline char const* endOfPlainRun(char const* at, char const* end)
{
#ifdef __SSE2__
    __m128i const quoteBytes = _mm_set1_epi8('"');
    __m128i const backslashBytes = _mm_set1_epi8('\\');
    __m128i const lastControls = _mm_set1_epi8(0x1F);
    for (; end - at >= 16; at += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
        __m128i const controls = _mm_cmpeq_epi8(_mm_max_epu8(bytes, lastControls), lastControls);
        __m128i const ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, quoteBytes), _mm_cmpeq_epi8(bytes, backslashBytes));
        auto const marks = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(controls, ends)));
        if (marks != 0) {
            return at + std::countr_zero(marks);
        }
    }
#endif
    // Eight bytes at a time; each test marks the top bit of a byte that matches. A borrow can mark a byte
    // wrongly, but only above one that matches, and the lowest mark decides.
    constexpr std::uint64_t kOnes = 0x0101010101010101U;
    constexpr std::uint64_t kTops = 0x8080808080808080U;
    if constexpr (std::endian::native == std::endian::little) {
        while (end - at >= 8) {
            std::uint64_t bytes = 0;
            std::memcpy(&bytes, at, sizeof bytes);
            std::uint64_t const quotes = bytes ^ (kOnes * '"');
            std::uint64_t const backslashes = bytes ^ (kOnes * '\\');
            std::uint64_t const marks = (((bytes - kOnes * 0x20U) & ~bytes) | ((quotes - kOnes) & ~quotes) |
                                         ((backslashes - kOnes) & ~backslashes)) &
                                        kTops;
            if (marks != 0) {
                return at + std::countr_zero(marks) / 8;
            }
            at += 8;
        }
    }
    while (at < end && *at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= 0x20U) {
        ++at;
    }
    return at;
}

/// Where a scan failed and why.
struct JsonProblem {
    char const* at = nullptr;
    std::string_view message;
};

/// As scanString, for a string that is more than a plain run.
bool scanEscapedString(char const*& at, char const* end, std::string_view& decoded, std::string& scratch,
                       JsonProblem& problem);

/// Reads the string whose opening quote is at `at`, of a text that ends at `end`, and moves behind the
/// closing quote. `decoded` refers to the text itself or, when there are escapes, to `scratch`. On failure
/// `at` stands where the problem is.
inline bool scanString(char const*& at, char const* end, std::string_view& decoded, std::string& scratch,
                       JsonProblem& problem)
{
    char const* const start = at + 1;
    char const* const stop = endOfPlainRun(start, end);
    if (stop != end && *stop == '"') {
        decoded = std::string_view(start, static_cast<std::size_t>(stop - start));
        at = stop + 1;
        return true;
    }
    // By way of a copy, so that the caller's cursor may stay in a register.
    char const* cursor = at;
    bool const read = scanEscapedString(cursor, end, decoded, scratch, problem);
    at = cursor;
    return read;
}

/// Decodes the escape whose first hex digit is at `at`, with its low surrogate, and appends its UTF-8.
bool scanUnicodeEscape(char const*& at, char const* end, std::string& out, JsonProblem& problem);

}  // namespace sw_detail
