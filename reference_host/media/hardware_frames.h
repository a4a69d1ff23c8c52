// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures in a device's own memory, for encoders that take no others. Used by the encoder.
#pragma once

#include "media/ffmpeg_types.h"

namespace media {

class HardwareFrames {
public:
    /// Whether the encoder takes only pictures that lie in a device's memory.
    static bool needed(AVCodec const& codec);

    /// Opens the device for pictures of this size and hands both to the encoder, which is not yet open. Throws
    /// std::runtime_error with one line when there is no such device.
    HardwareFrames(AVCodec const& codec, AVCodecContext& context);

    /// A copy of an NV12 picture in the device's memory. Throws std::runtime_error.
    FramePtr upload(AVFrame const& nv12) const;

private:
    struct Unref {
        void operator()(AVBufferRef* reference) const { av_buffer_unref(&reference); }
    };

    std::unique_ptr<AVBufferRef, Unref> frames_;
};

}  // namespace media
