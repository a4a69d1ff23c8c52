// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Coverage into the picture: one colour through a coverage picture, cut where the target ends.
#pragma once

#include "Picture.h"
#include "imaging/color.h"
#include "imaging/geometry.h"
#include "imaging/line_composer.h"

#include <cstdint>
#include <vector>

namespace imaging {

class CoverageBlender {
public:
    /// Blends `color` into `target` by the view's coverage, moved by (x, y), both even. All spans lie in the target.
    void blendWhole(MappedNV12 const& target, CoverageView const& view, std::int64_t x, std::int64_t y,
                    YCbCr const& color);

    /// The same for a view that may reach beyond the target: only what lies inside is blended. An odd last column or
    /// row of the target halves samples of chroma; the view must have no ink there.
    void blendVisible(MappedNV12 const& target, CoverageView const& view, std::int64_t x, std::int64_t y,
                      YCbCr const& color);

private:
    // The parts inside the picture of spans that its edges cut.
    std::vector<Span> cutLuma_;
    std::vector<Span> cutChroma_;
};

}  // namespace imaging
