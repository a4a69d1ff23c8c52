// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The reading rules of the configuration's values.
#include "check/reading_rules.h"

#include "sw_extended.h"
#include "sw_numbers.h"
#include "sw_text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

namespace check {
namespace {

constexpr std::int32_t kMaxMilliseconds = 600000;
constexpr std::int32_t kMaxFrames = 120;

/// The low 32 bits, with the topmost as sign.
std::int32_t low32(std::int64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(number)));
}

bool isWhole(double number)
{
    return std::isfinite(number) && number == std::trunc(number);
}

/// The number without its fraction, at most as large as 32 bits can hold.
std::int32_t cut(double number)
{
    constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return std::isnan(number) ? 0 : static_cast<std::int32_t>(std::clamp(number, kLeast, kMost));
}

std::int32_t limitedHeld(SwJsonValue const& value)
{
    return value.isDouble() ? cut(value.toDouble()) : integerHeld(value);
}

/// A number by the C library, without the process's locale; none when there is none at the beginning or when it does
/// not fit the type. `end` is where it ends.
template <typename Number>
std::optional<Number> leadingNumber(std::string const& text, Number (*convert)(char const*, char**, locale_t),
                                    char const*& end)
{
    char* stop = nullptr;
    errno = 0;
    Number const number = convert(text.c_str(), &stop, sw_detail::classicLocale());
    end = stop;
    return stop == text.c_str() || errno == ERANGE ? std::nullopt : std::optional(number);
}

struct UnsignedText {
    std::uint64_t number = 0;
    bool isRead = false;   ///< there are digits, and they fit
    bool isWhole = false;  ///< nothing follows them
};

/// White space, a sign that wraps around zero, then hexadecimal after 0x, octal after 0, decimal otherwise.
UnsignedText readUnsigned(std::string_view text)
{
    text.remove_prefix(
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), sw_detail::isSpace) - text.begin()));
    bool const isNegative = text.substr(0, 1) == "-";
    text.remove_prefix(isNegative || text.substr(0, 1) == "+" ? 1 : 0);
    int base = 10;
    if (text.substr(0, 1) == "0") {
        bool const isHexadecimal =
            text.size() > 2 && (text[1] == 'x' || text[1] == 'X') && sw_detail::hexDigitValue(text[2]) >= 0;
        base = isHexadecimal ? 16 : 8;
        text.remove_prefix(isHexadecimal ? 2 : 0);
    }
    UnsignedText result;
    char const* const last = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), last, result.number, base);
    result.isRead = failure == std::errc();
    result.isWhole = stop == last;
    result.number = isNegative ? 0 - result.number : result.number;
    return result;
}

std::optional<std::uint64_t> maskOfText(std::string const& text)
{
    UnsignedText const integer = readUnsigned(text);
    if (integer.isRead) {
        return integer.isWhole ? std::optional(integer.number) : std::nullopt;
    }
    char const* end = nullptr;
    std::optional<long double> const number = leadingNumber(text, sw_detail::readExtended, end);
    bool const isUsable =
        number && end == text.c_str() + text.size() && *number >= 0.0L && std::isfinite(static_cast<double>(*number));
    if (!isUsable) {
        return std::nullopt;
    }
    constexpr long double kTwoTo64 = 18446744073709551616.0L;
    return *number >= kTwoTo64 ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(*number);
}

}  // namespace

bool isNumber(SwJsonValue const& value)
{
    return value.isInt() || value.isDouble();
}

std::int32_t integerHeld(SwJsonValue const& value)
{
    if (value.isInt()) {
        return low32(value.toInt());
    }
    if (value.isDouble()) {
        double const number = value.toDouble();
        return isWhole(number) ? low32(sw_detail::saturatedInt64(number)) : cut(number);
    }
    return value.isBool() && value.toBool() ? 1 : 0;
}

std::int32_t millisecondsHeld(SwJsonValue const& value)
{
    return std::clamp(limitedHeld(value), 0, kMaxMilliseconds);
}

std::int32_t frameCountHeld(SwJsonValue const& value)
{
    return isNumber(value) ? std::clamp(limitedHeld(value), 1, kMaxFrames) : 1;
}

float fractionHeld(SwJsonValue const& value)
{
    double const number = value.isDouble() ? value.toDouble()
                          : value.isInt()  ? static_cast<double>(value.toInt())
                          : value.toBool() ? 1.0
                                           : 0.0;
    return std::clamp(sw_detail::nearestFloat(number), 0.0F, 1.0F);
}

std::optional<float> opacityHeld(SwJsonValue const& value)
{
    return isNumber(value) ? std::optional(fractionHeld(value)) : std::nullopt;
}

bool switchHeld(SwJsonValue const& value)
{
    return value.isBool() ? value.toBool() : value.toInt() != 0 || value.toDouble() != 0.0;
}

std::optional<std::uint32_t> colorHeld(SwJsonValue const& value)
{
    std::string const& text = value.stringRef();
    if (text.size() != 7 || text.front() != '#') {
        return std::nullopt;
    }
    std::istringstream digits(text.substr(1));
    digits.imbue(std::locale::classic());
    std::uint32_t number = 0;
    digits >> std::hex >> number;
    return number & 0xFFFFFFU;
}

std::optional<double> boundHeld(SwJsonValue const& value)
{
    std::optional<double> number;
    if (value.isString()) {
        char const* end = nullptr;
        number = leadingNumber(value.stringRef(), strtod_l, end);
    } else if (value.isDouble() && !isWhole(value.toDouble())) {
        number = value.toDouble();
    } else {
        number = integerHeld(value);
    }
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<std::uint64_t> maskHeld(SwJsonValue const& value)
{
    if (value.isString()) {
        return maskOfText(value.stringRef());
    }
    if (!isNumber(value)) {
        return std::nullopt;
    }
    if (value.isDouble() && !isWhole(value.toDouble())) {
        double const number = value.toDouble();
        // Larger ones have no fraction, so that this one fits.
        return std::isfinite(number) && number >= 0.0 ? std::optional(static_cast<std::uint64_t>(number))
                                                      : std::nullopt;
    }
    std::int32_t const number = integerHeld(value);
    return number >= 0 ? std::optional(static_cast<std::uint64_t>(number)) : std::nullopt;
}

}  // namespace check
