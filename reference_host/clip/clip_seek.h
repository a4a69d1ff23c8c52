// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Brings a clip to any of its frames, exactly as if all pictures before had been drawn: the plugin sees every frame,
// but as far as packets tell the frames nothing is decoded.
#pragma once

#include "clip/annotated_clip.h"

#include <memory>
#include <optional>
#include <string>

namespace clip {

/// Part of a clip, in seconds after its first picture.
struct ClipRange {
    std::optional<double> from;  ///< the first frame at or after it is the first; empty: the clip's
    std::optional<double> to;    ///< the frame at it is not included any more; empty: up to the end
};

/// Opens the clip so that next() gives the frame that is shown at `seconds`: the last one at or before it. Throws
/// std::runtime_error with one line when the clip is over by then.
std::unique_ptr<AnnotatedClip> openShownAt(ClipSource const& source, double seconds);

/// Opens the clip so that next() gives the first frame of the range. Throws std::runtime_error with one line when the
/// clip ends before.
std::unique_ptr<AnnotatedClip> openRange(ClipSource const& source, ClipRange const& range);

/// The next picture of the range; empty when the range or the clip is over.
std::optional<ClipFrame> nextOf(AnnotatedClip& clip, ClipRange const& range);

/// The length of the range in seconds as far as known.
std::optional<double> secondsOf(ClipRange const& range, AnnotatedClip const& clip);

}  // namespace clip
