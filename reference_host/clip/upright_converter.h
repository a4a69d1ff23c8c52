// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From decoded pictures to NV12 pictures that stand upright.
#pragma once

#include "Picture.h"
#include "media/demuxer.h"
#include "media/frame_converter.h"
#include "media/orientation.h"
#include "media/picture_traits.h"

#include <memory>

namespace clip {

class UprightConverter {
public:
    /// For pictures of the demuxer's video stream; it must outlive the converter.
    explicit UprightConverter(media::Demuxer const& demuxer) : demuxer_(demuxer) {}

    /// What is known of the picture once it stands upright.
    media::PictureTraits traitsOf(AVFrame const& frame);
    /// Fills `picture`, whose size is the upright one or one to scale to, in the colours that it is to have.
    void convert(AVFrame const& frame, media::ColorFormat color, zelvo::ZelvoPicture& picture);

    /// Whether pictures are to be shown turned by other than right angles; they are left as they are stored.
    bool slanting() const { return slanting_; }

private:
    media::Orientation orientationOf_(AVFrame const& frame);

    media::Demuxer const& demuxer_;
    media::FrameConverter converter_;
    std::shared_ptr<zelvo::ZelvoPicture> stored_;  ///< one that is still to be turned upright
    bool slanting_ = false;
};

}  // namespace clip
