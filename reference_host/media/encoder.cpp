// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Encoding; between annotated picture and muxer.
#include "media/encoder.h"

#include "media/nv12_strides.h"

extern "C" {
#include <libavutil/buffer.h>
}

#include <cstring>
#include <new>
#include <stdexcept>

namespace media {
namespace {

AVPixelFormat choosePixelFormat(AVCodec const& codec)
{
    if (codec.pix_fmts == nullptr) {
        return AV_PIX_FMT_NV12;
    }
    auto const offers = [&codec](AVPixelFormat wanted) {
        for (AVPixelFormat const* format = codec.pix_fmts; *format != AV_PIX_FMT_NONE; ++format) {
            if (*format == wanted) {
                return true;
            }
        }
        return false;
    };
    for (AVPixelFormat const wanted : {AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P}) {
        if (offers(wanted)) {
            return wanted;
        }
    }
    return avcodec_find_best_pix_fmt_of_list(codec.pix_fmts, AV_PIX_FMT_NV12, 0, nullptr);
}

bool needsDevice(AVCodec const& codec)
{
    return (codec.capabilities & (AV_CODEC_CAP_HARDWARE | AV_CODEC_CAP_HYBRID)) != 0 ||
           std::strstr(codec.name, "_omx") != nullptr;
}

/// Codecs of the MPEG-1, -2 and -4 part 2 families count time in frames of a fixed rate.
bool countsFrames(AVCodecID codec)
{
    return codec == AV_CODEC_ID_MPEG1VIDEO || codec == AV_CODEC_ID_MPEG2VIDEO || codec == AV_CODEC_ID_MPEG4;
}

void copyRows(std::uint8_t const* from, int fromStride, std::uint8_t* to, int toStride, int bytes, int rows)
{
    for (int row = 0; row < rows; ++row) {
        std::memcpy(to + static_cast<std::ptrdiff_t>(row) * toStride,
                    from + static_cast<std::ptrdiff_t>(row) * fromStride, static_cast<std::size_t>(bytes));
    }
}

/// An odd picture in even planes: the last column and row are repeated. Chroma has that size already.
void extendToEven(MappedNV12 const& planes, AVFrame& even)
{
    copyRows(planes.y, lumaStride(planes), even.data[0], even.linesize[0], planes.width, planes.height);
    if (even.width > planes.width) {
        for (int row = 0; row < planes.height; ++row) {
            std::uint8_t* const line = even.data[0] + static_cast<std::ptrdiff_t>(row) * even.linesize[0];
            line[planes.width] = line[planes.width - 1];
        }
    }
    if (even.height > planes.height) {
        std::uint8_t* const last = even.data[0] + static_cast<std::ptrdiff_t>(planes.height) * even.linesize[0];
        std::memcpy(last, last - even.linesize[0], static_cast<std::size_t>(even.width));
    }
    copyRows(planes.uv, chromaStride(planes), even.data[1], even.linesize[1], even.width, even.height / 2);
}

FramePtr makePlanes(AVPixelFormat format, int width, int height)
{
    FramePtr frame = makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    return frame;
}

int evenUp(int length)
{
    return length + length % 2;
}

void releaseOwner(void* owner, std::uint8_t*)
{
    delete static_cast<std::shared_ptr<void const>*>(owner);
}

/// A reference to a plane that keeps its owner alive.
AVBufferRef* borrowPlane(std::uint8_t* plane, int stride, int rows, std::shared_ptr<void const> const& owner)
{
    auto kept = std::make_unique<std::shared_ptr<void const>>(owner);
    std::size_t const bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows);
    // Read-only for the encoder: the flag makes it copy before it would write.
    AVBufferRef* const buffer = av_buffer_create(plane, bytes, &releaseOwner, kept.get(), AV_BUFFER_FLAG_READONLY);
    if (buffer == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(kept.release());  // the buffer's from now on
    return buffer;
}

/// A frame whose planes are those of a picture.
FramePtr borrowPlanes(MappedNV12 const& planes, std::shared_ptr<void const> const& owner)
{
    FramePtr frame = makeFrame();
    frame->format = AV_PIX_FMT_NV12;
    frame->width = planes.width;
    frame->height = planes.height;
    frame->data[0] = planes.y;
    frame->data[1] = planes.uv;
    frame->linesize[0] = lumaStride(planes);
    frame->linesize[1] = chromaStride(planes);
    frame->buf[0] = borrowPlane(planes.y, frame->linesize[0], planes.height, owner);
    frame->buf[1] = borrowPlane(planes.uv, frame->linesize[1], evenUp(planes.height) / 2, owner);
    return frame;
}

}  // namespace

Encoder::Encoder(EncoderSettings const& settings, AVOutputFormat const& container)
    : settings_(settings)
    , packet_(makePacket())
{
    AVCodec const& codec = encoderFor(settings.choice, container);
    bool const odd = settings.picture.width % 2 != 0 || settings.picture.height % 2 != 0;
    try {
        open_(codec, container, settings.picture.width, settings.picture.height);
    } catch (UnknownChoice const&) {
        throw;
    } catch (std::runtime_error const&) {
        if (!odd) {
            throw;
        }
        open_(codec, container, evenUp(settings.picture.width), evenUp(settings.picture.height));
        extended_ = true;
    }
}

void Encoder::open_(AVCodec const& codec, AVOutputFormat const& container, int width, int height)
{
    context_.reset(avcodec_alloc_context3(&codec));
    if (!context_) {
        throw std::bad_alloc();
    }
    AVCodecContext& context = *context_;
    context.width = width;
    context.height = height;
    if (HardwareFrames::needed(codec)) {
        hardware_.emplace(codec, context);
    } else {
        context.pix_fmt = choosePixelFormat(codec);
    }
    context.framerate = settings_.frameRate;
    context.time_base = countsFrames(codec.id) ? av_inv_q(settings_.frameRate) : settings_.timeBase;
    context.sample_aspect_ratio = settings_.picture.sampleAspect;
    context.color_range = settings_.picture.color.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    context.colorspace = settings_.picture.colorSpace;
    context.color_primaries = settings_.picture.primaries;
    context.color_trc = settings_.picture.transfer;
    context.chroma_sample_location = settings_.picture.chromaLocation;
    if (settings_.inOrder) {
        context.max_b_frames = 0;
    }
    context.strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    if (settings_.picture.interlaced) {
        context.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
        context.field_order = settings_.picture.topFieldFirst ? AV_FIELD_TT : AV_FIELD_BB;
    }
    if ((container.flags & AVFMT_GLOBALHEADER) != 0) {
        context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    applyChoice(settings_.choice, context, codec);
    int const result = avcodec_open2(&context, &codec, nullptr);
    if (result < 0) {
        // What drivers and their wrappers answer says nothing of what is wrong.
        throw std::runtime_error(
            needsDevice(codec) ? std::string(codec.name) + ": no device or driver that encodes pictures of " +
                                     sizeText(width, height) + " was found here (" + errorText(result) +
                                     "); choose a software encoder with --video-codec, such as libx264"
                               : std::string(codec.name) + " cannot encode pictures of " + sizeText(width, height) +
                                     ": " + errorText(result) + "; choose another encoder with --video-codec");
    }
}

FramePtr Encoder::makePlain_(MappedNV12 const& planes, std::shared_ptr<void const> const& owner)
{
    AVCodecContext const& context = *context_;
    if (owner && !extended_ && takesNv12_()) {
        return borrowPlanes(planes, owner);
    }
    if (!extended_ && !takesNv12_()) {
        FramePtr frame = makePlanes(context.pix_fmt, context.width, context.height);
        converter_.fromNv12(planes, *frame, settings_.picture.color);
        return frame;
    }
    FramePtr frame = makePlanes(AV_PIX_FMT_NV12, context.width, context.height);
    if (extended_) {
        extendToEven(planes, *frame);
    } else {
        copyRows(planes.y, lumaStride(planes), frame->data[0], frame->linesize[0], planes.width, planes.height);
        copyRows(planes.uv, chromaStride(planes), frame->data[1], frame->linesize[1], evenUp(planes.width),
                 evenUp(planes.height) / 2);
    }
    if (takesNv12_()) {
        return frame;
    }
    MappedNV12 const even{frame->data[0], frame->data[1],     context.width,
                          context.height, frame->linesize[0], frame->linesize[1]};
    FramePtr converted = makePlanes(context.pix_fmt, context.width, context.height);
    converter_.fromNv12(even, *converted, settings_.picture.color);
    return converted;
}

void Encoder::encode(MappedNV12 const& planes, std::int64_t ticks, PacketSink const& sink,
                     std::shared_ptr<void const> const& owner)
{
    if (!lastTicks_ && countsFrames(context_->codec_id)) {
        offset_ = ticks;  // the first frame need not lie on a multiple of the frame interval
    }
    std::int64_t own = av_rescale_q(ticks - offset_, settings_.timeBase, context_->time_base);
    if (lastTicks_ && own <= *lastTicks_) {
        own = *lastTicks_ + 1;
    }
    lastTicks_ = own;
    FramePtr const plain = makePlain_(planes, owner);
    FramePtr const uploaded = hardware_ ? hardware_->upload(*plain) : nullptr;
    FramePtr const& frame = uploaded ? uploaded : plain;
    frame->pts = own;
    frame->color_range = context_->color_range;
    frame->colorspace = context_->colorspace;
    frame->quality = context_->global_quality;
    frame->interlaced_frame = settings_.picture.interlaced ? 1 : 0;
    frame->top_field_first = settings_.picture.topFieldFirst ? 1 : 0;
    int const result = avcodec_send_frame(context_.get(), frame.get());
    if (result < 0) {
        throw std::runtime_error(std::string(context_->codec->name) + " cannot encode: " + errorText(result) +
                                 "; choose another encoder with --video-codec");
    }
    drain_(sink);
}

void Encoder::flush(PacketSink const& sink)
{
    avcodec_send_frame(context_.get(), nullptr);
    drain_(sink);
}

void Encoder::drain_(PacketSink const& sink)
{
    for (;;) {
        int const result = avcodec_receive_packet(context_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        if (result < 0) {
            throw std::runtime_error(std::string(context_->codec->name) + " cannot encode: " + errorText(result) +
                                     "; choose another encoder with --video-codec");
        }
        av_packet_rescale_ts(packet_.get(), context_->time_base, settings_.timeBase);
        packet_->pts += packet_->pts == AV_NOPTS_VALUE ? 0 : offset_;
        packet_->dts += packet_->dts == AV_NOPTS_VALUE ? 0 : offset_;
        sink(*packet_);
        av_packet_unref(packet_.get());
    }
}

}  // namespace media
