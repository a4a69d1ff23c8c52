// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Strings with escapes, with the exact place of a problem, and numbers that are not short.
#include "sw_json_scan.h"

#include "sw_utf8.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace sw_detail {

namespace {

char const* scanFourHexDigits(char const* at, char const* end, std::uint32_t& unit, JsonProblem& problem)
{
    if (end - at < 4) {
        return problem.note(at, "Incomplete Unicode escape sequence");
    }
    unit = 0;
    for (char const* const stop = at + 4; at != stop; ++at) {
        int const digit = hexDigitValue(*at);
        if (digit < 0) {
            return problem.note(at, "Invalid hex digit in Unicode escape");
        }
        unit = unit << 4U | static_cast<std::uint32_t>(digit);
    }
    return at;
}

/// Behind a high surrogate: makes one code point of it and the low one that has to follow.
char const* scanLowSurrogate(char const* at, char const* end, std::uint32_t& unit, JsonProblem& problem)
{
    if (end - at < 2 || at[0] != '\\' || at[1] != 'u') {
        return problem.note(at, "Missing low surrogate after high surrogate");
    }
    std::uint32_t low = 0;
    at = scanFourHexDigits(at + 2, end, low, problem);
    if (at != nullptr && (low < 0xDC00U || low > 0xDFFFU)) {
        return problem.note(at, "Invalid low surrogate in Unicode escape");
    }
    unit = 0x10000U + ((unit - 0xD800U) << 10U) + (low - 0xDC00U);
    return at;
}

/// The escape whose backslash is at `at`.
char const* scanEscape(char const* at, char const* end, std::string& out, JsonProblem& problem)
{
    ++at;
    if (at == end) {
        return problem.note(at, "Invalid escape sequence in string");
    }
    switch (*at) {
    case '"':
    case '\\':
    case '/':
        out.push_back(*at);
        break;
    case 'b':
        out.push_back('\b');
        break;
    case 'f':
        out.push_back('\f');
        break;
    case 'n':
        out.push_back('\n');
        break;
    case 'r':
        out.push_back('\r');
        break;
    case 't':
        out.push_back('\t');
        break;
    case 'u':
        return scanUnicodeEscape(at + 1, end, out, problem);
    default:
        return problem.note(at, "Invalid escape character in string");
    }
    return at + 1;
}

}  // namespace

char const* scanString(char const* at, char const* end, std::string& decoded, JsonProblem& problem)
{
    at += at != end ? 1 : 0;
    while (at != nullptr) {
        char const* const run = at;
        at = endOfPlainRun(at, end);
        decoded.append(run, at);
        if (at == end) {
            return problem.note(at, "Unterminated string literal");
        }
        if (*at == '"') {
            return at + 1;
        }
        if (*at != '\\') {
            return problem.note(at, "Unescaped control character in string");
        }
        at = scanEscape(at, end, decoded, problem);
    }
    return nullptr;
}

char const* scanUnicodeEscape(char const* at, char const* end, std::string& out, JsonProblem& problem)
{
    std::uint32_t unit = 0;
    at = scanFourHexDigits(at, end, unit, problem);
    if (at != nullptr && unit >= 0xDC00U && unit <= 0xDFFFU) {
        return problem.note(at, "Unexpected low surrogate without leading high surrogate");
    }
    if (at != nullptr && unit >= 0xD800U && unit <= 0xDBFFU) {
        at = scanLowSurrogate(at, end, unit, problem);
    }
    if (at == nullptr) {
        return nullptr;
    }
    if (unit > 0x10FFFFU) {
        return problem.note(at, "Unicode code point out of range");
    }
    sw_utf8::append(out, unit);
    return at;
}

bool readDouble(char const* start, char const* end, double& number)
{
    std::from_chars_result const read = std::from_chars(start, end, number);
    // Both round to the nearest double, so they agree on every normal number. Which tiny numbers are range
    // errors is for strtod alone to say.
    if (read.ec == std::errc() && read.ptr == end && std::abs(number) > std::numeric_limits<double>::min()) {
        return true;
    }
    char* stop = nullptr;
    errno = 0;
    number = strtod_l(start, &stop, classicLocale());
    return stop == end && errno != ERANGE;
}

}  // namespace sw_detail
