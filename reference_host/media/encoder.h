// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Compresses NV12 pictures with any video encoder of the FFmpeg libraries.
#pragma once

#include "Picture.h"
#include "media/encoder_choice.h"
#include "media/ffmpeg_types.h"
#include "media/frame_converter.h"
#include "media/hardware_frames.h"
#include "media/picture_traits.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace media {

struct EncoderSettings {
    EncoderChoice choice;
    PictureTraits picture;
    AVRational frameRate{25, 1};
    AVRational timeBase{1, 90000};  ///< of the times passed to encode()
    bool inOrder = false;           ///< pictures are sent in the order in which they are shown
};

class Encoder {
public:
    using PacketSink = std::function<void(AVPacket&)>;

    /// Opens the encoder for a container. Throws UnknownChoice when the name, or the option for it, does
    /// not exist; std::runtime_error when the encoder refuses the pictures.
    Encoder(EncoderSettings const& settings, AVOutputFormat const& container);

    /// Encodes one picture shown at `ticks` of the settings' time base; a time that does not rise is moved
    /// on by one tick. The planes must hold the settings' size. With an `owner` they are not copied if the encoder
    /// takes NV12: they must stay as they are until it has let the owner go.
    void encode(MappedNV12 const& planes, std::int64_t ticks, PacketSink const& sink,
                std::shared_ptr<void const> const& owner = nullptr);
    /// Gives out what the encoder still holds; called once, at the end.
    void flush(PacketSink const& sink);

    /// The opened encoder. The packets' times are in the settings' time base, whatever the encoder counts in.
    AVCodecContext const& context() const { return *context_; }
    /// Whether an odd width or height was extended by a repeated column or row, which this encoder needs.
    bool extended() const { return extended_; }

private:
    void open_(AVCodec const& codec, AVOutputFormat const& container, int width, int height);
    void drain_(PacketSink const& sink);
    FramePtr makePlain_(MappedNV12 const& planes, std::shared_ptr<void const> const& owner);
    bool takesNv12_() const { return hardware_ || context_->pix_fmt == AV_PIX_FMT_NV12; }

    EncoderSettings settings_;
    CodecPtr context_;
    std::optional<HardwareFrames> hardware_;
    FrameConverter converter_;
    PacketPtr packet_;
    bool extended_ = false;
    std::int64_t offset_ = 0;  ///< what the encoder's time 0 is, in the settings' time base
    std::optional<std::int64_t> lastTicks_;
};

}  // namespace media
