// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Turns pictures upright: cameras store them as their sensor lies and say beside them how they are to be shown.
#pragma once

#include "Picture.h"
#include "media/ffmpeg_types.h"
#include "media/picture_traits.h"

#include <optional>

namespace media {

/// How a stored picture becomes the one that is shown. The one of a picture that is shown as it is stored has the
/// default values. A quarter turn clockwise, for example: {true, true, false}.
struct Orientation {
    bool swapsAxes = false;  ///< rows become columns, before the flips
    bool flipsX = false;     ///< what is left in the picture is shown on the right
    bool flipsY = false;     ///< what is above is shown below

    bool isUpright() const { return !swapsAxes && !flipsX && !flipsY; }
    friend bool operator==(Orientation const&, Orientation const&) = default;
};

/// The orientation of a display matrix of nine numbers, as FFmpeg gives them; empty when it turns by other than right
/// angles, which leaves the picture as it is stored.
std::optional<Orientation> orientationOf(std::int32_t const* matrix);

/// The orientation of a picture of the stream: the picture's own, else the stream's. Empty as above.
std::optional<Orientation> orientationOf(AVFrame const& frame, AVStream const& stream);

/// What the picture is once it is upright: sizes and pixel shape swap with the axes, and lines that became columns are
/// no fields any more.
PictureTraits upright(PictureTraits traits, Orientation orientation);

/// Writes the picture upright. `to` has the size of `from`, swapped when the axes are.
void turnUpright(MappedNV12 const& from, MappedNV12 const& to, Orientation orientation);

}  // namespace media
