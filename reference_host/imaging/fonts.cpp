// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Opens fonts and finds the one for a character; between the shaper and the font files.
#include "imaging/fonts.h"

#include "sw_text.h"

#include <hb-ot.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace imaging {
namespace {

constexpr char const* kDefaultFamily = "DejaVu Sans";
constexpr int kNotTried = -1;
constexpr int kUnusable = -2;
/// Beyond this many remembered characters the memory starts over.
constexpr std::size_t kRememberLimit = 65536;

struct PatternDelete {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDelete>;

Pattern patternFor(std::string const& family)
{
    Pattern pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<FcChar8 const*>(family.c_str()));
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

std::unique_ptr<Font> openPattern(FT_Library library, FcPattern* pattern)
{
    FcChar8* path = nullptr;
    int index = 0;
    if (pattern == nullptr || FcPatternGetString(pattern, FC_FILE, 0, &path) != FcResultMatch) {
        return nullptr;
    }
    FcPatternGetInteger(pattern, FC_INDEX, 0, &index);
    return Font::open(library, reinterpret_cast<char const*>(path), index);
}

bool isNeverDrawn(char32_t codePoint)
{
    return codePoint == 0x00AD || codePoint == 0x034F || codePoint == 0x061C || codePoint == 0x180E ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x202A && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x206F) || (codePoint >= 0xFE00 && codePoint <= 0xFE0F) ||
           codePoint == 0xFEFF || (codePoint >= 0xE0000 && codePoint <= 0xE0FFF);
}

bool hasAll(Font const& font, std::span<char32_t const> cluster)
{
    return std::all_of(cluster.begin(), cluster.end(), [&](char32_t c) { return isNeverDrawn(c) || font.has(c); });
}

bool offersAll(FcPattern* candidate, std::span<char32_t const> cluster)
{
    FcCharSet* characters = nullptr;
    if (FcPatternGetCharSet(candidate, FC_CHARSET, 0, &characters) != FcResultMatch) {
        return false;
    }
    return std::all_of(cluster.begin(), cluster.end(),
                       [&](char32_t c) { return isNeverDrawn(c) || FcCharSetHasChar(characters, c) == FcTrue; });
}

/// Families that mean whatever fontconfig has for them.
bool isGeneric(std::string_view family)
{
    constexpr std::array<std::string_view, 8> kGeneric{"sans-serif", "sans",      "serif",   "monospace",
                                                       "mono",       "system-ui", "cursive", "fantasy"};
    auto const sameLetters = [](char a, char b) { return sw_detail::toLower(a) == sw_detail::toLower(b); };
    return std::any_of(kGeneric.begin(), kGeneric.end(), [&](std::string_view name) {
        return std::equal(name.begin(), name.end(), family.begin(), family.end(), sameLetters);
    });
}

bool isInstalled(std::string const& family)
{
    Pattern const pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<FcChar8 const*>(family.c_str()));
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcObjectSet* const wanted = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet* const found = FcFontList(nullptr, pattern.get(), wanted);
    bool const isThere = found != nullptr && found->nfont > 0;
    if (found != nullptr) {
        FcFontSetDestroy(found);
    }
    FcObjectSetDestroy(wanted);
    return isThere;
}

bool hasDigits(Font const& font)
{
    constexpr std::u32string_view kDigits = U"0123456789";
    return std::all_of(kDigits.begin(), kDigits.end(), [&](char32_t digit) { return font.has(digit); });
}

/// The design distance in pixels, rounded up.
int scaleUp(long units, int pixelSize, long unitsPerEm)
{
    return static_cast<int>((std::int64_t{units} * pixelSize + unitsPerEm - 1) / unitsPerEm);
}

}  // namespace

std::unique_ptr<Font> Font::open(FT_Library library, std::string const& path, long index)
{
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), index, &face) != 0) {
        return nullptr;
    }
    std::unique_ptr<Font> font(new Font);
    font->face_ = face;
    if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) {
        return nullptr;
    }
    hb_blob_t* const file = hb_blob_create_from_file_or_fail(path.c_str());
    if (file == nullptr) {
        return nullptr;
    }
    hb_face_t* const shapingFace = hb_face_create(file, static_cast<unsigned>(index & 0xFFFF));
    hb_blob_destroy(file);
    font->shapingFont_ = hb_font_create(shapingFace);
    hb_face_destroy(shapingFace);
    hb_ot_font_set_funcs(font->shapingFont_);
    hb_font_set_scale(font->shapingFont_, kUnitsPerEm, kUnitsPerEm);
    // The upper half of the index is one more than the number of a variable font's named instance.
    if (auto const instance = static_cast<unsigned>(index) >> 16; instance != 0) {
        hb_font_set_var_named_instance(font->shapingFont_, instance - 1);
    }
    return font;
}

Font::~Font()
{
    hb_font_destroy(shapingFont_);
    FT_Done_Face(face_);
}

bool Font::has(char32_t codePoint) const
{
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(shapingFont_, codePoint, &glyph) != 0;
}

Fonts::Fonts() = default;

Fonts::~Fonts()
{
    fonts_.clear();
    if (candidates_ != nullptr) {
        FcFontSetDestroy(candidates_);
    }
    FT_Done_FreeType(library_);
}

void Fonts::open(std::string const& family)
{
    std::string const name = family.empty() ? kDefaultFamily : family;
    if (library_ == nullptr && FT_Init_FreeType(&library_) != 0) {
        throw std::runtime_error("no font can be opened for family '" + name +
                                 "': FreeType does not start; free some memory");
    }
    if (!family.empty() && !isGeneric(name) && !isInstalled(name)) {
        throw std::runtime_error("no font of the family '" + name +
                                 "' is installed; install it or name one that `fc-list : family` lists");
    }
    auto const wanted = patternFor(name);
    FcResult result = FcResultNoMatch;
    Pattern const best(FcFontMatch(nullptr, wanted.get(), &result));
    auto own = openPattern(library_, best.get());
    if (!own) {
        throw std::runtime_error("no font can be opened for family '" + name +
                                 "'; install it (Debian: fonts-dejavu-core) or name another one");
    }
    if (!hasDigits(*own)) {
        throw std::runtime_error("the font of the family '" + name +
                                 "' has no digits, which telemetry needs; name another one");
    }
    fonts_.clear();
    fonts_.push_back(std::move(own));
    remembered_.clear();
    if (candidates_ != nullptr) {
        FcFontSetDestroy(candidates_);
    }
    candidates_ = FcFontSort(nullptr, wanted.get(), FcTrue, nullptr, &result);
    openedCandidates_.assign(candidates_ != nullptr ? static_cast<std::size_t>(candidates_->nfont) : 0, kNotTried);
}

FontId Fonts::fontFor(std::span<char32_t const> cluster)
{
    if (hasAll(*fonts_[0], cluster)) {
        return 0;
    }
    if (cluster.size() > 1) {
        return search(cluster, fontFor(cluster.first(1)));
    }
    if (auto const known = remembered_.find(cluster[0]); known != remembered_.end()) {
        return known->second;
    }
    if (remembered_.size() >= kRememberLimit) {
        remembered_.clear();
    }
    return remembered_[cluster[0]] = search(cluster, 0);
}

FontId Fonts::search(std::span<char32_t const> cluster, FontId otherwise)
{
    ++searchCount_;
    for (std::size_t i = 0; i < openedCandidates_.size(); ++i) {
        if (openedCandidates_[i] == kUnusable || !offersAll(candidates_->fonts[i], cluster)) {
            continue;
        }
        FontId const id = openFallback(i);
        if (id != 0 && hasAll(*fonts_[id], cluster)) {
            return id;
        }
    }
    return otherwise;
}

FontId Fonts::openFallback(std::size_t candidate)
{
    int& opened = openedCandidates_[candidate];
    if (opened == kNotTried) {
        opened = kUnusable;
        auto font = openPattern(library_, candidates_->fonts[candidate]);
        if (font && fonts_.size() < std::numeric_limits<FontId>::max()) {
            opened = static_cast<int>(fonts_.size());
            fonts_.push_back(std::move(font));
        }
    }
    return opened > 0 ? static_cast<FontId>(opened) : FontId{0};
}

LineMetrics Fonts::lineMetrics(int pixelSize) const
{
    FT_Face const face = fonts_[0]->face();
    return {std::max(1, scaleUp(face->ascender, pixelSize, face->units_per_EM)),
            std::max(0, scaleUp(-long{face->descender}, pixelSize, face->units_per_EM))};
}

}  // namespace imaging
