// Benchmarks of the parts of a frame; see render_parts.cpp.
#pragma once

#include "ratio_table.h"

#include <string>
#include <vector>

/// Registers the benchmarks and appends their names, and what the table compares.
void registerParts(std::vector<std::string>& names, std::vector<RatioRow>& rows);
