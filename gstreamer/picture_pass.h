// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A picture on its way through the element.
#pragma once

#include "element.h"

namespace gst_overlay {

/// The base class has a picture: it waits for its telemetry, is drawn on and goes on.
GstFlowReturn passPicture(GstAggregator* base, gboolean timeout);

}  // namespace gst_overlay
