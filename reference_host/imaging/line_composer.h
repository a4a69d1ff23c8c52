// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lines as one coverage picture: glyphs laid over each other, and the chroma coverage that follows.
#pragma once

#include "imaging/geometry.h"
#include "imaging/nv12_blend.h"
#include "imaging/typesetter.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace imaging {

/// Coverage ready to be blended. Rows and columns of the spans count from (left, top), which are even in the
/// picture, so that chroma stands at half of both.
struct CoverageView {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::span<Span const> lumaSpans;
    std::span<Span const> chromaSpans;
    std::uint8_t const* luma = nullptr;
    std::uint8_t const* chroma = nullptr;
};

/// A coverage picture of its own that holds only what is covered.
struct PackedCoverage {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::vector<Span> lumaSpans;
    std::vector<Span> chromaSpans;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> chroma;

    CoverageView view() const { return {left, top, lumaSpans, chromaSpans, luma.data(), chroma.data()}; }
    std::size_t bytes() const
    {
        return luma.capacity() + chroma.capacity() + (lumaSpans.capacity() + chromaSpans.capacity()) * sizeof(Span);
    }
};

/// Composes one picture after another: `begin`, `lay` for each line, `finish`.
class LineComposer {
public:
    explicit LineComposer(GlyphCache& glyphs) : glyphs_(glyphs) {}

    /// Starts an empty coverage picture of `window`, a part of `picture`, both in the target's pixels.
    void begin(Box const& window, Box const& picture);

    /// Lays the glyphs of a line that starts at (x, y) over what is there, as far as the window shows them.
    void lay(std::span<PlacedGlyph const> placed, LineStyle const& style, std::int64_t x, std::int64_t y);

    /// The picture with its chroma coverage. Where the target ends in the middle of a chroma sample, the sample's
    /// coverage is the mean over its pixels inside. The view is good until the next `begin`.
    CoverageView finish();

    /// A copy that leaves out what is not covered, moved by (-x, -y), both even.
    static PackedCoverage pack(CoverageView const& view, std::int64_t x, std::int64_t y);

private:
    void layGlyph(GlyphImage const& image, std::int64_t left, std::int64_t top);
    void repeatOddEdges();
    void makeChroma();

    GlyphCache& glyphs_;
    Box window_;
    Box picture_;
    // The window with its edges moved outwards to even numbers.
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::size_t stride_ = 0;
    std::vector<std::uint8_t> luma_;
    std::vector<std::uint8_t> chroma_;
    std::vector<Span> lumaSpans_;
    std::vector<Span> chromaSpans_;
};

}  // namespace imaging
