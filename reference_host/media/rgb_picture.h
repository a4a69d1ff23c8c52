// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// NV12 pictures in the colours of screens.
#pragma once

#include "Picture.h"
#include "media/ffmpeg_types.h"
#include "media/frame_converter.h"

namespace media {

/// The picture as 8-bit RGB, rows from the top. The converter may be used again.
FramePtr rgbOf(MappedNV12 const& planes, ColorFormat color, FrameConverter& converter);

}  // namespace media
