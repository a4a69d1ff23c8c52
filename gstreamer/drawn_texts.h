// What stands on the last picture, for those who ask the element.
#pragma once

#include <gst/gst.h>

namespace gst_overlay {

/// The handler of the action signal "get-draws".
GstStructure* getDraws(GstElement* element);

}  // namespace gst_overlay
