// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A time stamp as date and time. The default pattern and its like are written digit by digit; patterns with names of
// days, and any other global locale, go through the locale's facet.
#include "overlay_date_text.h"

#include "sw_extended.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

namespace stanag_overlay {

namespace {

// Microseconds since 1970, halves away from zero; beyond 64 bits the largest magnitude whose negative
// exists too. Not-a-number is the epoch.
std::int64_t roundToMicroseconds(long double value)
{
    constexpr auto kLimit = static_cast<long double>(std::numeric_limits<std::int64_t>::max());
    if (std::isnan(value)) {
        return 0;
    }
    // Compared before the call, whose result beyond 64 bits is undefined.
    if (value >= kLimit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value <= -kLimit) {
        return -std::numeric_limits<std::int64_t>::max();
    }
    return std::llroundl(value);
}

// Goes through nanoseconds in wrapping 64-bit arithmetic, so times beyond the years 1677 to 2262 come out
// as times within. The fraction of a second is dropped toward 1970.
std::time_t wholeSeconds(std::int64_t microseconds)
{
    auto const nanoseconds = static_cast<std::int64_t>(static_cast<std::uint64_t>(microseconds) * 1000U);
    return static_cast<std::time_t>(nanoseconds / 1000000000);
}

long double toMicroseconds(long double number, TimestampUnit unit)
{
    switch (unit) {
    case TimestampUnit::Seconds:
        return sw_detail::extended(number * 1000000.0L);
    case TimestampUnit::Milliseconds:
        return sw_detail::extended(number * 1000.0L);
    case TimestampUnit::Microseconds:
        break;
    }
    return number;
}

void appendDigits(std::string& out, int number, int width)
{
    std::array<char, 4> digits{};
    for (int i = width - 1; i >= 0; --i) {
        digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    out.append(digits.data(), static_cast<std::size_t>(width));
}

// Writes the conversions that are plain padded numbers in the classic locale, four-digit years included.
// Any other conversion, and a "%" at the end, gives false with `out` as it was: the facet decides those.
bool appendNumericDate(std::string& out, std::tm const& time, std::string_view pattern)
{
    std::size_t const start = out.size();
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            out += pattern[i];
            continue;
        }
        ++i;
        switch (i < pattern.size() ? pattern[i] : '\0') {
        case 'H':
            appendDigits(out, time.tm_hour, 2);
            break;
        case 'M':
            appendDigits(out, time.tm_min, 2);
            break;
        case 'S':
            appendDigits(out, time.tm_sec, 2);
            break;
        case 'd':
            appendDigits(out, time.tm_mday, 2);
            break;
        case 'm':
            appendDigits(out, time.tm_mon + 1, 2);
            break;
        case 'Y':
            // The wrapping above leaves the years 1677 to 2262.
            appendDigits(out, time.tm_year + 1900, 4);
            break;
        default:
            out.resize(start);
            return false;
        }
    }
    return true;
}

// As std::put_time with the pattern as a C string, which a zero byte ends.
void appendDateText(std::string& out, std::tm const& time, std::string_view dateFormat)
{
    std::string_view const pattern = dateFormat.substr(0, dateFormat.find('\0'));
    if (std::locale() == std::locale::classic() && appendNumericDate(out, time, pattern)) {
        return;
    }
    std::ostringstream stream;
    auto const& facet = std::use_facet<std::time_put<char>>(stream.getloc());
    facet.put(std::ostreambuf_iterator<char>(stream), stream, stream.fill(), &time, pattern.data(),
              pattern.data() + pattern.size());
    out += stream.str();
}

}  // namespace

void appendDate(std::string& out, long double number, FormatSpec const& spec)
{
    std::time_t const seconds = wholeSeconds(roundToMicroseconds(toMicroseconds(number, spec.timestampUnit)));
    std::tm time{};
    if (spec.localTime) {
        localtime_r(&seconds, &time);
    } else {
        gmtime_r(&seconds, &time);
    }
    appendDateText(out, time, spec.dateFormat);
}

}  // namespace stanag_overlay
