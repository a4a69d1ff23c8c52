// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Times within a clip as people write them.
#pragma once

#include <string>

namespace cli {

/// Seconds from "90.5" or "[HH:]MM:SS[.fff]": "00:01:30.5" and "1:30.5" are 90.5. Minutes are below 60 where hours
/// stand before them, seconds where minutes do; hours, and minutes without hours, may be any number. Throws WrongUsage
/// that names the option for anything else and for more than 1000000000 seconds.
double parseClipTime(std::string const& option, std::string const& text);

}  // namespace cli
