// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One-line diagnostics of the framework on standard error. Internal: not installed, not included by
// public headers.
#pragma once

#include <iostream>
#include <string>
#include <string_view>

namespace sw_detail {

/// Writes `message` and `detail` as one line and flushes it. The line is put together first so that
/// lines of several threads do not mix.
inline void writeDiagnostic(std::string_view message, std::string_view detail)
{
    std::string line;
    line.reserve(message.size() + detail.size() + 1);
    line.append(message).append(detail).push_back('\n');
    std::cerr << line << std::flush;
}

}  // namespace sw_detail
