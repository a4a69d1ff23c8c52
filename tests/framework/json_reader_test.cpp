#include "SwJson.h"

#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <thread>

using framework_test::readText;
using framework_test::standardErrorOf;
using framework_test::treeText;

namespace {

constexpr std::size_t kLevels = 1000000;

struct Row {
    std::string input;
    std::string expected;
};

void expectRows(std::vector<Row> const& rows, std::string const& key = "")
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(readText(row.input, key), row.expected);
    }
}

}  // namespace

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

TEST(SwJsonReader, ObjectsOfEverySizeReadLikeAMap)
{
    std::mt19937 random(23);
    for (unsigned const members : {0U, 1U, 7U, 8U, 9U, 20U, 127U, 128U, 129U, 300U, 5000U}) {
        for (unsigned const names : {1U, members / 2 + 1, members * 3 + 1}) {
            SCOPED_TRACE(testing::Message() << members << " members of " << names << " names");
            std::map<std::string, std::string> model;
            std::string text = "{";
            for (unsigned i = 0; i < members; ++i) {
                std::string const name = "member" + std::to_string(random() % names);
                std::string const value =
                    i % 3 == 0 ? "[i" + std::to_string(i) + "]" : "'value " + std::to_string(i) + "'";
                text += (i == 0 ? "\"" : ",\"") + name + "\":";
                text += i % 3 == 0 ? "[" + std::to_string(i) + "]" : "\"value " + std::to_string(i) + "\"";
                model[name] = value;
            }
            std::string expected;
            for (auto const& [name, value] : model) {
                expected += (expected.empty() ? "" : ",") + name + ":" + value;
            }
            ASSERT_EQ(readText(text + "}"), "{" + expected + "}");
            SwString error;
            SwJsonObject object = SwJsonDocument::fromJson(text + "}", SwString(), error).object();
            for (unsigned i = 0; i < names && i < 1000; ++i) {
                std::string const name = "member" + std::to_string(i);
                ASSERT_EQ(object.contains(name), model.count(name) == 1);
                object[name + "x"] = 1;
                ASSERT_EQ(object.erase(name), model.count(name));
            }
        }
    }
}

TEST(SwJsonReader, PartsOfALargeDocumentOutliveIt)
{
    std::string text = "[";
    for (int i = 0; i < 20000; ++i) {
        text += "{\"a\":[" + std::to_string(i) + "],\"a name beyond the short form\":{\"b\":\"x\"}},";
    }
    text += "]";
    SwJsonValue kept;
    std::thread([&] {
        SwString error;
        SwJsonValue root = SwJsonDocument::fromJson(text, SwString(), error).takeRoot();
        ASSERT_EQ(root.toArray().size(), 20000U);
        kept = std::move((*root.editArray())[12345]);
    }).join();
    EXPECT_EQ(treeText(kept), "{a:[i12345],a name beyond the short form:{b:'x'}}");
    (*kept.editObject())["c"] = 1;
    EXPECT_EQ(kept.editObject()->erase("a"), 1U);
    EXPECT_EQ(treeText(kept), "{a name beyond the short form:{b:'x'},c:i1}");
    // Chunks that went back are used again.
    for (int round = 0; round < 5; ++round) {
        SwString error;
        EXPECT_EQ(SwJsonDocument::fromJson(text, SwString(), error).array().size(), 20000U);
        EXPECT_TRUE(SwJsonDocument::fromJson(text + "x", SwString(), error).isNull());
    }
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
        EXPECT_EQ(readText("\"" + run + "\\n" + run + "\""), "'" + run + "\n" + run + "'");
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
                      {"\"--1\"", "'--1'"},
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
    SwString error;
    EXPECT_TRUE(SwJsonDocument::parseUnicodeEscapeSequence("\\u20ac!", cursor, out, error));
    EXPECT_EQ(out, "x\xE2\x82\xAC");
    EXPECT_EQ(cursor, 6U);
    cursor = 0;
    EXPECT_TRUE(SwJsonDocument::parseUnicodeEscapeSequence("d83d\\ude00", cursor, out, error));
    EXPECT_EQ(out, "x\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(cursor, 10U);
    cursor = 0;
    EXPECT_FALSE(SwJsonDocument::parseUnicodeEscapeSequence("12", cursor, out, error));
    EXPECT_EQ(error.toStdString(), "Incomplete Unicode escape sequence (index 0) near \"12\"");
}

TEST(SwJsonReader, ReadsNumbersWithAPointWhateverTheGlobalLocale)
{
    framework_test::CommaLocale const comma;
    expectRows(
        {{"[1.5,\"2.5\",1e-320]", "error: Invalid floating-point number (index 11) near \"[1.5,\"2.5\",1e-320]\""},
         {"[1.5,\"2.5\",123456789012345678901.25]", "[d1.5,d2.5,d123456789012345683968]"}});
}

TEST(SwJsonReader, AMillionLevelsAreReadOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        std::string arrays(kLevels, '[');
        arrays.append("7").append(std::string(kLevels, ']'));
        std::string objects;
        for (std::size_t i = 0; i < kLevels; ++i) {
            objects.append("{\"a\":");
        }
        SwString error;
        std::size_t depth = 0;
        SwJsonDocument const document = SwJsonDocument::fromJson(arrays, SwString(), error);
        EXPECT_EQ(error.toStdString(), "");
        SwJsonValue const* value = &document.root();
        for (; value->isArray(); ++depth) {
            value = &value->toArray()[0];
        }
        EXPECT_EQ(depth, kLevels);
        EXPECT_EQ(value->toInt(), 7);
        EXPECT_EQ(readText(objects).substr(0, 48), "error: Unexpected end of JSON input (index 50000");
        EXPECT_EQ(readText(std::string(kLevels, '[')).substr(0, 50),
                  "error: Unterminated JSON array (index 1000000) nea");
    });
}

TEST(SwJsonReader, AMillionLevelsAreReadWithAKeyOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        SwString const key = "key";
        std::string text;
        for (std::size_t i = 0; i < kLevels; ++i) {
            text.append(i % 2 == 0 ? "[" : "{\"a\":");
        }
        text.append(SwString("7").encryptAES(key).toStdString());
        for (std::size_t i = kLevels; i > 0; --i) {
            text.append(i % 2 == 1 ? "]" : "}");
        }
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, key, error);
        EXPECT_EQ(error.toStdString(), "");
        SwJsonValue const* value = &document.root();
        while (value->hasContainer()) {
            value = value->isArray() ? &value->toArray()[0] : &value->toObject()["a"];
        }
        EXPECT_EQ(value->toInt(), 7);
    });
}

TEST(SwJsonReader, WithAKeyScalarsAndStringsAreDecrypted)
{
    std::string const key = "secret";
    auto const cipher = [&key](std::string const& plain) { return SwString(plain).encryptAES(key).toStdString(); };
    EXPECT_EQ(standardErrorOf([&] {
                  expectRows(
                      {
                          // Bare tokens take the kind of the scalar they were written from.
                          {cipher("true"), "true"},
                          {cipher("false"), "false"},
                          {cipher("null"), "null"},
                          {cipher("42"), "i42"},
                          {cipher("-9223372036854775808"), "i-9223372036854775808"},
                          {cipher("+7"), "i7"},
                          {cipher(" 7"), "i7"},
                          {cipher("\v\t+7"), "i7"},
                          {cipher("010"), "i10"},
                          {cipher("7 "), "'7 '"},
                          {cipher("+-7"), "'+-7'"},
                          {cipher("0x10"), "'0x10'"},
                          {cipher("9223372036854775808"), "'9223372036854775808'"},
                          {cipher("2.500000"), "d2.5"},
                          {cipher("1e3"), "d1000"},
                          {cipher("0.1"), "d0.1"},
                          {cipher("1e999"), "'1e999'"},
                          {cipher("1.5x"), "'1.5x'"},
                          {cipher("text"), "'text'"},
                          {cipher("x."), "'x.'"},
                          {cipher(""), "''"},
                          {cipher(std::string("7\0", 2)), std::string("'7\0'", 4)},
                          // Strings are decrypted and then coerced like any other.
                          {"\"" + cipher("text") + "\"", "'text'"},
                          {"\"" + cipher("12") + "\"", "i12"},
                          {"\"" + cipher("0.1") + "\"", "d0.10000000149011612"},
                          {"\"" + cipher("1e3") + "\"", "'1e3'"},
                          {"\"" + cipher("") + "\"", "''"},
                          // Member names stay as they are.
                          {"{\"a\":" + cipher("1") + ",\"b\":[" + cipher("2") + "," + cipher("3") + " ]}",
                           "{a:i1,b:[i2,i3]}"},
                          {"[" + cipher("1") + "\n," + cipher("2") + ",]", "[i1,i2]"},
                          {"{}", "{}"},
                          {"[]", "[]"},
                      },
                      key);
              }),
              "");
}

TEST(SwJsonReader, WithAKeyWhatIsNoCipherTextReadsAsTheEmptyString)
{
    std::string const sizeLine = "Decryption error: Invalid data size for AES-ECB (must be multiple of 16).\n";
    std::string const emptyLine = "Decryption error: Invalid data: empty.\n";
    struct KeyRow {
        char const* input;
        char const* expected;
        std::string lines;
    };
    KeyRow const rows[] = {
        {"abc", "''", sizeLine},
        {"12", "''", sizeLine},
        {"null", "''", sizeLine},
        {"true", "''", sizeLine},
        {"[null,abc]", "['','']", sizeLine + sizeLine},
        {"[:]", "['']", emptyLine},
        {"[-]", "['']", emptyLine},
        {"\"abc\"", "''", sizeLine},
        {"\"\"", "''", emptyLine},
        {"abc[1]", "error: Unexpected characters at the end of JSON.", sizeLine},
        {"abc\"x\" ", "''", sizeLine},
    };
    for (KeyRow const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(readText(row.input, "key"), row.expected); }), row.lines);
    }
}

TEST(SwJsonReader, WithAKeyAnEmptyTokenFailsAsANumber)
{
    expectRows(
        {
            {"", "error: Unexpected end of JSON input (index 0) near \"\""},
            {",", "error: Expected digit in number literal (index 0) near \",\""},
            {"[,]", "error: Expected digit in number literal (index 1) near \"[,]\""},
            {"{\"a\":}", "error: Expected digit in number literal (index 5) near \"{\"a\":}\""},
            {"]", "error: Expected digit in number literal (index 0) near \"]\""},
            {"{\"a\" x", "error: Expected ':' after object key (index 5) near \"{\"a\" x\""},
        },
        "key");
}

TEST(SwJsonReader, ADecryptionThatThrowsAllTheSameIsReported)
{
    // The decryption line itself fails: standard error throws.
    struct FailingBuffer : std::streambuf {};
    FailingBuffer failing;
    std::streambuf* const previous = std::cerr.rdbuf(&failing);
    std::cerr.exceptions(std::ios::badbit | std::ios::failbit);
    SwString error;
    SwString tokenError;
    std::size_t cursor = 0;
    std::size_t tokenCursor = 0;
    SwJsonValue const value = SwJsonDocument::parseJson("\"abc\" ", cursor, "key", error);
    std::cerr.clear();
    SwJsonValue const token = SwJsonDocument::parseJson("123 ", tokenCursor, "key", tokenError);
    std::cerr.exceptions(std::ios::goodbit);
    std::cerr.clear();
    std::cerr.rdbuf(previous);
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(error.toStdString(), "Unable to decrypt string value (index 5) near \"\"abc\" \"");
    // A bare token that throws is read by the ordinary rules.
    EXPECT_EQ(treeText(token), "i123");
    EXPECT_EQ(tokenError.toStdString(), "");
    EXPECT_EQ(tokenCursor, 3U);
}
