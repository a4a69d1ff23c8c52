// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The order in which the parts of a line with right-to-left letters stand.
#pragma once

#include "imaging/lru_cache.h"
#include "imaging/shaper.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

struct DirectedRun {
    std::string_view text;
    Direction direction = Direction::LeftToRight;
};

/// True when the line has a letter, number or mark of direction that could turn a part of it.
bool mayReadRightToLeft(std::string_view line);

/// The line's runs of one direction from left to right (Unicode Standard Annex #9); the text inside a run stays
/// in reading order. The first letter with a direction decides the line's, left to right without one.
std::vector<DirectedRun> visualRuns(std::string_view line);

/// Bound of the memory for the runs of lines.
inline constexpr std::size_t kRunCacheBytes = std::size_t{256} << 10;
inline constexpr std::size_t kRunCacheEntries = 1024;

/// Remembers the runs of lines. Since all digits count alike, a line whose numbers change is a known one.
class RunCache {
public:
    RunCache() : lines_(kRunCacheEntries, kRunCacheBytes) {}

    /// What visualRuns(line) gives; good until the next call.
    std::vector<DirectedRun> const& runsOf(std::string_view line);

    std::size_t cachedBytes() const { return lines_.bytes(); }

private:
    struct Run {
        std::size_t offset = 0;
        std::size_t length = 0;
        Direction direction = Direction::LeftToRight;
    };
    struct Entry {
        std::string line;  ///< with 0 for each digit
        std::vector<Run> runs;
    };

    Entry const& entryOf(std::string_view line);

    LruCache<Entry> lines_;
    std::string key_;
    std::vector<DirectedRun> runs_;
};

}  // namespace imaging
