// The painter: measures and draws texts and boxes on a mapped NV12 picture with FreeType and HarfBuzz.
#include "Painter.h"
#include "color.h"
#include "imaging_access.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_STROKER_H
#include FT_GLYPH_H
#include <hb-ft.h>
#include <hb.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace {

struct GlyphPicture {
    long left = 0;
    long top = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> coverage;
};

int saturate(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::uint8_t mix(std::uint8_t under, std::uint8_t over, int weight)
{
    return static_cast<std::uint8_t>((under * (256 - weight) + over * weight + 128) >> 8);
}

}  // namespace

struct Painter::Impl {
    Pen pen;
    imaging::ColorMatrix matrix = imaging::ColorMatrix::Auto;
    bool fullRange = false;
    std::function<void(imaging::DrawnText const&)> observer;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    hb_font_t* font = nullptr;

    ~Impl()
    {
        hb_font_destroy(font);
        FT_Done_Face(face);
        FT_Done_FreeType(library);
    }

    void open(std::string const& family)
    {
        if (!library && FT_Init_FreeType(&library) != 0) {
            throw std::runtime_error("cannot start FreeType");
        }
        std::string const name = family.empty() ? "DejaVu Sans" : family;
        FcPattern* const wanted = FcPatternCreate();
        FcPatternAddString(wanted, FC_FAMILY, reinterpret_cast<FcChar8 const*>(name.c_str()));
        FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
        FcDefaultSubstitute(wanted);
        FcResult result = FcResultNoMatch;
        FcPattern* const found = FcFontMatch(nullptr, wanted, &result);
        FcPatternDestroy(wanted);
        FcChar8* path = nullptr;
        FT_Face opened = nullptr;
        if (found && FcPatternGetString(found, FC_FILE, 0, &path) == FcResultMatch) {
            FT_New_Face(library, reinterpret_cast<char const*>(path), 0, &opened);
        }
        FcPatternDestroy(found);
        if (!opened) {
            throw std::runtime_error("no font can be opened for family '" + name + "'");
        }
        hb_font_destroy(font);
        FT_Done_Face(face);
        face = opened;
        font = hb_ft_font_create_referenced(face);
    }

    bool prepare(int pixelSize)
    {
        if (pixelSize <= 0 || pixelSize > 2048) {
            return false;
        }
        if (!face) {
            try {
                open("");
            } catch (std::runtime_error const&) {
                return false;
            }
        }
        FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize));
        hb_ft_font_changed(font);
        return true;
    }

    GlyphPicture rasterise(FT_UInt glyphIndex)
    {
        GlyphPicture picture;
        FT_Glyph glyph = nullptr;
        if (FT_Load_Glyph(face, glyphIndex, FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_LIGHT) != 0 ||
            FT_Get_Glyph(face->glyph, &glyph) != 0) {
            return picture;
        }
        if (pen.thickness > 1) {
            FT_Stroker stroker = nullptr;
            FT_Stroker_New(library, &stroker);
            FT_Stroker_Set(stroker, (pen.thickness - 1) * 32, FT_STROKER_LINECAP_ROUND, FT_STROKER_LINEJOIN_ROUND, 0);
            FT_Glyph_StrokeBorder(&glyph, stroker, 0, 1);
            FT_Stroker_Done(stroker);
        }
        if (FT_Glyph_To_Bitmap(&glyph, FT_RENDER_MODE_NORMAL, nullptr, 1) == 0) {
            auto const* const bitmap = reinterpret_cast<FT_BitmapGlyph>(glyph);
            picture.left = bitmap->left;
            picture.top = bitmap->top;
            picture.width = static_cast<int>(bitmap->bitmap.width);
            picture.height = static_cast<int>(bitmap->bitmap.rows);
            for (int row = 0; row < picture.height; ++row) {
                auto const* const from = bitmap->bitmap.buffer + row * bitmap->bitmap.pitch;
                picture.coverage.insert(picture.coverage.end(), from, from + picture.width);
            }
        }
        FT_Done_Glyph(glyph);
        return picture;
    }

    /// Calls `place(glyph, x, y)` for each glyph and `advance(width, lineTop, lineBottom)` for each line.
    template <class Place, class Advance>
    void layOut(std::string_view text, Place const& place, Advance const& lineDone)
    {
        long const ascent = face->size->metrics.ascender >> 6;
        long const pitch = std::max<long>(1, (face->size->metrics.ascender - face->size->metrics.descender) >> 6);
        std::int64_t top = 0;
        while (true) {
            auto const end = text.find('\n');
            auto const line = text.substr(0, end);
            hb_buffer_t* const buffer = hb_buffer_create();
            hb_buffer_add_utf8(buffer, line.data(), static_cast<int>(line.size()), 0, static_cast<int>(line.size()));
            hb_buffer_guess_segment_properties(buffer);
            hb_shape(font, buffer, nullptr, 0);
            unsigned count = 0;
            auto const* const infos = hb_buffer_get_glyph_infos(buffer, &count);
            auto const* const positions = hb_buffer_get_glyph_positions(buffer, &count);
            std::int64_t pen26 = 0;
            for (unsigned i = 0; i < count; ++i) {
                place(infos[i].codepoint, (pen26 + positions[i].x_offset + 32) >> 6,
                      top + ascent - ((positions[i].y_offset + 32) >> 6));
                pen26 += positions[i].x_advance;
            }
            hb_buffer_destroy(buffer);
            lineDone((pen26 + 63) >> 6, top, top + pitch);
            if (end == std::string_view::npos) {
                return;
            }
            text.remove_prefix(end + 1);
            top += pitch;
        }
    }
};

Painter::Painter() : impl_(std::make_unique<Impl>()) {}

Painter::~Painter() = default;

Pen Painter::getPen() const
{
    return impl_->pen;
}

void Painter::setPen(Pen const& pen)
{
    impl_->pen = pen;
}

void Painter::setPenThickness(unsigned char thickness)
{
    impl_->pen.thickness = thickness;
}

void Painter::setPenRGB(unsigned char r, unsigned char g, unsigned char b)
{
    impl_->pen.r = r;
    impl_->pen.g = g;
    impl_->pen.b = b;
}

bool Painter::measureTextBBox(std::string const& text, int x, int y, int pixelSize, int, int, int* left, int* top,
                              int* right, int* bottom) const
{
    if (text.empty() || !impl_->prepare(pixelSize)) {
        return false;
    }
    std::int64_t box[4] = {0, 0, 0, 0};
    impl_->layOut(
        text,
        [&](FT_UInt glyph, std::int64_t gx, std::int64_t gy) {
            auto const picture = impl_->rasterise(glyph);
            if (picture.width > 0) {
                box[0] = std::min(box[0], gx + picture.left);
                box[1] = std::min(box[1], gy - picture.top);
                box[2] = std::max(box[2], gx + picture.left + picture.width);
                box[3] = std::max(box[3], gy - picture.top + picture.height);
            }
        },
        [&](std::int64_t width, std::int64_t, std::int64_t lineBottom) {
            box[2] = std::max(box[2], width);
            box[3] = std::max(box[3], lineBottom);
        });
    *left = saturate(x + box[0]);
    *top = saturate(y + box[1]);
    *right = saturate(x + box[2]);
    *bottom = saturate(y + box[3]);
    return true;
}

void Painter::drawBackgroundMapped(MappedNV12 const& target, int left, int top, int right, int bottom, float opacity,
                                   float, float)
{
    if (impl_->observer) {
        return;
    }
    auto const color =
        imaging::toYCbCr(impl_->pen.r, impl_->pen.g, impl_->pen.b, impl_->matrix, impl_->fullRange, target.height);
    int const weight = opacity > 0 ? static_cast<int>(std::lround(std::min(opacity, 1.0F) * 256)) : 0;
    int const yStride = target.yStride ? target.yStride : target.width;
    int const uvStride = target.uvStride ? target.uvStride : (target.width + 1) / 2 * 2;
    for (int row = std::max(0, top); row < std::min(bottom, target.height); ++row) {
        for (int column = std::max(0, left); column < std::min(right, target.width); ++column) {
            auto& luma = target.y[static_cast<std::ptrdiff_t>(row) * yStride + column];
            luma = mix(luma, color.y, weight);
            if (row % 2 == 0 && column % 2 == 0) {
                auto* const pair = target.uv + static_cast<std::ptrdiff_t>(row / 2) * uvStride + column;
                pair[0] = mix(pair[0], color.cb, weight);
                pair[1] = mix(pair[1], color.cr, weight);
            }
        }
    }
}

void Painter::drawTextMapped(MappedNV12 const& target, int x, int y, std::string const& text, TextStyle const& style)
{
    if (impl_->observer) {
        impl_->observer({text, x, y, style.pixelSize});
        return;
    }
    if (text.empty() || !impl_->prepare(style.pixelSize)) {
        return;
    }
    auto const color =
        imaging::toYCbCr(impl_->pen.r, impl_->pen.g, impl_->pen.b, impl_->matrix, impl_->fullRange, target.height);
    int const yStride = target.yStride ? target.yStride : target.width;
    int const uvStride = target.uvStride ? target.uvStride : (target.width + 1) / 2 * 2;
    impl_->layOut(
        text,
        [&](FT_UInt glyph, std::int64_t gx, std::int64_t gy) {
            auto const picture = impl_->rasterise(glyph);
            for (int row = 0; row < picture.height; ++row) {
                std::int64_t const py = y + gy - picture.top + row;
                for (int column = 0; column < picture.width; ++column) {
                    std::int64_t const px = x + gx + picture.left + column;
                    if (px < 0 || py < 0 || px >= target.width || py >= target.height) {
                        continue;
                    }
                    int const coverage =
                        picture.coverage[static_cast<std::size_t>(row) * static_cast<std::size_t>(picture.width) +
                                         static_cast<std::size_t>(column)];
                    auto& luma = target.y[py * yStride + px];
                    luma = mix(luma, color.y, coverage + (coverage >> 7));
                    auto* const pair = target.uv + py / 2 * uvStride + px / 2 * 2;
                    pair[0] = mix(pair[0], color.cb, coverage / 4);
                    pair[1] = mix(pair[1], color.cr, coverage / 4);
                }
            }
        },
        [](std::int64_t, std::int64_t, std::int64_t) {});
}

namespace imaging {

void setColor(Painter& painter, ColorMatrix matrix, bool fullRange)
{
    painter.impl().matrix = matrix;
    painter.impl().fullRange = fullRange;
}

void recordTexts(Painter& painter, std::function<void(DrawnText const&)> observer)
{
    painter.impl().observer = std::move(observer);
}

void openFonts(Painter& painter, std::string const& family)
{
    painter.impl().open(family);
}

}  // namespace imaging
