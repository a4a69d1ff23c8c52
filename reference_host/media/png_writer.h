// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes one picture as a PNG file.
#pragma once

#include "Picture.h"
#include "media/frame_converter.h"

#include <string>

namespace media {

/// Writes the picture as 8-bit RGB under `path`, whole or not at all. Throws std::runtime_error with one
/// line that names the file and the cure.
void writePng(std::string const& path, MappedNV12 const& planes, ColorFormat color);

}  // namespace media
