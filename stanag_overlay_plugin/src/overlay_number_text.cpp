// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A value as a number's text. Runs for most placeholders of every frame: a stream is built only where the global locale
// writes numbers in a way of its own.
#include "overlay_number_text.h"

#include "overlay_numbers.h"

#include "sw_fixed_number.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <ios>
#include <locale>
#include <sstream>

namespace stanag_overlay {

namespace {

// Gives a stream the decimal point of the global locale and takes its digit grouping away: a number on the
// picture is one unbroken word.
class UngroupedPunctuation : public std::numpunct<char> {
public:
    explicit UngroupedPunctuation(char decimalPoint) : decimalPoint_(decimalPoint) {}

protected:
    char do_decimal_point() const override { return decimalPoint_; }

private:
    char decimalPoint_;
};

void appendStreamedFixed(std::string& out, double number, int precision)
{
    std::locale const global;
    std::ostringstream stream;
    stream.imbue(
        std::locale(global, new UngroupedPunctuation(std::use_facet<std::numpunct<char>>(global).decimal_point())));
    stream << std::fixed << std::setprecision(precision) << number;
    out += stream.str();
}

// Takes the zeros from the end, and the point too when nothing else follows it.
void trimZeros(std::string& out, std::size_t point)
{
    std::size_t const last = out.find_last_not_of('0');
    out.resize(last == point ? point : last + 1);
}

}  // namespace

void appendPlainText(std::string& out, SwJsonValue const& value)
{
    if (value.isString()) {
        out += value.stringRef();
    } else if (value.isDouble()) {
        sw_detail::appendFixed(out, value.toDouble(), 6);
    } else {
        out += value.toString();
    }
}

void formatNumber(std::string& out, SwJsonValue const& value, int decimals, bool trimTrailingZeros)
{
    long double number = 0.0L;
    if (!tryParseNumber(value, number)) {
        appendPlainText(out, value);
        return;
    }
    std::size_t const start = out.size();
    auto const narrowed = static_cast<double>(number);
    int const digits = std::min(decimals, sw_detail::kMaxFractionDigits);
    if (std::locale() == std::locale::classic()) {
        sw_detail::appendFixed(out, narrowed, digits);
    } else {
        appendStreamedFixed(out, narrowed, digits);
    }
    // Only a "." counts as the point, so nothing is trimmed under a decimal comma.
    std::size_t const point = trimTrailingZeros ? out.find('.', start) : std::string::npos;
    if (point != std::string::npos) {
        trimZeros(out, point);
    } else if (std::isfinite(narrowed)) {
        out.append(static_cast<std::size_t>(decimals - digits), '0');
    }
}

}  // namespace stanag_overlay
