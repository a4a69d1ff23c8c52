// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lines by text and style; between the layout and the renderer on one side and the bounded caches on the other.
#include "imaging/line_cache.h"

#include <functional>
#include <utility>

namespace imaging {
namespace {

std::uint64_t hashOf(std::string_view text, LineStyle const& style, int parity)
{
    auto const kind = static_cast<std::uint64_t>(style.pixelSize) << 32 | static_cast<std::uint64_t>(style.room) << 20 |
                      static_cast<std::uint64_t>(style.thickness) << 8 | static_cast<std::uint64_t>(parity);
    return joinHash(std::hash<std::string_view>()(text), kind + 1);
}

}  // namespace

LineKey::LineKey(std::string_view lineText, LineStyle const& lineStyle, int originParity)
    : text(lineText)
    , style(lineStyle)
    , parity(originParity)
    , hash(hashOf(lineText, lineStyle, originParity))
{
}

SetLine const* MeasureCache::find(LineKey const& key)
{
    auto const* const known = measures_.find(
        key.hash, [&](Entry const& entry) { return entry.style == key.style && entry.text == key.text; });
    return known != nullptr ? &known->measure : nullptr;
}

void MeasureCache::keep(LineKey const& key, SetLine const& measure)
{
    if (find(key) == nullptr) {
        std::size_t const bytes = sizeof(Entry) + key.text.size() + 1;
        measures_.insert(key.hash, {std::string(key.text), key.style, measure}, bytes);
    }
}

PackedCoverage const* CoverageCache::find(LineKey const& key)
{
    auto const* const known = lines_.find(key.hash, [&](Entry const& entry) {
        return entry.parity == key.parity && entry.style == key.style && entry.text == key.text;
    });
    return known != nullptr ? &known->coverage : nullptr;
}

bool CoverageCache::isAskedForAgain(LineKey const& key)
{
    return std::exchange(askedFor_[key.hash & (askedFor_.size() - 1)], key.hash) == key.hash;
}

PackedCoverage const& CoverageCache::keep(LineKey const& key, PackedCoverage coverage)
{
    Entry entry{std::string(key.text), key.style, key.parity, std::move(coverage)};
    std::size_t const bytes = sizeof(Entry) + entry.text.capacity() + 1 + entry.coverage.bytes();
    return lines_.insert(key.hash, std::move(entry), bytes).coverage;
}

void CoverageCache::clear()
{
    lines_.clear();
    askedFor_.fill(0);
}

}  // namespace imaging
