// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which encoder is taken and how it is set up, as somebody asks for it on the command line. Used by the encoder.
#pragma once

#include "media/ffmpeg_types.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace media {

/// An encoder or container that cannot be had: the caller asked for something that does not exist.
struct UnknownChoice : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What somebody may choose; without a bit rate and a quality the encoder works near-transparently.
struct EncoderChoice {
    std::string codecName{};  ///< an encoder's name; empty: the best one for the container
    std::string preset{};     ///< the encoder's own name; empty: veryfast where there is one, else its own
    std::optional<std::int64_t> bitRate{};  ///< bits per second
    std::optional<double> crf{};            ///< constant quality, the encoder's own scale
    int threads = 0;                        ///< 0: as many as there are processors
    bool lowDelay = false;                  ///< each picture's packet comes out before the next picture goes in
};

/// The encoder that the choice means for a container. Throws UnknownChoice when there is none.
AVCodec const& encoderFor(EncoderChoice const& choice, AVOutputFormat const& container);

/// Sets an encoder up that is not yet open, whose size and frame rate are known. Throws UnknownChoice for a preset or a
/// quality that it does not take.
void applyChoice(EncoderChoice const& choice, AVCodecContext& context, AVCodec const& codec);

/// Throws UnknownChoice for what the two functions above would refuse; for the time before anything is read or written.
void requirePossible(EncoderChoice const& choice, AVOutputFormat const& container);

}  // namespace media
