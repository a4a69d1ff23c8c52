// The painter's own font and those that stand in for it.
#include "imaging/fonts.h"

#include <gtest/gtest.h>
#include <hb-ot.h>

#include <array>
#include <stdexcept>
#include <string>

namespace {

using imaging::FontId;
using imaging::Fonts;

std::string familyOf(Fonts const& fonts, FontId id)
{
    hb_face_t* const face = hb_font_get_face(fonts.font(id).shapingFont());
    std::array<char, 100> name{};
    unsigned size = name.size();
    hb_ot_name_get_utf8(face, HB_OT_NAME_ID_FONT_FAMILY, HB_LANGUAGE_INVALID, &size, name.data());
    return name.data();
}

class OpenFonts : public testing::Test {
protected:
    OpenFonts() { fonts_.open(""); }
    FontId fontFor(std::u32string const& cluster) { return fonts_.fontFor(cluster); }
    Fonts fonts_;
};

TEST_F(OpenFonts, DefaultIsDejaVuSans)
{
    EXPECT_EQ(familyOf(fonts_, 0), "DejaVu Sans");
}

TEST_F(OpenFonts, FamilyIsFoundByName)
{
    fonts_.open("DejaVu Sans Mono");
    EXPECT_EQ(familyOf(fonts_, 0), "DejaVu Sans Mono");
}

TEST_F(OpenFonts, OwnFontServesWhatItHas)
{
    EXPECT_EQ(fontFor(U"A"), 0);
    EXPECT_EQ(fontFor(U"\u0639"), 0);
    EXPECT_EQ(fontFor(U"e\u0301"), 0);
    EXPECT_EQ(fonts_.searchCount(), 0U);
}

TEST_F(OpenFonts, MissingCharacterIsSearchedOnceAndRemembered)
{
    FontId const cjk = fontFor(U"\u65E5");
    ASSERT_NE(cjk, 0) << "install fonts-droid-fallback";
    EXPECT_TRUE(fonts_.font(cjk).has(0x65E5));
    EXPECT_EQ(fonts_.searchCount(), 1U);
    EXPECT_EQ(fontFor(U"\u65E5"), cjk);
    EXPECT_EQ(fonts_.searchCount(), 1U);
    EXPECT_EQ(fontFor(U"\u672C"), cjk);
    EXPECT_EQ(fonts_.searchCount(), 2U);
}

TEST_F(OpenFonts, CharacterInNoFontIsRememberedToo)
{
    EXPECT_EQ(fontFor(U"\U0010FFFD"), 0);
    EXPECT_EQ(fontFor(U"\U0010FFFD"), 0);
    EXPECT_EQ(fonts_.searchCount(), 1U);
}

TEST_F(OpenFonts, NeverDrawnCharactersAreInEveryFont)
{
    EXPECT_EQ(fontFor(U"\uFE0F"), 0);
    EXPECT_EQ(fontFor(U"A\u200D\uFE0F"), 0);
    EXPECT_EQ(fonts_.searchCount(), 0U);
}

TEST_F(OpenFonts, LineIsAsHighAsAscentAndDescent)
{
    // DejaVu Sans: ascent 1901, descent 483 of 2048 units.
    EXPECT_EQ(fonts_.lineMetrics(28).ascent, 26);
    EXPECT_EQ(fonts_.lineMetrics(28).descent, 7);
    EXPECT_EQ(fonts_.lineMetrics(2048).ascent, 1901);
    EXPECT_EQ(fonts_.lineMetrics(2048).descent, 483);
    EXPECT_EQ(fonts_.lineMetrics(1).ascent, 1);
    EXPECT_EQ(fonts_.lineMetrics(1).descent, 1);
}

TEST(Fonts, UnusableFileIsNotAFont)
{
    Fonts fonts;
    fonts.open("");
    EXPECT_EQ(imaging::Font::open(fonts.library(), OVERLAY_SOURCE_DIR "/README.md", 0), nullptr);
    EXPECT_EQ(imaging::Font::open(fonts.library(), "/nowhere/font.ttf", 0), nullptr);
}

}  // namespace
