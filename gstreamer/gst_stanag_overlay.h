// The element `stanagoverlay`.
#pragma once

#include <gst/gst.h>

extern "C" {

GType gst_stanag_overlay_get_type();
}
