// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Rasterised glyphs, kept by font, glyph, size, pen thickness and position between pixels.
#pragma once

#include "imaging/glyph_raster.h"
#include "imaging/lru_cache.h"

namespace imaging {

/// Bounds of the memory for glyph coverage.
inline constexpr std::size_t kGlyphCacheBytes = std::size_t{16} << 20;
inline constexpr std::size_t kGlyphCacheEntries = 8192;

class GlyphCache {
public:
    explicit GlyphCache(Fonts const& fonts, std::size_t maxBytes = kGlyphCacheBytes)
        : fonts_(fonts)
        , images_(kGlyphCacheEntries, maxBytes)
    {
    }

    /// The glyph's coverage, rasterised on first use; good until the next call.
    GlyphImage const& image(GlyphKey const& key)
    {
        std::uint64_t const hash = hashOf(key);
        auto const* const known = images_.find(hash, [&](Entry const& entry) { return entry.key == key; });
        return known != nullptr ? known->image : rasterizeNow(key, hash);
    }

    void clear() { images_.clear(); }
    /// Frees a glyph larger than the whole bound; to be called when a text is done.
    void forgetLent() { images_.forgetLent(); }
    std::size_t cachedBytes() const { return images_.bytes(); }

private:
    struct Entry {
        GlyphKey key;
        GlyphImage image;
    };

    static std::uint64_t hashOf(GlyphKey const& key)
    {
        std::uint64_t const kind = std::uint64_t{key.pixelSize} << 48 | std::uint64_t{key.font} << 32 |
                                   std::uint64_t{key.thickness} << 8 | std::uint64_t{key.phase};
        return joinHash(kind, std::uint64_t{key.glyph} << 16);
    }

    GlyphImage const& rasterizeNow(GlyphKey const& key, std::uint64_t hash)
    {
        Entry entry{key, rasterize(fonts_, key)};
        std::size_t const bytes = sizeof(Entry) + entry.image.coverage.capacity();
        return images_.insert(hash, std::move(entry), bytes).image;
    }

    Fonts const& fonts_;
    LruCache<Entry> images_;
};

}  // namespace imaging
