// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Turns templates and telemetry values into text, with the memory that holds values over gaps and slows
// their changes. Runs for every placeholder of every frame, so everything is appended to the block's text
// in place.
#include "stanag_overlay_format.h"

#include "overlay_date_text.h"
#include "overlay_number_text.h"
#include "overlay_numbers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace stanag_overlay {

namespace {

bool isInvalid(SwJsonValue const& value, std::vector<std::string> const& invalidValues)
{
    if (invalidValues.empty()) {
        return false;
    }
    long double number = 0.0L;
    bool const isNumber = tryParseNumber(value, number);
    return std::any_of(invalidValues.begin(), invalidValues.end(), [&](std::string const& invalid) {
        long double invalidNumber = 0.0L;
        // Two numbers are never compared as texts.
        if (isNumber && parseWholeNumber(invalid, invalidNumber)) {
            return numbersEqual(number, invalidNumber);
        }
        return value.toString() == invalid;
    });
}

// Both bounds are inclusive, and a not-a-number passes.
bool isOutOfRange(SwJsonValue const& value, FormatSpec const& spec)
{
    if (!spec.hasMin && !spec.hasMax) {
        return false;
    }
    long double number = 0.0L;
    if (!tryParseNumber(value, number)) {
        return true;
    }
    return (spec.hasMin && spec.minValue > number) || (spec.hasMax && spec.maxValue < number);
}

// The entry of that key. A map finds only by a std::string, which takes memory for a long name: the entries of a
// block are few, and looking along them costs no more than a hash.
template <typename Map>
auto findKey(Map& map, std::string_view key)
{
    constexpr std::size_t kFew = 24;
    if (map.size() > kFew) {
        return map.find(std::string(key));
    }
    return std::find_if(map.begin(), map.end(), [key](auto const& entry) { return entry.first == key; });
}

// Inclusive: the text is still shown when exactly the hold time has passed.
std::string const& heldOrMissing(FormatSpec const* spec, OverlayCfg const& cfg, std::string_view key,
                                 OverlayRuntime const& runtime, std::uint64_t nowNs)
{
    if (spec == nullptr) {
        return cfg.missingPlaceholder;
    }
    if (spec->holdLastNs != 0) {
        auto const held = findKey(runtime.heldValues, key);
        if (held != runtime.heldValues.end() && held->second.timeNs != 0 &&
            nowNs - held->second.timeNs <= spec->holdLastNs) {
            return held->second.text;
        }
    }
    return spec->missingPlaceholder;
}

// The text that the refresh limit keeps on the picture, null when a new one is due. Exclusive: a new text
// is taken when exactly the period has passed.
std::string const* refreshLimitedValue(FormatSpec const& spec, std::string_view key, OverlayRuntime const& runtime,
                                       std::uint64_t nowNs)
{
    if (spec.refreshEveryNs == 0) {
        return nullptr;
    }
    auto const shown = findKey(runtime.refreshValues, key);
    bool const waits = shown != runtime.refreshValues.end() && shown->second.timeNs != 0 &&
                       nowNs - shown->second.timeNs < spec.refreshEveryNs;
    return waits ? &shown->second.text : nullptr;
}

void remember(std::unordered_map<std::string, TimedText>& entries, std::string_view key, std::string_view text,
              std::uint64_t nowNs)
{
    auto const found = findKey(entries, key);
    TimedText& entry = found != entries.end() ? found->second : entries[std::string(key)];
    entry.text = text;
    entry.timeNs = nowNs;
}

// Held is what is shown, not what came.
void rememberHeldValue(FormatSpec const& spec, std::string_view key, std::string_view shown, OverlayRuntime& runtime,
                       std::uint64_t nowNs)
{
    if (spec.holdLastNs != 0) {
        remember(runtime.heldValues, key, shown, nowNs);
    }
}

FormatSpec const* formatOf(OverlayCfg const& cfg, std::string_view key)
{
    auto const entry = findKey(cfg.formats, key);
    return entry == cfg.formats.end() ? nullptr : &entry->second;
}

// A value's text without any check: by its digits when they are given, else its plain text form.
void appendValue(std::string& out, SwJsonValue const& value, int decimals, bool trimTrailingZeros)
{
    if (decimals >= 0) {
        formatNumber(out, value, decimals, trimTrailingZeros);
    } else {
        appendPlainText(out, value);
    }
}

// As OverlayTextFormatter::lookupFormatted.
void appendFormatted(std::string& out, SwJsonObject const* root, std::string_view key, OverlayCfg const& cfg,
                     OverlayRuntime& runtime, std::uint64_t nowNs)
{
    FormatSpec const* const spec = formatOf(cfg, key);
    auto const member = root == nullptr ? SwJsonObject::const_iterator() : root->find(key);
    if (member == SwJsonObject::const_iterator()) {
        out += heldOrMissing(spec, cfg, key, runtime, nowNs);
        return;
    }
    SwJsonValue const& value = member->second;
    if (spec == nullptr) {
        appendValue(out, value, cfg.decimals, cfg.trimTrailingZeros);
        return;
    }
    if (isInvalid(value, spec->invalidValues) || isOutOfRange(value, *spec)) {
        out += heldOrMissing(spec, cfg, key, runtime, nowNs);
        return;
    }
    long double date = 0.0L;
    if (spec->date && !tryParseNumber(value, date)) {
        // A text in place of a time is shown as it comes and leaves no trace in the memory.
        appendPlainText(out, value);
        return;
    }

    std::size_t const start = out.size();
    if (std::string const* const shown = refreshLimitedValue(*spec, key, runtime, nowNs)) {
        out += *shown;
    } else {
        if (spec->date) {
            appendDate(out, date, *spec);
        } else {
            appendValue(out, value, spec->decimals, spec->trimTrailingZeros);
        }
        if (spec->refreshEveryNs != 0) {
            remember(runtime.refreshValues, key, std::string_view(out).substr(start), nowNs);
        }
    }
    rememberHeldValue(*spec, key, std::string_view(out).substr(start), runtime, nowNs);
}

// The punctuation that templates put around values. Dots, dashes, "%" and all bytes of UTF-8 names are
// part of a name.
constexpr std::string_view kNameEnds = "\t\n\r \"'(),/:;<>[\\]{}";
static_assert(kNameEnds.size() == 19);

constexpr std::array<bool, 256> kEndsName = [] {
    std::array<bool, 256> ends{};
    for (char const byte : kNameEnds) {
        ends[static_cast<unsigned char>(byte)] = true;
    }
    return ends;
}();

std::size_t findNameEnd(std::string_view text, std::size_t from)
{
    while (from < text.size() && !kEndsName[static_cast<unsigned char>(text[from])]) {
        ++from;
    }
    return from;
}

// What a "%" at one place of a template stands for.
struct Placeholder {
    std::string_view literal;  ///< copied to the output
    std::string_view name;     ///< looked up after it, when there is one
    bool hasName = false;
    std::size_t next = 0;  ///< where the scan goes on
};

Placeholder readPlaceholder(std::string_view text, std::size_t percent)
{
    std::size_t const start = percent + 1;
    if (start < text.size() && text[start] == '%') {
        return {text.substr(percent, 1), {}, false, start + 1};
    }
    if (start < text.size() && text[start] == '{') {
        std::size_t const close = text.find('}', start + 1);
        if (close == std::string_view::npos) {
            // Nothing after an unterminated brace is expanded any more.
            return {text.substr(percent), {}, false, text.size()};
        }
        return {{}, text.substr(start + 1, close - start - 1), true, close + 1};
    }
    std::size_t const end = findNameEnd(text, start);
    if (end == start) {
        return {text.substr(percent, 1), {}, false, start};
    }
    return {{}, text.substr(start, end - start), true, end};
}

}  // namespace

std::string OverlayTextFormatter::expandTemplate(std::string const& tmpl, SwJsonObject const* root,
                                                 OverlayCfg const& cfg, OverlayRuntime& runtime, std::uint64_t nowNs,
                                                 std::vector<std::string> const& availableKeys) const
{
    std::string out;
    if (tmpl.empty()) {
        if (root == nullptr || root->empty()) {
            return out;
        }
        for (std::string const& key : availableKeys) {
            if (!out.empty()) {
                out += '\n';
            }
            out += key;
            out += ": ";
            appendFormatted(out, root, key, cfg, runtime, nowNs);
        }
        return out;
    }

    constexpr std::size_t kExpectedGrowth = 64;
    out.reserve(tmpl.size() + kExpectedGrowth);
    std::string_view const text = tmpl;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t const percent = std::min(text.find('%', at), text.size());
        out += text.substr(at, percent - at);
        if (percent == text.size()) {
            break;
        }
        Placeholder const placeholder = readPlaceholder(text, percent);
        out += placeholder.literal;
        if (placeholder.hasName) {
            appendFormatted(out, root, placeholder.name, cfg, runtime, nowNs);
        }
        at = placeholder.next;
    }
    return out;
}

std::string OverlayTextFormatter::lookupFormatted(SwJsonObject const* root, std::string const& key,
                                                  OverlayCfg const& cfg, OverlayRuntime& runtime,
                                                  std::uint64_t nowNs) const
{
    std::string out;
    appendFormatted(out, root, key, cfg, runtime, nowNs);
    return out;
}

}  // namespace stanag_overlay
