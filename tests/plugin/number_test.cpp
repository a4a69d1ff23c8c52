// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Readings and narrowings of numbers, against named rows and against the standard conversions.
#include "overlay_numbers.h"

#include "comma_locale.h"
#include "global_facet.h"
#include "sw_extended.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <exception>
#include <limits>
#include <random>
#include <string>

namespace stanag_overlay {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr long double kLongInfinity = std::numeric_limits<long double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::uint64_t kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();

TEST(Number, Low32Signed)
{
    EXPECT_EQ(low32Signed(0), 0);
    EXPECT_EQ(low32Signed(-1), -1);
    EXPECT_EQ(low32Signed(2147483647), 2147483647);
    EXPECT_EQ(low32Signed(2147483648), -2147483648LL);
    EXPECT_EQ(low32Signed(4294967295), -1);
    EXPECT_EQ(low32Signed(4294967296), 0);
    EXPECT_EQ(low32Signed(4294967312), 16);
    EXPECT_EQ(low32Signed(-4294967297), -1);
    EXPECT_EQ(low32Signed(kMax64), -1);
    EXPECT_EQ(low32Signed(kMin64), 0);
}

TEST(Number, Truncations)
{
    struct Row {
        double value;
        std::int64_t int64;
        std::int32_t int32;
        std::uint64_t uint64;
    };
    std::vector<Row> const rows = {
        {0.0, 0, 0, 0},
        {-0.0, 0, 0, 0},
        {0.99, 0, 0, 0},
        {-0.99, 0, 0, 0},
        {12.9, 12, 12, 12},
        {-12.9, -12, -12, 0},
        {2147483647.5, 2147483647, 2147483647, 2147483647},
        {2147483648.0, 2147483648, 2147483647, 2147483648},
        {-2147483649.0, -2147483649, -2147483647 - 1, 0},
        {9223372036854774784.0, 9223372036854774784, 2147483647, 9223372036854774784U},
        {9223372036854775808.0, kMax64, 2147483647, 9223372036854775808U},
        {-9223372036854775808.0, kMin64, -2147483647 - 1, 0},
        {18446744073709549568.0, kMax64, 2147483647, 18446744073709549568U},
        {18446744073709551616.0, kMax64, 2147483647, kMaxUnsigned},
        {1e300, kMax64, 2147483647, kMaxUnsigned},
        {-1e300, kMin64, -2147483647 - 1, 0},
        {kInfinity, kMax64, 2147483647, kMaxUnsigned},
        {-kInfinity, kMin64, -2147483647 - 1, 0},
        {kNotANumber, 0, 0, 0},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(truncateToInt64(row.value), row.int64);
        EXPECT_EQ(truncateToInt32(row.value), row.int32);
        EXPECT_EQ(truncateToUint64(row.value), row.uint64);
    }
    EXPECT_EQ(truncateToUint64(18446744073709551615.0L), kMaxUnsigned);
}

TEST(Number, IsWhole)
{
    for (double const whole : {0.0, -0.0, 1.0, -3.0, 4503599627370497.0, 1e300, -1e300}) {
        EXPECT_TRUE(isWhole(whole)) << whole;
    }
    for (double const other : {0.5, -1e-300, 4503599627370495.5, kInfinity, -kInfinity, kNotANumber}) {
        EXPECT_FALSE(isWhole(other)) << other;
    }
}

struct TextRow {
    char const* name;
    std::string text;
    bool isNumber;
    long double number = 0.0L;
};

TEST(Number, ParseWholeNumber)
{
    std::vector<TextRow> const rows = {
        {"integer", "12", true, 12.0L},
        {"leading zeros are decimal", "-0012", true, -12.0L},
        {"largest signed integer", "9223372036854775807", true, 9223372036854775807.0L},
        {"beyond it", "18446744073709551617", true, 18446744073709551616.0L},
        {"blank before", " 12", true, 12.0L},
        {"every blank before", "\t\n\v\f\r 12", true, 12.0L},
        {"blank after", "12 ", false},
        {"letters after", "12abc", false},
        {"empty", "", false},
        {"blank only", " ", false},
        {"letters", "abc", false},
        {"signs", "-12.5", true, -12.5L},
        {"plus", "+.5", true, 0.5L},
        {"two signs", "--1", false},
        {"exponent", "5e0", true, 5.0L},
        {"open exponent", "5e", false},
        {"hexadecimal", "0x1A", true, 26.0L},
        {"hexadecimal fraction", "0x1.8p1", true, 3.0L},
        {"hexadecimal prefix alone", "0x", false},
        {"infinity", "inf", true, kLongInfinity},
        {"infinity in full and capitals", "-INFINITY", true, -kLongInfinity},
        {"decimal comma", "1,5", false},
        {"underscore", "1_000", false},
        {"beyond binary64 but within long double", "1e400", true, 0xDA763FC8CB9FF9E6p1265L},
        {"too large", "1e5000", false},
        {"too small", "1e-5000", false},
        {"zero with a huge exponent", "0e99999", true, 0.0L},
        {"zero byte after", std::string("12\0", 3), false},
        {"zero byte before",
         std::string("\0"
                     "12",
                     3),
         false},
    };
    for (TextRow const& row : rows) {
        SCOPED_TRACE(row.name);
        long double number = -77.0L;
        EXPECT_EQ(parseWholeNumber(row.text, number), row.isNumber);
        EXPECT_EQ(number, row.isNumber ? row.number : -77.0L);
    }
    long double number = 0.0L;
    EXPECT_TRUE(parseWholeNumber("-0", number));
    EXPECT_TRUE(std::signbit(number)) << "the sign of zero stays";
    EXPECT_TRUE(parseWholeNumber("nan", number));
    EXPECT_TRUE(std::isnan(number));
    EXPECT_TRUE(parseWholeNumber("NaN(12)", number));
    EXPECT_TRUE(std::isnan(number));
}

TEST(Number, ParseLeadingDouble)
{
    std::vector<TextRow> const rows = {
        {"text after", "5 m", true, 5.0L},
        {"blank before", " -2.5x", true, -2.5L},
        {"letters", "abc", false},
        {"empty", "", false},
        {"too large", "1e999", false},
        {"too small", "1e-999", false},
        {"hexadecimal", "0x10", true, 16.0L},
        {"open prefix", "0xg", true, 0.0L},
        {"sign only", "-", false},
        {"infinite", "inf", true, kLongInfinity},
        {"decimal comma", "1,5", true, 1.0L},
        {"point only", ".", false},
        {"open exponent", "2e+", true, 2.0L},
    };
    for (TextRow const& row : rows) {
        SCOPED_TRACE(row.name);
        double number = -77.0;
        EXPECT_EQ(parseLeadingDouble(row.text, number), row.isNumber);
        EXPECT_EQ(static_cast<long double>(number), row.isNumber ? row.number : -77.0L);
    }
}

TEST(Number, ErrnoStaysAsItWas)
{
    long double number = 0.0L;
    double real = 0.0;
    for (int const before : {0, EINTR}) {
        errno = before;
        parseWholeNumber("1e5000", number);
        EXPECT_EQ(errno, before);
        parseLeadingDouble("1e999", real);
        EXPECT_EQ(errno, before);
    }
}

// Random texts over the bytes that matter, for comparison with the standard conversions.
std::string randomText(std::mt19937& random)
{
    std::string const bytes = "0011223489..eE+- xXaAfF\tpPnNiI,_";
    std::string text;
    for (std::size_t length = random() % 8; length > 0; --length) {
        text += bytes[random() % bytes.size()];
    }
    return text;
}

TEST(Number, AgreesWithTheStandardConversions)
{
    std::mt19937 random(20);
    for (int round = 0; round < 50000; ++round) {
        std::string const text = randomText(random);
        SCOPED_TRACE(text);
        long double expected = 0.0L;
        bool isNumber = false;
        try {
            std::size_t used = 0;
            expected = sw_detail::extended(std::stold(text, &used));
            isNumber = used == text.size();
        } catch (std::exception const&) {
            isNumber = false;
        }
        long double number = 0.0L;
        ASSERT_EQ(parseWholeNumber(text, number), isNumber);
        ASSERT_TRUE(!isNumber || number == expected || (std::isnan(number) && std::isnan(expected)));

        double expectedReal = 0.0;
        bool isReal = true;
        try {
            expectedReal = std::stod(text);
        } catch (std::exception const&) {
            isReal = false;
        }
        double real = 0.0;
        ASSERT_EQ(parseLeadingDouble(text, real), isReal);
        ASSERT_TRUE(!isReal || real == expectedReal || (std::isnan(real) && std::isnan(expectedReal)));
    }
}

// The two attempts in so many words.
bool plainUnsignedString(std::string const& text, unsigned long& out)
{
    try {
        std::size_t used = 0;
        out = std::stoull(text, &used, 0);
        return used == text.size();
    } catch (std::exception const&) {
        // Only then is the text read as a real number.
    }
    try {
        std::size_t used = 0;
        long double const real = sw_detail::extended(std::stold(text, &used));
        if (used != text.size() || !std::isfinite(static_cast<double>(real)) || real < 0.0L) {
            return false;
        }
        out = truncateToUint64(real);
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

TEST(Number, UnsignedTextsAgreeWithTheStandardConversions)
{
    std::mt19937 random(21);
    for (int round = 0; round < 50000; ++round) {
        std::string const text = randomText(random);
        SCOPED_TRACE(text);
        unsigned long expected = 0;
        unsigned long number = 0;
        bool const accepted = plainUnsignedString(text, expected);
        ASSERT_EQ(tryParseUnsignedString(text, number), accepted);
        ASSERT_EQ(number, expected);
    }
}

TEST(Number, UnsignedTexts)
{
    struct Row {
        char const* name;
        std::string text;
        bool accepted;
        std::uint64_t number = 0;
    };
    std::vector<Row> const rows = {
        {"decimal", "12", true, 12},
        {"blank before", " \t12", true, 12},
        {"blank after", "12 ", false},
        {"fraction", "1.5", false},
        {"exponent reads 1 and leaves characters", "1e3", false},
        {"hexadecimal", "0x10", true, 16},
        {"hexadecimal in capitals", "0XfF", true, 255},
        {"bad hexadecimal", "0x1G", false},
        {"prefix alone reads 0 and leaves characters", "0x", false},
        {"octal", "010", true, 8},
        {"every blank before", "\t\n\v\f\r 010", true, 8},
        {"octal stops at 8", "08", false},
        {"zero", "0", true, 0},
        {"binary prefix is none", "0b11", false},
        {"plus", "+7", true, 7},
        {"minus wraps", "-1", true, kMaxUnsigned},
        {"minus hexadecimal wraps", "-0x10", true, kMaxUnsigned - 15},
        {"minus zero", "-0", true, 0},
        {"largest", "18446744073709551615", true, kMaxUnsigned},
        {"2^64 saturates", "18446744073709551616", true, kMaxUnsigned},
        {"large saturates", "99999999999999999999999", true, kMaxUnsigned},
        {"large negative", "-18446744073709551616", false},
        {"large hexadecimal", "0x10000000000000000", true, kMaxUnsigned},
        {"large octal is read again as decimal", "07777777777777777777777777", true, kMaxUnsigned},
        {"no leading digit", ".5", true, 0},
        {"no leading digit, exponent", ".5e1", true, 5},
        {"negative without a leading digit", "-.5", false},
        {"negative zero without a leading digit", "-.0", true, 0},
        {"no leading digit, large", ".1e30", true, kMaxUnsigned},
        {"larger than the double range", ".1e400", false},
        {"larger than any range", ".1e5000", false},
        {"infinite", "inf", false},
        {"not a number", "nan", false},
        {"letters", "abc", false},
        {"empty", "", false},
        {"sign only", "-", false},
        {"blank between sign and digits", "- 1", false},
        {"zero byte after", std::string("1\0", 2), false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        unsigned long number = 0;
        EXPECT_EQ(tryParseUnsignedString(row.text, number), row.accepted);
        if (row.accepted) {
            EXPECT_EQ(number, row.number);
        }
    }
}

TEST(Number, UnsignedValues)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        bool accepted;
        std::uint64_t number = 0;
    };
    std::vector<Row> const rows = {
        {"integer", 6, true, 6},
        {"zero", 0, true, 0},
        {"negative", -1, false},
        {"bits above 31 are ignored", 4294967312LL, true, 16},
        {"bit 31", 2147483652LL, false},
        {"bit 31 of a larger integer", 6442450944LL, false},
        {"smallest integer has empty low bits", kMin64, true, 0},
        {"whole double", 12.0, true, 12},
        {"negative zero", -0.0, true, 0},
        {"whole double beyond 32 bits", 4294967312.0, true, 16},
        {"whole double with bit 31", 2147483648.0, false},
        {"negative whole double", -1.0, false},
        {"huge whole double", 1e300, false},
        {"huge negative whole double saturates to empty low bits", -1e300, true, 0},
        {"fraction", 12.5, true, 12},
        {"fraction beyond 32 bits", 4294967312.5, true, 4294967312},
        {"negative fraction", -0.5, false},
        {"infinite", kInfinity, false},
        {"negative infinite", -kInfinity, false},
        {"not a number", kNotANumber, false},
        {"text", "0x4", true, 4},
        {"text beyond 32 bits is not narrowed", "4294967312", true, 4294967312},
        {"text with text after it", "4 m", false},
        {"true", true, false},
        {"null", nullptr, false},
        {"object", SwJsonObject{}, false},
        {"array", SwJsonArray{1}, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        unsigned long number = 4711;
        EXPECT_EQ(tryParseUnsignedValue(row.value, number), row.accepted);
        EXPECT_EQ(number, row.accepted ? row.number : 4711U);
    }
}

TEST(Number, Values)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        bool isNumber;
        long double number = 0.0L;
    };
    std::vector<Row> const rows = {
        {"integer", -3, true, -3.0L},
        {"2^53 + 1 loses its low digit", 9007199254740993LL, true, 9007199254740992.0L},
        {"largest integer", kMax64, true, 9223372036854775808.0L},
        {"double", 0.1, true, 0.1},
        {"infinite", kInfinity, true, kLongInfinity},
        {"text", " 12", true, 12.0L},
        {"text keeps more than binary64", "9007199254740993", true, 9007199254740993.0L},
        {"text with a blank after it", "12 ", false},
        {"empty text", "", false},
        {"null", nullptr, false},
        {"true", true, false},
        {"object", SwJsonObject{{"a", 1}}, false},
        {"array", SwJsonArray{1}, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        long double number = -77.0L;
        EXPECT_EQ(tryParseNumber(row.value, number), row.isNumber);
        if (row.isNumber) {
            EXPECT_EQ(number, row.number);
        }
    }
}

TEST(Number, Equality)
{
    EXPECT_TRUE(numbersEqual(5.0L, 5.0L));
    EXPECT_TRUE(numbersEqual(0.0L, 1e-10L));
    EXPECT_TRUE(numbersEqual(-0.0L, 0.0L));
    EXPECT_FALSE(numbersEqual(0.0L, 1e-9)) << "exactly the tolerance is too far";
    EXPECT_TRUE(numbersEqual(0.0L, std::nextafter(1e-9, 0.0)));
    EXPECT_FALSE(numbersEqual(0.0L, std::nextafter(static_cast<long double>(1e-9), 0.0L)))
        << "the difference is rounded to binary64 before it is compared";
    EXPECT_FALSE(numbersEqual(0.0L, 1e-6L));
    EXPECT_FALSE(numbersEqual(1.5L, 1.5000001L));
    EXPECT_FALSE(numbersEqual(kNotANumber, kNotANumber));
    EXPECT_FALSE(numbersEqual(kInfinity, kInfinity)) << "their difference is not a number";
    EXPECT_FALSE(numbersEqual(std::numeric_limits<long double>::max(), 0.0L));
}

void expectNumbersWithAPoint()
{
    long double number = 0.0L;
    EXPECT_TRUE(parseWholeNumber("1.5", number));
    EXPECT_EQ(number, 1.5L);
    EXPECT_FALSE(parseWholeNumber("1,5", number));
    double real = 0.0;
    EXPECT_TRUE(parseLeadingDouble("1.5,", real));
    EXPECT_EQ(real, 1.5);
    EXPECT_TRUE(parseLeadingDouble("1,5", real));
    EXPECT_EQ(real, 1.0);
    unsigned long whole = 0;
    EXPECT_TRUE(tryParseUnsignedString(".5", whole));
    EXPECT_EQ(whole, 0U);
    EXPECT_FALSE(tryParseUnsignedString(",5", whole));
}

TEST(Number, TheGlobalLocaleDoesNotMatter)
{
    GlobalFacet const comma(new DecimalComma);
    expectNumbersWithAPoint();
}

TEST(Number, TheCLocaleOfTheProcessDoesNotMatter)
{
    CommaCLocale const comma;
    expectNumbersWithAPoint();
}

}  // namespace
}  // namespace stanag_overlay
