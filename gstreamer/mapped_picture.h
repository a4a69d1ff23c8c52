// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A buffer's planes, to be drawn on where they lie.
#pragma once

#include "Picture.h"

#include <gst/video/video.h>

namespace gst_overlay {

/// Mapped from the first planes() on, as long as this lives.
class MappedPicture {
public:
    MappedPicture(GstVideoInfo const& info, GstBuffer*& buffer) : info_(info), buffer_(buffer) {}
    ~MappedPicture();
    MappedPicture(MappedPicture const&) = delete;
    MappedPicture& operator=(MappedPicture const&) = delete;

    /// A buffer that others read too is copied first; null planes when it cannot be mapped.
    MappedNV12 planes();
    bool failed() const { return failed_; }

private:
    GstVideoInfo const& info_;
    GstBuffer*& buffer_;
    GstVideoFrame frame_{};
    bool mapped_ = false;
    bool failed_ = false;
};

}  // namespace gst_overlay
