// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pixel format conversion by libswscale; between decoder and picture, and between picture and encoder.
#include "media/frame_converter.h"

#include "media/nv12_strides.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace media {
namespace {

bool isRgb(int format)
{
    AVPixFmtDescriptor const* const description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return description != nullptr && (description->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

/// Grey and black-and-white pictures have one component; unless marked otherwise they use the full range.
bool isGray(int format)
{
    AVPixFmtDescriptor const* const description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return description != nullptr && description->nb_components <= 2 && !isRgb(format);
}

/// The old formats that say "full range" in their name.
bool isFullRangeFormat(int format)
{
    switch (format) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
        return true;
    default:
        return false;
    }
}

constexpr int kBt709FromLines = 720;

int matrixOf(ColorFormat color)
{
    return color.bt709 ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

struct Planes {
    std::array<std::uint8_t*, 4> data{};
    std::array<int, 4> strides{};
};

Planes planesOf(MappedNV12 const& nv12)
{
    Planes planes;
    planes.data = {nv12.y, nv12.uv, nullptr, nullptr};
    planes.strides = {lumaStride(nv12), chromaStride(nv12), 0, 0};
    return planes;
}

void fillGray(Planes const& to, MappedNV12 const& planes)
{
    constexpr int kNoColor = 128;
    int const bytes = (planes.width + 1) / 2 * 2;
    for (int row = 0; row < (planes.height + 1) / 2; ++row) {
        std::memset(to.data[1] + static_cast<std::ptrdiff_t>(row) * to.strides[1], kNoColor,
                    static_cast<std::size_t>(bytes));
    }
}

/// Whether the planes of a picture hold what NV12 holds, with Cb and Cr apart.
bool isPlanar420(int format)
{
    return format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P;
}

#ifdef __SSE2__

// A picture is larger than the inner caches, and nearly all of it is next read by the encoder's threads. Stores that go
// past the cache do not fetch what they overwrite.
constexpr std::size_t kStoreBytes = sizeof(__m128i);

bool isStoreAligned(std::uint8_t const* to)
{
    return reinterpret_cast<std::uintptr_t>(to) % kStoreBytes == 0;
}

__m128i load(std::uint8_t const* from)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
}

void store(std::uint8_t* to, __m128i bytes)
{
    _mm_stream_si128(reinterpret_cast<__m128i*>(to), bytes);
}

/// Copies as much of a row as whole stores can; gives the number of bytes done.
std::size_t streamRow(std::uint8_t const* from, std::uint8_t* to, std::size_t count)
{
    std::size_t done = 0;
    for (; isStoreAligned(to) && done + kStoreBytes <= count; done += kStoreBytes) {
        store(to + done, load(from + done));
    }
    return done;
}

/// The same for a row of pairs; gives the number of pairs done.
std::size_t streamPairs(std::uint8_t const* cb, std::uint8_t const* cr, std::uint8_t* pairs, std::size_t count)
{
    std::size_t done = 0;
    for (; isStoreAligned(pairs) && done + kStoreBytes <= count; done += kStoreBytes) {
        store(pairs + 2 * done, _mm_unpacklo_epi8(load(cb + done), load(cr + done)));
        store(pairs + 2 * done + kStoreBytes, _mm_unpackhi_epi8(load(cb + done), load(cr + done)));
    }
    return done;
}

void endStreaming()
{
    _mm_sfence();
}

#else

std::size_t streamRow(std::uint8_t const*, std::uint8_t*, std::size_t)
{
    return 0;
}

std::size_t streamPairs(std::uint8_t const*, std::uint8_t const*, std::uint8_t*, std::size_t)
{
    return 0;
}

void endStreaming() {}

#endif

void copyRow(std::uint8_t const* from, std::uint8_t* to, std::size_t count)
{
    std::size_t const done = streamRow(from, to, count);
    std::memcpy(to + done, from + done, count - done);
}

void interleave(std::uint8_t const* cb, std::uint8_t const* cr, std::uint8_t* pairs, std::size_t count)
{
    for (std::size_t i = streamPairs(cb, cr, pairs, count); i < count; ++i) {
        pairs[2 * i] = cb[i];
        pairs[2 * i + 1] = cr[i];
    }
}

/// What most decoders give. The scaler takes twice as long for it.
void joinChroma(AVFrame const& frame, Planes const& to, std::size_t width, int height)
{
    for (std::ptrdiff_t row = 0; row < height; ++row) {
        copyRow(frame.data[0] + row * frame.linesize[0], to.data[0] + row * to.strides[0], width);
    }
    for (std::ptrdiff_t row = 0; row < (height + 1) / 2; ++row) {
        interleave(frame.data[1] + row * frame.linesize[1], frame.data[2] + row * frame.linesize[2],
                   to.data[1] + row * to.strides[1], (width + 1) / 2);
    }
    endStreaming();
}

void run(SwsContext* scaler, std::uint8_t const* const* fromData, int const* fromStrides, int lines,
         std::uint8_t* const* toData, int const* toStrides)
{
    int const result = sws_scale(scaler, fromData, fromStrides, 0, lines, toData, toStrides);
    if (result < 0) {
        throw std::runtime_error("picture cannot be converted: " + errorText(result));
    }
}

}  // namespace

ColorFormat nv12ColorOf(AVFrame const& frame)
{
    ColorFormat color;
    bool const byLines = frame.height >= kBt709FromLines;
    if (isRgb(frame.format)) {
        color.bt709 = byLines;
        return color;
    }
    color.fullRange = frame.color_range == AVCOL_RANGE_JPEG || isFullRangeFormat(frame.format) ||
                      (frame.color_range == AVCOL_RANGE_UNSPECIFIED && isGray(frame.format));
    bool const unmarked = frame.colorspace == AVCOL_SPC_UNSPECIFIED || frame.colorspace == AVCOL_SPC_RGB;
    color.bt709 = unmarked ? byLines : frame.colorspace == AVCOL_SPC_BT709;
    return color;
}

SwsContext* FrameConverter::Scaler::prepare(Shape const& wantedFrom, Shape const& wantedTo)
{
    if (context && wantedFrom == from && wantedTo == to) {
        return context.get();
    }
    from = wantedFrom;
    to = wantedTo;
    context.reset(sws_alloc_context());
    if (!context) {
        throw std::bad_alloc();
    }
    SwsContext* const scaler = context.get();
    int const fromRange = from.color.fullRange ? 1 : 0;
    int const toRange = to.color.fullRange ? 1 : 0;
    av_opt_set_int(scaler, "srcw", from.width, 0);
    av_opt_set_int(scaler, "srch", from.height, 0);
    av_opt_set_int(scaler, "src_format", from.format, 0);
    av_opt_set_int(scaler, "src_range", fromRange, 0);
    av_opt_set_int(scaler, "dstw", to.width, 0);
    av_opt_set_int(scaler, "dsth", to.height, 0);
    av_opt_set_int(scaler, "dst_format", to.format, 0);
    av_opt_set_int(scaler, "dst_range", toRange, 0);
    av_opt_set_int(scaler, "sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, 0);
    int const result = sws_init_context(scaler, nullptr, nullptr);
    if (result < 0) {
        context.reset();
        char const* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(from.format));
        throw std::runtime_error("pictures of " + sizeText(from.width, from.height) + " " +
                                 (name == nullptr ? "unknown format" : name) +
                                 " cannot be converted: " + errorText(result));
    }
    constexpr int kOne = 1 << 16;
    sws_setColorspaceDetails(scaler, sws_getCoefficients(matrixOf(from.color)), fromRange,
                             sws_getCoefficients(matrixOf(to.color)), toRange, 0, kOne, kOne);
    return scaler;
}

AVFrame const& FrameConverter::fullChroma_(AVFrame const& frame, ColorFormat own, ColorFormat color)
{
    if (!full_ || full_->width != frame.width || full_->height != frame.height) {
        full_ = makeFrame();
        full_->format = AV_PIX_FMT_YUV444P;
        full_->width = frame.width;
        full_->height = frame.height;
        if (av_frame_get_buffer(full_.get(), 0) < 0) {
            throw std::bad_alloc();
        }
    }
    SwsContext* const scaler = toFullChroma_.prepare({frame.width, frame.height, frame.format, own},
                                                     {frame.width, frame.height, AV_PIX_FMT_YUV444P, color});
    run(scaler, frame.data, frame.linesize, frame.height, full_->data, full_->linesize);
    return *full_;
}

void FrameConverter::toNv12(AVFrame const& frame, MappedNV12 const& planes, ColorFormat color)
{
    // RGB has no matrix of its own and always the full range.
    bool const rgb = isRgb(frame.format);
    ColorFormat const own = rgb ? ColorFormat{true, color.bt709} : nv12ColorOf(frame);
    Planes const to = planesOf(planes);
    bool const sameSize = frame.width == planes.width && frame.height == planes.height;
    if (sameSize && frame.format == AV_PIX_FMT_NV12 && own == color) {
        // The scaler's own copy of this format loses the chroma plane.
        av_image_copy_plane(to.data[0], to.strides[0], frame.data[0], frame.linesize[0], planes.width, planes.height);
        av_image_copy_plane(to.data[1], to.strides[1], frame.data[1], frame.linesize[1], (planes.width + 1) / 2 * 2,
                            (planes.height + 1) / 2);
        return;
    }
    if (sameSize && isPlanar420(frame.format) && own == color) {
        joinChroma(frame, to, static_cast<std::size_t>(planes.width), planes.height);
        return;
    }
    // The scaler takes RGB pixels in pairs for half chroma and mixes what stands beyond an odd last one.
    bool const viaFull = rgb && frame.width % 2 != 0;
    AVFrame const& source = viaFull ? fullChroma_(frame, own, color) : frame;
    SwsContext* const scaler = scaler_.prepare({source.width, source.height, source.format, viaFull ? color : own},
                                               {planes.width, planes.height, AV_PIX_FMT_NV12, color});
    run(scaler, source.data, source.linesize, source.height, to.data.data(), to.strides.data());
    if (isGray(frame.format)) {
        fillGray(to, planes);  // which the scaler leaves out
    }
}

void FrameConverter::fromNv12(MappedNV12 const& planes, AVFrame& target, ColorFormat color)
{
    ColorFormat const goal{isRgb(target.format) || isFullRangeFormat(target.format) || color.fullRange, color.bt709};
    SwsContext* const scaler = scaler_.prepare({planes.width, planes.height, AV_PIX_FMT_NV12, color},
                                               {target.width, target.height, target.format, goal});
    Planes const from = planesOf(planes);
    run(scaler, from.data.data(), from.strides.data(), planes.height, target.data, target.linesize);
}

}  // namespace media
