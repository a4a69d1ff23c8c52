// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How numbers of a configuration or payload are read: every deliberate narrowing and rounding of the
// plugin's data path, one named helper each. Texts are read in the "C" locale.
#pragma once

#include "SwJson.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace stanag_overlay {

/// Longest duration a configuration can give.
inline constexpr std::int64_t kMaxDurationMs = 600000;
inline constexpr std::uint64_t kNsPerMs = 1000000;
/// Two numbers closer than this are equal.
inline constexpr double kEqualityTolerance = 1e-9;

/// The low 32 bits as a signed number: 4294967312 gives 16, 2147483648 gives -2147483648.
std::int32_t low32Signed(std::int64_t value);

/// Truncates toward zero; values beyond 64 bits saturate, not-a-number gives 0.
std::int64_t truncateToInt64(double value);

/// The same for 32 bits.
std::int32_t truncateToInt32(double value);

/// The same for unsigned 64 bits; negative values give 0.
std::uint64_t truncateToUint64(long double value);

/// Whether the number is finite and has no fraction.
bool isWhole(double value);

/// Reads a whole text as a number by the rules of std::stold: leading white space skipped, decimal or
/// hexadecimal notation, "inf" and "nan" accepted. False when there is no number, bytes follow it, or
/// it is out of range: " 12" is a number, "12 " is not.
bool parseWholeNumber(std::string const& text, long double& out);

/// Reads the number at the start of a text as std::stod does: leading white space skipped, what follows
/// the number ignored. False leaves `out` alone: no number, or outside the double range (1e999, 1e-999).
/// "5 m" gives 5.
bool parseLeadingDouble(std::string const& text, double& out);

/// A value as a number: Int through binary64 (integers beyond 2^53 lose low digits on purpose), Double
/// widened, String by parseWholeNumber. Other kinds are no numbers.
bool tryParseNumber(SwJsonValue const& value, long double& out);

/// Whether two numbers are equal: the absolute difference, rounded to binary64, is below 1e-9.
bool numbersEqual(long double a, long double b);

/// A JSON value as an unsigned integer: Int by its low 32 bits when not negative, a whole Double
/// likewise, a Double with a fraction truncated when finite and not negative, a String by
/// tryParseUnsignedString. False leaves `out` alone: 2147483648 (bit 31 set) is refused.
bool tryParseUnsignedValue(SwJsonValue const& value, unsigned long& out);

/// A whole text as an unsigned integer: std::stoull with base 0 ("0x10" is 16, "010" is 8, "-1" is
/// 2^64 - 1); where that finds no digits or overflows, std::stold truncated toward zero, saturating,
/// if not negative (".5" is 0). Text after the number makes it false, with the number in `out` all the
/// same: "1e3" is refused.
bool tryParseUnsignedString(std::string const& text, unsigned long& out);

/// A member as a duration in nanoseconds: Int by its low 32 bits or Double truncated, limited to
/// 0..600000 ms; true is 1 ms, false 0; any other kind 0. `outNs` keeps its value when the member is
/// absent.
void readDurationMs(SwJsonObject const& object, std::string_view key, std::uint64_t& outNs);

}  // namespace stanag_overlay
