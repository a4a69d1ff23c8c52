// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Draws laid out texts, from remembered coverage where there is some; the painter's texts end up here.
#include "imaging/text_renderer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace imaging {

TextRenderer::TextRenderer()
    : shaper_(fonts_)
    , glyphs_(fonts_)
    , typesetter_(shaper_, glyphs_)
    , layout_(fonts_, typesetter_)
    , composer_(glyphs_)
{
}

void TextRenderer::openFonts(std::string const& family)
{
    fonts_.open(family);
    shaper_.clear();
    glyphs_.clear();
    layout_.clear();
    composed_.clear();
}

CachedBytes TextRenderer::cachedBytes() const
{
    return {glyphs_.cachedBytes(), shaper_.cachedBytes(), composed_.bytes(), layout_.cachedBytes(),
            typesetter_.cachedBytes()};
}

bool TextRenderer::isReady(std::string_view text, LineStyle const& style)
{
    if (text.empty() || style.pixelSize < 1 || style.pixelSize > kLargestPixelSize) {
        return false;
    }
    if (!fonts_.isOpen()) {
        try {
            openFonts("");
        } catch (std::runtime_error const&) {
            return false;
        }
    }
    return true;
}

std::optional<Box> TextRenderer::measure(std::string_view text, int x, int y, LineStyle const& style)
{
    if (!isReady(text, style)) {
        return std::nullopt;
    }
    layout_.set(text, x, y, style);
    glyphs_.forgetLent();
    return layout_.box();
}

void TextRenderer::draw(MappedNV12 const& target, std::string_view text, int x, int y, LineStyle const& style,
                        YCbCr const& color)
{
    if (!isReady(text, style)) {
        return;
    }
    layout_.set(text, x, y, style);
    for (auto const& group : layout_.groups()) {
        drawGroup(target, group, color);
    }
    glyphs_.forgetLent();
}

void TextRenderer::drawGroup(MappedNV12 const& target, LineGroup const& group, YCbCr const& color)
{
    Box const picture{0, 0, target.width, target.height};
    Box const ink = layout_.inkOf(group);
    Box const window = intersectionOf(ink, picture);
    if (window.isEmpty()) {
        return;
    }
    // A sample of chroma that the picture's edge halves has the coverage of fewer pixels than a remembered one.
    bool const hasWholeSamples =
        window.right <= floorToEven(target.width) && window.bottom <= floorToEven(target.height);
    auto const* const known = hasWholeSamples ? remembered(group) : nullptr;
    if (known == nullptr) {
        drawInBands(target, group, window, color);
        return;
    }
    auto const origin = layout_.originOf(group);
    if (picture.contains(ink)) {
        blender_.blendWhole(target, known->view(), floorToEven(origin.x), floorToEven(origin.y), color);
    } else {
        blender_.blendVisible(target, known->view(), floorToEven(origin.x), floorToEven(origin.y), color);
    }
}

void TextRenderer::drawInBands(MappedNV12 const& target, LineGroup const& group, Box const& window, YCbCr const& color)
{
    Box const picture{0, 0, target.width, target.height};
    std::int64_t const bandRows = std::max<std::int64_t>(2, floorToEven(kBandBytes / (window.width() + 64)));
    for (std::int64_t top = window.top; top < window.bottom;) {
        std::int64_t const bottom = std::min(floorToEven(top) + bandRows, window.bottom);
        blender_.blendWhole(target, compose(group, {window.left, top, window.right, bottom}, picture), 0, 0, color);
        top = bottom;
    }
}

/// Null for a group that is drawn the first time, and for one too large to be remembered.
PackedCoverage const* TextRenderer::remembered(LineGroup const& group)
{
    LineKey const key = layout_.keyOf(group);
    if (auto const* const known = composed_.find(key)) {
        return known;
    }
    bool const isSmall =
        group.text.size() <= kLongestKeptLine && group.ink.width() <= kLargestKeptLine / group.ink.height();
    if (!isSmall || !composed_.isAskedForAgain(key)) {
        return nullptr;
    }
    auto coverage = pack(group);
    layout_.keepMeasures(group);
    return &composed_.keep(key, std::move(coverage));
}

/// Composes the group as a picture shows it that is nowhere near its end.
PackedCoverage TextRenderer::pack(LineGroup const& group)
{
    Box const ink = layout_.inkOf(group);
    Box const around{floorToEven(ink.left), floorToEven(ink.top), ceilToEven(ink.right), ceilToEven(ink.bottom)};
    auto const origin = layout_.originOf(group);
    return LineComposer::pack(compose(group, ink, around), floorToEven(origin.x), floorToEven(origin.y));
}

CoverageView TextRenderer::compose(LineGroup const& group, Box const& window, Box const& picture)
{
    composer_.begin(window, picture);
    layout_.layGlyphs(group, composer_);
    return composer_.finish();
}

}  // namespace imaging
