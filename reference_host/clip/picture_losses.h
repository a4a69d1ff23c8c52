// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What of a clip's pictures an output does not hold, for people.
#pragma once

#include "media/encoder.h"
#include "media/muxer.h"
#include "media/picture_traits.h"

#include <string>
#include <vector>

namespace clip {

/// To be called when `muxer` has the video stream of this number, which `encoder` fills: describes the pictures' light
/// in it. Returns a line for each thing that is stored in another way or left out; `output` is the name in them.
std::vector<std::string> describePictures(media::Muxer& muxer, int videoStream, media::Encoder const& encoder,
                                          media::PictureTraits const& traits, std::string const& output);

/// The line for captions within the pictures, which nobody draws.
std::string captionsAreLeftOut(std::string const& output);

}  // namespace clip
