// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element `stanagoverlay`.
#pragma once

#include <gst/gst.h>

extern "C" {

GType gst_stanag_overlay_get_type();
}
