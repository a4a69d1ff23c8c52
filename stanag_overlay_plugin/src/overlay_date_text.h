// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A time stamp as date and time.
#pragma once

#include "stanag_overlay_records.h"

#include <string>

namespace stanag_overlay {

/// Appends the time that `number` is in the format's unit, written by its pattern with std::put_time in the global
/// locale. Halves of a microsecond are rounded away from zero, then the fraction of a second is dropped toward 1970.
/// Times beyond the years 1677 to 2262 wrap around; not-a-number is 1970. 1700000000123 in milliseconds gives
/// "22:13:20 14-11-2023" by the default pattern in UTC.
void appendDate(std::string& out, long double number, FormatSpec const& spec);

}  // namespace stanag_overlay
