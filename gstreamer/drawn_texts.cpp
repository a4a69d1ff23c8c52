// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts and boxes as GStreamer's structures.
#include "drawn_texts.h"

#include "element.h"

namespace gst_overlay {
namespace {

/// One text: what it says, where its first line begins, how high it is, and the box around it.
GstStructure* structureOf(imaging::DrawnText const& draw)
{
    return gst_structure_new("draw", "text", G_TYPE_STRING, draw.text.c_str(), "x", G_TYPE_INT, draw.x, "y", G_TYPE_INT,
                             draw.y, "size", G_TYPE_INT, draw.pixelSize, "left", G_TYPE_INT, draw.left, "top",
                             G_TYPE_INT, draw.top, "right", G_TYPE_INT, draw.right, "bottom", G_TYPE_INT, draw.bottom,
                             nullptr);
}

}  // namespace

GstStructure* getDraws(GstElement* element)
{
    GValue draws = G_VALUE_INIT;
    g_value_init(&draws, GST_TYPE_LIST);
    if (auto const overlay = picturesOf(coreOf(element))) {
        for (imaging::DrawnText const& draw : overlay->draws()) {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, GST_TYPE_STRUCTURE);
            g_value_take_boxed(&value, structureOf(draw));
            gst_value_list_append_and_take_value(&draws, &value);
        }
    }
    GstStructure* const all = gst_structure_new_empty("stanag-overlay-draws");
    gst_structure_take_value(all, "draws", &draws);
    return all;
}

}  // namespace gst_overlay
