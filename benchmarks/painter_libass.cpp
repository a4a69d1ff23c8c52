// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// libass as an opponent: one event for each block; its bitmaps are blended in place, luma by coverage and chroma by
// the mean coverage of its pixels, in plain loops as FFmpeg's ass filter has them.
#include "painter_scene.h"

#include "imaging/color.h"

#include <ass/ass.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace painter_bench {
namespace {

struct LibraryDone {
    void operator()(ASS_Library* library) const { ass_library_done(library); }
};
struct RendererDone {
    void operator()(ASS_Renderer* renderer) const { ass_renderer_done(renderer); }
};
struct TrackFree {
    void operator()(ASS_Track* track) const { ass_free_track(track); }
};

ASS_Library* quietLibrary()
{
    ASS_Library* const library = ass_library_init();
    ass_set_message_cb(
        library, [](int, char const*, va_list, void*) {}, nullptr);
    return library;
}

std::uint8_t mix(int under, int over, int alpha)
{
    return static_cast<std::uint8_t>((under * (255 - alpha) + over * alpha + 127) / 255);
}

void blendBitmap(MappedNV12 const& planes, ASS_Image const& image)
{
    auto const part = [&](int shift) { return static_cast<std::uint8_t>(image.color >> shift & 0xFF); };
    auto const color = imaging::toYCbCr(part(24), part(16), part(8), imaging::ColorMatrix::Auto, false, planes.height);
    int const opacity = 255 - part(0);
    for (int y = 0; y < image.h; ++y) {
        auto* const luma = planes.y + std::ptrdiff_t{image.dst_y + y} * planes.yStride + image.dst_x;
        auto const* const mask = image.bitmap + std::ptrdiff_t{y} * image.stride;
        for (int x = 0; x < image.w; ++x) {
            luma[x] = mix(luma[x], color.y, mask[x] * opacity / 255);
        }
    }
    // Two rows of the mask at a time, moved so that pairs of pixels begin where samples of chroma do.
    int const firstPair = image.dst_x / 2;
    int const pairs = (image.dst_x + image.w - 1) / 2 - firstPair + 1;
    auto const bytes = 2 * static_cast<std::size_t>(pairs);
    std::vector<std::uint8_t> rows(2 * bytes);
    for (int row = image.dst_y / 2; row <= (image.dst_y + image.h - 1) / 2; ++row) {
        std::fill(rows.begin(), rows.end(), std::uint8_t{0});
        for (int half = 0; half < 2; ++half) {
            int const y = 2 * row + half - image.dst_y;
            if (y >= 0 && y < image.h) {
                std::copy_n(image.bitmap + std::ptrdiff_t{y} * image.stride, image.w,
                            rows.data() + static_cast<std::size_t>(half) * bytes + image.dst_x % 2);
            }
        }
        auto* const chroma = planes.uv + std::ptrdiff_t{row} * planes.uvStride + std::ptrdiff_t{2} * firstPair;
        auto const* const upper = rows.data();
        auto const* const lower = rows.data() + bytes;
        for (int i = 0; i < 2 * pairs; i += 2) {
            int const alpha = (upper[i] + upper[i + 1] + lower[i] + lower[i + 1]) * opacity / (4 * 255);
            chroma[i] = mix(chroma[i], color.cb, alpha);
            chroma[i + 1] = mix(chroma[i + 1], color.cr, alpha);
        }
    }
}

class Libass : public Drawer {
public:
    explicit Libass(Scene const& scene)
        : scene_(scene)
        , library_(quietLibrary())
        , renderer_(ass_renderer_init(library_.get()))
        , track_(ass_new_track(library_.get()))
    {
        ass_set_frame_size(renderer_.get(), scene.width(), scene.height());
        ass_set_fonts(renderer_.get(), nullptr, "DejaVu Sans", ASS_FONTPROVIDER_FONTCONFIG, nullptr, 1);
        track_->PlayResX = scene.width();
        track_->PlayResY = scene.height();
        // The array moves when it grows, so the index comes first.
        style_ = ass_alloc_style(track_.get());
        ASS_Style& style = track_->styles[style_];
        style.Name = copyOf("Default");
        style.FontName = copyOf("DejaVu Sans");
        // libass counts the line's height, not the em square.
        style.FontSize = scene.textSize() * 2384.0 / 2048.0;
        style.PrimaryColour = 0xFFFFFF00;
        style.BackColour = 0x00000080;
        style.ScaleX = 1;
        style.ScaleY = 1;
        constexpr int kOneBoxBehindAllLines = 4;
        style.BorderStyle = kOneBoxBehindAllLines;
        style.Shadow = scene.margin();
        constexpr int kTopLeft = 5;
        style.Alignment = kTopLeft;
        setEvents(textsOf(scene, 0));
    }

    void draw(MappedNV12 const& planes, Texts const& texts) override
    {
        if (scene_.isChanging) {
            setEvents(texts);
        }
        for (auto const* image = ass_render_frame(renderer_.get(), track_.get(), 500, nullptr); image != nullptr;
             image = image->next) {
            blendBitmap(planes, *image);
        }
    }

private:
    static char* copyOf(std::string const& text) { return strdup(text.c_str()); }

    void setEvents(Texts const& texts)
    {
        ass_flush_events(track_.get());
        for (int block = 0; block < kBlocks; ++block) {
            auto text = texts[static_cast<std::size_t>(block)];
            for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) {
                text.replace(at, 1, "\\N");
            }
            int const index = ass_alloc_event(track_.get());
            ASS_Event& event = track_->events[index];
            event.Style = style_;
            event.Start = 0;
            event.Duration = 1000;
            event.Text = copyOf("{\\pos(" + std::to_string(scene_.left(block)) + "," +
                                std::to_string(scene_.top(block)) + ")}" + text);
        }
    }

    Scene scene_;
    int style_ = 0;
    std::unique_ptr<ASS_Library, LibraryDone> library_;
    std::unique_ptr<ASS_Renderer, RendererDone> renderer_;
    std::unique_ptr<ASS_Track, TrackFree> track_;
};

}  // namespace

std::unique_ptr<Drawer> makeLibass(Scene const& scene)
{
    return std::make_unique<Libass>(scene);
}

}  // namespace painter_bench
