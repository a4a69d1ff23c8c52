// Numbers in messages.
#pragma once

#include <string>

namespace check {

/// The number as people write it, with the fewest significant digits from 15 on that read back as the same number, and
/// no locale: 1.5, 600000, 1e+22, 0.10000000149011612.
std::string numberText(double number);

}  // namespace check
