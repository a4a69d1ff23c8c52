// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Loads and fills a glyph's outline with FreeType and strokes it; the glyph cache keeps what comes out.
#include "imaging/glyph_raster.h"

#include "imaging/outline_distance.h"
#include "imaging/shaper.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <cstring>

namespace imaging {
namespace {

constexpr int kSubPixels = 64;  ///< FreeType's units in a pixel
/// Stroked glyphs are measured this many times larger in both directions and averaged, which leaves slanted edges
/// as smooth as FreeType's own, unless that would take more than so many pixels.
constexpr int kStrokeScale = 2;
constexpr std::int64_t kLargestScaledArea = std::int64_t{1} << 24;
constexpr std::int64_t kLargestArea = std::int64_t{1} << 28;
constexpr std::size_t kRowPadding = 16;

/// A hollow box that stands for a character without a glyph; it has the measures of a capital letter.
struct MissingBox {
    FT_Vector points[8];
    char tags[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    short contours[2] = {3, 7};
    FT_Outline outline{};

    explicit MissingBox(int pixelSize)
    {
        auto const part = [&](int hundredths) { return FT_Pos{pixelSize} * kSubPixels * hundredths / 100; };
        FT_Pos const line = std::max<FT_Pos>(part(6), kSubPixels / 2);
        setRect(0, part(8), 0, part(52), part(72), false);
        setRect(4, part(8) + line, line, part(52) - line, part(72) - line, true);
        outline.n_points = 8;
        outline.n_contours = 2;
        outline.points = points;
        outline.tags = tags;
        outline.contours = contours;
    }

private:
    void setRect(int first, FT_Pos left, FT_Pos bottom, FT_Pos right, FT_Pos top, bool inner)
    {
        FT_Vector const corners[4] = {{left, bottom}, {left, top}, {right, top}, {right, bottom}};
        for (int i = 0; i < 4; ++i) {
            points[first + i] = corners[inner ? 3 - i : i];
        }
    }
};

/// Averages blocks of `scale` x `scale` pixels.
std::vector<std::uint8_t> averageBlocks(std::vector<std::uint8_t> const& fine, std::size_t width, std::size_t height,
                                        std::size_t scale)
{
    std::vector<std::uint8_t> coarse(width * height);
    std::vector<unsigned> sums(width);
    for (std::size_t row = 0; row < height; ++row) {
        std::fill(sums.begin(), sums.end(), 0U);
        for (std::size_t part = 0; part < scale; ++part) {
            auto const* const from = fine.data() + (row * scale + part) * width * scale;
            for (std::size_t i = 0; i < width * scale; ++i) {
                sums[i / scale] += from[i];
            }
        }
        auto const count = static_cast<unsigned>(scale * scale);
        std::transform(sums.begin(), sums.end(), coarse.begin() + static_cast<std::ptrdiff_t>(row * width),
                       [&](unsigned sum) { return static_cast<std::uint8_t>((sum + count / 2) / count); });
    }
    return coarse;
}

FT_Pos floorTo(FT_Pos value, FT_Pos step)
{
    return (value >= 0 ? value / step : -((-value + step - 1) / step)) * step;
}

/// The rectangle of all bytes that are not zero, its rows padded.
GlyphImage trimmed(std::vector<std::uint8_t> const& coverage, int width, int height, int left, int top)
{
    int firstRow = height;
    int lastRow = -1;
    int firstColumn = width;
    int lastColumn = -1;
    for (int row = 0; row < height; ++row) {
        auto const* const bytes = coverage.data() + static_cast<std::ptrdiff_t>(row) * width;
        auto const* const begin = std::find_if(bytes, bytes + width, [](std::uint8_t c) { return c != 0; });
        if (begin == bytes + width) {
            continue;
        }
        firstRow = std::min(firstRow, row);
        lastRow = row;
        firstColumn = std::min(firstColumn, static_cast<int>(begin - bytes));
        int end = width;
        while (bytes[end - 1] == 0) {
            --end;
        }
        lastColumn = std::max(lastColumn, end - 1);
    }
    if (lastRow < 0) {
        return {};
    }
    GlyphImage image;
    image.left = left + firstColumn;
    image.top = top + firstRow;
    image.width = lastColumn - firstColumn + 1;
    image.height = lastRow - firstRow + 1;
    auto const stride = (static_cast<std::size_t>(image.width) + kRowPadding - 1) / kRowPadding * kRowPadding;
    image.stride = static_cast<std::int32_t>(stride);
    image.coverage.assign(stride * static_cast<std::size_t>(image.height), 0);
    for (int row = 0; row < image.height; ++row) {
        std::memcpy(image.coverage.data() + stride * static_cast<std::size_t>(row),
                    coverage.data() + static_cast<std::ptrdiff_t>(firstRow + row) * width + firstColumn,
                    static_cast<std::size_t>(image.width));
    }
    return image;
}

/// Where an outline's picture lies: whole pixels around it.
struct Frame {
    FT_Pos left = 0;  ///< FreeType's units
    FT_Pos bottom = 0;
    std::int64_t width = 0;  ///< pixels
    std::int64_t height = 0;
};

Frame frameOf(FT_Outline const& outline, FT_Pos margin)
{
    FT_BBox box{};
    FT_Outline_Get_CBox(&outline, &box);
    FT_Pos const left = floorTo(box.xMin - margin, kSubPixels);
    FT_Pos const bottom = floorTo(box.yMin - margin, kSubPixels);
    return {left, bottom, (box.xMax + margin - left + kSubPixels - 1) / kSubPixels,
            (box.yMax + margin - bottom + kSubPixels - 1) / kSubPixels};
}

/// Coverage of an outline whose origin is the bottom-left corner of `width` x `height` pixels; empty when FreeType
/// cannot fill it.
std::vector<std::uint8_t> fill(FT_Library library, FT_Outline& outline, std::size_t width, std::size_t height)
{
    std::vector<std::uint8_t> coverage(width * height);
    FT_Bitmap bitmap{};
    bitmap.rows = static_cast<unsigned>(height);
    bitmap.width = static_cast<unsigned>(width);
    bitmap.pitch = static_cast<int>(width);
    bitmap.buffer = coverage.data();
    bitmap.num_grays = 256;
    bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
    if (FT_Outline_Get_Bitmap(library, &outline, &bitmap) != 0) {
        coverage.clear();
    }
    return coverage;
}

/// Covers all that lies within `reach` pixels of the filled outline. A stroker that offsets the outline would do
/// for narrow pens only: where a curve is tighter than the pen is wide, the offset turns inside out and leaves
/// holes.
void strokeAround(std::vector<std::uint8_t>& coverage, FT_Outline const& outline, std::size_t width, std::size_t height,
                  float reach)
{
    auto const distances = distancesTo(outline, width, height, reach + 1);
    std::transform(coverage.begin(), coverage.end(), distances.begin(), coverage.begin(),
                   [&](std::uint8_t filled, float distance) {
                       float const outside = filled >= 128 ? -distance : distance;
                       float const share = std::clamp(reach - outside + 0.5F, 0.0F, 1.0F);
                       return static_cast<std::uint8_t>(std::lround(255 * share));
                   });
}

GlyphImage rasterizeOutline(FT_Library library, FT_Outline& outline, int thickness)
{
    Frame const frame = frameOf(outline, FT_Pos{thickness - 1} * kSubPixels / 2);
    std::int64_t const area = frame.width * frame.height;
    if (frame.width <= 0 || frame.height <= 0 || area > kLargestArea) {
        return {};
    }
    int const scale = thickness > 1 && area * kStrokeScale * kStrokeScale <= kLargestScaledArea ? kStrokeScale : 1;
    auto const width = static_cast<std::size_t>(frame.width);
    auto const height = static_cast<std::size_t>(frame.height);
    auto const times = static_cast<std::size_t>(scale);
    FT_Outline_Translate(&outline, -frame.left, -frame.bottom);
    FT_Matrix const enlarge{FT_Fixed{scale} << 16, 0, 0, FT_Fixed{scale} << 16};
    FT_Outline_Transform(&outline, &enlarge);

    auto coverage = fill(library, outline, width * times, height * times);
    if (coverage.empty()) {
        return {};
    }
    if (thickness > 1) {
        float const reach = static_cast<float>((thickness - 1) * scale) / 2;
        strokeAround(coverage, outline, width * times, height * times, reach);
    }
    if (scale > 1) {
        coverage = averageBlocks(coverage, width, height, times);
    }
    return trimmed(coverage, static_cast<int>(frame.width), static_cast<int>(frame.height),
                   static_cast<int>(frame.left / kSubPixels),
                   static_cast<int>(-(frame.bottom / kSubPixels) - frame.height));
}

}  // namespace

GlyphImage rasterize(Fonts const& fonts, GlyphKey const& key)
{
    MissingBox box(key.pixelSize);
    FT_Outline* outline = &box.outline;
    if (key.glyph != kMissingGlyph) {
        FT_Face const face = fonts.font(key.font).face();
        if (FT_Set_Pixel_Sizes(face, key.pixelSize, key.pixelSize) != 0 ||
            FT_Load_Glyph(face, key.glyph, FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_LIGHT) != 0 ||
            face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) {
            return {};
        }
        outline = &face->glyph->outline;
    }
    if (outline->n_points == 0) {
        return {};
    }
    FT_Outline_Translate(outline, FT_Pos{key.phase} * kSubPixels / kPhases, 0);
    return rasterizeOutline(fonts.library(), *outline, key.thickness);
}

}  // namespace imaging
