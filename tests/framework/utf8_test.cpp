// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes are a text: the replacement character stands for what is malformed.
#include "sw_utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Row {
    std::string name;
    std::string bytes;
    std::vector<char32_t> expected;
};

class Utf8 : public testing::TestWithParam<Row> {};

TEST_P(Utf8, IsDecoded)
{
    std::vector<char32_t> actual;
    for (std::size_t at = 0; at < GetParam().bytes.size();) {
        auto const next = sw_utf8::codePointAt(GetParam().bytes, at);
        ASSERT_GT(next.bytes, 0U);
        actual.push_back(next.value);
        at += next.bytes;
    }
    EXPECT_EQ(actual, GetParam().expected);
}

constexpr char32_t kBad = 0xFFFD;

INSTANTIATE_TEST_SUITE_P(Rows, Utf8,
                         testing::Values(Row{"Ascii", "a~", {U'a', U'~'}}, Row{"Zero", std::string("\0", 1), {0}},
                                         Row{"TwoBytes", "\xC2\x80\xDF\xBF", {0x80, 0x7FF}},
                                         Row{"ThreeBytes", "\xE0\xA0\x80\xEF\xBF\xBF", {0x800, 0xFFFF}},
                                         Row{"FourBytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0x10000, 0x10FFFF}},
                                         Row{"LoneContinuation", "\x80z", {kBad, U'z'}},
                                         Row{"NeverALead", "\xC0\xAF\xC1\xF5\xFF", {kBad, kBad, kBad, kBad, kBad}},
                                         Row{"Surrogate", "\xED\xA0\x80", {kBad, kBad, kBad}},
                                         Row{"BeyondTheLast", "\xF4\x90\x80\x80", {kBad, kBad, kBad, kBad}},
                                         Row{"OverlongThree", "\xE0\x9F\xBF", {kBad, kBad, kBad}},
                                         Row{"OverlongFour", "\xF0\x8F\xBF\xBF", {kBad, kBad, kBad, kBad}},
                                         Row{"LeadBeyondTheLast", "\xF5\x80\x80\x80", {kBad, kBad, kBad, kBad}},
                                         Row{"CutAtTheEnd", "\xE2\x82", {kBad}},
                                         Row{"CutInTheMiddle", "\xF0\x9F\x98z", {kBad, U'z'}},
                                         Row{"CutByALead", "\xE2\x82\xC2\xB0", {kBad, 0xB0}}),
                         [](auto const& row) { return row.param.name; });

TEST(Utf8, EndTakesNoBytes)
{
    EXPECT_EQ(sw_utf8::codePointAt("a", 1).bytes, 0U);
    EXPECT_EQ(sw_utf8::codePointAt("", 0).bytes, 0U);
}

TEST(Utf8, ValidReplacesEveryMalformedByte)
{
    EXPECT_EQ(sw_utf8::valid("A\xFF\xC3\xA9"), "A\xEF\xBF\xBD\xC3\xA9");
    EXPECT_EQ(sw_utf8::valid("\xE2\x82z"), "\xEF\xBF\xBD\xEF\xBF\xBDz") << "one character cut, two bytes of it there";
    EXPECT_EQ(sw_utf8::valid(""), "");
}

TEST(Utf8Writing, EveryCodePointIsWrittenAsItIsRead)
{
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        if (point == 0xD800) {
            point = 0xE000;  // halves of pairs are no characters
        }
        std::string text = "x";
        sw_utf8::append(text, point);
        sw_utf8::CodePoint const read = sw_utf8::codePointAt(text, 1);
        ASSERT_TRUE(read.isWellFormed) << static_cast<std::uint32_t>(point);
        ASSERT_EQ(read.value, point);
        ASSERT_EQ(read.bytes + 1, text.size());
    }
    std::string text;
    sw_utf8::append(text, 0x20AC);
    sw_utf8::append(text, 0x1F600);
    EXPECT_EQ(text, "\xE2\x82\xAC\xF0\x9F\x98\x80");
}

}  // namespace
