// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A value as a number's text: with as many digits after the point as a format asks for.
#pragma once

#include "SwJson.h"

#include <string>

namespace stanag_overlay {

/// Appends what SwJsonValue::toString gives: the text of a value for which no digits are asked.
void appendPlainText(std::string& out, SwJsonValue const& value);

/// Appends the number with `decimals` digits after the point, 0 or more, as a stream of the global locale in fixed
/// notation does, without digit grouping: 2.5 without digits gives "2", -0.04 with one "-0.0". Trimming takes zeros at
/// the end and a point left over, but only a "." counts as the point: "12.500" gives "12.5", "-0.0" gives "-0". A value
/// that is no number, or text that is not wholly one, is appended as appendPlainText does.
void formatNumber(std::string& out, SwJsonValue const& value, int decimals, bool trimTrailingZeros);

}  // namespace stanag_overlay
