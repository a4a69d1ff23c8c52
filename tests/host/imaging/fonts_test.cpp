// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The painter's own font and those that stand in for it.
#include "imaging/fonts.h"

#include <gtest/gtest.h>
#include <hb-ot.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <unistd.h>

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

std::string whyNotOpened(Fonts& fonts, std::string const& family)
{
    try {
        fonts.open(family);
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "";
}

TEST_F(OpenFonts, FamilyThatIsNotInstalledIsAnError)
{
    fonts_.open("DejaVu Sans Mono");
    EXPECT_EQ(whyNotOpened(fonts_, "Dejavu Sanz"),
              "no font of the family 'Dejavu Sanz' is installed; install it or name one that `fc-list : family` lists");
    EXPECT_EQ(familyOf(fonts_, 0), "DejaVu Sans Mono") << "the fonts are as before";
}

TEST_F(OpenFonts, FamiliesAreToldWithoutRegardToCase)
{
    EXPECT_EQ(whyNotOpened(fonts_, "dejavu sans mono"), "");
    EXPECT_EQ(familyOf(fonts_, 0), "DejaVu Sans Mono");
}

TEST_F(OpenFonts, GenericFamiliesMeanWhatFontconfigHasForThem)
{
    for (std::string const family : {"sans-serif", "sans", "serif", "monospace", "mono", "system-ui", "Monospace"}) {
        EXPECT_EQ(whyNotOpened(fonts_, family), "") << family;
    }
    fonts_.open("monospace");
    EXPECT_EQ(fonts_.font(0).face()->face_flags & FT_FACE_FLAG_FIXED_WIDTH, FT_FACE_FLAG_FIXED_WIDTH);
}

/// Big-endian numbers in a font file (https://learn.microsoft.com/typography/opentype/spec/otff).
class FontFile {
public:
    explicit FontFile(std::string const& path)
    {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }
    std::uint32_t read(std::size_t at, std::size_t size) const
    {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = value << 8U | static_cast<std::uint8_t>(bytes_.at(at + i));
        }
        return value;
    }
    void write(std::size_t at, std::size_t size, std::uint32_t value)
    {
        for (std::size_t i = 0; i < size; ++i) {
            bytes_.at(at + i) = static_cast<char>(value >> 8 * (size - 1 - i) & 0xFFU);
        }
    }
    std::size_t table(std::string const& tag) const
    {
        for (std::size_t entry = 12; entry < 12 + std::size_t{16} * read(4, 2); entry += 16) {
            if (bytes_.compare(entry, 4, tag) == 0) {
                return read(entry + 8, 4);
            }
        }
        return 0;
    }
    /// The characters before ':' are mapped no more, in all tables that have them in one segment with what follows.
    void forgetDigits()
    {
        std::size_t const map = table("cmap");
        for (std::size_t i = 0; i < read(map + 2, 2); ++i) {
            std::size_t const at = map + read(map + 4 + 8 * i + 4, 4);
            if (read(at, 2) == 4) {
                forgetInSegments(at);
            } else if (read(at, 2) == 12) {
                forgetInGroups(at);
            } else {
                write(map + 4 + 8 * i, 2, 0xFFFF);  // of no platform
            }
        }
    }
    /// In all names of the `name` table, which has them in two bytes a letter as well.
    void rename(std::string const& from, std::string const& to)
    {
        for (bool const isWide : {false, true}) {
            std::string const old = isWide ? widened(from) : from;
            std::string const other = isWide ? widened(to) : to;
            for (auto at = bytes_.find(old); at != std::string::npos; at = bytes_.find(old, at)) {
                bytes_.replace(at, old.size(), other);
            }
        }
    }
    void save(std::string const& path) const { std::ofstream(path, std::ios::binary) << bytes_; }

private:
    static constexpr std::uint32_t kAfterDigits = ':';

    static std::string widened(std::string const& text)
    {
        std::string wide;
        for (char const c : text) {
            wide.append({'\0', c});
        }
        return wide;
    }
    void forgetInSegments(std::size_t at)
    {
        std::size_t const bytes = read(at + 6, 2);  // twice the number of segments
        for (std::size_t i = 0; i < bytes; i += 2) {
            std::size_t const start = at + 16 + bytes + i;
            if (read(start, 2) < kAfterDigits && read(at + 14 + i, 2) > kAfterDigits) {
                ASSERT_EQ(read(at + 16 + 3 * bytes + i, 2), 0U) << "a segment by difference";
                write(start, 2, kAfterDigits);
            }
        }
    }
    void forgetInGroups(std::size_t at)
    {
        for (std::size_t group = at + 16; group < at + 16 + std::size_t{12} * read(at + 12, 4); group += 12) {
            std::uint32_t const start = read(group, 4);
            if (start < kAfterDigits && read(group + 4, 4) > kAfterDigits) {
                write(group, 4, kAfterDigits);
                write(group + 8, 4, read(group + 8, 4) + kAfterDigits - start);
            }
        }
    }

    std::string bytes_;
};

TEST_F(OpenFonts, FontWithoutDigitsIsAnError)
{
    FontFile file("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    file.forgetDigits();
    file.rename("DejaVu Sans", "DigitsNone.");
    std::string const path = testing::TempDir() + "no_digits_" + std::to_string(::getpid()) + ".ttf";
    file.save(path);
    ASSERT_EQ(FcConfigAppFontAddFile(nullptr, reinterpret_cast<FcChar8 const*>(path.c_str())), FcTrue);
    EXPECT_EQ(whyNotOpened(fonts_, "DigitsNone."),
              "the font of the family 'DigitsNone.' has no digits, which telemetry needs; name another one");
    EXPECT_EQ(familyOf(fonts_, 0), "DejaVu Sans");
    EXPECT_EQ(fontFor(U"7"), 0) << "the font that was open serves on";
    FcConfigAppFontClear(nullptr);
    std::filesystem::remove(path);
}

}  // namespace
