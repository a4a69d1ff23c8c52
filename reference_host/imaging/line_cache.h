// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What is remembered of lines: their measures, and their coverage once they are drawn a second time.
#pragma once

#include "imaging/line_composer.h"
#include "imaging/lru_cache.h"
#include "imaging/typesetter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace imaging {

/// Bounds of the memory for composed lines and for their measures.
inline constexpr std::size_t kLineCacheBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMeasureCacheBytes = std::size_t{1} << 20;
inline constexpr std::size_t kLineCacheEntries = 4096;

/// What lines are known by: their text, their looks, and where their origin stands between two samples of chroma.
struct LineKey {
    LineKey(std::string_view lineText, LineStyle const& lineStyle, int originParity = 0);

    std::string_view text;  ///< not owned
    LineStyle style;
    int parity;  ///< 1 for an odd column, 2 for an odd row, 3 for both; measures do not depend on it
    std::uint64_t hash;
};

/// Where a line ends and where it has ink, by its text and style.
class MeasureCache {
public:
    MeasureCache() : measures_(kLineCacheEntries, kMeasureCacheBytes) {}

    /// Null for an unknown line; good until the next `keep`.
    SetLine const* find(LineKey const& key);
    /// Does nothing for a known line.
    void keep(LineKey const& key, SetLine const& measure);

    void clear() { measures_.clear(); }
    std::size_t bytes() const { return measures_.bytes(); }

private:
    struct Entry {
        std::string text;
        LineStyle style;
        SetLine measure;
    };

    LruCache<Entry> measures_;
};

/// Composed lines, relative to the sample of chroma in which their origin stands.
class CoverageCache {
public:
    CoverageCache() : lines_(kLineCacheEntries, kLineCacheBytes) {}

    /// Null for unknown lines; good until the next `keep`.
    PackedCoverage const* find(LineKey const& key);
    /// True when the same lines were asked for lately: what is drawn a second time is worth remembering.
    bool isAskedForAgain(LineKey const& key);
    /// Adds lines that are unknown. The reference is good until the next `keep`.
    PackedCoverage const& keep(LineKey const& key, PackedCoverage coverage);

    void clear();
    std::size_t bytes() const { return lines_.bytes(); }

private:
    struct Entry {
        std::string text;
        LineStyle style;
        int parity = 0;
        PackedCoverage coverage;
    };

    LruCache<Entry> lines_;
    std::array<std::uint64_t, 4096> askedFor_{};  ///< hashes, each in the place of its lowest bits
};

}  // namespace imaging
