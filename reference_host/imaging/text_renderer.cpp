// Lays texts out line by line and draws them through the line cache; the painter's texts end up here.
#include "text_renderer.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

namespace imaging {
namespace {

/// Layouts of longer texts are given back with the next text.
constexpr std::size_t kKeptTextBytes = std::size_t{64} << 10;

std::uint64_t hashOfLine(std::string_view text, LineStyle const& style, int parity)
{
    auto const kind = static_cast<std::uint64_t>(style.pixelSize) << 32 |
                      static_cast<std::uint64_t>(style.thickness) << 8 | static_cast<std::uint64_t>(parity);
    // Never 0, which stands for nothing.
    return joinHash(std::hash<std::string_view>()(text), kind + 1) | 1;
}

void blend(MappedNV12 const& target, CoverageView const& view, std::int64_t left, std::int64_t top, YCbCr const& color)
{
    PlanePlace const luma{target.y, static_cast<std::ptrdiff_t>(top * target.yStride + left), target.yStride};
    PlanePlace const chroma{target.uv, static_cast<std::ptrdiff_t>(top / 2 * target.uvStride + left), target.uvStride};
    blendLumaSpans(luma, view.lumaSpans.data(), view.lumaSpans.size(), view.luma, color.y);
    blendChromaSpans(chroma, view.chromaSpans.data(), view.chromaSpans.size(), view.chroma, color.cb, color.cr);
}

}  // namespace

TextRenderer::TextRenderer()
    : shaper_(fonts_)
    , glyphs_(fonts_)
    , typesetter_(shaper_, glyphs_)
    , composer_(glyphs_)
    , cachedLines_(kLineCacheEntries, kLineCacheBytes)
{
}

void TextRenderer::openFonts(std::string const& family)
{
    fonts_.open(family);
    shaper_.clear();
    glyphs_.clear();
    cachedLines_.clear();
    drawnBefore_.fill(0);
    text_.clear();
    lines_.clear();
}

CachedBytes TextRenderer::cachedBytes() const
{
    return {glyphs_.cachedBytes(), shaper_.cachedBytes(), cachedLines_.bytes()};
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
    layOut(text, x, y, style);
    return box_.movedBy(x, y);
}

void TextRenderer::draw(MappedNV12 const& target, std::string_view text, int x, int y, LineStyle const& style,
                        YCbCr const& color)
{
    if (!isReady(text, style)) {
        return;
    }
    layOut(text, x, y, style);
    for (auto& line : lines_) {
        drawLine(target, line, color);
    }
}

void TextRenderer::layOut(std::string_view text, int x, int y, LineStyle const& style)
{
    bool const same = text == text_ && style == style_;
    if (same && x == x_ && y == y_) {
        return;
    }
    if (text_.size() > kKeptTextBytes) {
        std::string().swap(text_);
        std::vector<Line>().swap(lines_);
        std::vector<PlacedGlyph>().swap(placed_);
    }
    text_ = text;
    style_ = style;
    x_ = x;
    y_ = y;
    lines_.clear();
    placed_.clear();
    box_ = {};

    auto const metrics = fonts_.lineMetrics(style.pixelSize);
    int const reach = style.reach();
    std::int64_t const pitch = std::int64_t{metrics.ascent} + metrics.descent + 2 * reach;
    std::string_view rest = text_;
    for (std::int64_t top = 0;; top += pitch) {
        auto const end = rest.find('\n');
        auto lineText = rest.substr(0, end);
        if (lineText.ends_with('\r')) {
            lineText.remove_suffix(1);
        }
        layOutLine(lineText, top + reach + metrics.ascent);
        auto const& set = lines_.back().set;
        box_.right = std::max(box_.right, set.advance + 2 * reach);
        box_.bottom = top + pitch;
        if (end == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(end + 1);
    }
    for (auto const& line : lines_) {
        if (!line.set.ink.isEmpty()) {
            Box const ink = line.set.ink.movedBy(reach, line.baseline);
            box_ = {std::min(box_.left, ink.left), std::min(box_.top, ink.top), std::max(box_.right, ink.right),
                    std::max(box_.bottom, ink.bottom)};
        }
    }
}

void TextRenderer::layOutLine(std::string_view text, std::int64_t baseline)
{
    Line line{text, baseline, {}, 0, false, 0, 0};
    line.hash = hashOfLine(text, style_, parityOf(line));
    if (auto const* const cached = findCached(line)) {
        line.set = cached->set;
    } else {
        place(line);
    }
    lines_.push_back(line);
}

void TextRenderer::place(Line& line)
{
    line.firstGlyph = placed_.size();
    line.set = typesetter_.set(line.text, style_, placed_);
    line.glyphCount = placed_.size() - line.firstGlyph;
    line.isPlaced = true;
}

int TextRenderer::parityOf(Line const& line) const
{
    auto const column = std::int64_t{x_} + style_.reach();
    auto const row = y_ + line.baseline;
    return static_cast<int>((column & 1) | (row & 1) << 1);
}

TextRenderer::CachedLine* TextRenderer::findCached(Line const& line)
{
    int const parity = parityOf(line);
    return cachedLines_.find(line.hash, [&](CachedLine const& cached) {
        return cached.parity == parity && cached.style == style_ && cached.text == line.text;
    });
}

void TextRenderer::drawLine(MappedNV12 const& target, Line& line, YCbCr const& color)
{
    std::int64_t const x = std::int64_t{x_} + style_.reach();
    std::int64_t const y = y_ + line.baseline;
    Box const picture{0, 0, target.width, target.height};
    // Inside this box every chroma sample has four pixels.
    Box const whole{0, 0, floorToEven(target.width), floorToEven(target.height)};
    Box const ink = line.set.ink.movedBy(x, y);
    Box const window = intersectionOf(ink, picture);
    if (line.set.ink.isEmpty() || window.isEmpty()) {
        return;
    }
    bool const isWhole = whole.contains(ink);
    if (isWhole) {
        if (auto const* const cached = findCached(line)) {
            auto const view = cached->coverage.view();
            blend(target, view, view.left + floorToEven(x), view.top + floorToEven(y), color);
            return;
        }
    }
    if (!line.isPlaced) {
        place(line);
    }
    std::span<PlacedGlyph const> const glyphs(placed_.data() + line.firstGlyph, line.glyphCount);
    std::int64_t const bandRows = std::max<std::int64_t>(2, floorToEven(kBandBytes / (window.width() + 64)));
    for (std::int64_t top = window.top; top < window.bottom;) {
        std::int64_t const bottom = std::min(floorToEven(top) + bandRows, window.bottom);
        auto const view = composer_.compose(glyphs, style_, x, y, {window.left, top, window.right, bottom}, picture);
        blend(target, view, view.left, view.top, color);
        if (isWhole && top == window.top && bottom == window.bottom) {
            keep(line, view);
        }
        top = bottom;
    }
}

void TextRenderer::keep(Line const& line, CoverageView const& view)
{
    auto& before = drawnBefore_[line.hash >> 1 & (drawnBefore_.size() - 1)];
    if (std::exchange(before, line.hash) != line.hash) {
        return;
    }
    std::int64_t const x = std::int64_t{x_} + style_.reach();
    std::int64_t const y = y_ + line.baseline;
    CachedLine cached{std::string(line.text), style_, parityOf(line), line.set,
                      LineComposer::pack(view, floorToEven(x), floorToEven(y))};
    std::size_t const bytes = sizeof(CachedLine) + cached.text.capacity() + cached.coverage.bytes();
    if (bytes <= kLineCacheBytes / 4) {
        cachedLines_.insert(line.hash, std::move(cached), bytes);
    }
}

}  // namespace imaging
