// Decodes UTF-8 one code point at a time; the first stage of every text's way to glyphs.
#include "utf8.h"

#include <cstdint>

namespace imaging {
namespace {

/// What may follow a lead byte (The Unicode Standard, table 3-7).
struct Lead {
    std::size_t length = 0;  ///< bytes of the whole character; 0 when no character begins like this
    std::uint8_t secondLowest = 0x80;
    std::uint8_t secondHighest = 0xBF;
};

Lead leadOf(std::uint8_t byte)
{
    if (byte < 0x80) {
        return {1};
    }
    if (byte < 0xC2 || byte > 0xF4) {
        return {0};
    }
    if (byte < 0xE0) {
        return {2};
    }
    if (byte < 0xF0) {
        return {3, std::uint8_t(byte == 0xE0 ? 0xA0 : 0x80), std::uint8_t(byte == 0xED ? 0x9F : 0xBF)};
    }
    return {4, std::uint8_t(byte == 0xF0 ? 0x90 : 0x80), std::uint8_t(byte == 0xF4 ? 0x8F : 0xBF)};
}

}  // namespace

CodePoint codePointAt(std::string_view text, std::size_t offset)
{
    if (offset >= text.size()) {
        return {};
    }
    auto const first = static_cast<std::uint8_t>(text[offset]);
    auto const lead = leadOf(first);
    if (lead.length == 1) {
        return {first, 1};
    }
    if (lead.length == 0) {
        return {kReplacementCharacter, 1};
    }
    char32_t value = first & (0x7FU >> lead.length);
    for (std::size_t i = 1; i < lead.length; ++i) {
        std::uint8_t const lowest = i == 1 ? lead.secondLowest : 0x80;
        std::uint8_t const highest = i == 1 ? lead.secondHighest : 0xBF;
        auto const next = offset + i < text.size() ? static_cast<std::uint8_t>(text[offset + i]) : std::uint8_t{0};
        if (next < lowest || next > highest) {
            return {kReplacementCharacter, i};
        }
        value = (value << 6) | (next & 0x3FU);
    }
    return {value, lead.length};
}

}  // namespace imaging
