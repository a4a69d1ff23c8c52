// Lays texts out line by line and draws them through the line cache; the painter's texts end up here.
#include "imaging/text_renderer.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

namespace imaging {
namespace {

/// Layouts of longer texts are given back with the next text.
constexpr std::size_t kKeptTextBytes = std::size_t{64} << 10;

std::uint64_t hashOfText(std::string_view text, LineStyle const& style, int parity)
{
    auto const kind = static_cast<std::uint64_t>(style.pixelSize) << 32 |
                      static_cast<std::uint64_t>(style.thickness) << 8 | static_cast<std::uint64_t>(parity);
    return joinHash(std::hash<std::string_view>()(text), kind + 1);
}

void blend(MappedNV12 const& target, CoverageView const& view, std::int64_t left, std::int64_t top, YCbCr const& color)
{
    PlanePlace const luma{target.y, static_cast<std::ptrdiff_t>(top * target.yStride + left), target.yStride};
    PlanePlace const chroma{target.uv, static_cast<std::ptrdiff_t>(top / 2 * target.uvStride + left), target.uvStride};
    blendLumaSpans(luma, view.lumaSpans.data(), view.lumaSpans.size(), view.luma, color.y);
    blendChromaSpans(chroma, view.chromaSpans.data(), view.chromaSpans.size(), view.chroma, color.cb, color.cr);
}

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

TextRenderer::TextRenderer()
    : shaper_(fonts_)
    , glyphs_(fonts_)
    , typesetter_(shaper_, glyphs_)
    , composer_(glyphs_)
    , measures_(kLineCacheEntries, kMeasureCacheBytes)
    , composed_(kLineCacheEntries, kLineCacheBytes)
{
}

void TextRenderer::openFonts(std::string const& family)
{
    fonts_.open(family);
    shaper_.clear();
    glyphs_.clear();
    measures_.clear();
    composed_.clear();
    drawnBefore_.fill(0);
    text_.clear();
    lines_.clear();
    groups_.clear();
}

CachedBytes TextRenderer::cachedBytes() const
{
    return {glyphs_.cachedBytes(), shaper_.cachedBytes(), composed_.bytes(), measures_.bytes(),
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
    layOut(text, x, y, style);
    glyphs_.forgetLent();
    return box_.movedBy(x, y);
}

void TextRenderer::draw(MappedNV12 const& target, std::string_view text, int x, int y, LineStyle const& style,
                        YCbCr const& color)
{
    if (!isReady(text, style)) {
        return;
    }
    layOut(text, x, y, style);
    for (auto const& group : groups_) {
        drawGroup(target, group, color);
    }
    glyphs_.forgetLent();
}

void TextRenderer::layOut(std::string_view text, int x, int y, LineStyle const& style)
{
    bool const sameLines = text == text_ && style == style_;
    bool const sameRows = ((y ^ y_) & 1) == 0;
    x_ = x;
    y_ = y;
    if (sameLines && sameRows) {
        return;
    }
    if (!sameLines) {
        if (text_.size() > kKeptTextBytes) {
            std::string().swap(text_);
            std::vector<Line>().swap(lines_);
            std::vector<Group>().swap(groups_);
            std::vector<PlacedGlyph>().swap(placed_);
        }
        text_ = text;
        style_ = style;
        splitIntoLines();
    }
    groupLines();
}

void TextRenderer::splitIntoLines()
{
    lines_.clear();
    placed_.clear();
    auto const metrics = fonts_.lineMetrics(style_.pixelSize);
    std::int64_t const reach = style_.reach();
    std::int64_t const pitch = std::int64_t{metrics.ascent} + metrics.descent + 2 * reach;
    std::string_view rest = text_;
    box_ = {};
    for (std::int64_t top = 0;; top += pitch) {
        auto const end = rest.find('\n');
        auto line = rest.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        addLine(line, top + reach + metrics.ascent);
        box_.right = std::max(box_.right, lines_.back().set.advance + 2 * reach);
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

void TextRenderer::addLine(std::string_view text, std::int64_t baseline)
{
    Line line{text, baseline, {}, false, 0, 0};
    auto const* const known = measures_.find(hashOfText(text, style_, 0), [&](CachedMeasure const& cached) {
        return cached.style == style_ && cached.text == text;
    });
    if (known != nullptr) {
        line.set = known->set;
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

void TextRenderer::groupLines()
{
    groups_.clear();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        auto const& line = lines_[i];
        if (line.set.ink.isEmpty()) {
            continue;
        }
        Box const ink = line.set.ink.movedBy(style_.reach(), line.baseline);
        bool const sharesRows =
            !groups_.empty() && floorToEven(y_ + ink.top) < ceilToEven(y_ + groups_.back().ink.bottom);
        if (!sharesRows) {
            groups_.push_back({line.text, i, i + 1, ink});
            continue;
        }
        auto& group = groups_.back();
        auto const* const begin = group.text.data();
        group.text = {begin, static_cast<std::size_t>(line.text.data() + line.text.size() - begin)};
        group.endLine = i + 1;
        group.ink = unionOf(group.ink, ink);
    }
}

int TextRenderer::parityOf(Group const& group) const
{
    auto const row = y_ + lines_[group.firstLine].baseline;
    return static_cast<int>((x_ & 1) | (row & 1) << 1);
}

std::uint64_t TextRenderer::hashOf(Group const& group) const
{
    return hashOfText(group.text, style_, parityOf(group));
}

void TextRenderer::drawGroup(MappedNV12 const& target, Group const& group, YCbCr const& color)
{
    Box const picture{0, 0, target.width, target.height};
    Box const ink = group.ink.movedBy(x_, y_);
    Box const window = intersectionOf(ink, picture);
    if (window.isEmpty()) {
        return;
    }
    // A sample of chroma that the picture's edge halves has the coverage of fewer pixels than a kept one.
    bool const hasWholeSamples =
        window.right <= floorToEven(target.width) && window.bottom <= floorToEven(target.height);
    if (hasWholeSamples) {
        auto const* kept = find(group);
        if (kept == nullptr && isWorthKeeping(group)) {
            kept = &keep(group);
        }
        if (kept != nullptr) {
            drawKept(target, group, *kept, color);
            return;
        }
    }
    std::int64_t const bandRows = std::max<std::int64_t>(2, floorToEven(kBandBytes / (window.width() + 64)));
    for (std::int64_t top = window.top; top < window.bottom;) {
        std::int64_t const bottom = std::min(floorToEven(top) + bandRows, window.bottom);
        auto const view = compose(group, {window.left, top, window.right, bottom}, picture);
        blend(target, view, view.left, view.top, color);
        top = bottom;
    }
}

void TextRenderer::drawKept(MappedNV12 const& target, Group const& group, PackedCoverage const& kept,
                            YCbCr const& color)
{
    auto view = kept.view();
    std::int64_t const left = view.left + floorToEven(x_);
    std::int64_t const top = view.top + floorToEven(y_ + lines_[group.firstLine].baseline);
    Box const picture{0, 0, target.width, target.height};
    if (!picture.contains(group.ink.movedBy(x_, y_))) {
        Box const visible = picture.movedBy(-left, -top);
        cutSpans(view.lumaSpans, visible, cutLuma_);
        cutSpans(view.chromaSpans, {visible.left, visible.top / 2, visible.right, visible.bottom / 2}, cutChroma_);
        view.lumaSpans = cutLuma_;
        view.chromaSpans = cutChroma_;
    }
    blend(target, view, left, top, color);
}

CoverageView TextRenderer::compose(Group const& group, Box const& window, Box const& picture)
{
    composer_.begin(window, picture);
    for (std::size_t i = group.firstLine; i < group.endLine; ++i) {
        auto& line = lines_[i];
        if (!line.isPlaced) {
            place(line);
        }
        std::span<PlacedGlyph const> const glyphs(placed_.data() + line.firstGlyph, line.glyphCount);
        composer_.lay(glyphs, style_, x_ + style_.reach(), y_ + line.baseline);
    }
    return composer_.finish();
}

PackedCoverage const* TextRenderer::find(Group const& group)
{
    int const parity = parityOf(group);
    auto const* const known = composed_.find(hashOf(group), [&](CachedGroup const& cached) {
        return cached.parity == parity && cached.style == style_ && cached.text == group.text;
    });
    return known != nullptr ? &known->coverage : nullptr;
}

/// True from the second time on that a group of ordinary size is drawn.
bool TextRenderer::isWorthKeeping(Group const& group)
{
    if (group.text.size() > kLongestKeptLine || group.ink.width() > kLargestKeptLine / group.ink.height()) {
        return false;
    }
    std::uint64_t const hash = hashOf(group);
    return std::exchange(drawnBefore_[hash & (drawnBefore_.size() - 1)], hash) == hash;
}

/// Composes the group as a picture shows it that is nowhere near its end.
PackedCoverage const& TextRenderer::keep(Group const& group)
{
    Box const ink = group.ink.movedBy(x_, y_);
    Box const around{floorToEven(ink.left), floorToEven(ink.top), ceilToEven(ink.right), ceilToEven(ink.bottom)};
    auto const view = compose(group, ink, around);
    keepMeasures(group);
    auto const row = y_ + lines_[group.firstLine].baseline;
    CachedGroup cached{std::string(group.text), style_, parityOf(group),
                       LineComposer::pack(view, floorToEven(x_), floorToEven(row))};
    std::size_t const bytes = sizeof(CachedGroup) + cached.text.capacity() + 1 + cached.coverage.bytes();
    return composed_.insert(hashOf(group), std::move(cached), bytes).coverage;
}

void TextRenderer::keepMeasures(Group const& group)
{
    for (std::size_t i = group.firstLine; i < group.endLine; ++i) {
        auto const& line = lines_[i];
        std::uint64_t const hash = hashOfText(line.text, style_, 0);
        auto const isSame = [&](CachedMeasure const& known) {
            return known.style == style_ && known.text == line.text;
        };
        if (measures_.find(hash, isSame) == nullptr) {
            measures_.insert(hash, {std::string(line.text), style_, line.set},
                             sizeof(CachedMeasure) + line.text.size() + 1);
        }
    }
}

}  // namespace imaging
