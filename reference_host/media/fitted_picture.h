// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures of one shape in those of another: as large as they fit, in the middle, with black bars.
#pragma once

#include "Picture.h"
#include "media/frame_converter.h"

namespace media {

/// A part of a picture; all numbers are even.
struct FittedBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    friend bool operator==(FittedBox const&, FittedBox const&) = default;
};

/// Where a picture of `width` to `height` pixels stands in one of `outerWidth` to `outerHeight`: 4:3 pictures of
/// 640x480 in 1920x1080 stand at 240,0 with 1440x1080. Pixels need not be square; those that are not known to be
/// otherwise (0) are.
FittedBox fitInto(int outerWidth, int outerHeight, AVRational outerPixel, int width, int height, AVRational pixel);

/// Copies `inner` to its place in `outer`, which is black elsewhere.
void placeInto(MappedNV12 const& outer, FittedBox const& box, MappedNV12 const& inner, ColorFormat color);

}  // namespace media
