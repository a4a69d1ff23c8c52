// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One item's bytes to a value and back, by the rule of its row in the table.
#pragma once

#include "SwJson.h"
#include "telemetry/st0601_table.h"

#include <cstdint>
#include <span>
#include <vector>

namespace telemetry {

/// The value in an item's bytes. Null, meaning "no value", for no bytes, a reserved code, an integer that
/// does not fit the row's own width, and an integer above the signed 64-bit range. An integer of another
/// length is read as the integer it holds: tag 22 as 00 00 12 81 gives what 12 81 gives.
SwJsonValue decodeValue(TableRow const& row, std::span<std::uint8_t const> data);

/// The bytes of a value: numbers take Int and Double and are limited to the row's range, texts take every
/// scalar. Empty for anything else, not-a-number included. An Imapb item takes its usual length, or the
/// next one that holds the value exactly.
std::vector<std::uint8_t> encodeValue(TableRow const& row, SwJsonValue const& value);

}  // namespace telemetry
