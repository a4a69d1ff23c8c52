// Loads, strokes and fills a glyph's outline with FreeType; the glyph cache keeps what comes out.
#include "glyph_raster.h"

#include "shaper.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_STROKER_H

#include <algorithm>
#include <cstring>
#include <limits>

namespace imaging {
namespace {

constexpr int kSubPixels = 64;  ///< FreeType's units in a pixel
/// Stroked outlines overlap themselves, and FreeType adds what overlaps within a pixel. They are filled this
/// many times larger in both directions and averaged, so that only parts of a pixel can be counted twice.
constexpr int kStrokeScale = 4;
/// Unless that would take more than so many pixels.
constexpr std::int64_t kLargestScaledArea = std::int64_t{1} << 24;
constexpr std::int64_t kLargestArea = std::int64_t{1} << 28;
constexpr std::size_t kRowPadding = 16;

class Outline {
public:
    Outline(FT_Library library, unsigned points, int contours) : library_(library)
    {
        if (FT_Outline_New(library, points, contours, &outline_) != 0) {
            outline_ = {};
        } else {
            outline_.n_points = 0;
            outline_.n_contours = 0;
        }
    }
    ~Outline() { FT_Outline_Done(library_, &outline_); }
    Outline(Outline const&) = delete;
    Outline& operator=(Outline const&) = delete;

    FT_Outline& get() { return outline_; }
    bool hasRoom() const { return outline_.points != nullptr; }

    void append(FT_Outline const& other)
    {
        auto const points = static_cast<std::size_t>(outline_.n_points);
        auto const count = static_cast<std::size_t>(other.n_points);
        std::copy_n(other.points, count, outline_.points + points);
        std::copy_n(other.tags, count, outline_.tags + points);
        for (int i = 0; i < other.n_contours; ++i) {
            outline_.contours[outline_.n_contours++] = static_cast<short>(other.contours[i] + outline_.n_points);
        }
        outline_.n_points = static_cast<short>(outline_.n_points + other.n_points);
    }

private:
    FT_Library library_;
    FT_Outline outline_{};
};

struct StrokerDone {
    void operator()(FT_Stroker stroker) const { FT_Stroker_Done(stroker); }
};

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

/// Fills an outline, which is moved and scaled on the way.
GlyphImage fill(FT_Library library, FT_Outline& outline, int wantedScale)
{
    FT_BBox box{};
    FT_Outline_Get_CBox(&outline, &box);
    FT_Pos const left = floorTo(box.xMin, kSubPixels);
    FT_Pos const bottom = floorTo(box.yMin, kSubPixels);
    auto const width = std::int64_t{(box.xMax - left + kSubPixels - 1) / kSubPixels};
    auto const height = std::int64_t{(box.yMax - bottom + kSubPixels - 1) / kSubPixels};
    if (width <= 0 || height <= 0 || width * height > kLargestArea) {
        return {};
    }
    int const scale = width * height * wantedScale * wantedScale <= kLargestScaledArea ? wantedScale : 1;
    auto const fineWidth = static_cast<std::size_t>(width * scale);
    auto const fineHeight = static_cast<std::size_t>(height * scale);
    FT_Outline_Translate(&outline, -left, -bottom);
    FT_Matrix const enlarge{FT_Fixed{scale} << 16, 0, 0, FT_Fixed{scale} << 16};
    FT_Outline_Transform(&outline, &enlarge);

    std::vector<std::uint8_t> coverage(fineWidth * fineHeight);
    FT_Bitmap bitmap{};
    bitmap.rows = static_cast<unsigned>(fineHeight);
    bitmap.width = static_cast<unsigned>(fineWidth);
    bitmap.pitch = static_cast<int>(fineWidth);
    bitmap.buffer = coverage.data();
    bitmap.num_grays = 256;
    bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
    if (FT_Outline_Get_Bitmap(library, &outline, &bitmap) != 0) {
        return {};
    }
    if (scale > 1) {
        coverage = averageBlocks(coverage, static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                                 static_cast<std::size_t>(scale));
    }
    return trimmed(coverage, static_cast<int>(width), static_cast<int>(height), static_cast<int>(left / kSubPixels),
                   static_cast<int>(-(bottom / kSubPixels) - height));
}

/// Fills an outline together with a stroke along it, `thickness - 1` pixels wide.
GlyphImage fillStroked(FT_Library library, FT_Outline& outline, int thickness)
{
    FT_Stroker opened = nullptr;
    if (FT_Stroker_New(library, &opened) != 0) {
        return {};
    }
    std::unique_ptr<FT_StrokerRec_, StrokerDone> const stroker(opened);
    FT_Stroker_Set(opened, FT_Fixed{thickness - 1} * kSubPixels / 2, FT_STROKER_LINECAP_ROUND,
                   FT_STROKER_LINEJOIN_ROUND, 0);
    FT_UInt points = 0;
    FT_UInt contours = 0;
    if (FT_Stroker_ParseOutline(opened, &outline, 0) != 0 || FT_Stroker_GetCounts(opened, &points, &contours) != 0) {
        return fill(library, outline, 1);
    }
    points += static_cast<FT_UInt>(outline.n_points);
    contours += static_cast<FT_UInt>(outline.n_contours);
    constexpr FT_UInt kMost = std::numeric_limits<short>::max();
    if (points > kMost || contours > kMost) {
        return fill(library, outline, 1);
    }
    Outline both(library, points, static_cast<int>(contours));
    if (!both.hasRoom()) {
        return {};
    }
    // The stroke always winds like a filled TrueType contour; the filling must not wind against it.
    if (FT_Outline_Get_Orientation(&outline) == FT_ORIENTATION_POSTSCRIPT) {
        FT_Outline_Reverse(&outline);
    }
    both.append(outline);
    FT_Stroker_Export(opened, &both.get());
    return fill(library, both.get(), kStrokeScale);
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
    return key.thickness > 1 ? fillStroked(fonts.library(), *outline, key.thickness)
                             : fill(fonts.library(), *outline, 1);
}

}  // namespace imaging
