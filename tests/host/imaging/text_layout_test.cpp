// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lines, boxes and groups of a text in DejaVu Sans at 20 pixels: 19 above the baseline and 5 below it.
#include "imaging/text_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using imaging::Box;
using imaging::LineGroup;
using imaging::LineStyle;

constexpr LineStyle kStyle{20, 1};
constexpr int kAscent = 19;
constexpr int kPitch = 24;

class Layout : public testing::Test {
protected:
    Layout() { fonts_.open(""); }

    std::vector<LineGroup> const& groups(std::string const& text, int x = 0, int y = 0, LineStyle const& style = kStyle)
    {
        layout_.set(text, x, y, style);
        return layout_.groups();
    }
    Box box(std::string const& text, int x = 0, int y = 0, LineStyle const& style = kStyle)
    {
        layout_.set(text, x, y, style);
        return layout_.box();
    }
    std::int64_t advance(std::string const& line, LineStyle const& style = kStyle)
    {
        std::vector<imaging::PlacedGlyph> ignored;
        return typesetter_.set(line, style, ignored).advance;
    }
    /// All coverage of the group's window, row by row.
    std::vector<std::uint8_t> coverage(LineGroup const& group)
    {
        composer_.begin(layout_.inkOf(group), layout_.inkOf(group));
        layout_.layGlyphs(group, composer_);
        auto const view = composer_.finish();
        std::vector<std::uint8_t> bytes;
        for (auto const& span : view.lumaSpans) {
            bytes.insert(bytes.end(), view.luma + span.offset, view.luma + span.offset + span.length);
        }
        return bytes;
    }

    imaging::Fonts fonts_;
    imaging::Shaper shaper_{fonts_};
    imaging::GlyphCache glyphs_{fonts_};
    imaging::Typesetter typesetter_{shaper_, glyphs_};
    imaging::LineComposer composer_{glyphs_};
    imaging::TextLayout layout_{fonts_, typesetter_};
};

TEST_F(Layout, LineIsAsWideAsItsLettersAdvanceAndAsHighAsTheFont)
{
    EXPECT_EQ(box("Alt 12"), (Box{0, 0, advance("Alt 12"), kPitch}));
    EXPECT_EQ(box("Alt 12", 100, -7), (Box{100, -7, 100 + advance("Alt 12"), kPitch - 7}));
}

TEST_F(Layout, StrokeWidensEachLineOnBothSides)
{
    // A pen of 5 reaches 2 pixels beyond the outline.
    LineStyle const stroked{20, 5};
    EXPECT_EQ(box("Alt\nAlt", 10, 20, stroked), (Box{10, 20, 10 + advance("Alt", stroked) + 4, 20 + 2 * (kPitch + 4)}));
}

TEST_F(Layout, WidestLineDecides)
{
    EXPECT_EQ(box("i\nWide\nil"), (Box{0, 0, advance("Wide"), 3 * kPitch}));
}

TEST_F(Layout, LineFeedsEndLines)
{
    EXPECT_EQ(box("A\n"), (Box{0, 0, advance("A"), 2 * kPitch}));
    EXPECT_EQ(box("\n\n"), (Box{0, 0, 0, 3 * kPitch}));
    EXPECT_EQ(box("A\r\nB\r"), box("A\nB"));
    EXPECT_EQ(box("A\r\r\nB").right, advance("A\r"));
}

TEST_F(Layout, InkThatOverhangsWidensTheBox)
{
    // At 200 pixels the font's ascent is 186 and the letter with its two accents 211 high; the hook of the j stands
    // left of its origin.
    EXPECT_EQ(box("\u1EAA", 0, 0, {200, 1}).top, 186 - 211);
    EXPECT_LT(box("j", 0, 0, {200, 1}).left, 0);
    EXPECT_EQ(box("j", 0, 0, {200, 1}).right, advance("j", {200, 1}));
}

TEST_F(Layout, OrdinaryLineIsAGroupByItself)
{
    auto const& two = groups("Alt\nHdg");
    ASSERT_EQ(two.size(), 2U);
    EXPECT_EQ(two[0].text, "Alt");
    EXPECT_EQ(two[1].text, "Hdg");
    EXPECT_EQ(layout_.originOf(two[0]).y, kAscent);
    EXPECT_EQ(layout_.originOf(two[1]).y, kPitch + kAscent);
}

TEST_F(Layout, LineWithoutInkIsInNoGroup)
{
    auto const& some = groups("\nA\n  \nB\n");
    ASSERT_EQ(some.size(), 2U);
    EXPECT_EQ(some[0].text, "A");
    EXPECT_EQ(some[0].firstLine, 1U);
    EXPECT_EQ(some[0].endLine, 2U);
    EXPECT_EQ(some[1].text, "B");
    EXPECT_EQ(some[1].firstLine, 3U);
    EXPECT_TRUE(groups(" \n ").empty());
}

TEST_F(Layout, LinesWhoseInkSharesRowsAreOneGroup)
{
    // The g descends into the rows in which the next line's accents begin.
    auto const& some = groups("g\n\u1EAA\nB");
    ASSERT_EQ(some.size(), 2U);
    EXPECT_EQ(some[0].text, "g\n\u1EAA");
    EXPECT_EQ(some[0].firstLine, 0U);
    EXPECT_EQ(some[0].endLine, 2U);
    EXPECT_EQ(some[0].ink.bottom, kPitch + kAscent) << "the lower line's";
    EXPECT_EQ(some[1].text, "B");
    EXPECT_EQ(some[1].firstLine, 2U);
}

TEST_F(Layout, WhetherInkSharesRowsOfChromaDependsOnTheAnchorsRow)
{
    // The Q ends with row 21, the accents begin with row 22. Both are of one sample when the anchor is in an odd row.
    std::string const text = "Q\n\u1EAA";
    for (int const y : {0, 2, -2}) {
        auto const& two = groups(text, 0, y);
        ASSERT_EQ(two.size(), 2U) << y;
        EXPECT_EQ(two[0].ink.bottom, 22);
        EXPECT_EQ(two[1].ink.top, 22);
    }
    for (int const y : {1, 3, -1}) {
        auto const& one = groups(text, 0, y);
        ASSERT_EQ(one.size(), 1U) << y;
        EXPECT_EQ(one[0].text, text);
    }
}

TEST_F(Layout, InkAndOriginStandAtTheAnchor)
{
    auto const ink = groups("A")[0].ink;
    auto const& moved = groups("A", 1000, -50)[0];
    EXPECT_EQ(moved.ink, ink);
    EXPECT_EQ(layout_.inkOf(moved), ink.movedBy(1000, -50));
    EXPECT_EQ(layout_.originOf(moved).x, 1000);
    EXPECT_EQ(layout_.originOf(moved).y, kAscent - 50);
}

TEST_F(Layout, KeySaysTextStyleAndTheOriginsParity)
{
    // The baseline of the first line is in an odd row when the anchor is in an even one.
    struct {
        int x, y, parity;
    } const rows[] = {{0, 0, 2}, {1, 0, 3}, {0, 1, 0}, {1, 1, 1}, {-1, -1, 1}, {-2, -2, 2}};
    for (auto const& row : rows) {
        auto const key = layout_.keyOf(groups("Alt", row.x, row.y)[0]);
        EXPECT_EQ(key.text, "Alt");
        EXPECT_EQ(key.style, kStyle);
        EXPECT_EQ(key.parity, row.parity) << row.x << " " << row.y;
    }
}

TEST_F(Layout, RememberedLineIsLaidLikeANewOne)
{
    auto const before = coverage(groups("Alt 12\nHdg")[0]);
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(layout_.cachedBytes(), 0U);
    layout_.keepMeasures(layout_.groups()[0]);
    auto const bytes = layout_.cachedBytes();
    EXPECT_GT(bytes, 0U);
    groups("other");
    auto const& again = groups("Alt 12\nHdg");
    EXPECT_EQ(layout_.box(), (Box{0, 0, advance("Alt 12"), 2 * kPitch}));
    EXPECT_EQ(coverage(again[0]), before);
    layout_.keepMeasures(again[0]);
    EXPECT_EQ(layout_.cachedBytes(), bytes);
}

TEST_F(Layout, IsForgottenWithItsFonts)
{
    auto const sans = box("Alt");
    layout_.keepMeasures(layout_.groups()[0]);
    fonts_.open("DejaVu Sans Mono");
    shaper_.clear();
    glyphs_.clear();
    layout_.clear();
    EXPECT_EQ(layout_.cachedBytes(), 0U);
    EXPECT_TRUE(layout_.groups().empty());
    EXPECT_NE(box("Alt").right, sans.right);
    EXPECT_EQ(box("Alt").right, advance("Alt"));
}

TEST_F(Layout, LongTextIsLaidOutLikeAnyOther)
{
    std::string const line(200, 'w');
    std::string text = line;
    for (int i = 1; i < 500; ++i) {
        text += "\n" + line;
    }
    EXPECT_EQ(box(text), (Box{0, 0, advance(line), 500 * kPitch}));
    EXPECT_EQ(layout_.groups().size(), 500U);
    EXPECT_EQ(box("A"), (Box{0, 0, advance("A"), kPitch}));
    EXPECT_EQ(layout_.groups().size(), 1U);
}

}  // namespace
