// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the blocks of a configuration stand on a picture: what a person cannot read, and positions that would place a
// block better. Knows boxes only; who draws them is not its concern.
#pragma once

#include "check/member.h"

#include <cstddef>
#include <string>
#include <vector>

namespace check {

struct PictureSize {
    int width = 0;
    int height = 0;
};

/// A block as it stands on the picture, in pixels.
struct PlacedBlock {
    std::size_t number = 0;  ///< of the overlay's items, from 0
    int anchorX = 0;         ///< where "position" puts it: even
    int anchorY = 0;
    int left = 0;  ///< of its box, margin included
    int top = 0;
    int right = 0;   ///< behind the last column
    int bottom = 0;  ///< behind the last row
    int textHeight = 0;
};

/// "overlay[2]"
std::string placeOf(PlacedBlock const& block);

/// The box in pixels and in fractions of the picture, and the positions that would centre it, or set it flush right or
/// at the bottom with the margin that it now has at the nearer side, a tenth of the picture at most:
/// `box 12,20 to 336,98 of 1280x720 (0.0094,0.0278 to 0.2625,0.1361); centred "x": 0.3734, "y": 0.4459; flush right
/// "x": 0.7375; at the bottom "y": 0.864`. Axes along which the box is larger than the picture are left out.
std::string boxText(PlacedBlock const& block, PictureSize const& picture);

/// Boxes that the picture's edges cut, that overlap an earlier one, and texts lower than nine pixels.
Findings checkPlacement(std::vector<PlacedBlock> const& blocks, PictureSize const& picture);

}  // namespace check
