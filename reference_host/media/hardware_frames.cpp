// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Devices and their picture memory, by what the libraries know of each encoder.
#include "media/hardware_frames.h"

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/pixdesc.h>
}

#include <new>
#include <stdexcept>
#include <string>

namespace media {
namespace {

/// Pictures that an encoder may work on at a time.
constexpr int kPoolSize = 20;

/// How the encoder wants its device; null when none is known.
AVCodecHWConfig const* framesConfigOf(AVCodec const& codec)
{
    for (int index = 0;; ++index) {
        AVCodecHWConfig const* const config = avcodec_get_hw_config(&codec, index);
        if (config == nullptr || (config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_FRAMES_CTX) != 0) {
            return config;
        }
    }
}

[[noreturn]] void fail(AVCodec const& codec, int code)
{
    throw std::runtime_error(std::string(codec.name) + ": no device or driver for it was found here (" +
                             errorText(code) + "); choose a software encoder with --video-codec, such as libx264");
}

}  // namespace

bool HardwareFrames::needed(AVCodec const& codec)
{
    if (codec.pix_fmts == nullptr) {
        return false;
    }
    for (AVPixelFormat const* format = codec.pix_fmts; *format != AV_PIX_FMT_NONE; ++format) {
        AVPixFmtDescriptor const* const description = av_pix_fmt_desc_get(*format);
        if (description != nullptr && (description->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0) {
            return false;
        }
    }
    return true;
}

HardwareFrames::HardwareFrames(AVCodec const& codec, AVCodecContext& context)
{
    AVCodecHWConfig const* const config = framesConfigOf(codec);
    if (config == nullptr) {
        fail(codec, AVERROR(ENOSYS));
    }
    AVBufferRef* device = nullptr;
    int result = av_hwdevice_ctx_create(&device, config->device_type, nullptr, nullptr, 0);
    if (result < 0) {
        fail(codec, result);
    }
    frames_.reset(av_hwframe_ctx_alloc(device));
    av_buffer_unref(&device);
    if (!frames_) {
        throw std::bad_alloc();
    }
    auto& frames = *static_cast<AVHWFramesContext*>(static_cast<void*>(frames_->data));
    frames.format = config->pix_fmt;
    frames.sw_format = AV_PIX_FMT_NV12;
    frames.width = context.width;
    frames.height = context.height;
    frames.initial_pool_size = kPoolSize;
    result = av_hwframe_ctx_init(frames_.get());
    if (result < 0) {
        fail(codec, result);
    }
    context.pix_fmt = config->pix_fmt;
    context.hw_frames_ctx = av_buffer_ref(frames_.get());
}

FramePtr HardwareFrames::upload(AVFrame const& nv12) const
{
    FramePtr frame = makeFrame();
    int result = av_hwframe_get_buffer(frames_.get(), frame.get(), 0);
    if (result >= 0) {
        result = av_hwframe_transfer_data(frame.get(), &nv12, 0);
    }
    if (result < 0) {
        throw std::runtime_error("a picture cannot be handed to the encoder's device: " + errorText(result) +
                                 "; choose another encoder with --video-codec");
    }
    return frame;
}

}  // namespace media
