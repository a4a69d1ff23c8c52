// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Doubles in fixed notation: the roundings by name, and everything against the C library's "%.*f".
#include "sw_fixed_number.h"

#include "comma_locale.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace {

std::string fixed(double number, int decimals)
{
    std::string text;
    sw_detail::appendFixed(text, number, decimals);
    return text;
}

std::string printed(double number, int decimals)
{
    std::array<char, sw_detail::fixedLength(sw_detail::kMaxFractionDigits) + 1> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, number);
    return buffer.data();
}

TEST(FixedNumber, RoundsOnTheExactValueHalvesToEven)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    struct Row {
        double number;
        int decimals;
        char const* expected;
    };
    Row const rows[] = {
        {0.0, 0, "0"},
        {-0.0, 2, "-0.00"},
        {0.5, 0, "0"},
        {1.5, 0, "2"},
        {2.5, 0, "2"},
        {-2.5, 0, "-2"},
        {0.125, 2, "0.12"},
        {0.375, 2, "0.38"},
        {0.05, 1, "0.1"},
        {-0.04, 1, "-0.0"},
        {0.0000005, 6, "0.000000"},
        {0.0000015, 6, "0.000002"},
        {9.9999996, 6, "10.000000"},
        {1.5, 6, "1.500000"},
        {1.5, 12, "1.500000000000"},
        {1.5, 13, "1.5000000000000"},
        {4503599627370495.5, 6, "4503599627370495.500000"},
        {18446744073709.55, 6, "18446744073709.550781"},
        {1e22, 2, "10000000000000000000000.00"},
        {5e-324, 3, "0.000"},
        {kInfinity, 3, "inf"},
        {-kInfinity, 3, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), 3, "nan"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(fixed(row.number, row.decimals), row.expected) << row.number << " with " << row.decimals;
    }
}

TEST(FixedNumber, TheLongestNumberFitsItsRoom)
{
    double const largest = -std::numeric_limits<double>::max();
    EXPECT_EQ(fixed(largest, 1074).size(), sw_detail::fixedLength(1074));
    EXPECT_EQ(fixed(largest, 1074), printed(largest, 1074));
    double const smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(fixed(smallest, 1074), printed(smallest, 1074));
    EXPECT_EQ(fixed(smallest, 1074).back(), '5');
}

TEST(FixedNumber, AppendsToWhatIsThere)
{
    std::string text = "x=";
    sw_detail::appendFixed(text, 1.25, 1);
    EXPECT_EQ(text, "x=1.2");
}

TEST(FixedNumber, WritesAPointUnderEveryLocale)
{
    framework_test::CommaLocale const commaInStreams;
    CommaCLocale const commaInPrintf;
    for (int const decimals : {1, 12, 13}) {
        EXPECT_EQ(fixed(2.5, decimals).substr(0, 3), "2.5");
    }
}

TEST(FixedNumber, EqualsPrintfForAnyBits)
{
    std::mt19937_64 random(20240607);
    for (int i = 0; i < 200000; ++i) {
        auto const number = std::bit_cast<double>(random());
        int const decimals = static_cast<int>(random() % 16);
        ASSERT_EQ(fixed(number, decimals), printed(number, decimals)) << number << " with " << decimals;
    }
}

TEST(FixedNumber, EqualsPrintfForUsualNumbersAndTheirHalves)
{
    std::mt19937_64 random(20240608);
    for (int i = 0; i < 400000; ++i) {
        auto const whole = static_cast<double>(random() >> (random() % 64));
        double const number = std::ldexp(whole, -static_cast<int>(random() % 100));
        int const decimals = static_cast<int>(random() % 14);
        ASSERT_EQ(fixed(number, decimals), printed(number, decimals)) << number << " with " << decimals;
        ASSERT_EQ(fixed(-number, decimals), printed(-number, decimals)) << -number << " with " << decimals;
    }
}

}  // namespace
