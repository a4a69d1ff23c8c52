// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The check of a block's "condition".
#pragma once

#include "check/member.h"

namespace check {

void checkCondition(Member const& condition, Findings& findings);

}  // namespace check
