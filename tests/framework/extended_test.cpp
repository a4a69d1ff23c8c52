// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Rounding to 64 bits of fraction. On x86, where long double has no more, the way of the wider ones is taken here by a
// type of 113 bits and must end where the processor and the C library end with 64.
#include "sw_extended.h"

#include "sw_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#if LDBL_MANT_DIG == 64
using Wide = __float128;
extern "C" Wide strtof128_l(char const* text, char** end, locale_t locale) noexcept;
#else
using Wide = long double;
#endif

namespace sw_detail {
namespace {

#if LDBL_MANT_DIG == 64
constexpr auto kReadWide = strtof128_l;
#else
constexpr auto kReadWide = strtold_l;
#endif

constexpr std::uint64_t kOneHigh = 0x3FFF000000000000;
constexpr std::uint64_t kInfinityHigh = 0x7FFF000000000000;
constexpr std::uint64_t kSign = std::uint64_t{1} << 63;

Wide wideOf(std::uint64_t high, std::uint64_t low)
{
    return std::bit_cast<Wide>(std::array<std::uint64_t, 2>{low, high});
}

std::array<std::uint64_t, 2> bitsOf(Wide number)
{
    auto const bits = std::bit_cast<std::array<std::uint64_t, 2>>(number);
    return {bits[1], bits[0]};
}

TEST(Extended, RoundsToTheNearestHalvesToEven)
{
    struct Row {
        char const* name;
        std::array<std::uint64_t, 2> number;
        std::array<std::uint64_t, 2> rounded;
    };
    constexpr std::uint64_t kLast = std::uint64_t{1} << 49;
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 48;
    std::vector<Row> const rows = {
        {"zero", {0, 0}, {0, 0}},
        {"negative zero", {kSign, 0}, {kSign, 0}},
        {"one", {kOneHigh, 0}, {kOneHigh, 0}},
        {"a number of 64 bits", {kOneHigh, kLast}, {kOneHigh, kLast}},
        {"below the half", {kOneHigh, kHalf - 1}, {kOneHigh, 0}},
        {"half below even", {kOneHigh, kHalf}, {kOneHigh, 0}},
        {"half below odd", {kOneHigh, kLast + kHalf}, {kOneHigh, 2 * kLast}},
        {"above the half", {kOneHigh, kHalf + 1}, {kOneHigh, kLast}},
        {"negative", {kSign | kOneHigh, kHalf + 1}, {kSign | kOneHigh, kLast}},
        {"on into the upper half", {kOneHigh, ~std::uint64_t{0}}, {kOneHigh + 1, 0}},
        {"on into the exponent", {0x3FFEFFFFFFFFFFFF, ~std::uint64_t{0}}, {kOneHigh, 0}},
        {"largest of 64 bits", {0x7FFEFFFFFFFFFFFF, ~(kLast - 1)}, {0x7FFEFFFFFFFFFFFF, ~(kLast - 1)}},
        {"not far above it", {0x7FFEFFFFFFFFFFFF, ~kHalf}, {0x7FFEFFFFFFFFFFFF, ~(kLast - 1)}},
        {"nearer to infinity", {0x7FFEFFFFFFFFFFFF, ~(kHalf - 1)}, {kInfinityHigh, 0}},
        {"infinity", {kInfinityHigh, 0}, {kInfinityHigh, 0}},
        {"not-a-number", {kInfinityHigh, 1}, {kInfinityHigh, 1}},
        {"smallest of 64 bits", {0, kLast}, {0, kLast}},
        {"half of it", {0, kHalf}, {0, 0}},
        {"more than half of it", {0, kHalf + 1}, {0, kLast}},
        {"up to the smallest normal one", {0x0000FFFFFFFFFFFF, ~std::uint64_t{0}}, {0x0001000000000000, 0}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(bitsOf(extended(wideOf(row.number[0], row.number[1]))), row.rounded);
    }
}

TEST(Extended, LongDoubleNeverHasMoreThan64Bits)
{
    long double const volatile third = 1.0L;
    EXPECT_EQ(extended(third / 3.0L), 0xAAAAAAAAAAAAAAABp-65L);
    EXPECT_EQ(extended(0xFFFFFFFFFFFFFFFFp0L), 0xFFFFFFFFFFFFFFFFp0L);
    EXPECT_EQ(extended(-0x1p-16445L), -0x1p-16445L);
}

#if LDBL_MANT_DIG == 64
// Numbers of every size, with fractions of all kinds near the places where rounding turns.
Wide randomWide(std::mt19937_64& random)
{
    std::uint64_t high = random();
    std::uint64_t low = random();
    if (random() % 4 == 0) {
        high = (high & ~kInfinityHigh) | (random() % 2 == 0 ? 0 : 0x7FFE000000000000);
    }
    constexpr std::array<std::uint64_t, 4> kBetween{0, 0x0000FFFFFFFFFFFF, 0x0001000000000000, 0x0001000000000001};
    if (random() % 2 == 0) {
        low = (low & ~std::uint64_t{0x1FFFFFFFFFFFF}) | kBetween[random() % 4];
    }
    return wideOf(high, low);
}

TEST(Extended, IsWhatTheProcessorRoundsTo)
{
    std::mt19937_64 random(64);
    for (int round = 0; round < 200000; ++round) {
        Wide const wide = randomWide(random);
        auto const rounded = bitsOf(extended(wide));
        if ((rounded[0] & kInfinityHigh) == kInfinityHigh && (bitsOf(wide)[0] & kInfinityHigh) == kInfinityHigh) {
            EXPECT_EQ(rounded, bitsOf(wide)) << "infinity and not-a-number stay as they are";
            continue;
        }
        ASSERT_EQ(rounded, bitsOf(static_cast<Wide>(static_cast<long double>(wide)))) << "round " << round;
    }
}
#endif

struct Reading {
    Wide number = 0;
    std::size_t used = 0;
    bool isInRange = false;
};

Reading readWide(std::string const& text)
{
    char* end = nullptr;
    Wide const number = readExtendedWith(kReadWide, text.c_str(), &end, classicLocale());
    return {number, static_cast<std::size_t>(end - text.c_str()), errno != ERANGE};
}

Reading readHere(std::string const& text)
{
    char* end = nullptr;
    Wide const number = readExtended(text.c_str(), &end, classicLocale());
    return {number, static_cast<std::size_t>(end - text.c_str()), errno != ERANGE};
}

TEST(Extended, Texts)
{
    struct Row {
        char const* name;
        std::string text;
        long double number;
        bool isInRange = true;
    };
    long double const infinity = std::numeric_limits<long double>::infinity();
    std::vector<Row> const rows = {
        {"a tenth", "0.1", 0xCCCCCCCCCCCCCCCDp-67L},
        {"two and a billionth", "2.000000001", 0x8000000112E0BE82p-62L},
        {"66 bits", "18446744073709551617", 0x1p64L},
        {"largest", "0xFFFFFFFFFFFFFFFFp16320", 0xFFFFFFFFFFFFFFFFp16320L},
        {"nearer to the largest", "0xFFFFFFFFFFFFFFFF.7p16320", 0xFFFFFFFFFFFFFFFFp16320L},
        {"just nearer to infinity", "0xFFFFFFFFFFFFFFFF.8p16320", infinity, false},
        {"largest of 113 bits", "1.18973149535723176508575932662800702e4932", infinity, false},
        {"too large for every one", "-1e5000", -infinity, false},
        {"infinity in letters", "inf", infinity},
        {"smallest normal", "0x1p-16382", 0x1p-16382L},
        {"rounded up to it from 64 bits", "0x0.FFFFFFFFFFFFFFFF8p-16382", 0x1p-16382L},
        {"rounded up to it from more than 113 bits", "0x0.FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFp-16382", 0x1p-16382L},
        {"rounded up to it and too small", "0x0.FFFFFFFFFFFFFFFF4p-16382", 0x1p-16382L, false},
        {"rounded down from just below it", "0x0.FFFFFFFFFFFFFFFE4p-16382", 0x7FFFFFFFFFFFFFFFp-16445L, false},
        {"below it without loss", "0x1p-16383", 0x1p-16383L},
        {"smallest", "0x1p-16445", 0x1p-16445L},
        {"one that 113 bits still hold", "0x1.8p-16445", 0x1p-16444L, false},
        {"half of the smallest", "0x1p-16446", 0.0L, false},
        {"nothing is left", "1e-5000", 0.0L, false},
        {"zero", "0e-5000", 0.0L},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        for (Reading const& reading : {readHere(row.text), readWide(row.text)}) {
            EXPECT_EQ(bitsOf(reading.number), bitsOf(static_cast<Wide>(row.number)));
            EXPECT_EQ(reading.used, row.text.size());
            EXPECT_EQ(reading.isInRange, row.isInRange);
        }
    }
    EXPECT_EQ(readHere("12 m").used, 2U);
    EXPECT_EQ(readWide("12 m").used, 2U);
    EXPECT_EQ(readHere("abc").used, 0U);
    EXPECT_EQ(readWide("abc").used, 0U);
    EXPECT_TRUE(readWide("nan").isInRange);
    EXPECT_TRUE(readWide("nan").number != readWide("nan").number);
}

#if LDBL_MANT_DIG == 64
bool operator==(Reading const& a, Reading const& b)
{
    return bitsOf(a.number) == bitsOf(b.number) && a.used == b.used && a.isInRange == b.isInRange;
}

std::string randomDigits(std::mt19937& random, std::size_t most, char const* digits, std::uint32_t base)
{
    std::string text;
    for (std::size_t length = 1 + random() % most; length > 0; --length) {
        text += digits[random() % base];
    }
    return text;
}

// Decimal numbers of every size, and hexadecimal ones near both ends of the range.
std::string randomNumber(std::mt19937& random)
{
    if (random() % 3 == 0) {
        int const exponent =
            random() % 2 == 0 ? -16300 - static_cast<int>(random() % 240) : 16200 + static_cast<int>(random() % 200);
        return "0x" + randomDigits(random, 20, "0137f8Fe", 8) + '.' + randomDigits(random, 20, "0137f8Fe", 8) + 'p' +
               std::to_string(exponent);
    }
    std::string text = randomDigits(random, 15, "0123456789", 10) + '.' + randomDigits(random, 20, "0123456789", 10);
    switch (random() % 4) {
    case 0:
        return text + 'e' + std::to_string(static_cast<int>(random() % 10000) - 5000);
    case 1:
        return text + "e-" + std::to_string(4900 + random() % 70);
    default:
        return '-' + text;
    }
}

TEST(Extended, TextsAreWhatTheCLibraryReadsWith64Bits)
{
    std::mt19937 random(113);
    for (int round = 0; round < 100000; ++round) {
        std::string const text = randomNumber(random);
        ASSERT_EQ(readWide(text), readHere(text)) << text;
    }
}
#endif

}  // namespace
}  // namespace sw_detail
