// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From a decoded picture to what the encoder is told; the pictures themselves go through the frame converter.
#include "media/picture_traits.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>

namespace media {
namespace {

std::vector<std::uint8_t> sideDataOf(AVFrame const& frame, AVFrameSideDataType type)
{
    AVFrameSideData const* const data = av_frame_get_side_data(&frame, type);
    return data == nullptr ? std::vector<std::uint8_t>() : std::vector(data->data, data->data + data->size);
}

/// MPEG-2 has one in every group of pictures; a clip that nobody gave one counts from 0.
bool hasTimecode(AVFrame const& frame)
{
    constexpr std::int64_t kDigits = 0xFFEFFF;  // without the marker and the flag for dropped numbers
    std::vector<std::uint8_t> const group = sideDataOf(frame, AV_FRAME_DATA_GOP_TIMECODE);
    std::int64_t first = 0;
    if (group.size() >= sizeof first) {
        std::memcpy(&first, group.data(), sizeof first);
    }
    return (first & kDigits) != 0 || !sideDataOf(frame, AV_FRAME_DATA_S12M_TIMECODE).empty();
}

}  // namespace

std::string lossInNv12(AVPixelFormat format)
{
    AVPixFmtDescriptor const* const description = av_pix_fmt_desc_get(format);
    if (description == nullptr) {
        return "";
    }
    std::string loss;
    int const bits = description->comp[0].depth;
    if (bits > 8) {
        loss = std::to_string(bits) + " bits";
    }
    bool const hasColors = description->nb_components >= 3;
    bool const isRgb = (description->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
    int const across = description->log2_chroma_w;
    int const down = description->log2_chroma_h;
    char const* const chroma = isRgb                      ? "RGB"
                               : across == 0 && down == 0 ? "chroma 4:4:4"
                               : across == 1 && down == 0 ? "chroma 4:2:2"
                               : across == 0 && down == 1 ? "chroma 4:4:0"
                                                          : "";
    if (hasColors && *chroma != '\0') {
        loss += (loss.empty() ? "" : ", ") + std::string(chroma);
    }
    // A palette may have transparent colours; most have none.
    if ((description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0 && (description->flags & AV_PIX_FMT_FLAG_PAL) == 0) {
        loss += (loss.empty() ? "" : ", ") + std::string("alpha");
    }
    return loss;
}

std::string lightOf(PictureTraits const& traits)
{
    std::string text = traits.masteringDisplay.empty() ? "" : "the mastering display";
    if (!traits.contentLight.empty()) {
        text += (text.empty() ? "" : " and ") + std::string("the light level");
    }
    return text;
}

PictureTraits traitsOf(AVFrame const& frame)
{
    PictureTraits traits;
    traits.width = frame.width;
    traits.height = frame.height;
    traits.color = nv12ColorOf(frame);
    traits.colorSpace = frame.colorspace;
    if (frame.colorspace == AVCOL_SPC_RGB) {
        traits.colorSpace = traits.color.bt709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
    traits.primaries = frame.color_primaries;
    traits.transfer = frame.color_trc;
    traits.chromaLocation = frame.chroma_location;
    traits.sampleAspect = frame.sample_aspect_ratio;
    traits.interlaced = frame.interlaced_frame != 0;
    traits.topFieldFirst = frame.top_field_first != 0;
    traits.stored = static_cast<AVPixelFormat>(frame.format);
    traits.hasTimecode = hasTimecode(frame);
    traits.masteringDisplay = sideDataOf(frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA);
    traits.contentLight = sideDataOf(frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
    return traits;
}

}  // namespace media
