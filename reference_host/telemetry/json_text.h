// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// JSON text as it is written: texts stay texts. The framework's reader turns texts that look like numbers into
// numbers, which suits configurations and would spoil a tail number.
#pragma once

#include "SwJson.h"

#include <string>
#include <string_view>

namespace telemetry {

/// Reads one JSON value (RFC 8259) of any depth. Whole numbers that fit 64 bits with their sign are Ints, all
/// others Doubles: "1.0" and "1e3" too. Of several members with one name the last counts. On failure the value is
/// Null and `error` is set to one short line, as "column 7: invalid literal"; `error` is empty otherwise.
SwJsonValue parseJsonText(std::string_view text, std::string& error);

}  // namespace telemetry
