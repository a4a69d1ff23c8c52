// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwJson.h"

#include "comma_locale.h"
#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

using framework_test::standardErrorOf;
using framework_test::treeText;

namespace {

std::string written(SwJsonValue const& value, bool pretty = false, int level = 0, SwString const& key = SwString())
{
    SwString text;
    SwJsonDocument::generateJson(value, text, pretty, level, key);
    return text;
}

/// A tree of scalars, strings and nested containers that reading does not coerce.
SwJsonValue randomTree(std::mt19937& random, int depth)
{
    switch (random() % (depth > 0 ? 7U : 5U)) {
    case 0:
        return {};
    case 1:
        return random() % 2 == 0;
    case 2:
        return static_cast<std::int64_t>(random()) - 2000000000;
    case 3:
        return static_cast<double>(random() % 1000000) / 64.0 + 1.0 / 128.0;
    case 4: {
        std::string text = "s";
        for (auto i = random() % 40; i > 0; --i) {
            text.push_back(static_cast<char>(static_cast<unsigned char>(random() % 256)));
        }
        return text;
    }
    case 5: {
        SwJsonObject object;
        for (auto i = random() % 6; i > 0; --i) {
            object["key" + std::to_string(random() % 1000)] = randomTree(random, depth - 1);
        }
        return object;
    }
    default: {
        SwJsonArray array;
        for (auto i = random() % 6; i > 0; --i) {
            array.append(randomTree(random, depth - 1));
        }
        return array;
    }
    }
}

}  // namespace

TEST(SwJsonWriter, WritesScalars)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        char const* expected;
    };
    double const infinity = std::numeric_limits<double>::infinity();
    Row const rows[] = {
        {"null", nullptr, "null"},
        {"true", true, "true"},
        {"false", false, "false"},
        {"zero", 0, "0"},
        {"negative", -12, "-12"},
        {"lowest", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {"largest", std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
        {"whole double", 1.0, "1"},
        {"negative zero", -0.0, "0"},
        {"whole negative", -3.0, "-3"},
        {"half", -0.5, "-0.500000"},
        {"2.5", 2.5, "2.500000"},
        {"1e-9", 1e-9, "0.000000"},
        {"-1e-9", -1e-9, "-0.000000"},
        {"smallest", 4.9e-324, "0.000000"},
        {"0.1", 0.1, "0.100000"},
        {"carry", 0.9999996, "1.000000"},
        {"carry into the whole part", 1999.9999999, "2000.000000"},
        {"half way down to even", 0.0000005, "0.000000"},
        {"exact half to even, down", 0.5 / 64 / 2 / 2 / 2, "0.000977"},
        {"exact tie", 0.00048828125, "0.000488"},
        {"2^53 + fraction lost", 9007199254740993.0, "9007199254740992"},
        {"large with fraction", 4503599627370495.5, "4503599627370495.500000"},
        {"1e300 saturates", 1e300, "9223372036854775807"},
        {"-1e300 saturates", -1e300, "-9223372036854775808"},
        {"2^63", 9223372036854775808.0, "9223372036854775807"},
        {"-2^63", -9223372036854775808.0, "-9223372036854775808"},
        {"below 2^63", 9223372036854774784.0, "9223372036854774784"},
        {"infinity", infinity, "9223372036854775807"},
        {"-infinity", -infinity, "-9223372036854775808"},
        {"not a number", std::numeric_limits<double>::quiet_NaN(), "nan"},
        {"negative not a number", -std::numeric_limits<double>::quiet_NaN(), "nan"},
        {"string", "a/b", "\"a/b\""},
        {"empty string", "", "\"\""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(written(row.value), row.expected);
        EXPECT_EQ(written(row.value, true), row.expected);
    }
}

TEST(SwJsonWriter, FractionsAgreeWithAStream)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 200000; ++i) {
        // Every exponent that leaves a fraction, with long and short significands, ties included.
        std::int64_t significand = static_cast<std::int64_t>(random());
        significand >>= static_cast<int>(random() % 60);
        double const number = std::ldexp(static_cast<double>(significand), -static_cast<int>(random() % 90));
        double whole = 0.0;
        if (std::modf(number, &whole) == 0.0) {
            continue;
        }
        std::ostringstream stream;
        stream << std::fixed << number;
        ASSERT_EQ(written(number), stream.str()) << std::hexfloat << number;
    }
}

// A decimal comma would make two numbers of one.
TEST(SwJsonWriter, NumbersHaveAPointUnderEveryLocale)
{
    framework_test::CommaLocale const commaInStreams;
    CommaCLocale const commaInTheCLibrary;
    EXPECT_EQ(written(1234567.25), "1234567.250000");
    EXPECT_EQ(written(2.5), "2.500000");
    EXPECT_EQ(written(-1e-9), "-0.000000");
    EXPECT_EQ(written(1234567.0), "1234567");
    EXPECT_EQ(written(-0.0), "0");
    EXPECT_EQ(written(1e300), "9223372036854775807");
    EXPECT_EQ(written(std::numeric_limits<double>::infinity()), "9223372036854775807");
    EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(written(1234567), "1234567");
    EXPECT_EQ(written(SwJsonArray{0.5, 1000}), "[0.500000,1000]");
    SwString error;
    EXPECT_EQ(SwJsonDocument::fromJson(SwString(written(SwJsonArray{0.5, 1000})), SwString(), error).array().size(),
              2U);
}

TEST(SwJsonWriter, EscapesEachByteByTheTable)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        std::string const text(1, static_cast<char>(static_cast<unsigned char>(byte)));
        std::string expected = text;
        switch (byte) {
        case '"':
            expected = "\\\"";
            break;
        case '\\':
            expected = "\\\\";
            break;
        case 0x08:
            expected = "\\b";
            break;
        case 0x0C:
            expected = "\\f";
            break;
        case 0x0A:
            expected = "\\n";
            break;
        case 0x0D:
            expected = "\\r";
            break;
        case 0x09:
            expected = "\\t";
            break;
        default:
            if (byte < 0x20) {
                char buffer[8];
                std::snprintf(buffer, sizeof buffer, "\\u%04X", static_cast<unsigned>(byte));
                expected = buffer;
            }
            break;
        }
        EXPECT_EQ(SwJsonValue::escapeString(text), expected);
        EXPECT_EQ(SwJsonValue::escapeString("12345678" + text + "12345678"), "12345678" + expected + "12345678");
        EXPECT_EQ(written("xy" + text), "\"xy" + expected + "\"");
        EXPECT_EQ(written(SwJsonObject{{text, 1}}), "{\"" + expected + "\": 1}");
    }
    EXPECT_EQ(SwJsonValue::escapeString(""), "");
    EXPECT_EQ(SwJsonValue::escapeString("\x1F"), "\\u001F");
}

TEST(SwJsonWriter, TheControlCharacterExampleHasTwelveBytes)
{
    std::string const text = written("a\tb\x01");
    EXPECT_EQ(text, "\"a\\tb\\u0001\"");
    EXPECT_EQ(text.size(), 12U);
}

TEST(SwJsonWriter, CompactFormHasOneSpaceBehindTheColon)
{
    EXPECT_EQ(written(SwJsonObject{{"b", 2}, {"a", 1}}), "{\"a\": 1,\"b\": 2}");
    EXPECT_EQ(written(SwJsonArray{1, SwJsonArray{2, 3}, "x", nullptr}), "[1,[2,3],\"x\",null]");
    EXPECT_EQ(written(SwJsonObject{{"o", SwJsonObject{{"p", SwJsonArray{true}}}}}), "{\"o\": {\"p\": [true]}}");
}

TEST(SwJsonWriter, IndentedFormStepsByTwoSpaces)
{
    SwJsonValue const value = SwJsonObject{{"a", SwJsonArray{1, true}}, {"b", SwJsonObject()}};
    EXPECT_EQ(written(value, true), "{\n"
                                    "  \"a\": [\n"
                                    "    1,\n"
                                    "    true\n"
                                    "  ],\n"
                                    "  \"b\": {}\n"
                                    "}");
    EXPECT_EQ(written(value, true, 2), "{\n"
                                       "      \"a\": [\n"
                                       "        1,\n"
                                       "        true\n"
                                       "      ],\n"
                                       "      \"b\": {}\n"
                                       "    }");
    EXPECT_EQ(written(SwJsonArray{SwJsonValue(SwJsonArray{SwJsonObject{{"x", "y"}}})}, true), "[\n"
                                                                                              "  [\n"
                                                                                              "    {\n"
                                                                                              "      \"x\": \"y\"\n"
                                                                                              "    }\n"
                                                                                              "  ]\n"
                                                                                              "]");
    EXPECT_EQ(written(value, false, 5), "{\"a\": [1,true],\"b\": {}}");
    EXPECT_EQ(written(value, true, -3), written(value, true, 0));
    EXPECT_EQ(written(7, true, 3), "7");
}

TEST(SwJsonWriter, EmptyAndMissingContainersHaveNoInnerLine)
{
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        EXPECT_EQ(written(SwJsonObject(), pretty), "{}");
        EXPECT_EQ(written(SwJsonArray(), pretty), "[]");
        EXPECT_EQ(written(std::shared_ptr<SwJsonObject>(), pretty), "{}");
        EXPECT_EQ(written(std::shared_ptr<SwJsonArray>(), pretty), "[]");
        EXPECT_EQ(written(SwJsonArray{SwJsonArray(), SwJsonObject()}, pretty),
                  pretty ? "[\n  [],\n  {}\n]" : "[[],{}]");
    }
}

TEST(SwJsonWriter, AppendsToWhatIsThere)
{
    SwString text = "before ";
    SwJsonDocument::generateJson(SwJsonArray{1}, text, false, 0, SwString());
    SwJsonDocument::generateJson("x", text, false, 0, SwString());
    EXPECT_EQ(text.toStdString(), "before [1]\"x\"");
    EXPECT_EQ(SwJsonDocument(SwJsonArray{1}).toJson().toStdString(), "[1]");
    EXPECT_EQ(SwJsonDocument(SwJsonArray{1}).toJson(true).toStdString(), "[\n  1\n]");
    EXPECT_EQ(SwJsonDocument().toJson().toStdString(), "null");
}

TEST(SwJsonWriter, LongTextsAndManyMembersAreWhole)
{
    // Around every size at which an output buffer could be full.
    for (std::size_t length : {100U, 1000U, 4090U, 4095U, 4096U, 4097U, 8192U, 20000U}) {
        SCOPED_TRACE(length);
        std::string const text(length, 'x');
        std::string const item = "\"" + text + "\"";
        EXPECT_EQ(written(SwJsonArray{text, 1, text}),
                  std::string("[").append(item).append(",1,").append(item).append("]"));
        std::string const quotes(length, '"');
        std::string escaped;
        for (std::size_t i = 0; i < length; ++i) {
            escaped += "\\\"";
        }
        EXPECT_EQ(written(quotes), "\"" + escaped + "\"");
        SwJsonArray numbers;
        std::string expected = "[";
        for (std::size_t i = 0; i < length; ++i) {
            numbers.append(i);
            expected += (i == 0 ? "" : ",") + std::to_string(i);
        }
        EXPECT_EQ(written(numbers), expected + "]");
    }
}

TEST(SwJsonWriter, WithAKeyScalarsAreBareCipherText)
{
    SwString const key = "secret";
    auto const cipher = [&key](char const* plain) { return SwString(plain).encryptAES(key).toStdString(); };
    EXPECT_EQ(written(SwJsonObject{{"n", nullptr}, {"x", 1}}, false, 0, key),
              "{\"n\": null,\"x\": " + cipher("1") + "}");
    EXPECT_EQ(written(SwJsonArray{true, false, 2.5, 3.0, -7}, false, 0, key),
              "[" + cipher("true") + "," + cipher("false") + "," + cipher("2.500000") + "," + cipher("3") + "," +
                  cipher("-7") + "]");
    EXPECT_EQ(written("text", false, 0, key), "\"" + cipher("text") + "\"");
    EXPECT_EQ(written("", false, 0, key), "\"" + cipher("") + "\"");
    EXPECT_EQ(written(SwJsonObject{{"k\n", SwJsonArray()}}, true, 0, key), "{\n  \"k\\n\": []\n}");
}

TEST(SwJsonWriter, WhatIsWrittenWithAKeyIsReadWithIt)
{
    SwJsonValue const value = SwJsonObject{
        {"b", true}, {"d", 2.5}, {"i", 1234567890123}, {"s", "text"}, {"a", SwJsonArray{1, "x", SwJsonObject()}}};
    for (bool const pretty : {false, true}) {
        SCOPED_TRACE(pretty);
        EXPECT_EQ(framework_test::readText(written(value, pretty, 0, "key"), "key"), treeText(value));
    }
    // A plain null does not survive: it is no cipher text.
    EXPECT_EQ(standardErrorOf(
                  [] { EXPECT_EQ(framework_test::readText(written(SwJsonValue(), false, 0, "key"), "key"), "''"); }),
              "Decryption error: Invalid data size for AES-ECB (must be multiple of 16).\n");
}

TEST(SwJsonWriter, ReadingBackGivesTheTree)
{
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i) {
        SCOPED_TRACE(i);
        SwJsonValue tree = randomTree(random, 5);
        for (bool const pretty : {false, true}) {
            SwString error;
            SwJsonDocument const document = SwJsonDocument::fromJson(written(tree, pretty), SwString(), error);
            ASSERT_EQ(error.toStdString(), "");
            // Doubles come back cut to six decimals; then they are stable.
            std::string const again = written(document.root(), pretty);
            ASSERT_EQ(again, written(tree, pretty));
        }
    }
}

TEST(SwJsonWriter, ReadingBackTypesLookalikeStringsAndCutsDoubles)
{
    struct Row {
        SwJsonValue value;
        char const* expected;
    };
    Row const rows[] = {
        {"12", "i12"},      {"true", "true"}, {"null", "null"},           {"0.1", "d0.10000000149011612"},
        {"1e5", "'1e5'"},   {3.0, "i3"},      {0.123456789, "d0.123457"}, {1e-9, "d0"},
        {"text", "'text'"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(framework_test::readText(written(row.value)), row.expected);
    }
}

TEST(SwJsonWriter, AMillionLevelsAreWrittenOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        constexpr std::size_t kLevels = 1000000;
        SwJsonValue tree("end");
        for (std::size_t i = 0; i < kLevels; ++i) {
            if (i % 2 == 0) {
                SwJsonArray array;
                array.append(std::move(tree));
                tree = SwJsonValue(std::move(array));
            } else {
                SwJsonObject object;
                object["a"] = std::move(tree);
                tree = SwJsonValue(std::move(object));
            }
        }
        std::string expected;
        for (std::size_t i = 0; i < kLevels / 2; ++i) {
            expected += "{\"a\": [";
        }
        expected += "\""
                    "end"
                    "\"";
        for (std::size_t i = 0; i < kLevels / 2; ++i) {
            expected += "]}";
        }
        EXPECT_TRUE(written(tree) == expected);
        SwString const key = "key";
        std::string const encrypted = written(tree, false, 0, key);
        EXPECT_EQ(encrypted.size(), expected.size() - 3 + SwString("end").encryptAES(key).toStdString().size());
    });
}
