// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers in messages: never in the locale of the process.
#include "sw_number_text.h"

#include "sw_fixed_number.h"

#include <array>
#include <charconv>
#include <limits>

namespace sw_text {

std::string numberText(double number)
{
    std::array<char, 32> text{};
    char* const begin = text.data();
    char* end = begin;
    // 15 digits are what every decimal number survives; 17 are what every double needs at most.
    for (int digits = std::numeric_limits<double>::digits10; digits <= std::numeric_limits<double>::max_digits10;
         ++digits) {
        end = std::to_chars(begin, begin + text.size(), number, std::chars_format::general, digits).ptr;
        double readBack = 0.0;
        std::from_chars(begin, end, readBack);
        if (readBack == number) {
            break;
        }
    }
    return {begin, end};
}

std::string secondsText(double seconds)
{
    constexpr int kMilliseconds = 3;
    std::string text;
    sw_detail::appendFixed(text, seconds, kMilliseconds);
    return text + " s";
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many)
{
    return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

}  // namespace sw_text
