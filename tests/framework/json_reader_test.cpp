// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwJson.h"

#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <random>

using framework_test::expectRows;
using framework_test::readText;
using framework_test::standardErrorOf;
using framework_test::treeText;

TEST(SwJsonReader, ReadsEveryKind)
{
    EXPECT_EQ(standardErrorOf([] {
                  expectRows({
                      {"null", "null"},
                      {"true", "true"},
                      {"false", "false"},
                      {"0", "i0"},
                      {"-0", "i0"},
                      {"42", "i42"},
                      {"-42", "i-42"},
                      {"9223372036854775807", "i9223372036854775807"},
                      {"-9223372036854775808", "i-9223372036854775808"},
                      {"1000000000000000000", "i1000000000000000000"},
                      {"999999999999999999", "i999999999999999999"},
                      {"0.0", "d0"},
                      {"-0.0", "d-0"},
                      {"1.5", "d1.5"},
                      {"1e5", "d1e+05"},
                      {"1E+2", "d100"},
                      {"-2.5e-1", "d-0.25"},
                      {"0e5", "d0"},
                      {"\"text\"", "'text'"},
                      {"\"\"", "''"},
                      {"{}", "{}"},
                      {"[]", "[]"},
                      {"{\"a\":[1,{\"b\":null}],\"c\":\"x\"}", "{a:[i1,{b:null}],c:'x'}"},
                      {"[[],{},[[]]]", "[[],{},[[]]]"},
                  });
              }),
              "");
}

TEST(SwJsonReader, WhiteSpaceIsThatOfTheCLibrary)
{
    std::string const space = " \t\n\v\f\r";
    expectRows({
        {space + "1" + space, "i1"},
        {space + "{" + space + "\"a\"" + space + ":" + space + "1" + space + "," + space + "\"b\"" + space + ":" +
             space + "[" + space + "1" + space + "," + space + "2" + space + "]" + space + "}" + space,
         "{a:i1,b:[i1,i2]}"},
        {"{" + space + "}", "{}"},
        {"[" + space + "]", "[]"},
        {"\xC2\xA0"
         "1",
         "error: Invalid JSON token (index 0) near \"\xC2\xA0"
         "1\""},
        {"\xEF\xBB\xBF"
         "1",
         "error: Invalid JSON token (index 0) near \"\xEF\xBB\xBF"
         "1\""},
    });
}

TEST(SwJsonReader, AcceptsTrailingCommas)
{
    expectRows({
        {"{\"a\":1,}", "{a:i1}"},
        {"[1,2,]", "[i1,i2]"},
        {"[1 , ]", "[i1]"},
        {"{\"a\":1 , }", "{a:i1}"},
        {"[[1,],]", "[[i1]]"},
        {"{,}", "error: Expected string key in object (index 1) near \"{,}\""},
        {"[,1]", "error: Invalid JSON token (index 1) near \"[,1]\""},
        {"[1,,2]", "error: Invalid JSON token (index 3) near \"[1,,2]\""},
        {"{\"a\":1,,}", "error: Expected string key in object (index 7) near \"{\"a\":1,,}\""},
    });
}

TEST(SwJsonReader, TheLastOfRepeatedMembersCounts)
{
    expectRows({
        {"{\"a\":1,\"a\":2}", "{a:i2}"},
        {"{\"a\":{\"x\":1},\"a\":{\"y\":2}}", "{a:{y:i2}}"},
        {"{\"a\":[1],\"b\":0,\"a\":null}", "{a:null,b:i0}"},
        {"{\"a\":1,\"\\u0061\":\"two\"}", "{a:'two'}"},
        {"{\"a\":\"text\",\"a\":true}", "{a:true}"},
    });
}

TEST(SwJsonReader, MembersAreOrderedByTheirBytes)
{
    expectRows({{"{\"b\":1,\"a\":2,\"B\":3,\"\":4}", "{:i4,B:i3,a:i2,b:i1}"}});
}

TEST(SwJsonReader, NumbersKeepTheirGrammar)
{
    expectRows({
        {"-", "error: Expected digit in number literal (index 1) near \"-\""},
        {"-x", "error: Expected digit in number literal (index 1) near \"-x\""},
        {"[-]", "error: Expected digit in number literal (index 2) near \"[-]\""},
        {"007", "error: Leading zeros are not allowed in JSON numbers (index 1) near \"007\""},
        {"-01", "error: Leading zeros are not allowed in JSON numbers (index 2) near \"-01\""},
        {"00", "error: Leading zeros are not allowed in JSON numbers (index 1) near \"00\""},
        {"1.", "error: Expected digit after decimal point (index 2) near \"1.\""},
        {"1.x", "error: Expected digit after decimal point (index 2) near \"1.x\""},
        {"1.e5", "error: Expected digit after decimal point (index 2) near \"1.e5\""},
        {"1e", "error: Expected digit in exponent (index 2) near \"1e\""},
        {"1e+", "error: Expected digit in exponent (index 3) near \"1e+\""},
        {"1e-x", "error: Expected digit in exponent (index 3) near \"1e-x\""},
        {"1.5E", "error: Expected digit in exponent (index 4) near \"1.5E\""},
        {"+1", "error: Invalid JSON token (index 0) near \"+1\""},
        {".5", "error: Invalid JSON token (index 0) near \".5\""},
        {"0x10", "error: Unexpected characters at the end of JSON."},
        {"1_000", "error: Unexpected characters at the end of JSON."},
        {"Infinity", "error: Invalid JSON token (index 0) near \"Infinity\""},
        {"-Infinity", "error: Expected digit in number literal (index 1) near \"-Infinity\""},
        {"NaN", "error: Invalid JSON token (index 0) near \"NaN\""},
    });
}

TEST(SwJsonReader, NumbersOutOfRangeAreErrors)
{
    expectRows({
        {"9223372036854775808", "error: Invalid integer number (index 0) near \"9223372036854775808\""},
        {"-9223372036854775809", "error: Invalid integer number (index 0) near \"-9223372036854775809\""},
        {"[99999999999999999999999]", "error: Invalid integer number (index 1) near \"[99999999999999999999\""},
        {"1e999", "error: Invalid floating-point number (index 0) near \"1e999\""},
        {"-1e999", "error: Invalid floating-point number (index 0) near \"-1e999\""},
        {"1e-999", "error: Invalid floating-point number (index 0) near \"1e-999\""},
        {"[ 1e309]", "error: Invalid floating-point number (index 2) near \"[ 1e309]\""},
        {"1e99999999999999999999", "error: Invalid floating-point number (index 0) near \"1e999999999999999999\""},
        // Below the normal range strtod calls every result a range error that is not exact.
        {"2.2250738585072014e-308", "d2.2250738585072014e-308"},
        {"2.2250738585072011e-308", "error: Invalid floating-point number (index 0) near \"2.2250738585072011e-\""},
        {"4.9e-324", "error: Invalid floating-point number (index 0) near \"4.9e-324\""},
        {"1.7976931348623157e308", "d1.7976931348623157e+308"},
        {"1.7976931348623159e308", "error: Invalid floating-point number (index 0) near \"1.7976931348623159e3\""},
        {"0e999", "d0"},
        {"0.000e-999", "d0"},
        {"0e99999999999999999999", "d0"},
    });
}

TEST(SwJsonReader, DoublesAreTheNearestOnes)
{
    std::mt19937_64 random(5);
    for (int i = 0; i < 50000; ++i) {
        std::string text = std::to_string(random() % 1000000000) + "." + std::to_string(random());
        text.resize(std::min<std::size_t>(text.size(), 3 + random() % 25));
        if (text.back() == '.') {
            text.push_back('5');
        }
        if (random() % 4 == 0) {
            text += "e" + std::to_string(static_cast<int>(random() % 560) - 280);
        }
        if (text.front() == '0' && text[1] != '.') {
            continue;
        }
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
        if (text.find_first_of(".e") == std::string::npos) {
            continue;
        }
        ASSERT_EQ(error.toStdString(), "") << text;
        ASSERT_EQ(document.root().toDouble(), std::strtod(text.c_str(), nullptr)) << text;
    }
}

TEST(SwJsonReader, LiteralsTakeTheWholeRunOfLetters)
{
    expectRows({
        {"tru", "error: Invalid boolean literal (index 3) near \"tru\""},
        {"truex", "error: Invalid boolean literal (index 5) near \"truex\""},
        {"True", "error: Invalid JSON token (index 0) near \"True\""},
        {"tRUE", "error: Invalid boolean literal (index 4) near \"tRUE\""},
        {"f", "error: Invalid boolean literal (index 1) near \"f\""},
        {"[false_]", "error: Expected ',' or ']' in array (index 6) near \"[false_]\""},
        {"nul", "error: Invalid literal, expected 'null' (index 3) near \"nul\""},
        {"nan", "error: Invalid literal, expected 'null' (index 3) near \"nan\""},
        {"nullx", "error: Invalid literal, expected 'null' (index 5) near \"nullx\""},
        {"nulAZaz[", "error: Invalid literal, expected 'null' (index 7) near \"nulAZaz[\""},
        {"nullnull", "error: Invalid literal, expected 'null' (index 8) near \"nullnull\""},
        {"null1", "error: Unexpected characters at the end of JSON."},
        {"[null1]", "error: Expected ',' or ']' in array (index 5) near \"[null1]\""},
        {"true1", "error: Unexpected characters at the end of JSON."},
    });
}

TEST(SwJsonReader, ObjectProblemsAreNamedWithTheirPlace)
{
    expectRows({
        {"{", "error: Unterminated JSON object (index 1) near \"{\""},
        {"{ ", "error: Unterminated JSON object (index 2) near \"{ \""},
        {"{\"a\":1", "error: Unterminated JSON object (index 6) near \"{\"a\":1\""},
        {"{\"a\":1 ", "error: Unterminated JSON object (index 7) near \"{\"a\":1 \""},
        {"{\"a\":1,", "error: Unterminated JSON object (index 7) near \"{\"a\":1,\""},
        {"{a:1}", "error: Expected string key in object (index 1) near \"{a:1}\""},
        {"{1:1}", "error: Expected string key in object (index 1) near \"{1:1}\""},
        {"{\"a\":1,b", "error: Expected string key in object (index 7) near \"{\"a\":1,b\""},
        {"{\"a\"", "error: Expected ':' after object key (index 4) near \"{\"a\"\""},
        {"{\"a\" ", "error: Expected ':' after object key (index 5) near \"{\"a\" \""},
        {"{\"a\" 1}", "error: Expected ':' after object key (index 5) near \"{\"a\" 1}\""},
        {"{\"a\":", "error: Unexpected end of JSON input (index 5) near \"{\"a\":\""},
        {"{\"a\":}", "error: Invalid JSON token (index 5) near \"{\"a\":}\""},
        {"{\"a\":1 \"b\":2}", "error: Expected ',' or '}' in object (index 7) near \"{\"a\":1 \"b\":2}\""},
        {"{\"a\":1]", "error: Expected ',' or '}' in object (index 6) near \"{\"a\":1]\""},
        {"{\"a", "error: Unterminated string literal (index 3) near \"{\"a\""},
    });
}

TEST(SwJsonReader, ArrayProblemsAreNamedWithTheirPlace)
{
    expectRows({
        {"[", "error: Unterminated JSON array (index 1) near \"[\""},
        {"[ ", "error: Unexpected end of JSON input (index 2) near \"[ \""},
        {"[1", "error: Unterminated JSON array (index 2) near \"[1\""},
        {"[1 ", "error: Unterminated JSON array (index 3) near \"[1 \""},
        {"[1,", "error: Unterminated JSON array (index 3) near \"[1,\""},
        {"[1, ", "error: Unexpected end of JSON input (index 4) near \"[1, \""},
        {"[1 2]", "error: Expected ',' or ']' in array (index 3) near \"[1 2]\""},
        {"[1}", "error: Expected ',' or ']' in array (index 2) near \"[1}\""},
        {"[1, x]", "error: Invalid JSON token (index 4) near \"[1, x]\""},
        {"[[[1]", "error: Unterminated JSON array (index 5) near \"[[[1]\""},
        {"[\"a", "error: Unterminated string literal (index 3) near \"[\"a\""},
    });
}

TEST(SwJsonReader, TheExcerptHasTwentyBytesOnEitherSide)
{
    expectRows({
        {"", "error: Unexpected end of JSON input (index 0) near \"\""},
        {"   ", "error: Unexpected end of JSON input (index 3) near \"   \""},
        {"[\"0123456789012345\", x, \"0123456789012345678\"]",
         "error: Invalid JSON token (index 21) near \"\"0123456789012345\", x, \"0123456789012345\""},
        {"[\"012345678901234\", x, \"01234567890123456\"]",
         "error: Invalid JSON token (index 20) near \"[\"012345678901234\", x, \"0123456789012345\""},
        {"x1234567890123456789", "error: Invalid JSON token (index 0) near \"x1234567890123456789\""},
        {"x12345678901234567890", "error: Invalid JSON token (index 0) near \"x1234567890123456789\""},
        {"[\"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\", ?]",
         "error: Invalid JSON token (index 25) near \"\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3"
         "\xA9\", ?]\""},
    });
}

TEST(SwJsonReader, TheDocumentEndsBehindTheValue)
{
    expectRows({
        {"[1] x", "error: Unexpected characters at the end of JSON."},
        {"1 2", "error: Unexpected characters at the end of JSON."},
        {"{}}", "error: Unexpected characters at the end of JSON."},
        {std::string("1\0", 2), "error: Unexpected characters at the end of JSON."},
        {"[1] \v\f\n", "[i1]"},
    });
}

TEST(SwJsonReader, StringsAreDecoded)
{
    expectRows({
        {"\"\\\"\\\\\\/\"", "'\"\\/'"},
        {"\"\\b\\f\\n\\r\\t\"", "'\b\f\n\r\t'"},
        {"\"a\\u0041b\"", "'aAb'"},
        {"\"\\u00e9\\u00E9\"", "'\xC3\xA9\xC3\xA9'"},
        {"\"\\u007f\\u0080\"", "'\x7F\xC2\x80'"},
        {"\"\\u07ff\\u0800\"", "'\xDF\xBF\xE0\xA0\x80'"},
        {"\"\\u20ac\\uffff\"", "'\xE2\x82\xAC\xEF\xBF\xBF'"},
        {"\"\\ud7ff\\ue000\"", "'\xED\x9F\xBF\xEE\x80\x80'"},
        {"\"\\ud83d\\ude00\"", "'\xF0\x9F\x98\x80'"},
        {"\"\\uD800\\uDC00\"", "'\xF0\x90\x80\x80'"},
        {"\"\\uDBFF\\uDFFF\"", "'\xF4\x8F\xBF\xBF'"},
        {"\"\\u0000\"", std::string("'\0'", 3)},
        {"\"x\\u0000y\"", std::string("'x\0y'", 5)},
        {"\"\x7F\x80\xFF\"", "'\x7F\x80\xFF'"},
        {"\"a longer text with an escape at the end\\n\"", "'a longer text with an escape at the end\n'"},
        {"{\"\\u0061\\n\":1}", "{a\n:i1}"},
    });
}

TEST(SwJsonReader, StringProblemsAreNamedWithTheirPlace)
{
    expectRows({
        {"\"abc", "error: Unterminated string literal (index 4) near \"\"abc\""},
        {"\"", "error: Unterminated string literal (index 1) near \"\"\""},
        {"\"a\\n", "error: Unterminated string literal (index 4) near \"\"a\\n\""},
        {"\"a\tb\"", "error: Unescaped control character in string (index 2) near \"\"a\tb\"\""},
        {"\"a\nb\"", "error: Unescaped control character in string (index 2) near \"\"a\nb\"\""},
        {"\"12345678\x1F\"", "error: Unescaped control character in string (index 9) near \"\"12345678\x1F\"\""},
        {std::string("\"a\0\"", 4),
         std::string("error: Unescaped control character in string (index 2) near \"\"a\0\"\"", 66)},
        {"\"\\n\x01\"", "error: Unescaped control character in string (index 3) near \"\"\\n\x01\"\""},
        {"\"a\\", "error: Invalid escape sequence in string (index 3) near \"\"a\\\""},
        {"\"\\x\"", "error: Invalid escape character in string (index 2) near \"\"\\x\"\""},
        {"\"\\'\"", "error: Invalid escape character in string (index 2) near \"\"\\'\"\""},
        {"\"\\U0041\"", "error: Invalid escape character in string (index 2) near \"\"\\U0041\"\""},
        {"\"\\u", "error: Incomplete Unicode escape sequence (index 3) near \"\"\\u\""},
        {"\"\\u12\"", "error: Incomplete Unicode escape sequence (index 3) near \"\"\\u12\"\""},
        {"\"\\u123\"", "error: Invalid hex digit in Unicode escape (index 6) near \"\"\\u123\"\""},
        {"\"\\u12g4\"", "error: Invalid hex digit in Unicode escape (index 5) near \"\"\\u12g4\"\""},
        {"\"\\u12 \"", "error: Invalid hex digit in Unicode escape (index 5) near \"\"\\u12 \"\""},
        {"\"\\ud83d\"", "error: Missing low surrogate after high surrogate (index 7) near \"\"\\ud83d\"\""},
        {"\"\\ud83d", "error: Missing low surrogate after high surrogate (index 7) near \"\"\\ud83d\""},
        {"\"\\ud83dxy\"", "error: Missing low surrogate after high surrogate (index 7) near \"\"\\ud83dxy\"\""},
        {"\"\\ud83d\\n\"", "error: Missing low surrogate after high surrogate (index 7) near \"\"\\ud83d\\n\"\""},
        {"\"\\ud83d\\", "error: Missing low surrogate after high surrogate (index 7) near \"\"\\ud83d\\\""},
        {"\"\\ud83d\\u", "error: Incomplete Unicode escape sequence (index 9) near \"\"\\ud83d\\u\""},
        {"\"\\ud83d\\ude\"", "error: Incomplete Unicode escape sequence (index 9) near \"\"\\ud83d\\ude\"\""},
        {"\"\\ud83d\\udeXX\"", "error: Invalid hex digit in Unicode escape (index 11) near \"\"\\ud83d\\udeXX\"\""},
        {"\"\\ud83d\\u0041\"", "error: Invalid low surrogate in Unicode escape (index 13) near \"\"\\ud83d\\u0041\"\""},
        {"\"\\ud83d\\ud83d\"", "error: Invalid low surrogate in Unicode escape (index 13) near \"\"\\ud83d\\ud83d\"\""},
        {"\"\\ude00\"",
         "error: Unexpected low surrogate without leading high surrogate (index 7) near \"\"\\ude00\"\""},
        {"\"\\udfff\"",
         "error: Unexpected low surrogate without leading high surrogate (index 7) near \"\"\\udfff\"\""},
        {"{\"a\\q\":1}", "error: Invalid escape character in string (index 4) near \"{\"a\\q\":1}\""},
    });
}

TEST(SwJsonReader, StringsOfEveryLengthEndWhereTheyShould)
{
    // The scan looks at eight bytes at once: every offset of quote, backslash and control character.
    for (std::size_t length = 0; length < 40; ++length) {
        SCOPED_TRACE(length);
        std::string const run = std::string(length, 'x');
        EXPECT_EQ(readText("\"" + run + "\""), "'" + run + "'");
        std::string const escaped = std::string(run).append("\\n").append(run);
        std::string const decoded = std::string(run).append("\n").append(run);
        EXPECT_EQ(readText("\"" + escaped + "\""), "'" + decoded + "'");
        std::string const place = "(index " + std::to_string(length + 1) + ")";
        EXPECT_EQ(readText("\"" + run + "\x1F\"").find("error: Unescaped control character in string " + place), 0U);
        EXPECT_EQ(readText("\"" + run).substr(0, 34), "error: Unterminated string literal");
        std::string const high(length, '\xA0');
        EXPECT_EQ(readText("\"" + high + "!#[]\""), "'" + high + "!#[]'");
    }
}

TEST(SwJsonReader, StringValuesTakeTheKindTheyLookLike)
{
    EXPECT_EQ(standardErrorOf([] {
                  expectRows({
                      {"\"true\"", "true"},
                      {"\"false\"", "false"},
                      {"\"null\"", "null"},
                      {"\"True\"", "'True'"},
                      {"\"nul\"", "'nul'"},
                      {"\" true\"", "' true'"},
                      {"\"\"", "''"},
                      {"\"-\"", "'-'"},
                      {"\"12\"", "i12"},
                      {"\"-12\"", "i-12"},
                      {"\"007\"", "i7"},
                      {"\"010\"", "i8"},
                      {"\"08\"", "i0"},
                      {"\"-010\"", "i-8"},
                      {"\"2147483647\"", "i2147483647"},
                      {"\"-2147483648\"", "i-2147483648"},
                      {"\"1.5\"", "d1.5"},
                      {"\"-1.5\"", "d-1.5"},
                      {"\"0\"", "i0"},
                      {"\"-0\"", "i0"},
                      {"\"-0.0\"", "d-0"},
                      {"\"-08\"", "i0"},
                      {"\".5\"", "d0.5"},
                      {"\"5.\"", "d5"},
                      {"\"-.5\"", "d-0.5"},
                      {"\"0.1\"", "d0.10000000149011612"},
                      {"\"48.858370\"", "d48.85837173461914"},
                      {"\"16777217.0\"", "d16777216"},
                      {"\"1e5\"", "'1e5'"},
                      {"\"+1\"", "'+1'"},
                      {"\" 1\"", "' 1'"},
                      {"\"1 \"", "'1 '"},
                      {"\"1.2.3\"", "'1.2.3'"},
                      {"\"..\"", "'..'"},
                      {"\"-..\"", "'-..'"},
                      {"\"--1\"", "'--1'"},
                      {"\"1.5 \"", "'1.5 '"},
                      {"\"1.-5\"", "'1.-5'"},
                      {"\"1,5\"", "'1,5'"},
                      {"\"FALSE\"", "'FALSE'"},
                      {"\"Null\"", "'Null'"},
                      {"\"null \"", "'null '"},
                      {"\"1-\"", "'1-'"},
                      {"\"0x10\"", "'0x10'"},
                      {"\"0b1\"", "'0b1'"},
                      {"\"1_000\"", "'1_000'"},
                      {"\"12a\"", "'12a'"},
                      {"\"inf\"", "'inf'"},
                      {"\"\\u0031\"", "i1"},
                      {"[\"1\",{\"2\":\"3\"}]", "[i1,{2:i3}]"},
                      {"{\"true\":\"true\"}", "{true:true}"},
                  });
              }),
              "");
}

TEST(SwJsonReader, CoercionThatFailsGivesZeroAndOneLine)
{
    struct FailureRow {
        char const* input;
        char const* expected;
        char const* line;
    };
    std::string const manyDigits(400, '9');
    FailureRow const rows[] = {
        {"\"99999999999\"", "i0", "Invalid int conversion in SwString: 99999999999\n"},
        {"\"2147483648\"", "i0", "Invalid int conversion in SwString: 2147483648\n"},
        {"\"-2147483649\"", "i0", "Invalid int conversion in SwString: -2147483649\n"},
        {"\".\"", "d0", "Invalid float conversion in SwString: .\n"},
        {"\"-.\"", "d0", "Invalid float conversion in SwString: -.\n"},
    };
    for (FailureRow const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(readText(row.input), row.expected); }), row.line);
    }
    EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(readText("\"" + manyDigits + ".0\""), "d0"); }),
              "Invalid float conversion in SwString: " + manyDigits + ".0\n");
    // Beyond the float range, but a double: the narrowing gives infinity.
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(readText("\"" + std::string(50, '9') + ".0\""), "dinf"); }), "");
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(readText("\"-" + std::string(50, '9') + ".0\""), "d-inf"); }), "");
}

TEST(SwJsonReader, CoercionLinesComeInTheOrderOfTheText)
{
    // Also for a value that a later one replaces, and before an error.
    EXPECT_EQ(standardErrorOf([] {
                  expectRows({
                      {"{\"z\":\"99999999999\",\"a\":[\".\"],\"z\":1}", "{a:[d0],z:i1}"},
                      {"[\"-.\",?]", "error: Invalid JSON token (index 6) near \"[\"-.\",?]\""},
                  });
              }),
              "Invalid int conversion in SwString: 99999999999\n"
              "Invalid float conversion in SwString: .\n"
              "Invalid float conversion in SwString: -.\n");
}

TEST(SwJsonReader, ASecondErrorNeverReplacesTheFirst)
{
    SwString error = "first";
    SwJsonDocument::reportError(error, "text", 1, "second");
    EXPECT_EQ(error.toStdString(), "first");
    SwString carried = "earlier";
    EXPECT_TRUE(SwJsonDocument::fromJson("[1]", SwString(), carried).isNull());
    EXPECT_EQ(carried.toStdString(), "earlier");
    carried = "earlier";
    EXPECT_TRUE(SwJsonDocument::fromJson("[1] x", SwString(), carried).isNull());
    EXPECT_EQ(carried.toStdString(), "earlier");
    EXPECT_EQ(readText("[\"\\q\", \"\\z\", ?"),
              "error: Invalid escape character in string (index 3) near \"[\"\\q\", \"\\z\", ?\"");
}

TEST(SwJsonReader, ReportErrorCutsTheExcerptAtTheText)
{
    struct ReportRow {
        std::size_t index;
        char const* expected;
    };
    SwString const text = "0123456789012345678901234567890123456789ABCDEFGHIJ";
    ReportRow const rows[] = {
        {0, "m (index 0) near \"01234567890123456789\""},
        {20, "m (index 20) near \"0123456789012345678901234567890123456789\""},
        {25, "m (index 25) near \"5678901234567890123456789"
             "01234"
             "56789ABCDE\""},
        {50, "m (index 50) near \"0123456789ABCDEFGHIJ\""},
        {60, "m (index 60) near \"ABCDEFGHIJ\""},
        {100, "m (index 100) near \"\""},
    };
    for (ReportRow const& row : rows) {
        SCOPED_TRACE(row.index);
        SwString error;
        SwJsonDocument::reportError(error, text, row.index, "m");
        EXPECT_EQ(error.toStdString(), row.expected);
    }
}

TEST(SwJsonReader, ParseJsonReadsOneValueAtTheCursor)
{
    struct CursorRow {
        char const* text;
        std::size_t cursor;
        char const* expected;
        std::size_t after;
        char const* error;
    };
    CursorRow const rows[] = {
        {"  1 2", 0, "i1", 3, ""},
        {"  1 2", 3, "i2", 5, ""},
        {"[1],[2]", 4, "[i2]", 7, ""},
        {"null1", 0, "null", 4, ""},
        {"\"a\" ", 0, "'a'", 3, ""},
        {"12", 2, "null", 2, "Unexpected end of JSON input (index 2) near \"12\""},
        {"12", 9, "null", 2, "Unexpected end of JSON input (index 2) near \"12\""},
        {"[1, ?]", 0, "null", 4, "Invalid JSON token (index 4) near \"[1, ?]\""},
        {"[007]", 0, "null", 2, "Leading zeros are not allowed in JSON numbers (index 2) near \"[007]\""},
    };
    for (CursorRow const& row : rows) {
        SCOPED_TRACE(row.text);
        std::size_t cursor = row.cursor;
        SwString error;
        EXPECT_EQ(treeText(SwJsonDocument::parseJson(row.text, cursor, SwString(), error)), row.expected);
        EXPECT_EQ(cursor, row.after);
        EXPECT_EQ(error.toStdString(), row.error);
    }
}

TEST(SwJsonReader, ParseStringReadsFromQuoteToQuote)
{
    std::size_t cursor = 1;
    SwString error;
    EXPECT_EQ(SwJsonDocument::parseString(" \"a\\tb\" ", cursor, error), "a\tb");
    EXPECT_EQ(cursor, 7U);
    EXPECT_TRUE(error.isEmpty());
    cursor = 1;
    EXPECT_EQ(SwJsonDocument::parseString(" \"12\\q\"", cursor, error), "");
    EXPECT_EQ(cursor, 5U);
    EXPECT_EQ(error.toStdString(), "Invalid escape character in string (index 5) near \" \"12\\q\"\"");
    cursor = 9;
    SwString endError;
    EXPECT_EQ(SwJsonDocument::parseString("abc", cursor, endError), "");
    EXPECT_EQ(endError.toStdString(), "Unterminated string literal (index 3) near \"abc\"");
}

TEST(SwJsonReader, ParseUnicodeEscapeAppendsUtf8)
{
    std::size_t cursor = 2;
    std::string out = "x";
    EXPECT_EQ(SwJsonDocument::parseUnicodeEscapeSequence("\\u20ac!", cursor, out), "");
    EXPECT_EQ(out, "x\xE2\x82\xAC");
    EXPECT_EQ(cursor, 6U);
    cursor = 0;
    EXPECT_EQ(SwJsonDocument::parseUnicodeEscapeSequence("d83d\\ude00", cursor, out), "");
    EXPECT_EQ(out, "x\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(cursor, 10U);
}

TEST(SwJsonReader, ParseUnicodeEscapeGivesTheProblemAndItsPlace)
{
    struct Row {
        char const* text;
        char const* problem;
        std::size_t place;
    };
    Row const rows[] = {
        {"12", "Incomplete Unicode escape sequence", 0},
        {"", "Incomplete Unicode escape sequence", 0},
        {"12g4", "Invalid hex digit in Unicode escape", 2},
        {"d83d", "Missing low surrogate after high surrogate", 4},
        {"d83dxuDE00", "Missing low surrogate after high surrogate", 4},
        {"d83d\\nDE00", "Missing low surrogate after high surrogate", 4},
        {"d83d\\uDE0", "Incomplete Unicode escape sequence", 6},
        {"d83d\\uDE0x", "Invalid hex digit in Unicode escape", 9},
        {"d83d\\u0041", "Invalid low surrogate in Unicode escape", 10},
        {"dc00", "Unexpected low surrogate without leading high surrogate", 4},
        {"de00", "Unexpected low surrogate without leading high surrogate", 4},
        {"dfff", "Unexpected low surrogate without leading high surrogate", 4},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.text);
        std::size_t cursor = 0;
        std::string out = "as before";
        EXPECT_EQ(SwJsonDocument::parseUnicodeEscapeSequence(row.text, cursor, out), row.problem);
        EXPECT_EQ(cursor, row.place);
        EXPECT_EQ(out, "as before");
    }
}

TEST(SwJsonReader, WithAnErrorAlreadyThereParseJsonDoesNothing)
{
    std::size_t cursor = 2;
    SwString error = "an error";
    EXPECT_TRUE(SwJsonDocument::parseJson("  [1]", cursor, SwString(), error).isNull());
    EXPECT_EQ(cursor, 2U);
    EXPECT_EQ(error.toStdString(), "an error");
    EXPECT_TRUE(SwJsonDocument::fromJson("[1]", SwString(), error).isNull());
    EXPECT_EQ(error.toStdString(), "an error");
}

TEST(SwJsonReader, AWholeDoubleIsADoubleUntilItIsWritten)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson("[3.0,3,-0.0,1e2,\"3.0\",\"3\"]", SwString(), error);
    EXPECT_EQ(treeText(document.root()), "[d3,i3,d-0,d100,d3,i3]");
    EXPECT_TRUE(document.array()[0].isDouble());
    EXPECT_TRUE(document.array()[1].isInt());
    EXPECT_FALSE(document.array()[0] == document.array()[1]);
    EXPECT_EQ(document.toJson().toStdString(), "[3,3,0,100,3,3]");
    EXPECT_EQ(framework_test::readText(document.toJson()), "[i3,i3,i0,i100,i3,i3]");
}

TEST(SwJsonReader, PutsMoreMembersThanAByteCountsInOrderAgainAndAgain)
{
    std::string text;
    std::string tree;
    for (int i = 100; i < 400; ++i) {
        std::string const member = "\"" + std::to_string(i) + "\":" + std::to_string(i);
        text = text.empty() ? member : member + "," + text;
        tree += (tree.empty() ? "" : ",") + std::to_string(i) + ":i" + std::to_string(i);
    }
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(framework_test::readText("{" + text + "}"), "{" + tree + "}");
    }
}

TEST(SwJsonReader, ReadsNumbersWithAPointWhateverTheGlobalLocale)
{
    framework_test::CommaLocale const comma;
    expectRows(
        {{"[1.5,\"2.5\",1e-320]", "error: Invalid floating-point number (index 11) near \"[1.5,\"2.5\",1e-320]\""},
         {"[1.5,\"2.5\",123456789012345678901.25]", "[d1.5,d2.5,d123456789012345683968]"}});
}
