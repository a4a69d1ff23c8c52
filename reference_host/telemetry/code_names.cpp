// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looks a code's name up.
#include "telemetry/code_names.h"

namespace telemetry {

std::string_view nameOf(CodeRow const& row, std::int64_t code)
{
    bool const known = code >= 0 && static_cast<std::uint64_t>(code) < row.names.size();
    return known ? row.names[static_cast<std::size_t>(code)] : std::string_view();
}

}  // namespace telemetry
