// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The undrawn pictures of a clip by their frames' numbers, in any order; going on costs one decoded picture.
#pragma once

#include "Picture.h"
#include "clip/annotated_clip.h"
#include "clip/clip_frames.h"
#include "media/frame_converter.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

namespace clip {

struct UndrawnPicture {
    std::size_t number = 0;  ///< of its frame, from 0
    std::shared_ptr<zelvo::ZelvoPicture> picture;
    media::ColorFormat color;
};

class FramePictures {
public:
    /// Opens nothing yet. `frames` are the clip's and must outlive the pictures.
    FramePictures(ClipSource const& source, ClipFrames const& frames, FramesFrom from);
    ~FramePictures();
    FramePictures(FramePictures const&) = delete;
    FramePictures& operator=(FramePictures const&) = delete;

    /// The picture of a frame that is known; it must not be drawn on. The last few are kept for going back. Null when
    /// the decoder does not give what the packets told: then everything has to be found by decoding. Throws
    /// std::runtime_error with one line when the clip cannot be read.
    UndrawnPicture const* at(std::size_t number);

private:
    struct Opened;

    UndrawnPicture const* kept_(std::size_t number) const;
    std::size_t beginFor_(std::size_t number) const;
    bool isNear_(std::size_t number) const;
    bool open_(std::size_t number);
    bool take_(bool keep);
    void keep_(AVFrame const& decoded);
    std::size_t mostKept_() const;

    ClipSource const& source_;
    ClipFrames const& frames_;
    FramesFrom from_;
    zelvo::ZelvoPicturePool pool_;
    std::unique_ptr<Opened> opened_;
    std::size_t next_ = 0;  ///< number of the frame that the open decoder gives next
    std::deque<UndrawnPicture> recent_;
};

}  // namespace clip
