// Reads a configuration a second time, with a mark in front of every scalar, so that the reader keeps it as a text.
#include "check/written_config.h"

#include "sw_text.h"
#include "sw_utf8.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
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
            std::size_t const follower = skipSpace(text, next);
            bool const isName = follower < text.size() && text[follower] == ':';
            marked += '"';
            if (!isName) {
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
    return wholeNumber(literalText(written), strtold_l);
}

bool meansTheSame(SwJsonValue const& written, std::string const& held)
{
    std::string const literal = literalText(written);
    std::optional<long double> const number = wholeNumber(held, strtold_l);
    return written.isString() && (literal == held || (number && wholeNumber(literal, strtold_l) == number));
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
