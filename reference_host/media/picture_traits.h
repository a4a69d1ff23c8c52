// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What is to be known of a clip's pictures beside their contents: what a decoder gives and an encoder takes.
#pragma once

#include "media/ffmpeg_types.h"
#include "media/frame_converter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace media {

struct PictureTraits {
    int width = 0;   ///< pixels
    int height = 0;  ///< pixels
    ColorFormat color;
    AVColorSpace colorSpace = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
    AVRational sampleAspect{0, 1};  ///< width to height of a pixel; 0 when unknown
    bool interlaced = false;
    bool topFieldFirst = false;
    AVPixelFormat stored = AV_PIX_FMT_NONE;  ///< before it became NV12
    bool hasTimecode = false;                ///< within the pictures
    /// What FFmpeg tells of the screen that the pictures were made on and of their light; empty when unknown.
    std::vector<std::uint8_t> masteringDisplay;
    std::vector<std::uint8_t> contentLight;
};

/// What of a pixel format NV12 cannot hold: "10 bits, chroma 4:2:2"; empty when it holds all.
std::string lossInNv12(AVPixelFormat format);

/// What is known of the light of pictures: "the mastering display and the light level"; empty when nothing is.
std::string lightOf(PictureTraits const& traits);

/// The traits of a decoded picture once it is NV12: those of RGB pictures name the matrix that they then have.
PictureTraits traitsOf(AVFrame const& frame);

}  // namespace media
