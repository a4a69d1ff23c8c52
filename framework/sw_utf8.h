// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// UTF-8 for everybody who reads it: any bytes are a text. Internal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sw_utf8 {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct CodePoint {
    char32_t value = 0;
    std::size_t bytes = 0;      ///< how many it took; 0 only at the end of the text
    bool isWellFormed = false;  ///< else `value` stands for malformed bytes
};

/// What may follow a lead byte (The Unicode Standard, table 3-7; RFC 3629, section 4).
struct Lead {
    std::size_t length = 0;  ///< bytes of the whole character; 0 when no character begins like this
    std::uint8_t secondLowest = 0x80;
    std::uint8_t secondHighest = 0xBF;
};

constexpr Lead leadOf(std::uint8_t byte)
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

/// The code point that begins at `offset`. Malformed bytes give U+FFFD for each maximal part that could have
/// begun a character (The Unicode Standard, section 3.9): "\xE2\x82" is one, "\xC0\x80" is two.
constexpr CodePoint codePointAt(std::string_view text, std::size_t offset)
{
    if (offset >= text.size()) {
        return {};
    }
    auto const first = static_cast<std::uint8_t>(text[offset]);
    Lead const lead = leadOf(first);
    if (lead.length == 1) {
        return {first, 1, true};
    }
    if (lead.length == 0) {
        return {kReplacementCharacter, 1, false};
    }
    char32_t value = first & (0x7FU >> lead.length);
    for (std::size_t i = 1; i < lead.length; ++i) {
        std::uint8_t const lowest = i == 1 ? lead.secondLowest : 0x80;
        std::uint8_t const highest = i == 1 ? lead.secondHighest : 0xBF;
        auto const next = offset + i < text.size() ? static_cast<std::uint8_t>(text[offset + i]) : std::uint8_t{0};
        if (next < lowest || next > highest) {
            return {kReplacementCharacter, i, false};
        }
        value = (value << 6U) | (next & 0x3FU);
    }
    return {value, lead.length, true};
}

/// Appends a code point up to U+10FFFF in its one well-formed form; surrogates as if they were characters, which nobody
/// reads back.
inline void append(std::string& out, char32_t codePoint)
{
    auto const put = [&out](char32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (codePoint < 0x80U) {
        put(codePoint);
        return;
    }
    if (codePoint < 0x800U) {
        put(0xC0U | codePoint >> 6U);
    } else {
        if (codePoint < 0x10000U) {
            put(0xE0U | codePoint >> 12U);
        } else {
            put(0xF0U | codePoint >> 18U);
            put(0x80U | (codePoint >> 12U & 0x3FU));
        }
        put(0x80U | (codePoint >> 6U & 0x3FU));
    }
    put(0x80U | (codePoint & 0x3FU));
}

/// The text with every byte that is not part of a well-formed sequence (overlong forms, surrogates and values
/// above U+10FFFF are not) replaced by U+FFFD, so that JSON made from it is valid. "A\xFF" gives "A\xEF\xBF\xBD".
inline std::string valid(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        CodePoint const point = codePointAt(bytes, at);
        std::size_t const taken = point.isWellFormed ? point.bytes : 1;
        text.append(point.isWellFormed ? bytes.substr(at, taken) : "\xEF\xBF\xBD");
        at += taken;
    }
    return text;
}

}  // namespace sw_utf8
