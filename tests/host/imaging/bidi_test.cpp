// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The order of a line's parts: which lines are looked at closely, their runs from left to right, and what is
// remembered.
#include "imaging/bidi.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using imaging::Direction;
using Parts = std::vector<std::string>;

/// Each run's text behind a sign for its direction.
Parts partsOf(std::vector<imaging::DirectedRun> const& runs)
{
    Parts parts;
    for (auto const& run : runs) {
        parts.push_back((run.direction == Direction::RightToLeft ? "<" : ">") + std::string(run.text));
    }
    return parts;
}

TEST(MayReadRightToLeft, OnlyForLettersNumbersAndMarksOfThatDirection)
{
    for (char const* const text :
         {"",       "abc 123", "48\u00B0",   "\u2033\u2192", "\u65E5\u672C", "\u0416",    "\U0001F600", "\xFF\xFE",
          "\u058F", "\u0900",  "\u200E",     "\u202A",       "\u202D",       "\u2066",    "\uFB1C",     "\uFE00",
          "\uFE6F", "\uFEFD",  "\U000107FF", "\U00011000",   "\U0001E7FF",   "\U0001F000"}) {
        EXPECT_FALSE(imaging::mayReadRightToLeft(text)) << text;
    }
    for (char const* const text :
         {"\u0590", "\u05D0", "\u0639", "\u0660", "\u08FF", "\u200F", "\u202B", "\u202E", "\u2067", "\uFB1D", "\uFDFF",
          "\uFE70", "\uFEFC", "\U00010800", "\U00010FFF", "\U0001E800", "\U0001E900", "\U0001EFFF"}) {
        EXPECT_TRUE(imaging::mayReadRightToLeft(text)) << text;
        EXPECT_TRUE(imaging::mayReadRightToLeft("a" + std::string(text))) << text;
    }
}

TEST(MayReadRightToLeft, LetterCutInItsMiddleIsNone)
{
    EXPECT_FALSE(imaging::mayReadRightToLeft("a\xD7"));
    EXPECT_FALSE(imaging::mayReadRightToLeft("\xD7 \x90"));
}

struct Row {
    char const* name;
    char const* line;
    Parts parts;
};

class VisualRuns : public testing::TestWithParam<Row> {};

TEST_P(VisualRuns, StandFromLeftToRight)
{
    EXPECT_EQ(partsOf(imaging::visualRuns(GetParam().line)), GetParam().parts);
}

// Hebrew letters have the class R, Arabic ones AL, ASCII digits EN, Arabic digits AN.
INSTANTIATE_TEST_SUITE_P(
    Rows, VisualRuns,
    testing::Values(Row{"Empty", "", {">"}}, Row{"LeftToRight", "abc", {">abc"}},
                    Row{"NoDirectionAtAll", "12 (3)", {">12 (3)"}},
                    Row{"RightToLeft", "\u05D0\u05D1\u05D2", {"<\u05D0\u05D1\u05D2"}},
                    Row{"HebrewInALine", "ab \u05D0\u05D1 12 cd", {">ab ", ">12", "<\u05D0\u05D1 ", "> cd"}},
                    Row{"FirstLetterDecides", "\u05D0\u05D1 ab", {">ab", "<\u05D0\u05D1 "}},
                    Row{"FirstLetterDecidesBehindADigit", "1 \u05D0 ab", {">ab", "< \u05D0 ", ">1"}},
                    Row{"FirstMarkDecides", "\u200Fab", {">ab", "<\u200F"}},
                    Row{"NumberBehindArabic", "\u0639 12", {">12", "<\u0639 "}},
                    Row{"ArabicDigits", "\u0639 \u0661\u0662", {">\u0661\u0662", "<\u0639 "}},
                    Row{"DecimalPointStaysInTheNumber", "\u05D0 1.5 \u05D1", {"< \u05D1", ">1.5", "<\u05D0 "}},
                    Row{"BracketsAroundOne", "a (\u05D0) b", {">a (", "<\u05D0", ">) b"}},
                    Row{"BracketsInRightToLeft", "\u05D0 (a)", {"<)", ">a", "<\u05D0 ("}},
                    Row{"SpaceBehindTheLast", "ab \u05D0 ", {">ab ", "<\u05D0", "> "}},
                    Row{"TwoWordsKeepTheirOrderInTheRun", "\u05D0 \u05D1", {"<\u05D0 \u05D1"}},
                    Row{"CombiningMarkStaysWithItsLetter", "a \u05D0\u05B8 b", {">a ", "<\u05D0\u05B8", "> b"}},
                    Row{"MalformedByteIsOneCharacter", "\xFF\u05D0 a", {">a", "<\xFF\u05D0 "}},
                    Row{"MalformedByteAtTheEnd", "\u05D0 a\xE2\x82", {"<\xE2\x82", ">a", "<\u05D0 "}}),
    [](auto const& row) { return row.param.name; });

TEST(VisualRuns, CoverTheLineWithoutCopyingIt)
{
    std::string const line = "ab \u05D0\u05D1 12 cd";
    std::size_t bytes = 0;
    for (auto const& run : imaging::visualRuns(line)) {
        EXPECT_GE(run.text.data(), line.data());
        EXPECT_LE(run.text.data() + run.text.size(), line.data() + line.size());
        bytes += run.text.size();
    }
    EXPECT_EQ(bytes, line.size());
}

TEST(RunCache, GivesTheRunsOfTheLineItself)
{
    imaging::RunCache cache;
    for (char const* const text : {"ab \u05D0\u05D1 12 cd", "ab \u05D0\u05D1 97 cd", "\u0639 1.5 (3) \u0644", "", "12",
                                   "\u0639 8.0 (7) \u0644", "\u0639 \u0660\u0661 5"}) {
        EXPECT_EQ(partsOf(cache.runsOf(text)), partsOf(imaging::visualRuns(text))) << text;
    }
}

TEST(RunCache, KnowsALineWhoseDigitsChange)
{
    imaging::RunCache cache;
    cache.runsOf("\u0639\u0644 1250.5 m");
    auto const bytes = cache.cachedBytes();
    ASSERT_GT(bytes, 0U);
    EXPECT_EQ(partsOf(cache.runsOf("\u0639\u0644 9876.3 m")), (Parts{">m", "< ", ">9876.3", "<\u0639\u0644 "}));
    EXPECT_EQ(cache.cachedBytes(), bytes);
    cache.runsOf("\u0639\u0644 19876.3 m");
    EXPECT_GT(cache.cachedBytes(), bytes);
}

TEST(RunCache, StaysWithinItsBound)
{
    imaging::RunCache cache;
    std::string const longer = std::string(imaging::kRunCacheBytes, 'a') + "\u0639";
    EXPECT_EQ(cache.runsOf(longer).size(), 2U);
    EXPECT_EQ(cache.cachedBytes(), 0U);
    for (int i = 0; i < 3000; ++i) {
        cache.runsOf(std::string(static_cast<std::size_t>(i), 'a') + "\u0639");
        ASSERT_LE(cache.cachedBytes(), imaging::kRunCacheBytes) << i;
    }
    EXPECT_GT(cache.cachedBytes(), imaging::kRunCacheBytes / 2);
}

}  // namespace
