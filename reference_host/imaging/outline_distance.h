// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How far pixels are from an outline: what a pen of any width needs to know.
#pragma once

#include <ft2build.h>
#include FT_OUTLINE_H

#include <cstddef>
#include <vector>

namespace imaging {

/// Distances in pixels from each pixel's centre to the nearest point of `outline`, whose coordinates are in 1/64
/// pixel with the origin at the bottom-left corner of `width` x `height` pixels. Rows from the top. Distances
/// beyond `reach` pixels are not looked for: what stands there lies between `reach` and `reach` + 1.
std::vector<float> distancesTo(FT_Outline const& outline, std::size_t width, std::size_t height, float reach);

}  // namespace imaging
