// The check of a block's "condition".
#pragma once

#include "check/member.h"

namespace check {

void checkCondition(Member const& condition, Findings& findings);

}  // namespace check
