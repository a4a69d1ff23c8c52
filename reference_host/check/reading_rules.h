// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a block's record holds for a value that the JSON reader gives: the rules of the configuration, one function
// each. Every message of the check is made from what these return.
#pragma once

#include "SwJson.h"

#include <cstdint>
#include <optional>
#include <string>

namespace check {

bool isNumber(SwJsonValue const& value);

/// Whole numbers keep their low 32 bits, fractions are cut toward zero, true is 1; every other kind is 0.
std::int32_t integerHeld(SwJsonValue const& value);

/// A duration: as integerHeld(), but a Double is limited without losing bits; 0 to 600000.
std::int32_t millisecondsHeld(SwJsonValue const& value);

/// As for a duration, 1 to 120; what is no number is 1.
std::int32_t frameCountHeld(SwJsonValue const& value);

/// A coordinate, 0 to 1; a bool is 0 or 1, every other kind that is no number 0.
float fractionHeld(SwJsonValue const& value);

/// 0 to 1; none for what is no number: the default stays.
std::optional<float> opacityHeld(SwJsonValue const& value);

/// A bool, or a number that is not 0.
bool switchHeld(SwJsonValue const& value);

/// 0xRRGGBB; none for what is no text of "#" and six bytes: the default stays. Six bytes that are no digits are read
/// like any hexadecimal number from a stream: "#12zzzz" is 0x000012.
std::optional<std::uint32_t> colorHeld(SwJsonValue const& value);

/// A bound of a value; none where the number is missing or not finite. Texts are read by their beginning ("12 m" is 12)
/// and must fit a double; whole numbers keep their low 32 bits; what is neither text nor number is 1 for true, else 0.
std::optional<double> boundHeld(SwJsonValue const& value);

/// A bit mask; none where it is ignored. Numbers are 31 bits; texts are whole numbers with the prefixes 0x and 0, else
/// any number that is not negative, cut and limited to 64 bits.
std::optional<std::uint64_t> maskHeld(SwJsonValue const& value);

}  // namespace check
