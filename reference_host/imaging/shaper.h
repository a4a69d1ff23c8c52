// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Shaping: words to positioned glyphs, remembered by word.
#pragma once

#include "imaging/fonts.h"
#include "imaging/lru_cache.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace imaging {

/// Stands for a code point that no font has; drawn as a box of its own.
inline constexpr std::uint32_t kMissingGlyph = 0xFFFFFFFF;
/// Longest word in bytes that is shaped as one; a longer one is set in pieces.
inline constexpr std::size_t kLongestWord = 256;
/// Bounds of the memory for shaped words.
inline constexpr std::size_t kWordCacheBytes = std::size_t{2} << 20;
inline constexpr std::size_t kWordCacheEntries = 8192;

/// Positions in kUnitsPerEm from the word's start; y upwards.
struct ShapedGlyph {
    std::uint32_t glyph = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    FontId font = 0;
};

struct ShapedWord {
    std::vector<ShapedGlyph> glyphs;  ///< from left to right
    std::int64_t advance = 0;         ///< kUnitsPerEm
};

enum class Direction { LeftToRight, RightToLeft };

class Shaper {
public:
    explicit Shaper(Fonts& fonts);
    ~Shaper();
    Shaper(Shaper const&) = delete;
    Shaper& operator=(Shaper const&) = delete;

    /// Shapes UTF-8 of one direction, at most kLongestWord bytes for a result that is worth remembering.
    /// Digits have the width of a table's where the font knows such ones. The reference is good until the
    /// next call.
    ShapedWord const& shape(std::string_view word, Direction direction);

    /// The shaped form of one ASCII character; good until `clear`.
    ShapedWord const& shapeAscii(char character);

    /// Forgets everything; needed when other fonts were opened.
    void clear();

    std::size_t cachedBytes() const { return words_.bytes(); }

private:
    struct Entry {
        std::string word;
        Direction direction = Direction::LeftToRight;
        ShapedWord shaped;
    };
    struct Run {
        std::size_t begin = 0;
        std::size_t end = 0;
        FontId font = 0;
        hb_script_t script = HB_SCRIPT_COMMON;
    };

    ShapedWord shapeNow(std::string_view word, Direction direction);
    void splitIntoRuns();
    void appendRun(Run const& run, Direction direction, ShapedWord& word);

    Fonts& fonts_;
    hb_buffer_t* buffer_;
    LruCache<Entry> words_;
    std::array<ShapedWord, 128> ascii_;
    std::array<bool, 128> asciiKnown_{};
    std::vector<char32_t> codePoints_;  ///< of the word being shaped
    std::vector<Run> runs_;
};

/// True for marks, joiners and selectors: they belong to the character before them.
bool extendsCluster(char32_t codePoint);

}  // namespace imaging
