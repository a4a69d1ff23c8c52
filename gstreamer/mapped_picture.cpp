// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// NV12 of GStreamer as the plugin's host knows it.
#include "mapped_picture.h"

#include <cstdint>

namespace gst_overlay {

MappedPicture::~MappedPicture()
{
    if (mapped_) {
        gst_video_frame_unmap(&frame_);
    }
}

MappedNV12 MappedPicture::planes()
{
    buffer_ = gst_buffer_make_writable(buffer_);
    mapped_ = gst_video_frame_map(&frame_, &info_, buffer_, GST_MAP_READWRITE) != FALSE;
    if (!mapped_) {
        failed_ = true;
        return {};
    }
    return {static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, 0)),
            static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, 1)),
            GST_VIDEO_FRAME_WIDTH(&frame_),
            GST_VIDEO_FRAME_HEIGHT(&frame_),
            GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, 0),
            GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, 1)};
}

}  // namespace gst_overlay
