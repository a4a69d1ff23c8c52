// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Benchmarks of the parts of a frame: expansion, conditions, one number, one date.
#pragma once

#include "ratio_table.h"

#include <string>
#include <vector>

/// Registers the benchmarks and appends their names, and what the table compares.
void registerParts(std::vector<std::string>& names, std::vector<RatioRow>& rows);
