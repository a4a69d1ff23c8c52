// Numbers in messages.
#pragma once

#include <string>

namespace check {

/// The number as people write it, with at most 15 significant digits and no locale: 1.5, 600000, 1e+22.
std::string numberText(double number);

}  // namespace check
