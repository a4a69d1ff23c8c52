// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Quarter turns and flips of NV12 pictures; between the decoder's picture and the one that is drawn on.
#include "media/orientation.h"

#include "media/nv12_strides.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace media {
namespace {

/// A plane of samples of one or two bytes.
struct Plane {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0;   ///< samples
    int height = 0;  ///< samples
};

Plane lumaOf(MappedNV12 const& nv12)
{
    return {nv12.y, lumaStride(nv12), nv12.width, nv12.height};
}

Plane chromaOf(MappedNV12 const& nv12)
{
    int const width = (nv12.width + 1) / 2;
    return {nv12.uv, chromaStride(nv12), width, (nv12.height + 1) / 2};
}

/// Rows are written one after the other; columns are read in blocks, so that the lines of the cache that one of them
/// touches serve the next ones too.
template <std::size_t kBytes>
void turnPlane(Plane const& from, Plane const& to, Orientation orientation)
{
    constexpr int kBlock = 32;
    constexpr auto kStep = static_cast<std::ptrdiff_t>(kBytes);
    // Where the upright picture's first sample stands, and how far it is from there to the next one in its row and in
    // its column.
    bool const fromRight = orientation.swapsAxes ? orientation.flipsY : orientation.flipsX;
    bool const fromBelow = orientation.swapsAxes ? orientation.flipsX : orientation.flipsY;
    std::uint8_t const* const first =
        from.data + (fromBelow ? from.stride * (from.height - 1) : 0) + (fromRight ? kStep * (from.width - 1) : 0);
    std::ptrdiff_t const nextInRow = (orientation.swapsAxes ? from.stride : kStep) * (orientation.flipsX ? -1 : 1);
    std::ptrdiff_t const nextInColumn = (orientation.swapsAxes ? kStep : from.stride) * (orientation.flipsY ? -1 : 1);
    for (int left = 0; left < to.width; left += kBlock) {
        int const right = std::min(left + kBlock, to.width);
        for (int row = 0; row < to.height; ++row) {
            std::uint8_t const* read = first + nextInColumn * row + nextInRow * left;
            std::uint8_t* write = to.data + to.stride * row + kStep * left;
            for (int column = left; column < right; ++column) {
                std::memcpy(write, read, kBytes);
                write += kBytes;
                read += nextInRow;
            }
        }
    }
}

}  // namespace

std::optional<Orientation> orientationOf(std::int32_t const* matrix)
{
    // x' = a x + c y, y' = b x + d y: the numbers 0, 1, 3 and 4 of the matrix are a, b, c and d.
    std::int32_t const a = matrix[0];
    std::int32_t const b = matrix[1];
    std::int32_t const c = matrix[3];
    std::int32_t const d = matrix[4];
    if (b == 0 && c == 0 && a != 0 && d != 0) {
        return Orientation{false, a < 0, d < 0};
    }
    if (a == 0 && d == 0 && b != 0 && c != 0) {
        return Orientation{true, c < 0, b < 0};
    }
    return std::nullopt;
}

std::optional<Orientation> orientationOf(AVFrame const& frame, AVStream const& stream)
{
    constexpr std::size_t kMatrixBytes = 9 * sizeof(std::int32_t);
    AVFrameSideData const* const own = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
    std::size_t size = own == nullptr ? 0 : own->size;
    std::uint8_t const* data = own == nullptr ? nullptr : own->data;
    if (data == nullptr) {
        data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    }
    if (data == nullptr || size < kMatrixBytes) {
        return Orientation{};
    }
    return orientationOf(reinterpret_cast<std::int32_t const*>(data));
}

PictureTraits upright(PictureTraits traits, Orientation orientation)
{
    if (orientation.isUpright()) {
        return traits;
    }
    // Chroma that stood at the left stands at the right, above or below; not all of these have a name.
    bool const centered = traits.chromaLocation == AVCHROMA_LOC_CENTER;
    traits.chromaLocation = centered ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_UNSPECIFIED;
    if (orientation.swapsAxes) {
        std::swap(traits.width, traits.height);
        std::swap(traits.sampleAspect.num, traits.sampleAspect.den);
        if (traits.sampleAspect.den == 0) {
            traits.sampleAspect = {0, 1};
        }
        traits.interlaced = false;
    } else if (orientation.flipsY && traits.height % 2 == 0) {
        traits.topFieldFirst = !traits.topFieldFirst;
    }
    return traits;
}

void turnUpright(MappedNV12 const& from, MappedNV12 const& to, Orientation orientation)
{
    turnPlane<1>(lumaOf(from), lumaOf(to), orientation);
    turnPlane<2>(chromaOf(from), chromaOf(to), orientation);
}

}  // namespace media
