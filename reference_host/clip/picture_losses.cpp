// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Used by the writers of files and of live outputs when they begin.
#include "clip/picture_losses.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace clip {

std::vector<std::string> describePictures(media::Muxer& muxer, int videoStream, media::Encoder const& encoder,
                                          media::PictureTraits const& traits, std::string const& output)
{
    std::vector<std::string> lines;
    if (encoder.extended()) {
        lines.push_back(output + ": pictures of " + media::sizeText(traits.width, traits.height) + " are stored as " +
                        media::sizeText(encoder.context().width, encoder.context().height) +
                        ", as the encoder takes even sizes only");
    }
    std::string const loss = media::lossInNv12(traits.stored);
    if (!loss.empty()) {
        lines.push_back(output + ": pictures of " + av_get_pix_fmt_name(traits.stored) + " (" + loss +
                        ") are stored with 8 bits, chroma 4:2:0");
    }
    std::string const light = media::lightOf(traits);
    if (!muxer.describeLight(videoStream, traits) && !light.empty()) {
        lines.push_back(output + ": " + muxer.container().name + " cannot carry " + light +
                        " of the pictures; left out (.mp4 and .mkv carry it)");
    }
    if (traits.hasTimecode) {
        lines.push_back(output + ": the time code within the pictures is left out");
    }
    return lines;
}

std::string captionsAreLeftOut(std::string const& output)
{
    return output + ": the captions within the pictures are left out";
}

}  // namespace clip
