// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What reading bytes as text needs everywhere: classes of bytes as the "C" locale has them, and that locale itself
// for the C functions that take one. Internal to this project: not installed, not included by public headers.
#pragma once

#include <locale.h>

namespace sw_detail {

/// The "C" locale, for conversions that must not follow the one that the process has set. Throws std::bad_alloc when
/// the C library cannot make it: a null locale must reach no conversion.
locale_t classicLocale();

/// White space of isspace: vertical tab and form feed count.
inline bool isSpace(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

inline bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

inline char toLower(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// The value of a hexadecimal digit, -1 for any other byte.
inline int hexDigitValue(char byte)
{
    if (isDigit(byte)) {
        return byte - '0';
    }
    if (byte >= 'a' && byte <= 'f') {
        return byte - 'a' + 10;
    }
    if (byte >= 'A' && byte <= 'F') {
        return byte - 'A' + 10;
    }
    return -1;
}

}  // namespace sw_detail
