// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The byte string and its lenient number conversions. The JSON reader and the variant's conversions
// turn text into numbers through this unit only; the writer builds its output in an SwString.
#include "SwString.h"

#include "SwCrypto.h"
#include "sw_diagnostic.h"
#include "sw_numbers.h"
#include "sw_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>

using sw_detail::hexDigitValue;
using sw_detail::isDigit;
using sw_detail::isSpace;

namespace {

constexpr std::string_view kTrimmedBytes = " \t\n\r";

std::string_view trimmedView(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(kTrimmedBytes);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kTrimmedBytes) - first + 1);
}

/// The trimmed text without "_", which may separate digits anywhere.
std::string workingText(std::string_view text)
{
    std::string working(trimmedView(text));
    working.erase(std::remove(working.begin(), working.end(), '_'), working.end());
    return working;
}

/// A number as sign and magnitude, before any range is applied.
struct Magnitude {
    std::uint64_t value = 0;
    bool negative = false;
    bool overflow = false;
};

/// Takes an optional sign off the front of `text`; true for "-".
bool takeSign(std::string_view& text)
{
    if (text.empty() || (text.front() != '-' && text.front() != '+')) {
        return false;
    }
    bool const negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

/// Accumulates the leading digits of `text` in `base`; returns how many there were.
std::size_t readDigits(std::string_view text, unsigned base, Magnitude& number)
{
    std::size_t count = 0;
    for (; count < text.size(); ++count) {
        int const value = hexDigitValue(text[count]);
        auto const digit = static_cast<unsigned>(value);
        if (value < 0 || digit >= base) {
            break;
        }
        if (number.value > (std::numeric_limits<std::uint64_t>::max() - digit) / base) {
            number.overflow = true;
        } else {
            number.value = number.value * base + digit;
        }
    }
    return count;
}

/// Reads as strtoll and strtoull do with base 0: white space, sign, "0x" or "0" prefix, digits; what
/// follows is ignored. No value without a digit. Written out here because the C functions take white
/// space from the process's locale and their newer versions also read "0b".
std::optional<Magnitude> readAutomaticBase(std::string_view text)
{
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    Magnitude number;
    number.negative = takeSign(text);
    unsigned base = 10;
    if (!text.empty() && text.front() == '0') {
        bool const hexadecimal = text.size() > 2 && (text[1] == 'x' || text[1] == 'X') && hexDigitValue(text[2]) >= 0;
        base = hexadecimal ? 16 : 8;
        text.remove_prefix(hexadecimal ? 2 : 0);
    }
    if (readDigits(text, base, number) == 0) {
        return std::nullopt;
    }
    return number;
}

/// Whether the text, its sign taken off, begins with "0b" or "0B".
bool hasBinaryPrefix(std::string_view unsignedText)
{
    return unsignedText.size() >= 2 && unsignedText[0] == '0' && (unsignedText[1] == 'b' || unsignedText[1] == 'B');
}

/// Reads "0b" digits; any other byte, or none at all, is no number.
std::optional<Magnitude> readBinary(std::string_view digits, bool negative)
{
    Magnitude number;
    number.negative = negative;
    if (digits.empty() || readDigits(digits, 2, number) != digits.size()) {
        return std::nullopt;
    }
    return number;
}

/// The magnitude as a signed 64-bit number, no value when it lies outside.
std::optional<std::int64_t> toSigned(Magnitude const& number)
{
    std::uint64_t const limit = number.negative ? std::uint64_t{1} << 63U : (std::uint64_t{1} << 63U) - 1;
    if (number.overflow || number.value > limit) {
        return std::nullopt;
    }
    // Negated in the unsigned type: the magnitude of the lowest number has no signed counterpart.
    return static_cast<std::int64_t>(number.negative ? std::uint64_t{0} - number.value : number.value);
}

/// The integer rules shared by toInt and parseNumericDouble.
std::optional<std::int64_t> readInteger(std::string_view working)
{
    std::string_view unsignedText = working;
    bool const negative = takeSign(unsignedText);
    if (unsignedText.empty()) {
        return std::nullopt;
    }
    std::optional<Magnitude> const number =
        hasBinaryPrefix(unsignedText) ? readBinary(unsignedText.substr(2), negative) : readAutomaticBase(working);
    return number ? toSigned(*number) : std::nullopt;
}

}  // namespace

int SwString::size() const noexcept
{
    return sw_detail::saturatedInt(text_.size());
}

SwString SwString::operator+(SwString const& other) const
{
    std::string joined;
    joined.reserve(text_.size() + other.text_.size());
    joined.append(text_).append(other.text_);
    return joined;
}

SwString SwString::trimmed() const
{
    return std::string(trimmedView(text_));
}

SwString SwString::mid(int position, int length) const
{
    if (position < 0 || static_cast<std::size_t>(position) >= text_.size()) {
        return {};
    }
    std::size_t const count = length < 0 ? std::string::npos : static_cast<std::size_t>(length);
    return text_.substr(static_cast<std::size_t>(position), count);
}

SwString SwString::arg(SwString const& value) const
{
    for (std::size_t at = text_.find('%'); at != std::string::npos; at = text_.find('%', at + 1)) {
        if (at + 1 < text_.size() && isDigit(text_[at + 1])) {
            std::string filled = text_;
            filled.replace(at, 2, value.text_);
            return filled;
        }
    }
    return *this;
}

std::vector<SwString> SwString::split(char separator) const
{
    std::vector<SwString> pieces;
    std::size_t start = 0;
    while (start < text_.size()) {
        std::size_t const end = std::min(text_.find(separator, start), text_.size());
        pieces.emplace_back(text_.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

int SwString::toInt(bool* ok) const
{
    std::optional<std::int64_t> const number = readInteger(workingText(text_));
    bool const inRange = number && *number >= std::numeric_limits<std::int32_t>::min() &&
                         *number <= std::numeric_limits<std::int32_t>::max();
    if (ok != nullptr) {
        *ok = inRange;
    }
    if (!inRange) {
        sw_detail::writeDiagnostic("Invalid int conversion in SwString: ", text_);
        return 0;
    }
    return static_cast<int>(*number);
}

bool SwString::parseNumericDouble(double& out) const
{
    std::string const working = workingText(text_);
    if (working.find_first_of(".eE") == std::string::npos) {
        std::optional<std::int64_t> const number = readInteger(working);
        if (number) {
            out = static_cast<double>(*number);
        }
        return number.has_value();
    }
    char* end = nullptr;
    errno = 0;
    double const number = strtod_l(working.c_str(), &end, sw_detail::classicLocale());
    if (end == working.c_str() || errno == ERANGE) {
        return false;
    }
    out = number;
    return true;
}

long SwString::toLong() const
{
    std::optional<Magnitude> const number = readAutomaticBase(text_);
    return number ? static_cast<long>(toSigned(*number).value_or(0)) : 0;
}

unsigned long SwString::toUnsigned(unsigned long max) const
{
    std::string_view const working = trimmedView(text_);
    if (working.empty() || working.front() == '-') {
        return 0;
    }
    std::optional<Magnitude> const number = readAutomaticBase(working);
    if (!number || number->overflow) {
        return 0;
    }
    // A "-" that only white space beyond the trimmed set precedes wraps, as strtoull has it.
    std::uint64_t const value = number->negative ? std::uint64_t{0} - number->value : number->value;
    return value > max ? 0 : static_cast<unsigned long>(value);
}

SwString SwString::encryptAES(SwString const& key) const
{
    try {
        return SwCrypto::encryptOrReport(text_, key.text_);
    } catch (std::bad_alloc const& failure) {
        sw_detail::writeDiagnostic("Encryption error: ", failure.what());
        return {};
    }
}

SwString SwString::decryptAES(SwString const& key) const
{
    return SwCrypto::decryptAES(text_, key.text_);
}
