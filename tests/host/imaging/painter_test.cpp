// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The painter as its callers see it: what is measured is what is drawn, at every place, size and thickness.
#include "Painter.h"
#include "imaging/imaging_access.h"
#include "imaging/painter_impl.h"
#include "test_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using imaging_test::TestPicture;

struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    friend bool operator==(Rect const&, Rect const&) = default;
};

void PrintTo(Rect const& r, std::ostream* out)
{
    *out << r.left << "," << r.top << "," << r.right << "," << r.bottom;
}

/// A painter whose drawn luma on a black full-range picture is the coverage itself.
class CoveragePainter {
public:
    CoveragePainter()
    {
        imaging::openFonts(painter);
        imaging::setColor(painter, imaging::ColorMatrix::Bt601, true);
        painter.setPenRGB(255, 255, 255);
    }

    bool measure(std::string const& text, int x, int y, int size, Rect& box) const
    {
        return painter.measureTextBBox(text, x, y, size, 0, 0, &box.left, &box.top, &box.right, &box.bottom);
    }
    Rect box(std::string const& text, int x, int y, int size) const
    {
        Rect rect;
        EXPECT_TRUE(measure(text, x, y, size, rect)) << text;
        return rect;
    }
    void draw(TestPicture& picture, std::string const& text, int x, int y, int size)
    {
        painter.drawTextMapped(picture.planes(), x, y, text, {size, 0, 0});
    }

    Painter painter;
};

/// The smallest rectangle around all changed pixels of a picture that was black.
Rect inkOf(TestPicture const& picture)
{
    Rect ink{picture.planes().width, picture.planes().height, 0, 0};
    for (int y = 0; y < picture.planes().height; ++y) {
        for (int x = 0; x < picture.planes().width; ++x) {
            if (picture.y(x, y) != 0) {
                ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
                       std::max(ink.bottom, y + 1)};
            }
        }
    }
    return ink;
}

/// Chroma 0 in a picture drawn on in a colour of chroma 255 tells the chroma coverage: it must be the mean of
/// the pixels' coverage, of those that there are.
void expectChromaIsMeanOfLuma(TestPicture const& picture)
{
    int const lastX = picture.planes().width - 1;
    int const lastY = picture.planes().height - 1;
    for (int row = 0; row < picture.chromaHeight(); ++row) {
        for (int pair = 0; pair < picture.chromaWidth(); ++pair) {
            int const right = std::min(2 * pair + 1, lastX);
            int const below = std::min(2 * row + 1, lastY);
            int const mean = imaging::meanOfFour(picture.y(2 * pair, 2 * row), picture.y(right, 2 * row),
                                                 picture.y(2 * pair, below), picture.y(right, below));
            auto const expected = imaging::blendInk(0, 128, static_cast<std::uint8_t>(mean));
            ASSERT_EQ(picture.cb(pair, row), expected) << "sample " << pair << ", " << row;
            ASSERT_EQ(picture.cr(pair, row), expected) << "sample " << pair << ", " << row;
        }
    }
}

std::string randomText(std::minstd_rand& random, std::size_t longest)
{
    static std::vector<std::string> const pieces{"A",
                                                 "g",
                                                 "j",
                                                 "W",
                                                 "i",
                                                 " ",
                                                 "  ",
                                                 "Lat ",
                                                 "48.85",
                                                 "-0",
                                                 "T.",
                                                 "fi",
                                                 "\n",
                                                 "\u00B0",
                                                 "\u00C5",
                                                 "\u00E9",
                                                 "x\u0302",
                                                 "\u0639\u0644",
                                                 "\u05D0\u05D1",
                                                 "\u65E5",
                                                 "\u672C",
                                                 "\U0010FFFD",
                                                 "\xFF\xC2",
                                                 "\t",
                                                 "@",
                                                 "|",
                                                 "y",
                                                 "Q\u0327",
                                                 "\u200D",
                                                 "\u2033",
                                                 "/",
                                                 "\r\n",
                                                 "0123456789"};
    std::string text;
    std::size_t const count = 1 + random() % longest;
    for (std::size_t i = 0; i < count; ++i) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST(PainterText, NoInkOutsideTheMeasuredBox)
{
    CoveragePainter painter;
    std::minstd_rand random(20);
    for (int i = 0; i < 512 + 256; ++i) {
        // Every size, and small ones more often; every thickness with both.
        int const size = i < 512 ? 1 + i : 1 + i % 32;
        int const thickness = 1 + (i + i / 32) % 16;
        auto const text = randomText(random, size < 100 ? 12 : 4);
        SCOPED_TRACE("size " + std::to_string(size) + " thickness " + std::to_string(thickness) + " text " + text);
        painter.painter.setPenThickness(static_cast<unsigned char>(thickness));
        Rect const far = painter.box(text, 0, 0, size);
        // Odd and even anchors, with room around the box.
        int const x = 5 - far.left + i % 2;
        int const y = 5 - far.top + i / 2 % 2;
        Rect const box = painter.box(text, x, y, size);
        ASSERT_EQ(box, (Rect{far.left + x, far.top + y, far.right + x, far.bottom + y}));
        TestPicture picture(box.right + 6, box.bottom + 6, 0, 0, i % 11, i % 64);
        painter.draw(picture, text, x, y, size);
        ASSERT_TRUE(picture.guardsAreWhole());
        Rect const ink = inkOf(picture);
        if (ink.left < ink.right) {
            EXPECT_GE(ink.left, box.left);
            EXPECT_GE(ink.top, box.top);
            EXPECT_LE(ink.right, box.right);
            EXPECT_LE(ink.bottom, box.bottom);
        }
        // Where the box exceeds the lines' boxes, ink is the reason.
        if (box.left < x) {
            EXPECT_EQ(ink.left, box.left);
        }
        if (box.top < y) {
            EXPECT_EQ(ink.top, box.top);
        }
        expectChromaIsMeanOfLuma(picture);
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

TEST(PainterText, BoxIsTheLinesBoxAtTheAnchor)
{
    CoveragePainter painter;
    EXPECT_EQ(painter.box("nnnn", 10, 20, 2048).left, 10);
    // DejaVu Sans at its design size: an n is 1298 wide, a line 1901 + 483 high.
    EXPECT_EQ(painter.box("nnnn", 10, 20, 2048), (Rect{10, 20, 10 + 4 * 1298, 20 + 2384}));
    EXPECT_EQ(painter.box("nn\nnnn\n", 10, 20, 2048), (Rect{10, 20, 10 + 3 * 1298, 20 + 3 * 2384}));
    painter.painter.setPenThickness(16);
    EXPECT_EQ(painter.box("nnnn", 10, 20, 2048), (Rect{10, 20, 10 + 4 * 1298 + 16, 20 + 2384 + 16}));
}

TEST(PainterText, BoxOfANumberDoesNotFlicker)
{
    CoveragePainter painter;
    for (int const thickness : {1, 2, 5}) {
        painter.painter.setPenThickness(static_cast<unsigned char>(thickness));
        Rect const box = painter.box("Hdg 111.11", 4, 4, 28);
        for (char const* const text : {"Hdg 000.00", "Hdg 747.47", "Hdg 194.58"}) {
            EXPECT_EQ(painter.box(text, 4, 4, 28), box) << text << " thickness " << thickness;
        }
    }
}

TEST(PainterText, CarriageReturnBelongsToTheLineBreak)
{
    CoveragePainter painter;
    EXPECT_EQ(painter.box("ab\r\ncd", 0, 0, 20), painter.box("ab\ncd", 0, 0, 20));
}

struct Place {
    int width, height, x, y;
};

/// A text drawn at the edge of a picture looks like the same part of the text on a large one.
void expectLikeCropOfLarge(CoveragePainter& painter, std::string const& text, int size, Place const& place)
{
    SCOPED_TRACE(std::to_string(place.width) + "x" + std::to_string(place.height) + " at " + std::to_string(place.x) +
                 ", " + std::to_string(place.y));
    // An even shift keeps luma and chroma together.
    constexpr int kShift = 400;
    TestPicture large(place.width + 2 * kShift, place.height + 2 * kShift, 0, 0);
    painter.draw(large, text, place.x + kShift, place.y + kShift, size);
    for (int round = 0; round < 3; ++round) {
        TestPicture picture(place.width, place.height, 0, 0, 9, 5);
        painter.draw(picture, text, place.x, place.y, size);
        ASSERT_TRUE(picture.guardsAreWhole());
        for (int y = 0; y < place.height; ++y) {
            for (int x = 0; x < place.width; ++x) {
                ASSERT_EQ(picture.y(x, y), large.y(x + kShift, y + kShift)) << x << ", " << y << " round " << round;
            }
        }
        expectChromaIsMeanOfLuma(picture);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(PainterText, ClippedOnEverySideOfEverySmallPicture)
{
    CoveragePainter painter;
    std::string const text = "\u00C5g8\nj\u0639W";
    for (int const thickness : {1, 6}) {
        painter.painter.setPenThickness(static_cast<unsigned char>(thickness));
        for (int width = 1; width <= 40; width += width < 4 ? 1 : 7) {
            for (int height = 1; height <= 40; height += height < 4 ? 1 : 9) {
                for (int const x : {-47, -20, -1, 0, 7}) {
                    for (int const y : {-52, -21, 0, 5}) {
                        expectLikeCropOfLarge(painter, text, 22, {width, height, x, y});
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
}

TEST(PainterText, EveryOffsetAcrossAnEdgeIsTheSameText)
{
    CoveragePainter painter;
    for (int shift = -70; shift <= 41; ++shift) {
        expectLikeCropOfLarge(painter, "Lat 8", 20, {41, 31, shift, shift / 2});
        ASSERT_FALSE(HasFailure());
    }
}

TEST(PainterText, FarAnchorsDrawNothingAndMeasureToTheEndOfInt)
{
    CoveragePainter painter;
    int const most = std::numeric_limits<int>::max();
    int const least = std::numeric_limits<int>::min();
    for (int const x : {least, least + 1, -100000, 100000, most - 3, most}) {
        for (int const y : {least, 0, most}) {
            TestPicture picture(32, 16);
            TestPicture const untouched(32, 16);
            painter.draw(picture, "far\naway", x, y, 20);
            EXPECT_EQ(picture.pixels(), untouched.pixels()) << x << ", " << y;
            EXPECT_TRUE(picture.guardsAreWhole());
        }
    }
    EXPECT_EQ(painter.box("far", most, most, 20), (Rect{most, most, most, most}));
    EXPECT_EQ(painter.box("far", least, least, 20).left, least);
}

TEST(PainterText, CannotBeMeasured)
{
    CoveragePainter painter;
    struct Row {
        std::string name;
        std::string text;
        int size;
    };
    for (auto const& row : {Row{"no text", "", 20}, Row{"no size", "a", 0}, Row{"negative size", "a", -5},
                            Row{"least size", "a", std::numeric_limits<int>::min()},
                            Row{"beyond the largest", "a", imaging::kLargestPixelSize + 1},
                            Row{"far beyond", "a", std::numeric_limits<int>::max()}}) {
        SCOPED_TRACE(row.name);
        Rect box{1, 2, 3, 4};
        EXPECT_FALSE(painter.measure(row.text, 0, 0, row.size, box));
        EXPECT_EQ(box, (Rect{1, 2, 3, 4}));
        TestPicture picture(32, 16);
        TestPicture const untouched(32, 16);
        painter.draw(picture, row.text, 0, 0, row.size);
        EXPECT_EQ(picture.pixels(), untouched.pixels());
    }
}

TEST(PainterText, LineFeedsAloneHaveHeightWithoutWidth)
{
    CoveragePainter painter;
    Rect const line = painter.box("n", 0, 0, 20);
    EXPECT_EQ(painter.box("\n\n", 0, 0, 20), (Rect{0, 0, 0, 3 * line.bottom}));
}

TEST(PainterText, MegabyteInOneLine)
{
    CoveragePainter painter;
    std::string text;
    while (text.size() < (1U << 20)) {
        text += "Lat 48.858370 \u00C5\u0639 ";
    }
    Rect const box = painter.box(text, 0, 0, 12);
    EXPECT_GT(box.right, 4000000);
    TestPicture picture(641, 33, 0, 0);
    painter.draw(picture, text, -2000000, 5, 12);
    EXPECT_TRUE(picture.guardsAreWhole());
    Rect const ink = inkOf(picture);
    EXPECT_LT(ink.left, 20);
    EXPECT_GT(ink.right, 620);
    expectChromaIsMeanOfLuma(picture);
    auto const bytes = painter.painter.impl().texts.cachedBytes();
    EXPECT_LE(bytes.glyphs, imaging::kGlyphCacheBytes);
    EXPECT_LE(bytes.words, imaging::kWordCacheBytes);
    EXPECT_LE(bytes.lines, imaging::kLineCacheBytes);
    EXPECT_LE(bytes.measures, imaging::kMeasureCacheBytes);
    EXPECT_LE(bytes.directions, imaging::kRunCacheBytes);
}

TEST(PainterText, MegabytesWithLittleInkAreNotRemembered)
{
    CoveragePainter painter;
    // Read from right to left, so that the letter stands at the anchor.
    std::string const text = std::string(3U << 20, ' ') + "\u05D0.";
    TestPicture expected(64, 32, 0, 0);
    painter.draw(expected, text, 10, 5, 12);
    EXPECT_LT(inkOf(expected).left, inkOf(expected).right);
    for (int round = 0; round < 3; ++round) {
        TestPicture picture(64, 32, 0, 0);
        painter.draw(picture, text, 10, 5, 12);
        ASSERT_EQ(picture.pixels(), expected.pixels()) << round;
    }
    auto const bytes = painter.painter.impl().texts.cachedBytes();
    EXPECT_EQ(bytes.lines, 0U);
    EXPECT_EQ(bytes.measures, 0U);
    EXPECT_EQ(bytes.directions, 0U);
}

TEST(PainterText, MegabyteOfLineFeedsAndOfOneWord)
{
    CoveragePainter painter;
    EXPECT_EQ(painter.box(std::string(1U << 20, '\n'), 0, 0, 10).bottom, ((1 << 20) + 1) * 13);
    EXPECT_GT(painter.box(std::string(1U << 20, 'w'), 0, 0, 512).right, 400000000);
    TestPicture picture(64, 64, 0, 0);
    painter.draw(picture, std::string(1U << 20, 'w'), -200000000, -200, 512);
    EXPECT_TRUE(picture.guardsAreWhole());
}

TEST(PainterText, UnchangedLineLooksTheSameFromTheCache)
{
    CoveragePainter painter;
    std::string const text = "Lat 48.858370\u00B0\n\u0639\u0644\u0645 g|@";
    for (int const thickness : {1, 4}) {
        painter.painter.setPenThickness(static_cast<unsigned char>(thickness));
        for (int const x : {10, 11}) {
            for (int const y : {10, 11}) {
                TestPicture first(300, 100, 0, 0);
                painter.draw(first, text, x, y, 24);
                auto const before = painter.painter.impl().texts.cachedBytes().lines;
                for (int round = 0; round < 3; ++round) {
                    TestPicture again(300, 100, 0, 0);
                    painter.draw(again, "other text in between", 3, 3, 9);
                    TestPicture fresh(300, 100, 0, 0);
                    painter.draw(fresh, text, x, y, 24);
                    ASSERT_EQ(fresh.pixels(), first.pixels()) << x << ", " << y << " round " << round;
                }
                EXPECT_GT(painter.painter.impl().texts.cachedBytes().lines, before);
                expectChromaIsMeanOfLuma(first);
            }
        }
    }
}

TEST(PainterText, TallTextIsDrawnInBandsWithoutASeam)
{
    CoveragePainter painter;
    painter.painter.setPenThickness(3);
    expectLikeCropOfLarge(painter, "WWWWWWW", 1700, {9001, 1601, -150, -150});
}

TEST(PainterText, CachesKeepTheirBounds)
{
    CoveragePainter painter;
    TestPicture picture(4000, 200);
    for (int i = 0; i < 300; ++i) {
        auto const text = std::to_string(i) + " a line of text that is long and large, again and again, and it goes on";
        painter.draw(picture, text, 0, 0, 96);
        painter.draw(picture, text, 0, 0, 96);
        auto const bytes = painter.painter.impl().texts.cachedBytes();
        ASSERT_LE(bytes.lines, imaging::kLineCacheBytes);
    }
    EXPECT_GT(painter.painter.impl().texts.cachedBytes().lines, imaging::kLineCacheBytes / 2);
}

TEST(PainterText, UnusableTargetIsLeftAlone)
{
    CoveragePainter painter;
    TestPicture picture(16, 8);
    TestPicture const untouched(16, 8);
    auto const good = picture.planes();
    for (auto const& target : {MappedNV12{nullptr, good.uv, 16, 8, 0, 0}, MappedNV12{good.y, nullptr, 16, 8, 0, 0},
                               MappedNV12{good.y, good.uv, 0, 8, 0, 0}, MappedNV12{good.y, good.uv, 16, -1, 0, 0}}) {
        painter.painter.drawTextMapped(target, 0, 0, "text", {20, 0, 0});
        painter.painter.drawBackgroundMapped(target, 0, 0, 16, 8, 1, 0, 0);
    }
    EXPECT_EQ(picture.pixels(), untouched.pixels());
}

TEST(PainterText, StrideZeroMeansWidth)
{
    CoveragePainter painter;
    TestPicture expected(33, 21, 0, 0);
    painter.draw(expected, "W8", 1, 1, 18);
    painter.painter.drawBackgroundMapped(expected.planes(), 20, 10, 40, 40, 0.5F, 4, 0);
    TestPicture actual(33, 21, 0, 0);
    auto target = actual.planes();
    ASSERT_EQ(target.yStride, 33);
    ASSERT_EQ(target.uvStride, 34);
    target.yStride = 0;
    target.uvStride = 0;
    painter.painter.drawTextMapped(target, 1, 1, "W8", {18, 0, 0});
    painter.painter.drawBackgroundMapped(target, 20, 10, 40, 40, 0.5F, 4, 0);
    EXPECT_EQ(actual.pixels(), expected.pixels());
}

TEST(PainterPen, IsWhatWasSet)
{
    Painter painter;
    EXPECT_EQ(painter.getPen(), Pen());
    painter.setPenRGB(1, 2, 3);
    painter.setPenThickness(200);
    EXPECT_EQ(painter.getPen(), (Pen{1, 2, 3, 200}));
    painter.setPen({9, 8, 7, 6});
    EXPECT_EQ(painter.getPen(), (Pen{9, 8, 7, 6}));
}

TEST(PainterPen, ThicknessZeroIsOne)
{
    CoveragePainter painter;
    TestPicture one(60, 30);
    painter.draw(one, "g8", 3, 3, 20);
    painter.painter.setPenThickness(0);
    TestPicture zero(60, 30);
    painter.draw(zero, "g8", 3, 3, 20);
    EXPECT_EQ(zero.pixels(), one.pixels());
}

TEST(PainterPen, LargestThicknessWorks)
{
    CoveragePainter painter;
    painter.painter.setPenThickness(255);
    Rect const box = painter.box("o", 0, 0, 20);
    EXPECT_GT(box.right, 254);
    TestPicture picture(box.right + 2, box.bottom + 2);
    painter.draw(picture, "o", 0, 0, 20);
    Rect const ink = inkOf(picture);
    EXPECT_LE(ink.right, box.right);
    EXPECT_LE(ink.bottom, box.bottom);
    EXPECT_EQ(picture.y(box.right / 2, box.bottom / 2), 255);
}

TEST(PainterColor, FollowsThePicturesHeightUnlessToldOtherwise)
{
    Painter painter;
    painter.setPenRGB(255, 0, 0);
    auto const drawnOn = [&](int lines) {
        TestPicture picture(4, lines);
        painter.drawBackgroundMapped(picture.planes(), 0, 0, 4, lines, 1, 0, 0);
        return std::vector<int>{picture.y(0, 0), picture.cb(0, 0), picture.cr(0, 0)};
    };
    EXPECT_EQ(drawnOn(719), (std::vector<int>{81, 90, 240}));
    EXPECT_EQ(drawnOn(720), (std::vector<int>{63, 102, 240}));
    imaging::setColor(painter, imaging::ColorMatrix::Bt601, false);
    EXPECT_EQ(drawnOn(720), (std::vector<int>{81, 90, 240}));
    imaging::setColor(painter, imaging::ColorMatrix::Bt709, true);
    EXPECT_EQ(drawnOn(8), (std::vector<int>{54, 99, 255}));
}

TEST(PainterRecording, ReportsTextsAndDrawsNothing)
{
    CoveragePainter painter;
    std::vector<imaging::DrawnText> seen;
    imaging::recordTexts(painter.painter, [&](imaging::DrawnText const& text) { seen.push_back(text); });
    TestPicture picture(40, 20);
    TestPicture const untouched(40, 20);
    Rect const box = painter.box("ab", 3, 4, 12);
    painter.painter.drawBackgroundMapped(picture.planes(), 0, 0, 40, 20, 1, 0, 0);
    painter.draw(picture, "ab", 3, 4, 12);
    EXPECT_EQ(picture.pixels(), untouched.pixels());
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].text, "ab");
    EXPECT_EQ(seen[0].x, 3);
    EXPECT_EQ(seen[0].y, 4);
    EXPECT_EQ(seen[0].pixelSize, 12);
    imaging::recordTexts(painter.painter, nullptr);
    painter.draw(picture, "ab", 3, 4, 12);
    EXPECT_NE(picture.pixels(), untouched.pixels());
    EXPECT_EQ(seen.size(), 1U);
    EXPECT_EQ(painter.box("ab", 3, 4, 12), box);
}

TEST(PainterRecording, ReportsTextsAndDrawsThemIfThatIsAskedFor)
{
    CoveragePainter plain;
    CoveragePainter watched;
    std::vector<imaging::DrawnText> seen;
    imaging::recordTexts(
        watched.painter, [&](imaging::DrawnText const& text) { seen.push_back(text); }, imaging::RecordedTexts::Drawn);
    TestPicture expected(40, 20);
    TestPicture picture(40, 20);
    for (auto const& [painter, target] : {std::pair{&plain, &expected}, std::pair{&watched, &picture}}) {
        painter->painter.drawBackgroundMapped(target->planes(), 2, 3, 30, 18, 1, 0, 0);
        painter->draw(*target, "ab", 3, 4, 12);
    }
    EXPECT_EQ(picture.pixels(), expected.pixels());
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].text, "ab");
    EXPECT_EQ(seen[0].left, 2);
    EXPECT_EQ(seen[0].bottom, 18);
}

TEST(PainterFonts, OpenOnFirstUseByThemselves)
{
    Painter painter;
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    EXPECT_TRUE(painter.measureTextBBox("n", 0, 0, 2048, 0, 0, &left, &top, &right, &bottom));
    EXPECT_EQ(right, 1298);
}

TEST(PainterFonts, AnotherFamilyReplacesWhatWasRemembered)
{
    CoveragePainter painter;
    TestPicture picture(200, 40);
    for (int i = 0; i < 3; ++i) {
        painter.draw(picture, "iiii", 0, 0, 20);
    }
    Rect const narrow = painter.box("iiii", 0, 0, 20);
    imaging::openFonts(painter.painter, "DejaVu Sans Mono");
    Rect const wide = painter.box("iiii", 0, 0, 20);
    EXPECT_GT(wide.right, narrow.right);
}

/// A grey picture, on which both a white text and its black rim show.
class GreyPicture {
public:
    GreyPicture() : picture(160, 60, 90, 128) {}

    Rect changed() const
    {
        Rect rect{picture.planes().width, picture.planes().height, 0, 0};
        for (int y = 0; y < picture.planes().height; ++y) {
            for (int x = 0; x < picture.planes().width; ++x) {
                if (picture.y(x, y) != 90) {
                    rect = {std::min(rect.left, x), std::min(rect.top, y), std::max(rect.right, x + 1),
                            std::max(rect.bottom, y + 1)};
                }
            }
        }
        return rect;
    }

    TestPicture picture;
};

// What the rim adds is a wider black stroke below the text; the text stands where that stroke leaves it room.
TEST(PainterOutline, IsAWiderStrokeBelowTheText)
{
    for (int const thickness : {1, 2, 3, 6}) {
        for (int const outline : {1, 2, 5}) {
            SCOPED_TRACE(std::to_string(thickness) + " with " + std::to_string(outline));
            CoveragePainter painter;
            painter.painter.setPenThickness(static_cast<unsigned char>(thickness));
            imaging::setOutline(painter.painter, outline);
            GreyPicture outlined;
            painter.draw(outlined.picture, "Ag 8\u00B0", 21, 11, 22);

            imaging::setOutline(painter.painter, 0);
            GreyPicture byHand;
            painter.painter.setPen({0, 0, 0, static_cast<std::uint8_t>(thickness + 2 * outline)});
            painter.draw(byHand.picture, "Ag 8\u00B0", 21, 11, 22);
            painter.painter.setPen({255, 255, 255, static_cast<std::uint8_t>(thickness)});
            painter.draw(byHand.picture, "Ag 8\u00B0", 21 + outline, 11 + outline, 22);
            EXPECT_TRUE(outlined.picture.pixels() == byHand.picture.pixels());
        }
    }
}

TEST(PainterOutline, MeasuredBoxHoldsTheRim)
{
    CoveragePainter painter;
    for (int const outline : {1, 3, 8}) {
        SCOPED_TRACE(outline);
        for (std::string const text : {"jW", "|g|\n\u00C5y", "8"}) {
            SCOPED_TRACE(text);
            imaging::setOutline(painter.painter, 0);
            Rect const plain = painter.box(text, 40, 9, 16);
            imaging::setOutline(painter.painter, outline);
            Rect const box = painter.box(text, 40, 9, 16);
            int const lines = text.find('\n') == std::string::npos ? 1 : 2;
            EXPECT_EQ(box.right - box.left, plain.right - plain.left + 2 * outline);
            EXPECT_EQ(box.bottom - box.top, plain.bottom - plain.top + 2 * outline * lines);
            EXPECT_EQ(box.top, 9) << "the anchor stays the corner of the first line's box";
            GreyPicture picture;
            painter.draw(picture.picture, text, 40, 9, 16);
            Rect const ink = picture.changed();
            EXPECT_GE(ink.left, box.left);
            EXPECT_GE(ink.top, box.top);
            EXPECT_LE(ink.right, box.right);
            EXPECT_LE(ink.bottom, box.bottom);
        }
    }
}

TEST(PainterOutline, OfZeroIsNone)
{
    CoveragePainter painter;
    GreyPicture before;
    painter.draw(before.picture, "Alt 120 m", 3, 5, 20);
    imaging::setOutline(painter.painter, 4);
    GreyPicture between;
    painter.draw(between.picture, "Alt 120 m", 3, 5, 20);
    EXPECT_TRUE(before.picture.pixels() != between.picture.pixels());
    imaging::setOutline(painter.painter, 0);
    GreyPicture after;
    painter.draw(after.picture, "Alt 120 m", 3, 5, 20);
    EXPECT_TRUE(before.picture.pixels() == after.picture.pixels());
}

TEST(PainterOutline, StaysWithinItsLimits)
{
    CoveragePainter painter;
    Rect const plain = painter.box("8", 0, 0, 20);
    imaging::setOutline(painter.painter, -3);
    EXPECT_EQ(painter.box("8", 0, 0, 20), plain);
    imaging::setOutline(painter.painter, 1000);
    EXPECT_EQ(painter.box("8", 0, 0, 20).right, plain.right + 2 * imaging::kLargestOutline);
    // The widest pen with the widest rim is one stroke of 511 pixels.
    painter.painter.setPenThickness(255);
    GreyPicture picture;
    painter.draw(picture.picture, "8", -200, -240, 20);
    EXPECT_EQ(picture.changed(), (Rect{0, 0, 160, 60}));
}

// Drawn a third time a text comes from what is remembered, rim and all.
TEST(PainterOutline, RememberedTextsLookTheSame)
{
    CoveragePainter painter;
    imaging::setOutline(painter.painter, 2);
    GreyPicture first;
    painter.draw(first.picture, "constant", 4, 7, 18);
    for (int i = 0; i < 3; ++i) {
        GreyPicture again;
        painter.draw(again.picture, "constant", 4, 7, 18);
        EXPECT_TRUE(first.picture.pixels() == again.picture.pixels());
    }
}

}  // namespace
