// Numbers in messages of the check and of the command line.
#include "check/number_text.h"

#include <array>
#include <charconv>
#include <limits>

namespace check {

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

}  // namespace check
