// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Finds a coverage picture's place in both planes; between the text renderer and the pixel loops.
#include "imaging/coverage_blender.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace imaging {
namespace {

/// Puts the parts of `spans` that lie in `visible` into `cut`.
void cutSpans(std::span<Span const> spans, Box const& visible, std::vector<Span>& cut)
{
    cut.clear();
    for (auto const& span : spans) {
        std::int64_t const begin = std::max<std::int64_t>(span.column, visible.left);
        std::int64_t const end = std::min<std::int64_t>(std::int64_t{span.column} + span.length, visible.right);
        if (span.row >= visible.top && span.row < visible.bottom && begin < end) {
            cut.push_back({span.row, static_cast<std::int32_t>(begin), static_cast<std::int32_t>(end - begin),
                           span.offset + static_cast<std::uint32_t>(begin - span.column)});
        }
    }
}

}  // namespace

void CoverageBlender::blendWhole(MappedNV12 const& target, CoverageView const& view, std::int64_t x, std::int64_t y,
                                 YCbCr const& color)
{
    std::int64_t const left = view.left + x;
    std::int64_t const top = view.top + y;
    PlanePlace const luma{target.y, static_cast<std::ptrdiff_t>(top * target.yStride + left), target.yStride};
    PlanePlace const chroma{target.uv, static_cast<std::ptrdiff_t>(top / 2 * target.uvStride + left), target.uvStride};
    blendLumaSpans(luma, view.lumaSpans.data(), view.lumaSpans.size(), view.luma, color.y);
    blendChromaSpans(chroma, view.chromaSpans.data(), view.chromaSpans.size(), view.chroma, color.cb, color.cr);
}

void CoverageBlender::blendVisible(MappedNV12 const& target, CoverageView const& view, std::int64_t x, std::int64_t y,
                                   YCbCr const& color)
{
    Box const visible = Box{0, 0, target.width, target.height}.movedBy(-view.left - x, -view.top - y);
    cutSpans(view.lumaSpans, visible, cutLuma_);
    cutSpans(view.chromaSpans, {visible.left, visible.top / 2, visible.right, visible.bottom / 2}, cutChroma_);
    auto inside = view;
    inside.lumaSpans = cutLuma_;
    inside.chromaSpans = cutChroma_;
    blendWhole(target, inside, x, y, color);
}

}  // namespace imaging
