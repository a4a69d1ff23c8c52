// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a person may choose of how texts look, beyond the configuration.
#pragma once

#include <string>

namespace frame {

/// The widest rim that can be asked for.
inline constexpr double kWidestOutline = 32.0;

struct Look {
    std::string font;      ///< family as fontconfig knows it; empty: the painter's own
    double outline = 0.0;  ///< width of the dark rim around texts, in pixels of a picture of 1080 lines; 0: none
};

/// The rim on a picture of so many lines, in its own pixels: scaled like the texts, to the nearest pixel, and at least
/// one where any is asked for. Example: 1.5 is 3 on 2160 lines.
int outlinePixels(Look const& look, unsigned pictureHeight);

}  // namespace frame
