// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwString.h"

#include "sw_numbers.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <type_traits>

using framework_test::standardErrorOf;

namespace {

std::vector<std::string> plain(std::vector<SwString> const& pieces)
{
    return {pieces.begin(), pieces.end()};
}

// Templates, so that what does not compile is false and no error.
template <typename Text>
constexpr bool kTakesZeroAsArgument = requires(Text text)
{
    text.arg(0);
};
template <typename Text>
constexpr bool kTakesLongZeroAsArgument = requires(Text text)
{
    text.arg(0L);
};
template <typename Text>
constexpr bool kTakesNullAsArgument = requires(Text text)
{
    text.arg(NULL);
};
template <typename Text>
constexpr bool kTakesNullptrAsArgument = requires(Text text)
{
    text.arg(nullptr);
};
template <typename Text>
constexpr bool kTakesLiteralAsArgument = requires(Text text)
{
    text.arg("3");
};
template <typename Text>
constexpr bool kAddsZero = requires(Text text)
{
    text + 0;
};
template <typename Text>
constexpr bool kComparesWithZero = requires(Text text)
{
    text == 0;
};
template <typename Text>
constexpr bool kTakesZeroAsKey = requires(Text text)
{
    text.encryptAES(0);
};

}  // namespace

// What arg(0) put in was "", not "0".
TEST(SwString, NoNullPointerLiteralIsAText)
{
    EXPECT_FALSE(kTakesZeroAsArgument<SwString>);
    EXPECT_FALSE(kTakesLongZeroAsArgument<SwString>);
    EXPECT_FALSE(kTakesNullAsArgument<SwString>);
    EXPECT_FALSE(kTakesNullptrAsArgument<SwString>);
    EXPECT_FALSE(kAddsZero<SwString>);
    EXPECT_FALSE(kComparesWithZero<SwString>);
    EXPECT_FALSE(kTakesZeroAsKey<SwString>);
    EXPECT_FALSE((std::is_constructible_v<SwString, std::nullptr_t>));
    EXPECT_FALSE((std::is_constructible_v<SwString, int>));
    EXPECT_TRUE(kTakesLiteralAsArgument<SwString>);
    EXPECT_TRUE((std::is_convertible_v<char const*, SwString>));
    EXPECT_TRUE((std::is_convertible_v<std::string, SwString>));
    EXPECT_TRUE((std::is_convertible_v<SwString, std::string>));
}

TEST(SwString, PositionsAndLengthsAreInt)
{
    SwString const text = "abc";
    EXPECT_TRUE((std::is_same_v<decltype(text.size()), int>));
    EXPECT_EQ(text.size(), 3);
    EXPECT_EQ(text.length(), 3);
    EXPECT_EQ(SwString().size(), 0);
    std::string backwards;
    for (int i = text.size() - 1; i >= 0; --i) {
        backwards.push_back(text[i]);
    }
    EXPECT_EQ(backwards, "cba");
    SwString roomy;
    roomy.reserve(1000);
    EXPECT_GE(roomy.toStdString().capacity(), 1000U);
    roomy.reserve(-1);
    EXPECT_EQ(roomy.size(), 0);
}

// Asked of the narrowing itself: such a string would take two gigabytes.
TEST(SwString, ALengthBeyondIntIsTheGreatestInt)
{
    EXPECT_EQ(sw_detail::saturatedInt(0), 0);
    EXPECT_EQ(sw_detail::saturatedInt(2147483646), 2147483646);
    EXPECT_EQ(sw_detail::saturatedInt(2147483647), 2147483647);
    EXPECT_EQ(sw_detail::saturatedInt(2147483648), 2147483647);
    EXPECT_EQ(sw_detail::saturatedInt(4294967297), 2147483647);
    EXPECT_EQ(sw_detail::saturatedInt(std::numeric_limits<std::size_t>::max()), 2147483647);
}

TEST(SwString, ConvertsFromAndToStandardAndCStrings)
{
    SwString const fromC = "abc";
    SwString const fromStandard = std::string("a\0b", 3);
    SwString const fromNull = static_cast<char const*>(nullptr);
    std::string const& back = fromStandard;
    EXPECT_EQ(fromC.toStdString(), "abc");
    EXPECT_EQ(back, std::string("a\0b", 3));
    EXPECT_EQ(fromNull.toStdString(), "");
    std::string assigned;
    assigned = fromC;
    EXPECT_EQ(assigned, "abc");
    EXPECT_TRUE(SwString().isEmpty());
    std::ostringstream out;
    out << fromC;
    EXPECT_EQ(out.str(), "abc");
}

TEST(SwString, ComparesByBytes)
{
    EXPECT_TRUE(SwString("a") == SwString("a"));
    EXPECT_TRUE(SwString("a") != SwString("b"));
    EXPECT_TRUE(SwString("B") < SwString("a"));
    EXPECT_TRUE(SwString("z") < SwString("\xC3\xA9"));
}

TEST(SwString, JoinsAndAppends)
{
    SwString const left = "ab";
    EXPECT_EQ((left + SwString("cd")).toStdString(), "abcd");
    EXPECT_EQ((left + SwString()).toStdString(), "ab");
    EXPECT_EQ((left + "cd").toStdString(), "abcd");
    EXPECT_EQ((left + std::string("cd")).toStdString(), "abcd");
    EXPECT_EQ(("x" + left).toStdString(), "xab");
    EXPECT_EQ((std::string("x") + left + "y").toStdString(), "xaby");
    EXPECT_EQ(("x" + left + left).toStdString(), "xabab");
    EXPECT_EQ(left.toStdString(), "ab");
    SwString grown = "x";
    grown += "y";
    grown.append("z");
    EXPECT_EQ(grown.toStdString(), "xyz");
    EXPECT_EQ(grown.takeStdString(), "xyz");
    EXPECT_TRUE(grown.isEmpty());
}

TEST(SwString, TrimsSpaceTabLineFeedAndReturnOnly)
{
    struct Row {
        char const* name;
        std::string input;
        std::string expected;
    };
    Row const rows[] = {
        {"both sides", " \t\n\r a b \r\n\t ", "a b"},
        {"inner space stays", "a \t b", "a \t b"},
        {"only white space", " \t\n\r", ""},
        {"empty", "", ""},
        {"leading vertical tab stays", "\v a ", "\v a"},
        {"trailing form feed stays", " a \f", "a \f"},
        {"zero byte stays", std::string(" \0 ", 3), std::string("\0", 1)},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(SwString(row.input).trimmed().toStdString(), row.expected);
    }
}

TEST(SwString, MidTakesAPieceOrNothing)
{
    struct Row {
        int position;
        int length;
        char const* expected;
    };
    Row const rows[] = {
        {2, -1, "cdef"},
        {6, 1, ""},
        {-1, 2, ""},
        {0, 0, ""},
        {0, 3, "abc"},
        {3, 99, "def"},
        {5, 1, "f"},
        {100, 1, ""},
        {0, -5, "abcdef"},
        {std::numeric_limits<int>::min(), 1, ""},
        {1, std::numeric_limits<int>::max(), "bcdef"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "mid(" << row.position << ", " << row.length << ")");
        EXPECT_EQ(SwString("abcdef").mid(row.position, row.length).toStdString(), row.expected);
    }
    EXPECT_EQ(SwString().mid(0, 1).toStdString(), "");
}

TEST(SwString, ArgReplacesTheFirstPlaceholder)
{
    struct Row {
        char const* name;
        char const* input;
        char const* expected;
    };
    Row const rows[] = {
        {"first of two", "x=%1, y=%1", "x=3, y=%1"},
        {"no digit behind the sign", "100%", "100%"},
        {"sign without digit is skipped", "5% of %2", "5% of 3"},
        {"whatever the digit", "%9%0", "3%0"},
        {"nought is a digit", "%0%9", "3%9"},
        {"one digit only", "%12", "32"},
        {"doubled sign", "%%1", "%3"},
        {"no placeholder", "abc", "abc"},
        {"empty", "", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(SwString(row.input).arg("3").toStdString(), row.expected);
    }
    EXPECT_EQ(SwString("x=%1, y=%1").arg("3").arg("4").toStdString(), "x=3, y=4");
    EXPECT_EQ(SwString("%1").arg("%1").toStdString(), "%1");
    EXPECT_EQ(SwString("%1").arg("").toStdString(), "");
}

TEST(SwString, SplitKeepsEmptyPiecesButATrailingOne)
{
    struct Row {
        char const* input;
        std::vector<std::string> expected;
    };
    Row const rows[] = {
        {"a,b,", {"a", "b"}},     {",a", {"", "a"}},
        {"a,,b", {"a", "", "b"}}, {"", {}},
        {"abc", {"abc"}},         {",", {""}},
        {",,", {"", ""}},         {"a,b", {"a", "b"}},
        {"a,,", {"a", ""}},       {" a , b ", {" a ", " b "}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(plain(SwString(row.input).split(',')), row.expected);
    }
    EXPECT_EQ(plain(SwString(std::string("a\0b", 3)).split('\0')), (std::vector<std::string>{"a", "b"}));
}

TEST(SwString, ToIntReadsItsForms)
{
    struct Row {
        char const* input;
        int expected;
    };
    Row const rows[] = {
        {" 42 ", 42},
        {"1_000", 1000},
        {"_1_2_", 12},
        {"0b101", 5},
        {"0B11", 3},
        {"-0b11", -3},
        {"+0b1", 1},
        {"0b1_0", 2},
        {"0x10", 16},
        {"0X1f", 31},
        {"0x1F", 31},
        {"0x7", 7},
        {"0x0f", 15},
        {"-0x10", -16},
        {"010", 8},
        {"-010", -8},
        {"08", 0},
        {"0", 0},
        {"-0", 0},
        {"+7", 7},
        {"12abc", 12},
        {"12.9", 12},
        {"0x", 0},
        {"0xg", 0},
        {"1 2", 1},
        {"\t\n\r9", 9},
        {"\v9", 9},
        {"2147483647", 2147483647},
        {"-2147483648", std::numeric_limits<int>::min()},
        {"0x7fffffff", 2147483647},
        {"0b1111111111111111111111111111111", 2147483647},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        bool ok = false;
        int value = -1;
        EXPECT_EQ(standardErrorOf([&] { value = SwString(row.input).toInt(&ok); }), "");
        EXPECT_EQ(value, row.expected);
        EXPECT_TRUE(ok);
    }
}

TEST(SwString, ToIntFailureGivesZeroAndOneLineWithTheUnchangedText)
{
    char const* const rows[] = {
        "",
        " ",
        "-",
        "+",
        "_",
        "- 1",
        "+-1",
        "abc",
        "0b",
        "-0b",
        "0b12",
        "0b1 1",
        "0b-1",
        "2147483648",
        "-2147483649",
        "0x80000000",
        "9223372036854775807",
        "9223372036854775808",
        "-9223372036854775809",
        "99999999999999999999999999",
        "0b11111111111111111111111111111111111111111111111111111111111111111",
        " \tx ",
    };
    for (char const* const input : rows) {
        SCOPED_TRACE(input);
        bool ok = true;
        int value = -1;
        std::string const line = standardErrorOf([&] { value = SwString(input).toInt(&ok); });
        EXPECT_EQ(line, std::string("Invalid int conversion in SwString: ") + input + "\n");
        EXPECT_EQ(value, 0);
        EXPECT_FALSE(ok);
    }
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(SwString("17").toInt(nullptr), 17); }), "");
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(SwString("x").toInt(), 0); }), "Invalid int conversion in SwString: x\n");
}

TEST(SwString, ParseNumericDoubleReadsItsForms)
{
    struct Row {
        char const* input;
        double expected;
    };
    Row const rows[] = {
        {"1e3", 1000.0},
        {"1E3", 1000.0},
        {"0x10", 16.0},
        {"1.5", 1.5},
        {" -2.25 ", -2.25},
        {"1_000.5", 1000.5},
        {".5", 0.5},
        {"5.", 5.0},
        {"1.5abc", 1.5},
        {"1e", 1.0},
        {"12", 12.0},
        {"12abc", 12.0},
        {"010", 8.0},
        {"08", 0.0},
        {"0b101", 5.0},
        {"-0b101", -5.0},
        {"2147483648", 2147483648.0},
        {"9223372036854775807", 9223372036854775808.0},
        {"-9223372036854775808", -9223372036854775808.0},
        {"-0b1000000000000000000000000000000000000000000000000000000000000000", -9223372036854775808.0},
        {"0x1.8p1", 3.0},
        {"0x1e", 30.0},
        {"0b1e1", 0.0},
        {"infe", std::numeric_limits<double>::infinity()},
        {"\v1.5", 1.5},
        {"1._5", 1.5},
        {"0xE", 14.0},
        {"2.2250738585072014e-308", 2.2250738585072014e-308},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"0.0", 0.0},
        {"0e-999", 0.0},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        double value = -1.0;
        EXPECT_EQ(standardErrorOf([&] { EXPECT_TRUE(SwString(row.input).parseNumericDouble(value)); }), "");
        EXPECT_EQ(value, row.expected);
    }
}

TEST(SwString, ParseNumericDoubleFailureLeavesTheResultAndWritesNothing)
{
    char const* const rows[] = {
        "",
        " ",
        "-",
        "+",
        "_",
        ".",
        "-.",
        "e5",
        "abc",
        "one",
        "inf",
        "nan",
        "0b",
        "0b2",
        "1e999",
        "-1e999",
        "1e-999",
        "1e-320",
        "x.5",
        "9223372036854775808",
        "-9223372036854775809",
        "0b11111111111111111111111111111111111111111111111111111111111111111",
    };
    for (char const* const input : rows) {
        SCOPED_TRACE(input);
        double value = 77.0;
        EXPECT_EQ(standardErrorOf([&] { EXPECT_FALSE(SwString(input).parseNumericDouble(value)); }), "");
        EXPECT_EQ(value, 77.0);
    }
}

TEST(SwString, ReadsNumbersWithAPointWhateverTheGlobalLocale)
{
    framework_test::CommaLocale const comma;
    double value = 0.0;
    EXPECT_TRUE(SwString("1.5").parseNumericDouble(value));
    EXPECT_EQ(value, 1.5);
    EXPECT_TRUE(SwString("1,5").parseNumericDouble(value));
    EXPECT_EQ(value, 1.0);
    EXPECT_EQ(SwString("1000").toInt(), 1000);
}

TEST(SwString, ToLongReadsWithAutomaticBaseOrGivesZero)
{
    struct Row {
        char const* input;
        long expected;
    };
    Row const rows[] = {
        {"42", 42},
        {" \t\n\v\f\r-42xyz", -42},
        {"0x7FFFFFFFFFFFFFFF", std::numeric_limits<long>::max()},
        {"-9223372036854775808", std::numeric_limits<long>::min()},
        {"010", 8},
        {"9223372036854775808", 0},
        {"-9223372036854775809", 0},
        {"50000000000000000000", 0},
        {"", 0},
        {"abc", 0},
        {"1_000", 1},
        {"0b1", 0},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwString(row.input).toLong(), row.expected); }), "");
    }
}

TEST(SwString, ToUnsignedReadsWithAutomaticBaseOrGivesZero)
{
    constexpr unsigned long kMax = std::numeric_limits<unsigned long>::max();
    struct Row {
        char const* input;
        unsigned long max;
        unsigned long expected;
    };
    Row const rows[] = {
        {" 42 ", kMax, 42},
        {"42abc", kMax, 42},
        {"+5", kMax, 5},
        {"0x10", kMax, 16},
        {"010", kMax, 8},
        {"-1", kMax, 0},
        {" -1", kMax, 0},
        {"\v-1", kMax, kMax},
        {"\v-1", 4294967295UL, 0},
        {"-", kMax, 0},
        {"+", kMax, 0},
        {"", kMax, 0},
        {"abc", kMax, 0},
        {"18446744073709551615", kMax, kMax},
        {"18446744073709551616", kMax, 0},
        {"18446744073709551619", kMax, 0},
        {"4294967295", 4294967295UL, 4294967295UL},
        {"4294967296", 4294967295UL, 0},
        {"1_0", kMax, 1},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwString(row.input).toUnsigned(row.max), row.expected); }), "");
    }
}
