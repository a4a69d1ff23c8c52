// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads a configuration a second time, with a mark in front of every scalar, so that the reader keeps it as a text.
#include "check/written_config.h"

#include "sw_extended.h"
#include "sw_text.h"
#include "sw_utf8.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <set>
#include <string_view>

namespace check {
namespace {

// Texts that begin with one of these are never taken for a number or a literal.
constexpr char kQuotedMark = '\'';
constexpr char kBareMark = '=';

std::size_t skipSpace(std::string_view text, std::size_t at)
{
    while (at < text.size() && sw_detail::isSpace(text[at])) {
        ++at;
    }
    return at;
}

/// The place after the closing quote of the text that opens at `at`.
std::size_t endOfString(std::string_view text, std::size_t at)
{
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        at += text[at] == '\\' ? 1U : 0U;
    }
    return std::min(at + 1, text.size());
}

std::size_t endOfBareToken(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_of("{}[],:\" \t\n\v\f\r", at), text.size());
}

/// Whether the text that ends at `at` is the name of a member.
bool isName(std::string_view text, std::size_t at)
{
    std::size_t const follower = skipSpace(text, at);
    return follower < text.size() && text[follower] == ':';
}

bool isStructure(char byte)
{
    return sw_detail::isSpace(byte) || std::string_view("{}[],:").find(byte) != std::string_view::npos;
}

/// The text with a mark in every scalar: {"a":1,"b":"2"} gives {"a":"=1","b":"'2"}.
std::string markScalars(std::string_view text)
{
    std::string marked;
    marked.reserve(text.size() + text.size() / 8);
    for (std::size_t at = 0; at < text.size();) {
        std::size_t next = at + 1;
        if (text[at] == '"') {
            next = endOfString(text, at);
            marked += '"';
            if (!isName(text, next)) {
                marked += kQuotedMark;
            }
            marked += text.substr(at + 1, next - at - 1);
        } else if (isStructure(text[at])) {
            marked += text[at];
        } else {
            next = endOfBareToken(text, at);
            marked.append({'"', kBareMark}).append(text.substr(at, next - at)).append("\"");
        }
        at = next;
    }
    return marked;
}

/// An object or array that is open at some place of the text.
struct Level {
    bool isArray = false;
    std::size_t index = 0;        ///< of the item, in an array
    std::string name;             ///< of the member, in an object
    std::set<std::string> names;  ///< of the members so far
};

std::string placeOf(std::vector<Level> const& levels)
{
    std::string place;
    for (Level const& level : levels) {
        place = level.isArray ? place + "[" + std::to_string(level.index) + "]" : inside(place, level.name);
    }
    return place;
}

template <typename Number>
std::optional<Number> wholeNumber(std::string const& text, Number (*convert)(char const*, char**, locale_t))
{
    char* end = nullptr;
    Number const number = convert(text.c_str(), &end, sw_detail::classicLocale());
    bool const isWholeText = !text.empty() && end == text.c_str() + text.size();
    return isWholeText && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

}  // namespace

SwJsonValue readAsWritten(std::string const& text)
{
    SwString error;
    return SwJsonDocument::fromJson(markScalars(text), SwString(), error).takeRoot();
}

std::vector<std::string> repeatedMembers(std::string const& text)
{
    // The root, "overlay", a block, "formats", a format, "invalidValues".
    constexpr std::size_t kMostLevels = 6;
    SwString const bytes(text);
    std::vector<std::string> places;
    std::vector<Level> levels;
    std::size_t depth = 0;
    for (std::size_t at = 0; at < text.size();) {
        char const byte = text[at];
        std::size_t const next = byte == '"' ? endOfString(text, at) : at + 1;
        bool const isNear = depth <= kMostLevels;
        if (byte == '{' || byte == '[') {
            ++depth;
            if (depth <= kMostLevels) {
                levels.emplace_back().isArray = byte == '[';
            }
        } else if (byte == '}' || byte == ']') {
            if (isNear && !levels.empty()) {
                levels.pop_back();
            }
            depth -= depth > 0 ? 1U : 0U;
        } else if (isNear && !levels.empty() && byte == ',') {
            ++levels.back().index;
        } else if (isNear && !levels.empty() && byte == '"' && isName(text, next)) {
            SwString error;
            std::size_t cursor = at;
            levels.back().name = SwJsonDocument::parseString(bytes, cursor, error);
            if (!levels.back().names.insert(levels.back().name).second) {
                places.push_back(placeOf(levels));
            }
        }
        at = next;
    }
    return places;
}

std::string inside(std::string const& place, std::string const& name)
{
    return (place.empty() ? "" : place + ".") + printable(name);
}

bool isQuoted(SwJsonValue const& written)
{
    return written.isString() && written.stringRef().front() == kQuotedMark;
}

std::string literalText(SwJsonValue const& written)
{
    return written.isString() ? written.stringRef().substr(1) : std::string();
}

std::optional<double> literalNumber(SwJsonValue const& written)
{
    return wholeNumber(literalText(written), strtod_l);
}

std::optional<long double> literalLongNumber(SwJsonValue const& written)
{
    return wholeNumber(literalText(written), sw_detail::readExtended);
}

bool meansTheSame(SwJsonValue const& written, std::string const& held)
{
    std::string const literal = literalText(written);
    std::optional<long double> const number = wholeNumber(held, sw_detail::readExtended);
    return written.isString() &&
           (literal == held || (number && wholeNumber(literal, sw_detail::readExtended) == number));
}

std::string shown(SwJsonValue const& written)
{
    if (!written.isString()) {
        return written.isObject() ? "an object" : "an array";
    }
    constexpr std::size_t kMaxShown = 40;
    std::string const text = literalText(written);
    std::string const beginning = printable(text.substr(0, kMaxShown));
    std::string const cut = text.size() > kMaxShown ? "..." : "";
    return isQuoted(written) ? '"' + beginning + '"' + cut : beginning + cut;
}

std::string printable(std::string const& text)
{
    return SwJsonValue::escapeString(sw_utf8::valid(text));
}

}  // namespace check
