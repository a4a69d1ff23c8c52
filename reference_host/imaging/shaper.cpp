// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Splits a word by font and script and lets HarfBuzz shape each part; between the typesetter and the fonts.
#include "imaging/shaper.h"

#include "sw_utf8.h"

#include <functional>
#include <utility>

namespace imaging {
namespace {

constexpr char32_t kZeroWidthJoiner = 0x200D;
/// Advance of the box for a missing glyph.
constexpr std::int32_t kMissingAdvance = kUnitsPerEm * 6 / 10;

hb_script_t scriptOf(char32_t codePoint)
{
    return hb_unicode_script(hb_unicode_funcs_get_default(), codePoint);
}

bool hasScriptOfItsOwn(hb_script_t script)
{
    return script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED && script != HB_SCRIPT_UNKNOWN;
}

}  // namespace

bool extendsCluster(char32_t codePoint)
{
    if (codePoint == kZeroWidthJoiner || (codePoint >= 0xFE00 && codePoint <= 0xFE0F) ||
        (codePoint >= 0x1F3FB && codePoint <= 0x1F3FF)) {
        return true;
    }
    auto const category = hb_unicode_general_category(hb_unicode_funcs_get_default(), codePoint);
    return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK;
}

Shaper::Shaper(Fonts& fonts) : fonts_(fonts), buffer_(hb_buffer_create()), words_(kWordCacheEntries, kWordCacheBytes) {}

Shaper::~Shaper()
{
    hb_buffer_destroy(buffer_);
}

void Shaper::clear()
{
    words_.clear();
    asciiKnown_.fill(false);
}

ShapedWord const& Shaper::shapeAscii(char character)
{
    auto const index = static_cast<unsigned char>(character);
    if (!asciiKnown_[index]) {
        ascii_[index] = shapeNow(std::string_view(&character, 1), Direction::LeftToRight);
        asciiKnown_[index] = true;
    }
    return ascii_[index];
}

ShapedWord const& Shaper::shape(std::string_view word, Direction direction)
{
    std::uint64_t const hash = joinHash(std::hash<std::string_view>()(word), static_cast<std::uint64_t>(direction) + 1);
    auto const* const known =
        words_.find(hash, [&](Entry const& entry) { return entry.direction == direction && entry.word == word; });
    if (known != nullptr) {
        return known->shaped;
    }
    Entry entry{std::string(word), direction, shapeNow(word, direction)};
    std::size_t const bytes =
        sizeof(Entry) + entry.word.capacity() + entry.shaped.glyphs.capacity() * sizeof(ShapedGlyph);
    return words_.insert(hash, std::move(entry), bytes).shaped;
}

ShapedWord Shaper::shapeNow(std::string_view word, Direction direction)
{
    codePoints_.clear();
    for (std::size_t at = 0; at < word.size();) {
        auto const next = sw_utf8::codePointAt(word, at);
        codePoints_.push_back(next.value);
        at += next.bytes;
    }
    splitIntoRuns();

    ShapedWord shaped;
    shaped.glyphs.reserve(codePoints_.size());
    if (direction == Direction::LeftToRight) {
        for (auto run = runs_.begin(); run != runs_.end(); ++run) {
            appendRun(*run, direction, shaped);
        }
    } else {
        for (auto run = runs_.rbegin(); run != runs_.rend(); ++run) {
            appendRun(*run, direction, shaped);
        }
    }
    return shaped;
}

void Shaper::splitIntoRuns()
{
    runs_.clear();
    for (std::size_t begin = 0; begin < codePoints_.size();) {
        std::size_t end = begin + 1;
        while (end < codePoints_.size() &&
               (extendsCluster(codePoints_[end]) || codePoints_[end - 1] == kZeroWidthJoiner)) {
            ++end;
        }
        FontId const font = fonts_.fontFor(std::span(codePoints_).subspan(begin, end - begin));
        hb_script_t const script = scriptOf(codePoints_[begin]);
        Run* const last = runs_.empty() ? nullptr : &runs_.back();
        bool const sameScript = last != nullptr && (!hasScriptOfItsOwn(script) || !hasScriptOfItsOwn(last->script) ||
                                                    script == last->script);
        if (last != nullptr && last->font == font && sameScript) {
            last->end = end;
            last->script = hasScriptOfItsOwn(last->script) ? last->script : script;
        } else {
            runs_.push_back({begin, end, font, script});
        }
        begin = end;
    }
}

void Shaper::appendRun(Run const& run, Direction direction, ShapedWord& word)
{
    static constexpr hb_feature_t kTabularDigits{HB_TAG('t', 'n', 'u', 'm'), 1, HB_FEATURE_GLOBAL_START,
                                                 HB_FEATURE_GLOBAL_END};
    hb_buffer_clear_contents(buffer_);
    for (std::size_t i = run.begin; i < run.end; ++i) {
        hb_buffer_add(buffer_, codePoints_[i], static_cast<unsigned>(i));
    }
    hb_buffer_set_content_type(buffer_, HB_BUFFER_CONTENT_TYPE_UNICODE);
    hb_buffer_set_script(buffer_, run.script);
    hb_buffer_set_direction(buffer_, direction == Direction::LeftToRight ? HB_DIRECTION_LTR : HB_DIRECTION_RTL);
    hb_buffer_set_language(buffer_, hb_language_from_string("en", -1));
    hb_shape(fonts_.font(run.font).shapingFont(), buffer_, &kTabularDigits, 1);

    unsigned count = 0;
    auto const* const infos = hb_buffer_get_glyph_infos(buffer_, &count);
    auto const* const positions = hb_buffer_get_glyph_positions(buffer_, &count);
    for (unsigned i = 0; i < count; ++i) {
        bool const missing = infos[i].codepoint == 0;
        auto const x = static_cast<std::int32_t>(word.advance) + (missing ? 0 : positions[i].x_offset);
        word.glyphs.push_back(
            {missing ? kMissingGlyph : infos[i].codepoint, x, missing ? 0 : positions[i].y_offset, run.font});
        word.advance += missing ? kMissingAdvance : positions[i].x_advance;
    }
}

}  // namespace imaging
