// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Conversion first, then turning, which is only for whole NV12 pictures.
#include "clip/upright_converter.h"

#include "imaging/imaging_access.h"

#include <optional>

namespace clip {

media::Orientation UprightConverter::orientationOf_(AVFrame const& frame)
{
    std::optional<media::Orientation> const orientation = media::orientationOf(frame, *demuxer_.video());
    slanting_ = slanting_ || !orientation;
    return orientation.value_or(media::Orientation{});
}

media::PictureTraits UprightConverter::traitsOf(AVFrame const& frame)
{
    return media::upright(media::traitsOf(frame), orientationOf_(frame));
}

void UprightConverter::convert(AVFrame const& frame, media::ColorFormat color, zelvo::ZelvoPicture& picture)
{
    media::Orientation const orientation = orientationOf_(frame);
    MappedNV12 const planes = imaging::planesOf(picture);
    if (orientation.isUpright()) {
        converter_.toNv12(frame, planes, color);
        return;
    }
    unsigned const width = orientation.swapsAxes ? picture.height() : picture.width();
    unsigned const height = orientation.swapsAxes ? picture.width() : picture.height();
    if (!stored_ || stored_->width() != width || stored_->height() != height) {
        stored_ = std::make_shared<zelvo::ZelvoPicture>(width, height);
    }
    MappedNV12 const stored = imaging::planesOf(*stored_);
    converter_.toNv12(frame, stored, color);
    media::turnUpright(stored, planes, orientation);
}

}  // namespace clip
