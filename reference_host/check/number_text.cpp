// Numbers in messages of the check and of the command line.
#include "check/number_text.h"

#include <array>
#include <charconv>

namespace check {

std::string numberText(double number)
{
    constexpr int kDigits = 15;
    std::array<char, 32> text{};
    auto const end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, kDigits).ptr;
    return {text.data(), end};
}

}  // namespace check
