// The order in which the parts of a line with right-to-left letters stand.
#pragma once

#include "shaper.h"

#include <string_view>
#include <vector>

namespace imaging {

struct DirectedRun {
    std::string_view text;
    Direction direction = Direction::LeftToRight;
};

/// True when the line has a letter, number or mark of direction that could turn a part of it.
bool mayReadRightToLeft(std::string_view line);

/// The line's runs of one direction from left to right (Unicode Standard Annex #9); the text inside a run stays
/// in reading order. The first letter with a direction decides the line's, left to right without one.
std::vector<DirectedRun> visualRuns(std::string_view line);

}  // namespace imaging
