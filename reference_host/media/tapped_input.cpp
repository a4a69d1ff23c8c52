// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reading and seeking through the tap; between protocol and demuxer.
#include "media/tapped_input.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <new>

namespace media {
namespace {

constexpr int kBufferBytes = 32768;

}  // namespace

TappedInput::TappedInput(AVIOContext& inner, ArrivalTimes* arrivals)
    : inner_(inner)
    , arrivals_(arrivals)
    , buffer_(kBufferBytes)
{
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    bool const canSeek = (inner.seekable & AVIO_SEEKABLE_NORMAL) != 0;
    context_ = avio_alloc_context(buffer, kBufferBytes, 0, this, &TappedInput::onRead, nullptr,
                                  canSeek ? &TappedInput::onSeek : nullptr);
    if (context_ == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    context_->seekable = inner.seekable;
}

TappedInput::~TappedInput()
{
    av_freep(static_cast<void*>(&context_->buffer));
    avio_context_free(&context_);
}

int TappedInput::onRead(void* self, std::uint8_t* bytes, int size)
{
    TappedInput& input = *static_cast<TappedInput*>(self);
    int const got = input.read_(bytes, size);
    if (got > 0 && input.arrivals_ != nullptr) {
        input.arrivals_->came(got, ArrivalTimes::Clock::now());
    }
    return got;
}

int TappedInput::read_(std::uint8_t* bytes, int size)
{
    for (;;) {
        std::size_t const taken = tap_.take({bytes, static_cast<std::size_t>(size)});
        if (taken > 0) {
            return static_cast<int>(taken);
        }
        if (tap_.isIdle()) {
            return avio_read_partial(&inner_, bytes, size);
        }
        int const got = avio_read_partial(&inner_, buffer_.data(), static_cast<int>(buffer_.size()));
        if (got > 0) {
            tap_.push({buffer_.data(), static_cast<std::size_t>(got)});
            continue;
        }
        if (got != 0 && got != AVERROR_EOF) {
            return got;
        }
        tap_.end();
        std::size_t const rest = tap_.take({bytes, static_cast<std::size_t>(size)});
        return rest > 0 ? static_cast<int>(rest) : AVERROR_EOF;
    }
}

std::int64_t TappedInput::onSeek(void* self, std::int64_t offset, int whence)
{
    TappedInput& input = *static_cast<TappedInput*>(self);
    if ((whence & AVSEEK_SIZE) != 0) {
        return avio_size(&input.inner_);
    }
    std::int64_t const place = avio_seek(&input.inner_, offset, whence & ~AVSEEK_FORCE);
    if (place >= 0) {
        input.tap_.jump();
    }
    return place;
}

}  // namespace media
