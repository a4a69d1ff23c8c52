// Strings of the JSON reader and their escapes, with the exact place of a problem.
// The reader calls these for every value; SwJsonDocument's public string operations wrap them.
#include "sw_json_scan.h"

namespace sw_detail {

namespace {

bool fail(JsonProblem& problem, char const* at, std::string_view message)
{
    problem.at = at;
    problem.message = message;
    return false;
}

void appendUtf8(std::uint32_t codePoint, std::string& out)
{
    auto const put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (codePoint < 0x80U) {
        put(codePoint);
        return;
    }
    if (codePoint < 0x800U) {
        put(0xC0U | codePoint >> 6U);
    } else {
        if (codePoint < 0x10000U) {
            put(0xE0U | codePoint >> 12U);
        } else {
            put(0xF0U | codePoint >> 18U);
            put(0x80U | (codePoint >> 12U & 0x3FU));
        }
        put(0x80U | (codePoint >> 6U & 0x3FU));
    }
    put(0x80U | (codePoint & 0x3FU));
}

/// Four hex digits at `at`; moves behind them, or to the problem.
bool scanFourHexDigits(char const*& at, char const* end, std::uint32_t& unit, JsonProblem& problem)
{
    if (end - at < 4) {
        return fail(problem, at, "Incomplete Unicode escape sequence");
    }
    unit = 0;
    for (char const* const stop = at + 4; at != stop; ++at) {
        int const digit = hexDigitValue(*at);
        if (digit < 0) {
            return fail(problem, at, "Invalid hex digit in Unicode escape");
        }
        unit = unit << 4U | static_cast<std::uint32_t>(digit);
    }
    return true;
}

/// The escape whose backslash is at `at`.
bool scanEscape(char const*& at, char const* end, std::string& out, JsonProblem& problem)
{
    ++at;
    if (at == end) {
        return fail(problem, at, "Invalid escape sequence in string");
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
        ++at;
        return scanUnicodeEscape(at, end, out, problem);
    default:
        return fail(problem, at, "Invalid escape character in string");
    }
    ++at;
    return true;
}

}  // namespace

bool scanUnicodeEscape(char const*& at, char const* end, std::string& out, JsonProblem& problem)
{
    std::uint32_t unit = 0;
    if (!scanFourHexDigits(at, end, unit, problem)) {
        return false;
    }
    if (unit >= 0xDC00U && unit <= 0xDFFFU) {
        return fail(problem, at, "Unexpected low surrogate without leading high surrogate");
    }
    if (unit >= 0xD800U && unit <= 0xDBFFU) {
        if (end - at < 2 || at[0] != '\\' || at[1] != 'u') {
            return fail(problem, at, "Missing low surrogate after high surrogate");
        }
        at += 2;
        std::uint32_t low = 0;
        if (!scanFourHexDigits(at, end, low, problem)) {
            return false;
        }
        if (low < 0xDC00U || low > 0xDFFFU) {
            return fail(problem, at, "Invalid low surrogate in Unicode escape");
        }
        unit = 0x10000U + ((unit - 0xD800U) << 10U) + (low - 0xDC00U);
    }
    if (unit > 0x10FFFFU) {
        return fail(problem, at, "Unicode code point out of range");
    }
    appendUtf8(unit, out);
    return true;
}

bool scanEscapedString(char const*& at, char const* end, std::string_view& decoded, std::string& scratch,
                       JsonProblem& problem)
{
    ++at;
    scratch.clear();
    for (;;) {
        char const* const run = at;
        at = endOfPlainRun(at, end);
        scratch.append(run, at);
        if (at == end) {
            return fail(problem, at, "Unterminated string literal");
        }
        if (*at == '"') {
            decoded = scratch;
            ++at;
            return true;
        }
        if (*at != '\\') {
            return fail(problem, at, "Unescaped control character in string");
        }
        if (!scanEscape(at, end, scratch, problem)) {
            return false;
        }
    }
}

}  // namespace sw_detail
