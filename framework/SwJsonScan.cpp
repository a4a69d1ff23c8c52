// Tokens of the JSON reader: numbers, strings and their escapes, with the exact place of a problem.
// The reader calls these for every value; SwJsonDocument's public string operations wrap them.
#include "sw_json_scan.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>

namespace sw_detail {

namespace {

/// Decimal digits that always fit 64 bits, whatever their values.
constexpr int kSafeDigits = 19;

bool fail(JsonProblem& problem, char const* at, std::string_view message)
{
    problem.at = at;
    problem.message = message;
    return false;
}

/// Adds the digits at `at` to the mantissa and moves behind them; returns their number. The mantissa is
/// meaningless once more than kSafeDigits digits went into it.
int scanDigits(char const*& at, std::uint64_t& mantissa)
{
    char const* const start = at;
    while (isDigit(*at)) {
        mantissa = mantissa * 10U + static_cast<std::uint64_t>(*at - '0');
        ++at;
    }
    std::ptrdiff_t const count = at - start;
    return count > kSafeDigits ? kSafeDigits + 1 : static_cast<int>(count);
}

/// mantissa * 10^exponent when two exact doubles give it with the one rounding of a product or quotient,
/// which is then the nearest double.
bool exactDouble(std::uint64_t mantissa, int exponent, double& result)
{
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kTwoTo53 = std::uint64_t{1} << 53U;
    if (mantissa > kTwoTo53 || exponent < -22 || exponent > 22) {
        return false;
    }
    double const whole = static_cast<double>(mantissa);
    result = exponent < 0 ? whole / kPowers[-exponent] : whole * kPowers[exponent];
    return true;
}

/// The token [start, end) by the rules of strtod: false on a range error, in either direction.
bool doubleOfToken(char const* start, char const* end, double& result)
{
    std::from_chars_result const read = std::from_chars(start, end, result);
    // Both round to the nearest double, so they agree on every normal number. Which tiny numbers are range
    // errors is for strtod alone to say.
    if (read.ec == std::errc() && read.ptr == end && std::abs(result) > std::numeric_limits<double>::min()) {
        return true;
    }
    static locale_t const classic = newlocale(LC_ALL_MASK, "C", nullptr);
    char* stop = nullptr;
    errno = 0;
    result = strtod_l(start, &stop, classic);
    return stop == end && errno != ERANGE;
}

/// Steps over the digits of an exponent, whose "e" is at `at`; its value saturates far beyond any use.
bool scanExponent(char const*& at, int& exponent, JsonProblem& problem)
{
    ++at;
    bool const negative = *at == '-';
    if (*at == '-' || *at == '+') {
        ++at;
    }
    if (!isDigit(*at)) {
        return fail(problem, at, "Expected digit in exponent");
    }
    int value = 0;
    for (; isDigit(*at); ++at) {
        value = value < 100000 ? value * 10 + (*at - '0') : value;
    }
    exponent = negative ? -value : value;
    return true;
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

int hexValue(char digit)
{
    if (isDigit(digit)) {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

/// Four hex digits at `at`; moves behind them, or to the problem.
bool scanFourHexDigits(char const*& at, char const* end, std::uint32_t& unit, JsonProblem& problem)
{
    if (end - at < 4) {
        return fail(problem, at, "Incomplete Unicode escape sequence");
    }
    unit = 0;
    for (char const* const stop = at + 4; at != stop; ++at) {
        int const digit = hexValue(*at);
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

bool scanNumber(char const*& at, JsonNumber& number, JsonProblem& problem)
{
    char const* const start = at;
    bool const negative = *at == '-';
    at += negative ? 1 : 0;
    if (!isDigit(*at)) {
        return fail(problem, at, "Expected digit in number literal");
    }
    if (*at == '0' && isDigit(at[1])) {
        ++at;
        return fail(problem, at, "Leading zeros are not allowed in JSON numbers");
    }
    std::uint64_t mantissa = 0;
    int digits = scanDigits(at, mantissa);
    if (*at != '.' && *at != 'e' && *at != 'E') {
        // One digit less than is safe without a sign also fits the signed range.
        if (digits < kSafeDigits) {
            number.whole = static_cast<std::int64_t>(mantissa);
            number.whole = negative ? -number.whole : number.whole;
            return true;
        }
        std::from_chars_result const read = std::from_chars(start, at, number.whole);
        return read.ec == std::errc() || fail(problem, start, "Invalid integer number");
    }
    number.isDouble = true;
    int exponent = 0;
    int fraction = 0;
    if (*at == '.') {
        ++at;
        if (!isDigit(*at)) {
            return fail(problem, at, "Expected digit after decimal point");
        }
        fraction = scanDigits(at, mantissa);
        digits += fraction;
    }
    if ((*at == 'e' || *at == 'E') && !scanExponent(at, exponent, problem)) {
        return false;
    }
    if (digits <= kSafeDigits && exactDouble(mantissa, exponent - fraction, number.real)) {
        number.real = negative ? -number.real : number.real;
        return true;
    }
    return doubleOfToken(start, at, number.real) || fail(problem, start, "Invalid floating-point number");
}

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

bool scanString(char const*& at, char const* end, std::string_view& decoded, std::string& scratch, JsonProblem& problem)
{
    char const* const start = ++at;
    at = endOfPlainRun(at, end);
    if (at != end && *at == '"') {
        decoded = std::string_view(start, static_cast<std::size_t>(at - start));
        ++at;
        return true;
    }
    scratch.assign(start, at);
    while (at != end && *at != '"') {
        if (*at != '\\') {
            return fail(problem, at, "Unescaped control character in string");
        }
        if (!scanEscape(at, end, scratch, problem)) {
            return false;
        }
        char const* const run = at;
        at = endOfPlainRun(at, end);
        scratch.append(run, at);
    }
    if (at == end) {
        return fail(problem, at, "Unterminated string literal");
    }
    decoded = scratch;
    ++at;
    return true;
}

}  // namespace sw_detail
