// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes the program's JSON output: one line per record, numbers with all digits that a double needs.
#pragma once

#include "SwJson.h"

#include <string>
#include <string_view>

namespace telemetry {

/// Appends a quoted string. Bytes that are not UTF-8 become U+FFFD, so that every line is valid JSON.
void appendJsonString(std::string& line, std::string_view text);

/// Appends the shortest text that reads back as the same double; whole numbers keep a ".0" that tells them
/// from integers: 2.167, 600000.0, 1e+22. Infinities and not-a-number, which JSON does not have, give null.
void appendJsonNumber(std::string& line, double number);

/// Appends any value in compact form, however deeply nested.
void appendJson(std::string& line, SwJsonValue const& value);

}  // namespace telemetry
