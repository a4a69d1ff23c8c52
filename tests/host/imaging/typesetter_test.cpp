// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lines become glyphs: order, widths, fallbacks.
#include "imaging/typesetter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using imaging::Direction;
using imaging::LineStyle;
using imaging::PlacedGlyph;
using imaging::SetLine;

class Lines : public testing::Test {
protected:
    Lines() { fonts_.open(""); }

    SetLine set(std::string const& text, LineStyle const& style = {20, 1})
    {
        placed_.clear();
        return typesetter_.set(text, style, placed_);
    }
    std::vector<std::uint32_t> glyphs(std::string const& text)
    {
        set(text);
        std::vector<std::uint32_t> ids;
        std::transform(placed_.begin(), placed_.end(), std::back_inserter(ids), [](auto const& g) { return g.glyph; });
        return ids;
    }

    imaging::Fonts fonts_;
    imaging::Shaper shaper_{fonts_};
    imaging::GlyphCache glyphCache_{fonts_};
    imaging::Typesetter typesetter_{shaper_, glyphCache_};
    std::vector<PlacedGlyph> placed_;
};

TEST_F(Lines, EmptyLineHasNeitherWidthNorInk)
{
    auto const line = set("");
    EXPECT_EQ(line.advance, 0);
    EXPECT_TRUE(line.ink.isEmpty());
    EXPECT_TRUE(placed_.empty());
}

TEST_F(Lines, SpacesHaveWidthWithoutInk)
{
    auto const line = set("   ");
    EXPECT_GT(line.advance, 0);
    EXPECT_TRUE(line.ink.isEmpty());
}

TEST_F(Lines, TabIsFourSpaces)
{
    EXPECT_EQ(set("\t").advance, set("    ").advance);
    EXPECT_EQ(set("\u05D0\t\u05D0").advance, set("\u05D0    \u05D0").advance);
}

TEST_F(Lines, NumbersOfEqualLengthHaveEqualWidthWhateverStandsBeside)
{
    auto const width = set("Alt: 1111.1 m").advance;
    for (char const* const text : {"Alt: 7777.7 m", "Alt: 0000.0 m", "Alt: 4471.9 m"}) {
        EXPECT_EQ(set(text).advance, width) << text;
    }
}

TEST_F(Lines, DigitsStandStillWhenOthersChange)
{
    set("a=1117");
    auto const before = placed_;
    set("a=7447");
    ASSERT_EQ(placed_.size(), before.size());
    for (std::size_t i = 0; i < placed_.size(); ++i) {
        EXPECT_EQ(placed_[i].x, before[i].x) << i;
        EXPECT_EQ(placed_[i].phase, before[i].phase) << i;
    }
}

TEST_F(Lines, CombiningMarkJoinsItsLetter)
{
    EXPECT_EQ(glyphs("e\u0301"), glyphs("\u00E9"));
    EXPECT_EQ(set("x\u0302").advance, set("x").advance);
    EXPECT_EQ(set("5\u0302").advance, set("5").advance);
}

TEST_F(Lines, MissingCharacterIsABox)
{
    EXPECT_EQ(glyphs("\U0010FFFD"), (std::vector<std::uint32_t>{imaging::kMissingGlyph}));
    EXPECT_EQ(glyphs("\x01"), (std::vector<std::uint32_t>{imaging::kMissingGlyph}));
    auto const line = set("\U0010FFFD", {100, 1});
    EXPECT_EQ(line.advance, 60);
    EXPECT_EQ(line.ink, (imaging::Box{8, -72, 52, 0}));
}

TEST_F(Lines, MalformedBytesAreReplacementCharacters)
{
    EXPECT_EQ(glyphs("a\xFFz\xE2\x82"), glyphs("a\uFFFDz\uFFFD"));
}

TEST_F(Lines, CharacterFromAnotherFontIsTakenThere)
{
    set("a\u65E5");
    ASSERT_EQ(placed_.size(), 2U);
    EXPECT_EQ(placed_[0].font, 0);
    EXPECT_NE(placed_[1].font, 0) << "install fonts-droid-fallback";
    EXPECT_NE(placed_[1].glyph, imaging::kMissingGlyph);
}

TEST_F(Lines, ArabicLettersJoin)
{
    auto const joined = glyphs("\u0633\u0644\u0645");
    auto const apart = glyphs("\u0633\u200C\u0644\u200C\u0645");
    EXPECT_NE(joined, apart);
}

TEST_F(Lines, RightToLeftWordsStandInReadingOrder)
{
    auto const first = glyphs("\u05D0");
    auto const second = glyphs("\u05D1");
    auto const both = glyphs("\u05D0 \u05D1");
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both.front(), second.front());
    EXPECT_EQ(both.back(), first.front());
}

TEST_F(Lines, NumberInRightToLeftTextReadsFromLeftToRight)
{
    auto const digits = glyphs("12");
    auto const mixed = glyphs("\u05D0 12");
    ASSERT_EQ(mixed.size(), 3U);
    EXPECT_EQ(mixed[0], digits[0]);
    EXPECT_EQ(mixed[1], digits[1]);
}

TEST_F(Lines, LongWordKeepsAllItsLetters)
{
    EXPECT_EQ(glyphs(std::string(5000, 'w')).size(), 5000U);
    std::string accents;
    for (int i = 0; i < 3000; ++i) {
        accents += "\u0301";
    }
    EXPECT_EQ(glyphs("x" + accents).size(), 3001U);
}

TEST_F(Lines, GlyphsStandAtQuarterPixelsUpToALimitOnly)
{
    set("iiiiiiii", {21, 1});
    EXPECT_TRUE(std::any_of(placed_.begin(), placed_.end(), [](auto const& g) { return g.phase != 0; }));
    set("iiiiiiii", {imaging::kLargestSubPixelSize + 1, 1});
    EXPECT_TRUE(std::all_of(placed_.begin(), placed_.end(), [](auto const& g) { return g.phase == 0; }));
}

}  // namespace
