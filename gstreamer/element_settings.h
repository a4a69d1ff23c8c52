// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element's properties, and the plugin that they are for.
#pragma once

#include "element.h"

namespace gst_overlay {

void installProperties(GObjectClass* object);

/// Loads the plugin with the settings so far. On failure posts an error and returns false.
bool loadOverlay(GstStanagOverlay* self);

}  // namespace gst_overlay
