// Scanning steps of the JSON reader over a zero-terminated text. Internal.
// All of them may look at the terminator, which is neither white space nor digit nor letter.
#pragma once

#include "SwString.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace sw_detail {

/// White space of isspace in the "C" locale: vertical tab and form feed count.
inline bool isSpace(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}
inline bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}
/// A letter of isalpha in the "C" locale.
inline bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

inline char const* skipSpace(char const* at, char const* end)
{
    // The bytes of compact text first, then the indents of a file made for reading, eight blanks at a time.
    constexpr std::uint64_t kEightBlanks = 0x2020202020202020U;
    while (isSpace(*at)) {
        ++at;
        for (std::uint64_t bytes = 0; end - at >= 8; at += 8) {
            std::memcpy(&bytes, at, sizeof bytes);
            if (bytes != kEightBlanks) {
                break;
            }
        }
    }
    return at;
}

/// The first byte of [at, end) that ends a plain run of a string: quote, backslash, control character.
inline char const* endOfPlainRun(char const* at, char const* end)
{
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

/// What a number token says; `isDouble` selects the field.
struct JsonNumber {
    double real = 0.0;
    std::int64_t whole = 0;
    bool isDouble = false;
};

/// Reads the number token at `at` and moves behind it; false with the problem otherwise.
bool scanNumber(char const*& at, JsonNumber& number, JsonProblem& problem);

/// Reads the string whose opening quote is at `at`, of a text that ends at `end`, and moves behind the
/// closing quote. `decoded` refers to the text itself or, when there are escapes, to `scratch`. On failure
/// `at` stands where the problem is.
bool scanString(char const*& at, char const* end, std::string_view& decoded, std::string& scratch,
                JsonProblem& problem);

/// Decodes the escape whose first hex digit is at `at`, with its low surrogate, and appends its UTF-8.
bool scanUnicodeEscape(char const*& at, char const* end, std::string& out, JsonProblem& problem);

}  // namespace sw_detail
