// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Owners for the handles of the FFmpeg libraries, so that no unit frees one by hand.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace media {

struct FfmpegDelete {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(SwsContext* context) const { sws_freeContext(context); }
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};

using FramePtr = std::unique_ptr<AVFrame, FfmpegDelete>;
using PacketPtr = std::unique_ptr<AVPacket, FfmpegDelete>;
using CodecPtr = std::unique_ptr<AVCodecContext, FfmpegDelete>;
using ScalerPtr = std::unique_ptr<SwsContext, FfmpegDelete>;
using InputPtr = std::unique_ptr<AVFormatContext, FfmpegDelete>;

/// An empty frame or packet; throws std::bad_alloc when there is no memory.
FramePtr makeFrame();
PacketPtr makePacket();
/// A packet of its own with these bytes, decoded and presented at `ticks`.
PacketPtr makePacket(std::span<std::uint8_t const> bytes, std::int64_t ticks);

/// The time of a tick count: secondsOf(195030, {1, 90000}) is 2.167, the double nearest to the quotient.
constexpr double secondsOf(std::int64_t ticks, AVRational timeBase)
{
    return static_cast<double>(ticks) * timeBase.num / timeBase.den;
}

/// As people write the size of a picture: "1920x1080".
std::string sizeText(int width, int height);

/// What an FFmpeg error code means: errorText(AVERROR(ENOENT)) is "No such file or directory".
std::string errorText(int code);

/// Keeps the libraries' own messages off standard error: the program reports in its own words, one line
/// per matter. Called once, before anything else of this folder.
void quietLibraries();

}  // namespace media
