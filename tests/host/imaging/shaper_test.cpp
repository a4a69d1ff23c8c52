// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Words to positioned glyphs, in the units of DejaVu Sans: 2048 to the em, of which each is 32 of ours.
#include "imaging/shaper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using imaging::Direction;
using imaging::kMissingGlyph;
using imaging::ShapedWord;

constexpr int kFontUnit = imaging::kUnitsPerEm / 2048;
// Advances from the font's table of horizontal metrics.
constexpr int kWidthOfA = 1401 * kFontUnit;
constexpr int kWidthOfB = 1405 * kFontUnit;
constexpr int kWidthOfV = 1401 * kFontUnit;
constexpr int kWidthOfE = 1260 * kFontUnit;
constexpr int kWidthOfX = 1212 * kFontUnit;
constexpr int kWidthOfDigit = 1303 * kFontUnit;
constexpr int kWidthOfSpace = 651 * kFontUnit;
/// Six tenths of an em, rounded down.
constexpr int kWidthOfMissing = 39321;

class Words : public testing::Test {
protected:
    Words() { fonts_.open(""); }

    ShapedWord leftToRight(std::string const& word) { return shaper_.shape(word, Direction::LeftToRight); }
    ShapedWord rightToLeft(std::string const& word) { return shaper_.shape(word, Direction::RightToLeft); }
    /// The painter's own font's glyph for a character, without any shaping.
    std::uint32_t glyphOf(char32_t character) const { return FT_Get_Char_Index(fonts_.font(0).face(), character); }

    imaging::Fonts fonts_;
    imaging::Shaper shaper_{fonts_};
};

std::vector<std::uint32_t> glyphsOf(ShapedWord const& word)
{
    std::vector<std::uint32_t> glyphs;
    std::transform(word.glyphs.begin(), word.glyphs.end(), std::back_inserter(glyphs),
                   [](auto const& glyph) { return glyph.glyph; });
    return glyphs;
}

using Glyphs = std::vector<std::uint32_t>;

TEST_F(Words, EmptyWordHasNothing)
{
    auto const word = leftToRight("");
    EXPECT_TRUE(word.glyphs.empty());
    EXPECT_EQ(word.advance, 0);
}

TEST_F(Words, LettersStandBehindEachOther)
{
    auto const word = leftToRight("BAB");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U'B'), glyphOf(U'A'), glyphOf(U'B')}));
    EXPECT_EQ(word.glyphs[0].x, 0);
    EXPECT_EQ(word.glyphs[1].x, kWidthOfB);
    EXPECT_EQ(word.glyphs[2].x, kWidthOfB + kWidthOfA);
    EXPECT_EQ(word.glyphs[1].y, 0);
    EXPECT_EQ(word.glyphs[1].font, 0);
    EXPECT_EQ(word.advance, kWidthOfB + kWidthOfA + kWidthOfB);
}

TEST_F(Words, SpaceHasAWidthAndAGlyphWithoutInk)
{
    auto const word = leftToRight(" ");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U' ')}));
    EXPECT_EQ(word.advance, kWidthOfSpace);
}

TEST_F(Words, AllDigitsAreEquallyWide)
{
    for (char const* const digit : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
        EXPECT_EQ(leftToRight(digit).advance, kWidthOfDigit) << digit;
    }
}

TEST_F(Words, NeighboursAreKerned)
{
    EXPECT_LT(leftToRight("AV").advance, kWidthOfA + kWidthOfV);
    EXPECT_EQ(leftToRight("AV").glyphs[1].x, leftToRight("AV").advance - kWidthOfV);
}

TEST_F(Words, LettersThatTheFontJoinsAreOneGlyph)
{
    EXPECT_EQ(glyphsOf(leftToRight("fi")), (Glyphs{glyphOf(U'\uFB01')}));
    EXPECT_EQ(glyphsOf(leftToRight("f\u200Ci")).size(), 3U) << "a non-joiner keeps them apart";
}

TEST_F(Words, MarkIsComposedWithItsLetterWhereTheFontHasThePair)
{
    auto const word = leftToRight("e\u0301");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U'\u00E9')}));
    EXPECT_EQ(word.advance, kWidthOfE);
}

TEST_F(Words, MarkWithoutAPairStandsOverItsLetterAndTakesNoWidth)
{
    auto const word = leftToRight("x\u0302B");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U'x'), glyphOf(U'\u0302'), glyphOf(U'B')}));
    EXPECT_EQ(word.glyphs[2].x, kWidthOfX);
    EXPECT_EQ(word.advance, kWidthOfX + kWidthOfB);
}

TEST_F(Words, ArabicLettersTakeTheFormsOfTheirPlaces)
{
    // Seen, lam, meem: their initial, medial and final forms, the last letter on the left.
    EXPECT_EQ(glyphsOf(rightToLeft("\u0633\u0644\u0645")),
              (Glyphs{glyphOf(U'\uFEE2'), glyphOf(U'\uFEE0'), glyphOf(U'\uFEB3')}));
}

TEST_F(Words, LamAndAlefAreOneGlyph)
{
    EXPECT_EQ(glyphsOf(rightToLeft("\u0644\u0627")), (Glyphs{glyphOf(U'\uFEFB')}));
}

TEST_F(Words, HebrewStandsFromRightToLeft)
{
    auto const word = rightToLeft("\u05D0\u05D1");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U'\u05D1'), glyphOf(U'\u05D0')}));
    EXPECT_EQ(word.glyphs[0].x, 0);
    EXPECT_EQ(word.glyphs[1].x, leftToRight("\u05D1").advance);
}

TEST_F(Words, SameWordInTheOtherDirectionIsAnotherOne)
{
    EXPECT_EQ(glyphsOf(rightToLeft("()")), (Glyphs{glyphOf(U'('), glyphOf(U')')})) << "turned, then mirrored";
    EXPECT_EQ(glyphsOf(leftToRight("AB")), (Glyphs{glyphOf(U'A'), glyphOf(U'B')}));
    EXPECT_EQ(glyphsOf(rightToLeft("AB")), (Glyphs{glyphOf(U'B'), glyphOf(U'A')}));
    EXPECT_EQ(glyphsOf(leftToRight("AB")), (Glyphs{glyphOf(U'A'), glyphOf(U'B')}));
}

TEST_F(Words, LetterOfAnotherFontContinuesTheWord)
{
    auto const word = leftToRight("A\u65E5B");
    ASSERT_EQ(word.glyphs.size(), 3U);
    EXPECT_EQ(word.glyphs[0].font, 0);
    EXPECT_NE(word.glyphs[1].font, 0) << "install fonts-droid-fallback";
    EXPECT_NE(word.glyphs[1].glyph, kMissingGlyph);
    EXPECT_EQ(word.glyphs[2].font, 0);
    EXPECT_EQ(word.glyphs[1].x, kWidthOfA);
    EXPECT_EQ(word.glyphs[2].x, word.advance - kWidthOfB);
}

TEST_F(Words, OtherFontsStandInReadingOrderFromRightToLeftToo)
{
    auto const word = rightToLeft("\u05D0\u65E5");
    ASSERT_EQ(word.glyphs.size(), 2U);
    EXPECT_NE(word.glyphs[0].font, 0);
    EXPECT_EQ(word.glyphs[1].glyph, glyphOf(U'\u05D0'));
}

TEST_F(Words, CharacterOfNoFontIsMissing)
{
    auto const word = leftToRight("A\U0010FFFDB");
    EXPECT_EQ(glyphsOf(word), (Glyphs{glyphOf(U'A'), kMissingGlyph, glyphOf(U'B')}));
    EXPECT_EQ(word.glyphs[1].x, kWidthOfA);
    EXPECT_EQ(word.glyphs[1].y, 0);
    EXPECT_EQ(word.glyphs[2].x, kWidthOfA + kWidthOfMissing);
    EXPECT_EQ(word.advance, kWidthOfA + kWidthOfMissing + kWidthOfB);
}

TEST_F(Words, MalformedBytesAreReplacementCharacters)
{
    EXPECT_EQ(glyphsOf(leftToRight("A\xFF\xE2\x82")), (Glyphs{glyphOf(U'A'), glyphOf(U'\uFFFD'), glyphOf(U'\uFFFD')}));
}

TEST_F(Words, AsciiCharacterIsTheWordOfOneLetter)
{
    for (char const character : {'A', '0', ' ', '~', '\x01', '\x7F'}) {
        auto const word = leftToRight(std::string(1, character));
        EXPECT_EQ(glyphsOf(shaper_.shapeAscii(character)), glyphsOf(word)) << static_cast<int>(character);
        EXPECT_EQ(shaper_.shapeAscii(character).advance, word.advance) << static_cast<int>(character);
    }
}

TEST_F(Words, AsciiReferenceStaysGoodWhileOthersAreShaped)
{
    auto const& letter = shaper_.shapeAscii('A');
    for (char c = ' '; c < '\x7F'; ++c) {
        shaper_.shapeAscii(c);
        shaper_.shape(std::string(3, c), Direction::LeftToRight);
    }
    EXPECT_EQ(letter.advance, kWidthOfA);
    EXPECT_EQ(&shaper_.shapeAscii('A'), &letter);
}

TEST_F(Words, KnownWordTakesNoFurtherMemory)
{
    leftToRight("word");
    auto const bytes = shaper_.cachedBytes();
    ASSERT_GT(bytes, 0U);
    leftToRight("word");
    EXPECT_EQ(shaper_.cachedBytes(), bytes);
    rightToLeft("word");
    EXPECT_EQ(shaper_.cachedBytes(), 2 * bytes);
}

TEST_F(Words, AreForgottenWithTheirFonts)
{
    leftToRight("A");
    shaper_.shapeAscii('A');
    fonts_.open("DejaVu Sans Mono");
    shaper_.clear();
    EXPECT_EQ(shaper_.cachedBytes(), 0U);
    EXPECT_EQ(shaper_.shapeAscii('A').advance, 1233 * kFontUnit);
    EXPECT_EQ(leftToRight("A").advance, 1233 * kFontUnit);
}

TEST_F(Words, CacheStaysWithinItsBound)
{
    for (int i = 0; i < 30000; ++i) {
        std::string word = "w";
        for (int rest = i; rest > 0; rest /= 20) {
            word += static_cast<char>('a' + rest % 20);
        }
        leftToRight(word);
    }
    EXPECT_LE(shaper_.cachedBytes(), imaging::kWordCacheBytes);
    EXPECT_GT(shaper_.cachedBytes(), imaging::kWordCacheBytes / 4);
}

TEST(ExtendsCluster, TrueForMarksJoinersAndSelectors)
{
    // Combining acute, Hebrew point, Arabic vowel sign, Devanagari vowel sign (spacing), enclosing circle, joiner,
    // variation selectors, skin tones.
    for (char32_t const c :
         std::u32string_view(U"\u0301\u05B8\u064E\u093E\u20DD\u200D\uFE00\uFE0F\U0001F3FB\U0001F3FF")) {
        EXPECT_TRUE(imaging::extendsCluster(c)) << static_cast<std::uint32_t>(c);
    }
    // Letters, digits, a spacing accent, a non-joiner, and the neighbours of the ranges above.
    for (char32_t const c :
         std::u32string_view(U"ae0 \u00B4\u05D0\u0639\u200C\uFDFF\uFE10\U0001F3FA\U0001F400\uFFFD")) {
        EXPECT_FALSE(imaging::extendsCluster(c)) << static_cast<std::uint32_t>(c);
    }
}

}  // namespace
