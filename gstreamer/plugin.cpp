// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What GStreamer finds in this library.
#include "gst_stanag_overlay.h"

extern "C" {

static gboolean registerElements(GstPlugin* plugin)
{
    return gst_element_register(plugin, "stanagoverlay", GST_RANK_NONE, gst_stanag_overlay_get_type());
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, stanagoverlay,
                  "Draws STANAG and MISB telemetry as text onto video", registerElements, OVERLAY_VERSION, "Apache 2.0",
                  "stanag_overlay", OVERLAY_ORIGIN)
}
