// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Turns compressed video packets into pictures; damaged packets are counted and passed over.
#pragma once

#include "media/ffmpeg_types.h"

#include <cstdint>
#include <string>

namespace media {

struct DecoderChoice {
    int threads = 0;  ///< 0: as many as there are processors. MPEG-1 and MPEG-2 get one: threads would share a picture
    bool lowDelay = false;  ///< a picture comes out as soon as its packet is in, where the stream's order allows it
};

class Decoder {
public:
    /// Throws std::runtime_error naming the codec when it cannot be decoded; `inputName` is for messages.
    Decoder(AVStream const& stream, std::string const& inputName, DecoderChoice const& choice = {});

    /// Takes the next packet in decoding order, or null to say that there are no more. All pictures that
    /// are ready must have been received before.
    void send(AVPacket const* packet);
    /// The next picture in presentation order; false when another packet is needed, or after the last one.
    bool receive(AVFrame& frame);

    /// Pictures per second as the stream itself tells; 0/1 when it does not.
    AVRational frameRate() const { return context_->framerate; }

    /// Ready for a new stream of the same codec, after the last picture of the old one was received.
    void restart();

    /// Packets that could not be decoded, and pictures that came out damaged.
    std::uint64_t damaged() const { return damaged_; }

private:
    CodecPtr context_;
    std::uint64_t damaged_ = 0;
};

}  // namespace media
