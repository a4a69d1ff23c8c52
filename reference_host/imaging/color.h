// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pen colours as the luma and chroma of a picture.
#pragma once

#include "imaging/imaging_access.h"

#include <cstdint>

namespace imaging {

struct YCbCr {
    std::uint8_t y = 0;
    std::uint8_t cb = 0;
    std::uint8_t cr = 0;

    friend bool operator==(YCbCr const& a, YCbCr const& b) { return a.y == b.y && a.cb == b.cb && a.cr == b.cr; }
};

/// The colour as a picture of `pictureHeight` lines holds it, each component rounded to the nearest level.
/// Auto is BT.709 for 720 lines and more, BT.601 below. Limited range has luma 16..235 and chroma 16..240.
/// Example: red (255, 0, 0) in BT.709 limited range is {63, 102, 240}.
YCbCr toYCbCr(std::uint8_t r, std::uint8_t g, std::uint8_t b, ColorMatrix matrix, bool fullRange, int pictureHeight);

}  // namespace imaging
