// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Number readings of configuration and payload values. Used by the configuration parser, the conditions
// and the formatter, so that one text means the same number in all three.
#include "overlay_numbers.h"

#include "sw_extended.h"
#include "sw_text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace stanag_overlay {

namespace {

// Out-of-range narrowing from long double to binary64 has a defined result (infinity) only there.
static_assert(std::numeric_limits<double>::is_iec559);
static_assert(sizeof(unsigned long) == sizeof(std::uint64_t));

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr long double kTwoTo64 = 18446744073709551616.0L;

enum class UnsignedReading : std::uint8_t { Whole, TextFollows, Failed };

// strtoull with automatic base, independent of locale and of the binary prefix that newer C libraries add.
UnsignedReading readUnsigned(std::string const& text, unsigned long& out)
{
    char const* at = text.data();
    char const* const end = at + text.size();
    at = std::find_if_not(at, end, sw_detail::isSpace);
    bool negative = false;
    if (at != end && (*at == '+' || *at == '-')) {
        negative = *at == '-';
        ++at;
    }
    int base = 10;
    if (at != end && *at == '0') {
        bool const hexadecimal = end - at > 2 && (at[1] == 'x' || at[1] == 'X') && sw_detail::hexDigitValue(at[2]) >= 0;
        base = hexadecimal ? 16 : 8;
        at += hexadecimal ? 2 : 0;
    }
    unsigned long number = 0;
    auto const [stop, error] = std::from_chars(at, end, number, base);
    if (error != std::errc()) {
        return UnsignedReading::Failed;
    }
    out = negative ? 0UL - number : number;
    return stop == end ? UnsignedReading::Whole : UnsignedReading::TextFollows;
}

// A flag word with bit 31 set has become negative by its narrowing and is refused, not wrapped back.
bool takeIfNotNegative(std::int32_t value, unsigned long& out)
{
    if (value < 0) {
        return false;
    }
    out = static_cast<unsigned long>(value);
    return true;
}

}  // namespace

std::int32_t low32Signed(std::int64_t value)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

std::int64_t truncateToInt64(double value)
{
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= kTwoTo63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value <= -kTwoTo63) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

std::int32_t truncateToInt32(double value)
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(
        truncateToInt64(value), std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

std::uint64_t truncateToUint64(long double value)
{
    // Written so that not-a-number takes this way too.
    if (!(value > 0.0L)) {
        return 0;
    }
    if (value >= kTwoTo64) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return static_cast<std::uint64_t>(value);
}

bool isWhole(double value)
{
    return std::isfinite(value) && std::trunc(value) == value;
}

bool parseWholeNumber(std::string const& text, long double& out)
{
    // The usual short integers have a quicker way. Zero takes the long way: it may have a sign.
    std::int64_t integer = 0;
    auto const [stop, error] = std::from_chars(text.data(), text.data() + text.size(), integer);
    if (error == std::errc() && stop == text.data() + text.size() && integer != 0) {
        out = integer;
        return true;
    }
    char* end = nullptr;
    int const savedErrno = errno;
    long double const number = sw_detail::readExtended(text.c_str(), &end, sw_detail::classicLocale());
    // Overflow and underflow both count as unreadable.
    bool const inRange = errno != ERANGE;
    errno = savedErrno;
    // An embedded zero byte stops the reading before the end and so counts as text after the number.
    if (end == text.c_str() || !inRange || end != text.c_str() + text.size()) {
        return false;
    }
    out = number;
    return true;
}

bool parseLeadingDouble(std::string const& text, double& out)
{
    char* end = nullptr;
    int const savedErrno = errno;
    errno = 0;
    double const number = strtod_l(text.c_str(), &end, sw_detail::classicLocale());
    bool const inRange = errno != ERANGE;
    errno = savedErrno;
    if (end == text.c_str() || !inRange) {
        return false;
    }
    out = number;
    return true;
}

bool tryParseNumber(SwJsonValue const& value, long double& out)
{
    switch (value.type()) {
    case SwJsonValue::Int:
        out = static_cast<double>(value.toInt());
        return true;
    case SwJsonValue::Double:
        out = value.toDouble();
        return true;
    case SwJsonValue::String:
        return parseWholeNumber(value.stringRef(), out);
    default:
        return false;
    }
}

bool numbersEqual(long double a, long double b)
{
    return static_cast<double>(std::fabs(sw_detail::extended(a - b))) < kEqualityTolerance;
}

bool tryParseUnsignedValue(SwJsonValue const& value, unsigned long& out)
{
    switch (value.type()) {
    case SwJsonValue::Int:
        return takeIfNotNegative(low32Signed(value.toInt()), out);
    case SwJsonValue::Double: {
        double const number = value.toDouble();
        if (isWhole(number)) {
            return takeIfNotNegative(low32Signed(truncateToInt64(number)), out);
        }
        if (!std::isfinite(number) || number < 0.0) {
            return false;
        }
        out = truncateToUint64(number);
        return true;
    }
    case SwJsonValue::String: {
        unsigned long number = 0;
        if (!tryParseUnsignedString(value.stringRef(), number)) {
            return false;
        }
        out = number;
        return true;
    }
    default:
        return false;
    }
}

bool tryParseUnsignedString(std::string const& text, unsigned long& out)
{
    unsigned long number = 0;
    switch (readUnsigned(text, number)) {
    case UnsignedReading::Whole:
        out = number;
        return true;
    case UnsignedReading::TextFollows:
        out = number;
        return false;
    case UnsignedReading::Failed:
        break;
    }
    long double real = 0.0L;
    if (!parseWholeNumber(text, real) || !std::isfinite(static_cast<double>(real)) || real < 0.0L) {
        return false;
    }
    out = truncateToUint64(real);
    return true;
}

void readDurationMs(SwJsonObject const& object, std::string_view key, std::uint64_t& outNs)
{
    auto const member = object.find(key);
    if (member == object.end()) {
        return;
    }
    SwJsonValue const& value = member->second;
    std::int64_t milliseconds = 0;
    if (value.isInt()) {
        milliseconds = low32Signed(value.toInt());
    } else if (value.isDouble()) {
        milliseconds = truncateToInt64(value.toDouble());
    } else if (value.isBool()) {
        milliseconds = value.toBool() ? 1 : 0;
    }
    outNs = static_cast<std::uint64_t>(std::clamp<std::int64_t>(milliseconds, 0, kMaxDurationMs)) * kNsPerMs;
}

}  // namespace stanag_overlay
