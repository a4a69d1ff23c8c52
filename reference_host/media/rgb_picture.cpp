// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The one way from NV12 to what people look at: files and the editor show the same.
#include "media/rgb_picture.h"

#include <new>

namespace media {

FramePtr rgbOf(MappedNV12 const& planes, ColorFormat color, FrameConverter& converter)
{
    FramePtr rgb = makeFrame();
    rgb->format = AV_PIX_FMT_RGB24;
    rgb->width = planes.width;
    rgb->height = planes.height;
    if (av_frame_get_buffer(rgb.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    converter.fromNv12(planes, *rgb, color);
    return rgb;
}

}  // namespace media
