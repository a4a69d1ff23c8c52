// UTF-8 as the painter reads it: any bytes are a text.
#pragma once

#include <cstddef>
#include <string_view>

namespace imaging {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct CodePoint {
    char32_t value = 0;
    std::size_t bytes = 0;  ///< how many it took; 0 only at the end of the text
};

/// The code point that begins at `offset`. Malformed bytes give U+FFFD for each maximal part that could have
/// begun a character (The Unicode Standard, section 3.9): "\xE2\x82" is one, "\xC0\x80" is two.
CodePoint codePointAt(std::string_view text, std::size_t offset);

}  // namespace imaging
