// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the blocks of a configuration stand on a clip's picture: the plugin draws, the painter is watched.
#pragma once

#include "SwJson.h"
#include "clip/annotated_clip.h"
#include "imaging/imaging_access.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace clip {

/// A block that the plugin draws.
struct DrawnBlock {
    std::size_t number = 0;  ///< of the overlay's items, from 0
    imaging::DrawnText text;
};

/// One picture's blocks, in the order in which they are drawn.
struct DrawnBlocks {
    double seconds = 0.0;  ///< after the clip's first picture
    int width = 0;         ///< of the picture, pixels
    int height = 0;
    std::vector<DrawnBlock> blocks;
};

/// The configuration with each block's number for its text colour, which takes part in nothing but the painting.
SwJsonObject withNumbersForColors(SwJsonObject root);
/// The number of the block that has drawn the text then.
std::size_t numberOf(imaging::DrawnText const& text);
/// For setConfig.
std::string configText(SwJsonObject const& root);

/// The blocks on the picture that is shown at `seconds`; without a time those on the first picture with any, as long as
/// it is among the first 300, else none. `root` is the configuration; source.config does not count. Throws
/// std::runtime_error with one line when the clip cannot be read or is over by then.
DrawnBlocks blocksShownAt(ClipSource source, SwJsonObject const& root, std::optional<double> seconds);

}  // namespace clip
