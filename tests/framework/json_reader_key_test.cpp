// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reading with a key: what is decrypted, what stays, and what comes of texts that are no cipher text.
#include "SwJson.h"

#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <iostream>

using framework_test::expectRows;
using framework_test::readText;
using framework_test::standardErrorOf;
using framework_test::treeText;

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
                          {cipher("-0"), "i0"},
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
                          {cipher("5."), "d5"},
                          {cipher(".5"), "d0.5"},
                          {cipher("-0.0"), "d-0"},
                          {cipher(" 1.5"), "d1.5"},
                          {cipher("1.5 "), "'1.5 '"},
                          {cipher("0xE"), "d14"},
                          {cipher("nan"), "'nan'"},
                          {cipher("inf"), "'inf'"},
                          {cipher("1e-999"), "'1e-999'"},
                          {cipher("-"), "'-'"},
                          {cipher("."), "'.'"},
                          {cipher("e"), "'e'"},
                          {cipher("True"), "'True'"},
                          {cipher("a, b]}"), "'a, b]}'"},
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

TEST(SwJsonReader, WithAKeyATokenEndsAtEachDelimiter)
{
    std::string const token = SwString("7").encryptAES("key");
    expectRows(
        {
            {token, "i7"},
            {"[" + token + "]", "[i7]"},
            {"{\"a\":" + token + "}", "{a:i7}"},
            {"[" + token + "," + token + "]", "[i7,i7]"},
            {"[" + token + " ]", "[i7]"},
            {"[" + token + "\t]", "[i7]"},
            {"[" + token + "\n]", "[i7]"},
            {"[" + token + "\v]", "[i7]"},
            {"[" + token + "\f]", "[i7]"},
            {"[" + token + "\r]", "[i7]"},
            // Nothing else ends it; bytes outside the alphabet are not looked at.
            {"[" + token.substr(0, 4) + ":\"{[" + token.substr(4) + "]", "[i7]"},
        },
        "key");
}

TEST(SwJsonReader, ABlankEndsCipherTextWithoutQuotes)
{
    std::string const token = SwString("1").encryptAES("key");
    std::string const read = readText("[" + token + " " + token + "]", "key");
    std::string const expected =
        "error: Expected ',' or ']' in array (index " + std::to_string(token.size() + 2) + ") near ";
    EXPECT_EQ(read.substr(0, expected.size()), expected);
}

TEST(SwJsonReader, WithAnotherKeyTheBytesAreOddButThereIsNoError)
{
    std::string const token = SwString("7").encryptAES("key");
    EXPECT_EQ(standardErrorOf([&] {
                  SwString error;
                  SwJsonDocument const document =
                      SwJsonDocument::fromJson("[" + token + ",\"" + token + "\"]", "other key", error);
                  EXPECT_EQ(error.toStdString(), "");
                  ASSERT_EQ(document.array().size(), 2U);
                  for (SwJsonValue const& value : document.array()) {
                      EXPECT_TRUE(value.isString());
                      EXPECT_EQ(value.stringRef().size(), 16U);
                  }
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
