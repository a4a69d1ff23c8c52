// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The painter's looks, held against pictures that somebody has looked at. docs/painter.md shows them.
#include "Painter.h"
#include "golden_picture.h"
#include "imaging/imaging_access.h"
#include "test_picture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

namespace {

using imaging_test::Likeness;
using imaging_test::TestPicture;

/// A ground of slow waves, so that every blend has something different underneath.
void fillGround(TestPicture const& picture)
{
    auto const& planes = picture.planes();
    for (int y = 0; y < planes.height; ++y) {
        for (int x = 0; x < planes.width; ++x) {
            planes.y[std::ptrdiff_t{y} * planes.yStride + x] =
                static_cast<std::uint8_t>(70 + (x * 3 + y * 5) % 60 + ((x / 8 + y / 8) % 2) * 24);
        }
    }
    for (int row = 0; row < picture.chromaHeight(); ++row) {
        for (int pair = 0; pair < picture.chromaWidth(); ++pair) {
            auto* const sample = planes.uv + std::ptrdiff_t{row} * planes.uvStride + std::ptrdiff_t{2} * pair;
            sample[0] = static_cast<std::uint8_t>(110 + (pair + row) % 24);
            sample[1] = static_cast<std::uint8_t>(118 + (pair * 2 + row * 3) % 24);
        }
    }
}

/// Draws as the render plugin does: a box behind each text.
class Canvas {
public:
    Canvas(int width, int height) : picture_(width, height, 0, 0, 6)
    {
        fillGround(picture_);
        imaging::openFonts(painter);
    }

    void box(int left, int top, int right, int bottom, float opacity, float radius)
    {
        painter.drawBackgroundMapped(picture_.planes(), left, top, right, bottom, opacity, radius, 0);
    }
    void text(std::string const& text, int x, int y, int size, int thickness = 1)
    {
        painter.setPenThickness(static_cast<unsigned char>(thickness));
        painter.drawTextMapped(picture_.planes(), x, y, text, {size, 0, 0});
    }
    /// A text in its box; returns the box's lower edge.
    int block(std::string const& words, int x, int y, int size, int thickness = 1)
    {
        painter.setPenThickness(static_cast<unsigned char>(thickness));
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        painter.measureTextBBox(words, x, y, size, 0, 0, &left, &top, &right, &bottom);
        Pen const pen = painter.getPen();
        painter.setPenRGB(0, 0, 0);
        box(left - 4, top - 3, right + 4, bottom + 3, 0.5F, 4);
        painter.setPen(pen);
        text(words, x, y, size, thickness);
        return bottom + 3;
    }
    TestPicture const& picture() const { return picture_; }

    Painter painter;

private:
    TestPicture picture_;
};

struct Golden {
    std::string name;
    Likeness likeness;
    int width, height;
    std::function<void(Canvas&)> draw;
};

void PrintTo(Golden const& golden, std::ostream* out)
{
    *out << golden.name;
}

void drawRadii(Canvas& canvas)
{
    canvas.painter.setPenRGB(20, 30, 120);
    int x = 3;
    for (float const radius : {0.0F, 1.0F, 2.5F, 4.0F, 8.0F, 100.0F}) {
        canvas.box(x, 3, x + 30, 33, 0.8F, radius);
        canvas.box(x, 37, x + 31, 50, 0.4F, radius);
        x += 33;
    }
}

void drawClippedBoxes(Canvas& canvas)
{
    canvas.painter.setPenRGB(250, 240, 30);
    for (int const x : {-8, 37, 84}) {
        for (int const y : {-7, 20, 48}) {
            canvas.box(x, y, x + 19, y + 15, 0.7F, 6);
        }
    }
}

void drawClippedTexts(Canvas& canvas)
{
    canvas.painter.setPenRGB(255, 255, 255);
    for (int const x : {-19, 40, 101}) {
        for (int const y : {-9, 26, 62}) {
            canvas.text("gW8", x, y, 18);
        }
    }
}

void drawThicknesses(Canvas& canvas)
{
    canvas.painter.setPenRGB(255, 230, 120);
    for (int thickness = 1; thickness <= 16; ++thickness) {
        int const column = (thickness - 1) % 4;
        int const row = (thickness - 1) / 4;
        canvas.text(std::to_string(thickness) + "Re", 4 + 84 * column, 4 + 47 * row, 28, thickness);
    }
}

void drawOutlines(Canvas& canvas)
{
    int x = 4;
    for (int const outline : {0, 1, 2, 4}) {
        imaging::setOutline(canvas.painter, outline);
        canvas.painter.setPenRGB(255, 255, 255);
        canvas.text("Alt 8\n34\u00B0", x, 3, 24);
        canvas.painter.setPenRGB(255, 220, 60);
        canvas.text("Rg", x, 76, 28, 4);
        canvas.text("\u0639\u0644\u064A", x + 52, 78, 20);
        x += 92;
    }
}

void drawSizes(Canvas& canvas)
{
    canvas.painter.setPenRGB(255, 255, 255);
    int y = 4;
    for (int const size : {6, 8, 10, 12, 16, 20, 28}) {
        y = canvas.block(std::to_string(size) + " px: Lat 48.858370\u00B0", 6, y, size) + 3;
    }
}

void drawColors(Canvas& canvas)
{
    int x = 4;
    for (auto const& [r, g, b] : {std::array{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {0, 0, 0}}) {
        canvas.painter.setPenRGB(static_cast<unsigned char>(r), static_cast<unsigned char>(g),
                                 static_cast<unsigned char>(b));
        canvas.text("Rg8", x, 3, 24);
        canvas.text("Rg8", x + 1, 34, 24, 3);
        x += 56;
    }
}

void drawOdd(Canvas& canvas)
{
    canvas.painter.setPenRGB(255, 60, 60);
    canvas.box(40, 16, 100, 100, 0.75F, 5);
    canvas.painter.setPenRGB(255, 255, 255);
    canvas.text("@@", 42, 17, 22);
    canvas.text("MMM", 1, 2, 9);
}

auto texts(std::string const& words, int size)
{
    return [words, size](Canvas& canvas) {
        canvas.painter.setPenRGB(255, 255, 255);
        canvas.block(words, 8, 6, size);
    };
}

class Goldens : public testing::TestWithParam<Golden> {};

TEST_P(Goldens, LookAsBefore)
{
    ASSERT_TRUE(std::filesystem::exists("/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf"))
        << "install fonts-droid-fallback";
    auto const& golden = GetParam();
    Canvas canvas(golden.width, golden.height);
    golden.draw(canvas);
    EXPECT_TRUE(canvas.picture().guardsAreWhole());
    EXPECT_EQ(imaging_test::compareWithGolden(golden.name, canvas.picture(), golden.likeness), "");
}

INSTANTIATE_TEST_SUITE_P(
    Pictures, Goldens,
    testing::Values(
        Golden{"box_radii", Likeness::Exact, 201, 53, drawRadii},
        Golden{"box_clipped", Likeness::Exact, 95, 57, drawClippedBoxes},
        Golden{"latin", Likeness::Close, 280, 56, texts("AVATAR Type: (fi) 0123456789\nquick brown fox, jumps!", 17)},
        Golden{"accents", Likeness::Close, 270, 56,
               texts("\u00C5\u00C9\u00CE\u00F5\u00FC \u0159\u017E\u0142\u0111 \u1EC7 x\u0302 g\u0308\u0301 "
                     "Q\u0327\n48\u00B051\u203224\u2033 \u00B15 \u00B5m \u2192 \u03A9",
                     17)},
        Golden{"arabic", Likeness::Close, 270, 58,
               texts("\u0627\u0644\u0633\u0644\u0627\u0645 "
                     "\u0639\u0644\u064A\u0643\u0645\n\u0627\u0631\u062A\u0641\u0627\u0639 1250.5 m",
                     19)},
        Golden{"hebrew", Likeness::Close, 200, 34,
               texts("\u05E9\u05DC\u05D5\u05DD (abc) 12 \u05D2\u05D5\u05D1\u05D4", 19)},
        Golden{"cjk", Likeness::Close, 266, 36, texts("Alt \u9AD8\u5EA6 1250 \u65E5\u672C\u8A9E \u6F22\u5B57", 20)},
        Golden{"missing", Likeness::Close, 200, 34, texts("a\U0010FFFDb \xFF \xE2\x82 \x01 c", 20)},
        Golden{"thickness", Likeness::Close, 344, 200, drawThicknesses},
        Golden{"outlines", Likeness::Close, 374, 122, drawOutlines},
        Golden{"sizes", Likeness::Close, 400, 190, drawSizes}, Golden{"colors", Likeness::Close, 290, 68, drawColors},
        Golden{"text_clipped", Likeness::Close, 121, 75, drawClippedTexts},
        Golden{"odd_edges", Likeness::Close, 67, 41, drawOdd}),
    [](auto const& row) { return row.param.name; });

}  // namespace
