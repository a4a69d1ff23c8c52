// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lines for standard output, with the one failure that a full disk or a closed pipe makes.
#pragma once

#include <string>

namespace cli {

/// Writes the text as one line. Throws ReaderGone when nobody reads any more, std::runtime_error when it
/// cannot be written for another reason.
void writeLine(std::string const& text);

/// Makes sure that everything has been written. Throws std::runtime_error when not.
void flushOutput();

}  // namespace cli
