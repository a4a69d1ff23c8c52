// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The check of a block's "formats": how single keys are shown.
#pragma once

#include "check/member.h"

#include <string>
#include <vector>

namespace check {

void checkFormats(Member const& formats, Findings& findings);

/// The conversions of a date pattern that the C library does not know and shows as they stand, each once:
/// unknownConversions("%H:%M:%S.%f") gives %f.
std::vector<std::string> unknownConversions(std::string const& pattern);

}  // namespace check
