// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bytes as lower-case hexadecimal digits, for tokens and tags.
#pragma once

#include <string>

namespace editor {

/// Any container of bytes: {0x0a, 0xff} gives "0aff".
template <typename Bytes>
std::string hexText(Bytes const& bytes)
{
    constexpr char const* kDigits = "0123456789abcdef";
    std::string text;
    for (unsigned char const byte : bytes) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

}  // namespace editor
