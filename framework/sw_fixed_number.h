// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Doubles in fixed notation: the one rounding behind the values on the picture, the numbers of JSON text and the text
// form of a JSON value. Internal.
#pragma once

#include <cstddef>
#include <string>

namespace sw_detail {

/// A double has at most this many digits after its point; what is asked for beyond would be zeros.
inline constexpr int kMaxFractionDigits = 1074;

/// Bytes of the longest number with that many decimals: sign, digits, point, decimals.
constexpr std::size_t fixedLength(int decimals)
{
    constexpr std::size_t kMostWholeDigits = 309;
    return 1 + kMostWholeDigits + 1 + static_cast<std::size_t>(decimals);
}

/// Writes a number as printf's "%.*f" does in the "C" locale, whatever locale is set: rounded on its exact value,
/// halves to the even digit; "inf" and "nan" with their signs. `room` holds at least fixedLength(decimals) bytes,
/// `decimals` is 0..kMaxFractionDigits. Returns the end of the text. 2.5 without decimals gives "2", -0.04 with one
/// "-0.0".
char* writeFixed(char* room, double number, int decimals);

/// The same at the end of a string.
void appendFixed(std::string& out, double number, int decimals);

}  // namespace sw_detail
