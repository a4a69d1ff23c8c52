// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tables that spreadsheets, map programs and data tools read (RFC 4180).
#pragma once

#include "SwJson.h"

#include <string>

namespace cli {

/// Appends one cell to a row, with a comma before it unless it is the first. Null is an empty cell, a text stands as it
/// is, in quotes where it must, everything else as JSON: 2.5, true, "say ""hi""". A text in a first cell is not empty.
void appendCell(std::string& row, SwJsonValue const& value);

}  // namespace cli
