// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The 26 built-in conversions of the variant, by their number.
#include "SwAny.h"

#include "any_text.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

using framework_test::converted;
using framework_test::listOf;
using framework_test::standardErrorOf;
using framework_test::textOf;

TEST(SwAnyConversion, Row01CStringToString)
{
    EXPECT_EQ(textOf<char const*>("a b"), "a b");
    EXPECT_EQ(textOf<char const*>(nullptr), "");
}

TEST(SwAnyConversion, Row02And03StandardString)
{
    std::string const bytes("a\0b", 3);
    EXPECT_EQ(textOf(bytes), bytes);
    EXPECT_EQ(converted<std::string>(SwString(bytes)), bytes);
}

TEST(SwAnyConversion, Row04StringToCStringPointsToTheStoredBytes)
{
    SwAny const source(SwString("stored"));
    SwAny const target = source.convert<char const*>();
    EXPECT_EQ(target.get<char const*>(), source.get<SwString>().c_str());
}

TEST(SwAnyConversion, Row05StringToBytes)
{
    using Bytes = std::vector<unsigned char>;
    EXPECT_EQ(converted<Bytes>(SwString(std::string("a\0\xFF", 3))), (Bytes{'a', 0, 255}));
    EXPECT_EQ(converted<Bytes>(SwString()), Bytes());
}

TEST(SwAnyConversion, Row06And07ContainersToCompactText)
{
    EXPECT_EQ(textOf(SwJsonObject{{"b", 2.5}, {"a", SwJsonArray{1}}}), "{\"a\": [1],\"b\": 2.500000}");
    EXPECT_EQ(textOf(SwJsonObject()), "{}");
    EXPECT_EQ(textOf(SwJsonArray{1, "x"}), "[1,\"x\"]");
    EXPECT_EQ(textOf(SwJsonArray()), "[]");
}

TEST(SwAnyConversion, Row08JsonValueToText)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        char const* expected;
    };
    Row const rows[] = {
        {"null", nullptr, "null"},
        {"true", true, "true"},
        {"false", false, "false"},
        {"integer", -12, "-12"},
        {"double", 2.5, "2.500000"},
        {"whole double", 3.0, "3.000000"},
        {"string", "a\"b", "a\"b"},
        {"empty object", SwJsonObject(), "{}"},
        {"empty array", SwJsonArray(), "[]"},
        {"object", SwJsonObject{{"a", 1.0}}, "{\"a\": 1}"},
        {"array", SwJsonArray{"x", 0.5}, "[\"x\",0.500000]"},
        {"null object", std::shared_ptr<SwJsonObject>(), "SwJsonValue(Object)"},
        {"null array", std::shared_ptr<SwJsonArray>(), "SwJsonValue(Array)"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(textOf(row.value), row.expected);
    }
    framework_test::CommaLocale const comma;
    EXPECT_EQ(textOf(SwJsonValue(1234.5)), "1234.500000");
    EXPECT_EQ(textOf(SwJsonValue(SwJsonArray{1234.5})), "[1234.500000]");
}

TEST(SwAnyConversion, Row09HexToBytesStopsAtTheFirstBadPair)
{
    struct Row {
        char const* input;
        std::vector<unsigned char> expected;
    };
    Row const rows[] = {
        {"00fFA5", {0, 255, 165}},
        {" \t0102\r\n", {1, 2}},
        {"", {}},
        {"1", {}},
        {"123", {0x12}},
        {"12x4", {0x12}},
        {"12 34", {0x12}},
        {"1g34", {}},
        {"0x12", {}},
        {"+112", {}},
        {"-1", {}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(converted<SwList<unsigned char>>(SwString(row.input)), listOf(row.expected));
    }
}

TEST(SwAnyConversion, Row10BytesToHex)
{
    EXPECT_EQ(textOf(listOf({0, 1, 0x0A, 0xAB, 255})), "00010AABFF");
    EXPECT_EQ(textOf(SwList<unsigned char>()), "");
}

TEST(SwAnyConversion, Row11And12Int)
{
    EXPECT_EQ(converted<int>(SwString(" 0x10 ")), 16);
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<int>(SwString("x")), 0); }),
              "Invalid int conversion in SwString: x\n");
    EXPECT_EQ(textOf(-2147483647 - 1), "-2147483648");
}

TEST(SwAnyConversion, Row13And14UnsignedInt)
{
    struct Row {
        char const* input;
        unsigned int expected;
    };
    Row const rows[] = {{" 42 ", 42},      {"42abc", 42},
                        {"0x10", 16},      {"010", 8},
                        {"-1", 0},         {"x", 0},
                        {"", 0},           {"4294967295", 4294967295U},
                        {"4294967296", 0}, {"99999999999999999999", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<unsigned int>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(4294967295U), "4294967295");
}

TEST(SwAnyConversion, Row15And16Long)
{
    struct Row {
        char const* input;
        long expected;
    };
    Row const rows[] = {{" 42", 42},
                        {"42abc", 42},
                        {"0x10", 16},
                        {"010", 8},
                        {"-1", -1},
                        {"x", 0},
                        {"", 0},
                        {"9223372036854775807", 9223372036854775807L},
                        {"9223372036854775808", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<long>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(std::numeric_limits<long>::min()), "-9223372036854775808");
}

TEST(SwAnyConversion, Row17And18UnsignedLong)
{
    struct Row {
        char const* input;
        unsigned long expected;
    };
    Row const rows[] = {{" 42 ", 42},
                        {"42abc", 42},
                        {"0x10", 16},
                        {"-1", 0},
                        {" -1", 0},
                        {"x", 0},
                        {"", 0},
                        {"18446744073709551615", 18446744073709551615UL},
                        {"18446744073709551616", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<unsigned long>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(18446744073709551615UL), "18446744073709551615");
}

TEST(SwAnyConversion, Row19And20Float)
{
    EXPECT_EQ(converted<float>(SwString("0.1")), 0.1F);
    EXPECT_EQ(converted<float>(SwString("1e39")), std::numeric_limits<float>::infinity());
    EXPECT_EQ(converted<float>(SwString("-1e39")), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(converted<float>(SwString("3.4028235677973366e38")), std::numeric_limits<float>::infinity());
    EXPECT_EQ(converted<float>(SwString("3.4028235677973362e38")), std::numeric_limits<float>::max());
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<float>(SwString(" x ")), 0.0F); }),
              "Invalid float conversion in SwString:  x \n");
    EXPECT_EQ(textOf(0.1F), "0.1000000015");
    EXPECT_EQ(textOf(2.5F), "2.5");
    EXPECT_EQ(textOf(1e20F), "1.00000002e+20");
    EXPECT_EQ(textOf(100000.0F), "100000");
}

TEST(SwAnyConversion, Row21And22Double)
{
    EXPECT_EQ(converted<double>(SwString("1e3")), 1000.0);
    EXPECT_EQ(converted<double>(SwString("0x10")), 16.0);
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<double>(SwString("1e999")), 0.0); }),
              "Invalid double conversion in SwString: 1e999\n");
    EXPECT_EQ(textOf(0.1), "0.1");
    EXPECT_EQ(textOf(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(textOf(123456789.0), "123456789");
    EXPECT_EQ(textOf(1e300), "1e+300");
    EXPECT_EQ(textOf(1e-9), "1e-09");
    EXPECT_EQ(textOf(-0.0), "-0");
    EXPECT_EQ(textOf(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(textOf(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(textOf(-2.5), "-2.5");
}

TEST(SwAnyConversion, Row20And22WriteAPointUnderEveryGlobalLocale)
{
    framework_test::CommaLocale const comma;
    EXPECT_EQ(textOf(1234.5), "1234.5");
    EXPECT_EQ(textOf(0.5F), "0.5");
    EXPECT_EQ(SwAny(1234.5).toString().toStdString(), "1234.5");
    EXPECT_EQ(SwAny(1234.5F).toString().toStdString(), "1234.5");
    EXPECT_EQ(textOf(1234), "1234");
    EXPECT_EQ(textOf(1234UL), "1234");
    EXPECT_EQ(converted<double>(SwString("1.5")), 1.5);
    EXPECT_EQ(converted<float>(SwString("1.5")), 1.5F);
}

TEST(SwAnyConversion, Row20And22WriteWhatAStreamWrites)
{
    auto const streamed = [](double number, int digits) {
        std::ostringstream out;
        out.imbue(std::locale::classic());
        out << std::setprecision(digits) << number;
        return out.str();
    };
    std::mt19937_64 random(22);
    std::vector<double> numbers = {0.0,
                                   -0.0,
                                   0.0001,
                                   0.00001,
                                   999999999999999.0,
                                   999999999999999.5,
                                   1e15,
                                   1e16,
                                   9.9999999995,
                                   std::numeric_limits<double>::min(),
                                   std::numeric_limits<double>::denorm_min(),
                                   std::numeric_limits<double>::max(),
                                   -std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::infinity(),
                                   -std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN(),
                                   -std::numeric_limits<double>::quiet_NaN()};
    for (int i = 0; i < 20000; ++i) {
        numbers.push_back(std::bit_cast<double>(random()));
        numbers.push_back(
            std::ldexp(static_cast<double>(random() % 2000001) - 1000000.0, static_cast<int>(random() % 60) - 40));
    }
    for (double const number : numbers) {
        ASSERT_EQ(textOf(number), streamed(number, 15));
        if (std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max())) {
            auto const single = static_cast<float>(number);
            ASSERT_EQ(textOf(single), streamed(static_cast<double>(single), 10));
        }
    }
}

TEST(SwAnyConversion, Row23And24Bool)
{
    EXPECT_TRUE(converted<bool>(SwString("true")));
    for (char const* const text : {"True", " true", "true ", "1", "false", "", "truer"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(converted<bool>(SwString(text)));
    }
    EXPECT_EQ(textOf(true), "true");
    EXPECT_EQ(textOf(false), "false");
}

TEST(SwAnyConversion, Row25And26StringList)
{
    using List = std::vector<std::string>;
    EXPECT_EQ(converted<List>(SwString(" a , b\t,,c d,\n")), (List{"a", "b", "", "c d", ""}));
    EXPECT_EQ(converted<List>(SwString("a,b,")), (List{"a", "b"}));
    EXPECT_EQ(converted<List>(SwString("")), List());
    EXPECT_EQ(textOf(List{"a", " b", ""}), "a, b,");
    EXPECT_EQ(textOf(List()), "");
    EXPECT_EQ(textOf(List{"one"}), "one");
}
