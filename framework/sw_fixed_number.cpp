// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Fixed notation. A frame shows dozens of such numbers, nearly all of them short: those are scaled and rounded in
// whole-number arithmetic, the others go to the library's exact conversion.
#include "sw_fixed_number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace sw_detail {

namespace {

/// The product of two 64-bit numbers.
__extension__ using Uint128 = unsigned __int128;

/// Most decimals that whole-number arithmetic scales by.
constexpr int kMaxScaledDecimals = 12;

/// A magnitude times 10^decimals, rounded half to even on its exact value: a 53-bit significand times 10^12 has at
/// most 93 bits, so nothing is lost. False for the rare ones: no fraction bits, subnormal, or a result beyond 64 bits.
bool scaleAndRound(double magnitude, int decimals, std::uint64_t& out)
{
    constexpr std::array<std::uint64_t, kMaxScaledDecimals + 1> kPowersOfTen = {
        1,        10,        100,        1000,        10000,        100000,       1000000,
        10000000, 100000000, 1000000000, 10000000000, 100000000000, 1000000000000};
    constexpr int kSignificandBits = 52;
    constexpr int kExponentBias = 1075;
    constexpr int kProductBits = 93;
    auto const bits = std::bit_cast<std::uint64_t>(magnitude);
    auto const exponent = static_cast<int>(bits >> kSignificandBits);
    int const shift = kExponentBias - exponent;
    if (shift <= 0 || exponent == 0) {
        return false;
    }
    if (shift > kProductBits) {
        // Less than half a last digit.
        out = 0;
        return true;
    }
    std::uint64_t const hiddenBit = std::uint64_t{1} << kSignificandBits;
    std::uint64_t const significand = (bits & (hiddenBit - 1)) | hiddenBit;
    Uint128 const product = Uint128{significand} * kPowersOfTen[static_cast<std::size_t>(decimals)];
    Uint128 quotient = product >> shift;
    Uint128 const remainder = product - (quotient << shift);
    Uint128 const half = Uint128{1} << (shift - 1);
    if (remainder > half || (remainder == half && (quotient & 1U) != 0)) {
        ++quotient;
    }
    out = static_cast<std::uint64_t>(quotient);
    return quotient == out;
}

/// Room for a short number: sign, 20 digits, the point, and a zero before it.
using ShortRoom = std::array<char, 24>;

/// A number of the usual size, written at the end of `room`; empty for other numbers.
std::string_view shortFixed(ShortRoom& room, double number, int decimals)
{
    std::uint64_t scaled = 0;
    if (decimals > kMaxScaledDecimals || !scaleAndRound(std::fabs(number), decimals, scaled)) {
        return {};
    }
    char* const end = room.data() + room.size();
    char* at = end;
    // At least one digit before the point.
    for (int written = 0; written <= decimals || scaled != 0; ++written) {
        if (written == decimals && decimals > 0) {
            *--at = '.';
        }
        *--at = static_cast<char>('0' + scaled % 10);
        scaled /= 10;
    }
    if (std::signbit(number)) {
        *--at = '-';
    }
    return {at, static_cast<std::size_t>(end - at)};
}

}  // namespace

char* writeFixed(char* room, double number, int decimals)
{
    ShortRoom shortRoom;
    if (std::string_view const text = shortFixed(shortRoom, number, decimals); !text.empty()) {
        return std::copy(text.begin(), text.end(), room);
    }
    return std::to_chars(room, room + fixedLength(decimals), number, std::chars_format::fixed, decimals).ptr;
}

void appendFixed(std::string& out, double number, int decimals)
{
    ShortRoom shortRoom;
    if (std::string_view const text = shortFixed(shortRoom, number, decimals); !text.empty()) {
        out += text;
        return;
    }
    std::array<char, fixedLength(kMaxFractionDigits)> room;
    out.append(room.data(), writeFixed(room.data(), number, decimals));
}

}  // namespace sw_detail
