// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Golden pictures: NV12 kept as a grey PGM (luma rows, then rows of interleaved chroma) for the test, and as a PNG
// for people.
#pragma once

#include "test_picture.h"

#include <string>

namespace imaging_test {

/// How like the golden a picture must be. Exact: every byte. Close, for glyph edges that another release of the
/// font library may draw a shade differently: the two limits below.
enum class Likeness { Exact, Close };

/// Largest difference of a single level.
inline constexpr int kCloseLargest = 40;
/// Largest mean difference over all levels.
inline constexpr double kCloseMean = 0.4;

/// Compares with tests/golden/painter/NAME.pgm. Empty when alike, else one line that says how they differ and where
/// the picture and a picture of the differences were written. With the environment variable
/// OVERLAY_UPDATE_GOLDENS the golden and its PNG are written instead.
std::string compareWithGolden(std::string const& name, TestPicture const& picture, Likeness likeness);

}  // namespace imaging_test
