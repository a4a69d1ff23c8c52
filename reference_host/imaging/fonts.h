// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The fonts of a painter: the one it was told to use, and those that fontconfig offers for what it lacks.
#pragma once

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace imaging {

/// Index of an opened font; 0 is the painter's own.
using FontId = std::uint16_t;

/// Shaping measures in parts of the em square, the same for all fonts.
inline constexpr int kUnitsPerEm = 65536;

/// One opened font file: FreeType's face for the outlines, HarfBuzz's font for shaping in kUnitsPerEm.
class Font {
public:
    /// Null when the file cannot be opened or has no outlines.
    static std::unique_ptr<Font> open(FT_Library library, std::string const& path, long index);
    ~Font();
    Font(Font const&) = delete;
    Font& operator=(Font const&) = delete;

    FT_Face face() const { return face_; }
    hb_font_t* shapingFont() const { return shapingFont_; }
    bool has(char32_t codePoint) const;

private:
    Font() = default;
    FT_Face face_ = nullptr;
    hb_font_t* shapingFont_ = nullptr;
};

/// Distances of a line's edges from its baseline, in pixels, both counted away from it.
struct LineMetrics {
    int ascent = 0;
    int descent = 0;
};

class Fonts {
public:
    Fonts();
    ~Fonts();
    Fonts(Fonts const&) = delete;
    Fonts& operator=(Fonts const&) = delete;

    /// Opens the font that fontconfig finds for `family` and asks for the order of fallbacks. "" means DejaVu Sans, or
    /// what there is in its place; any other family but the generic ones must be installed. Throws std::runtime_error
    /// naming the family when it is not, when it has no digits or cannot be opened; the fonts are then as before.
    void open(std::string const& family);
    bool isOpen() const { return !fonts_.empty(); }

    Font const& font(FontId id) const { return *fonts_[id]; }
    FT_Library library() const { return library_; }

    /// The first font that has all of the code points, else the first that has the first of them, else the
    /// painter's own. Searched once for each single code point and then remembered. Code points that are
    /// never drawn (joiners, marks of direction, variation selectors) are in every font.
    FontId fontFor(std::span<char32_t const> cluster);

    /// Of the painter's own font, rounded up; the ascent is at least 1.
    LineMetrics lineMetrics(int pixelSize) const;

    /// How many searches beyond the painter's own font were made; for tests.
    std::size_t searchCount() const { return searchCount_; }

private:
    FontId search(std::span<char32_t const> cluster, FontId otherwise);
    FontId openFallback(std::size_t candidate);

    FT_Library library_ = nullptr;
    FcFontSet* candidates_ = nullptr;
    std::vector<std::unique_ptr<Font>> fonts_;
    std::vector<int> openedCandidates_;  ///< by candidate: its FontId, or a negative mark
    std::unordered_map<char32_t, FontId> remembered_;
    std::size_t searchCount_ = 0;
};

}  // namespace imaging
