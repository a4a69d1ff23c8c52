// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bytes from row to row of a mapped picture: 0 in the record means that rows follow each other without a gap.
#pragma once

#include "Picture.h"

namespace media {

inline int lumaStride(MappedNV12 const& planes)
{
    return planes.yStride == 0 ? planes.width : planes.yStride;
}

/// A row of chroma has a pair of bytes for each two columns, the last one of an odd number included.
inline int chromaStride(MappedNV12 const& planes)
{
    return planes.uvStride == 0 ? (planes.width + 1) / 2 * 2 : planes.uvStride;
}

}  // namespace media
