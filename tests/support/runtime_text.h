// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a block carries from frame to frame, as text for whole-text comparison.
#pragma once

#include "stanag_overlay_runtime.h"

#include <string>

namespace stanag_overlay {

/// Every field on a line of its own, the entries of the maps in the byte order of their keys.
std::string runtimeText(OverlayRuntime const& runtime);

}  // namespace stanag_overlay
