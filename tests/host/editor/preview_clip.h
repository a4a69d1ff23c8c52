// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The clip that the preview's tests go about in.
#pragma once

#include "clip/annotated_clip.h"

#include <string>

namespace editor_test {

inline constexpr int kFrames = 260;

/// 320x240 at 25 frames per second, with telemetry that turns, has gaps and keys that come and go; made by this
/// encoder, empty: the container's best. Gives the path.
std::string makeClip(std::string const& path, std::string const& codec = {});

clip::ClipSource sourceOf(std::string const& input, std::string const& config = {});

}  // namespace editor_test
