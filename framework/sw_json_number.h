// Numbers of the JSON reader, inlined into it: the common forms fast, the others by the plain way. Internal.
#pragma once

#include "sw_json_scan.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sw_detail {

/// What a number token says; `isDouble` selects the field.
struct JsonNumber {
    double real = 0.0;
    std::int64_t whole = 0;
    bool isDouble = false;
};

/// Decimal digits that always fit 64 bits, whatever their values.
constexpr std::ptrdiff_t kSafeDigits = 19;

/// What eight bytes of a little-endian load say as decimal digits, the first on top; a zero byte counts as the
/// digit 0. Pairs, fours and eights are added up within the number.
inline std::uint64_t eightDigits(std::uint64_t bytes)
{
    bytes = (bytes & 0x0F0F0F0F0F0F0F0FU) * (1U + (10U << 8U)) >> 8U;
    bytes = (bytes & 0x00FF00FF00FF00FFU) * (1U + (100U << 16U)) >> 16U;
    return (bytes & 0x0000FFFF0000FFFFU) * (1U + (std::uint64_t{10000} << 32U)) >> 32U;
}

/// Adds the digits at `at` to the mantissa and moves behind them. The mantissa is meaningless once more than
/// kSafeDigits digits went into it.
inline void scanDigits(char const*& at, char const* end, std::uint64_t& mantissa)
{
    static constexpr std::uint64_t kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    if constexpr (std::endian::native == std::endian::little) {
        while (end - at >= 8) {
            std::uint64_t bytes = 0;
            std::memcpy(&bytes, at, sizeof bytes);
            // Only a digit has the upper half 3 both as it is and with 6 added: every other byte leaves a mark.
            std::uint64_t const marks =
                ((bytes & 0xF0F0F0F0F0F0F0F0U) | ((bytes + 0x0606060606060606U) >> 4U & 0x0F0F0F0F0F0F0F0FU)) ^
                0x3333333333333333U;
            int const count = marks != 0 ? firstMarked(marks) : 8;
            if (count == 0) {
                return;
            }
            mantissa = mantissa * kPowers[count] + eightDigits(bytes << (64 - 8 * count));
            at += count;
            if (count < 8) {
                return;
            }
        }
    }
    for (; isDigit(*at); ++at) {
        mantissa = mantissa * 10U + static_cast<std::uint64_t>(*at - '0');
    }
}

/// numerator / 10^digits for up to kSafeDigits digits, rounded once to the nearest double. The numerator is
/// beyond 2^53, so that no result is too small for a normal number.
double nearestQuotient(std::uint64_t numerator, std::ptrdiff_t digits);

/// Reads the number token at `at` and moves behind it; false with the problem otherwise. On failure `at`
/// stands where the reading ended.
bool scanAnyNumber(char const*& at, JsonNumber& number, JsonProblem& problem);

/// As scanAnyNumber, in a text that ends at `end`.
inline bool scanNumber(char const*& at, char const* end, JsonNumber& number, JsonProblem& problem)
{
    static constexpr double kPowers[kSafeDigits + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                                        1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    constexpr std::uint64_t kTwoTo53 = std::uint64_t{1} << 53U;
    bool const isNegative = *at == '-';
    char const* const start = at + (isNegative ? 1 : 0);
    char const* stop = start;
    std::uint64_t mantissa = 0;
    for (; isDigit(*stop); ++stop) {
        mantissa = mantissa * 10U + static_cast<std::uint64_t>(*stop - '0');
    }
    std::ptrdiff_t const wholeDigits = stop - start;
    std::ptrdiff_t decimals = 0;
    bool const isDouble = *stop == '.';
    if (isDouble) {
        char const* const point = stop++;
        scanDigits(stop, end, mantissa);
        decimals = stop - point - 1;
    }
    bool const isWellFormed = wholeDigits > 0 && (*start != '0' || wholeDigits == 1) && isDouble == (decimals > 0);
    // One digit less than is safe without a sign also fits the signed range.
    bool const isShort = wholeDigits + decimals < kSafeDigits + (isDouble ? 1 : 0);
    if (!isWellFormed || !isShort || *stop == 'e' || *stop == 'E') {
        char const* cursor = at;
        bool const read = scanAnyNumber(cursor, number, problem);
        at = cursor;
        return read;
    }
    at = stop;
    number.isDouble = isDouble;
    if (!isDouble) {
        number.whole = static_cast<std::int64_t>(mantissa);
        number.whole = isNegative ? -number.whole : number.whole;
        return true;
    }
    // Both sides of the division are exact, so its one rounding gives the nearest double.
    number.real =
        mantissa <= kTwoTo53 ? static_cast<double>(mantissa) / kPowers[decimals] : nearestQuotient(mantissa, decimals);
    number.real = isNegative ? -number.real : number.real;
    return true;
}

}  // namespace sw_detail
