// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The names of coded values, as people read them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace telemetry {

/// One key whose value is a code, and the key under which the code's name goes.
struct CodeRow {
    std::string_view codeKey;
    std::string_view textKey;
    std::span<std::string_view const> names;  ///< by code; an empty one is no code
};

/// The name of a code; empty for a number that the row does not know.
std::string_view nameOf(CodeRow const& row, std::int64_t code);

}  // namespace telemetry
