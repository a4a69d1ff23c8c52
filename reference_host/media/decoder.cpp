// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Decoding; between frame reader and NV12 conversion.
#include "media/decoder.h"

#include <new>
#include <stdexcept>

namespace media {

namespace {

/// Whether threads of this decoder share a picture: a damaged slice then runs into what others decode, and the same
/// clip gives other pictures each time.
bool sharesPictures(AVCodecID codec)
{
    return codec == AV_CODEC_ID_MPEG1VIDEO || codec == AV_CODEC_ID_MPEG2VIDEO;
}

}  // namespace

Decoder::Decoder(AVStream const& stream, std::string const& inputName, DecoderChoice const& choice)
{
    AVCodec const* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    std::string const codecName = avcodec_get_name(stream.codecpar->codec_id);
    if (codec == nullptr) {
        throw std::runtime_error(inputName + ": video codec " + codecName +
                                 " cannot be decoded here; convert the clip to H.264 first");
    }
    context_.reset(avcodec_alloc_context3(codec));
    if (!context_) {
        throw std::bad_alloc();
    }
    int result = avcodec_parameters_to_context(context_.get(), stream.codecpar);
    if (result >= 0) {
        context_->pkt_timebase = stream.time_base;
        context_->thread_count = sharesPictures(codec->id) ? 1 : choice.threads;
        if (choice.lowDelay) {
            // Threads that work on several pictures at a time give each out as much later.
            context_->thread_type = FF_THREAD_SLICE;
        }
        result = avcodec_open2(context_.get(), codec, nullptr);
    }
    if (result < 0) {
        throw std::runtime_error(inputName + ": video codec " + codecName + " cannot be decoded: " + errorText(result) +
                                 "; convert the clip to H.264 first");
    }
}

void Decoder::send(AVPacket const* packet)
{
    int const result = avcodec_send_packet(context_.get(), packet);
    if (result < 0 && result != AVERROR_EOF) {
        ++damaged_;
    }
}

void Decoder::restart()
{
    avcodec_flush_buffers(context_.get());
}

bool Decoder::receive(AVFrame& frame)
{
    for (;;) {
        int const result = avcodec_receive_frame(context_.get(), &frame);
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return false;
        }
        if (result < 0) {
            ++damaged_;  // a threaded decoder reports a packet's damage here
            continue;
        }
        if (frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0) {
            ++damaged_;
        }
        return true;
    }
}

}  // namespace media
