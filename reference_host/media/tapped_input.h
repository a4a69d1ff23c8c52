// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// An input whose bytes go through a TransportTap before the demuxer sees them.
#pragma once

#include "media/arrival_times.h"
#include "media/ffmpeg_types.h"
#include "media/transport_tap.h"

#include <cstdint>

namespace media {

class TappedInput {
public:
    /// `inner`, which must outlive this, is what is read from. With `arrivals`, which must too, notes there when each
    /// byte came.
    explicit TappedInput(AVIOContext& inner, ArrivalTimes* arrivals = nullptr);
    ~TappedInput();
    TappedInput(TappedInput const&) = delete;
    TappedInput& operator=(TappedInput const&) = delete;

    /// What the demuxer reads from.
    AVIOContext* context() { return context_; }
    TransportTables const& tables() const { return tap_.tables(); }

private:
    static int onRead(void* self, std::uint8_t* bytes, int size);
    static std::int64_t onSeek(void* self, std::int64_t offset, int whence);
    int read_(std::uint8_t* bytes, int size);

    AVIOContext& inner_;
    ArrivalTimes* arrivals_;
    AVIOContext* context_;
    TransportTap tap_;
    Bytes buffer_;
};

}  // namespace media
