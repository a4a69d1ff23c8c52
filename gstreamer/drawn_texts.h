// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands on the last picture, for those who ask the element.
#pragma once

#include <gst/gst.h>

namespace gst_overlay {

/// The handler of the action signal "get-draws".
GstStructure* getDraws(GstElement* element);

}  // namespace gst_overlay
