// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element as GStreamer's type: its class, its birth and death, its states. The base class queues pictures and lets
// them leave by a thread of its own; video_pads.h has what goes beside them, telemetry_pads.h the other pads,
// picture_pass.h the way of a picture, element_settings.h the properties.
#include "gst_stanag_overlay.h"

#include "drawn_texts.h"
#include "element.h"
#include "element_settings.h"
#include "picture_pass.h"
#include "telemetry_pads.h"
#include "video_pads.h"

// The macro casts as C does.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
G_DEFINE_TYPE(GstStanagOverlay, gst_stanag_overlay, GST_TYPE_AGGREGATOR)
#pragma GCC diagnostic pop

namespace {

using gst_overlay::Core;
using gst_overlay::coreOf;
using gst_overlay::overlayOf;

gboolean start(GstAggregator* base)
{
    Core& core = coreOf(base);
    core.inbox.open();
    core.video = gst_overlay::Video{};
    gst_segment_init(&core.video.segment, GST_FORMAT_TIME);
    core.drawn = 0;
    if (auto const overlay = gst_overlay::picturesOf(core)) {
        overlay->restart();
    }
    gst_overlay::excuseTelemetryPads(overlayOf(base));
    return TRUE;
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange change)
{
    Core& core = coreOf(element);
    if (change == GST_STATE_CHANGE_NULL_TO_READY && !gst_overlay::loadOverlay(overlayOf(element))) {
        return GST_STATE_CHANGE_FAILURE;
    }
    if (change == GST_STATE_CHANGE_PAUSED_TO_READY) {
        core.inbox.close();
    }
    GstStateChangeReturn const done = GST_ELEMENT_CLASS(gst_stanag_overlay_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_READY_TO_NULL) {
        std::lock_guard const hold(core.lock);
        core.overlay.reset();
    }
    return done;
}

void finalize(GObject* object)
{
    delete overlayOf(object)->core;
    G_OBJECT_CLASS(gst_stanag_overlay_parent_class)->finalize(object);
}

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(const_cast<char*>("sink"), GST_PAD_SINK, GST_PAD_ALWAYS,
                                                            GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("NV12")));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE(const_cast<char*>("src"), GST_PAD_SRC, GST_PAD_ALWAYS,
                                                           GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("NV12")));
GstStaticPadTemplate klvTemplate =
    GST_STATIC_PAD_TEMPLATE(const_cast<char*>("klv_%u"), GST_PAD_SINK, GST_PAD_REQUEST, GST_STATIC_CAPS("meta/x-klv"));

void describe(GstElementClass* element)
{
    // First: "queue ! o." in a described pipeline, where nothing tells yet what the queue will bring, takes the first
    // that fits, while the other sink is there already and taken by video.
    gst_element_class_add_static_pad_template_with_gtype(element, &klvTemplate, gst_overlay::telemetryPadType());
    gst_element_class_add_static_pad_template_with_gtype(element, &sinkTemplate, GST_TYPE_AGGREGATOR_PAD);
    gst_element_class_add_static_pad_template_with_gtype(element, &srcTemplate, GST_TYPE_AGGREGATOR_PAD);
    gst_element_class_set_static_metadata(
        element, "STANAG telemetry overlay", "Filter/Editor/Video",
        "Draws STANAG 4609 telemetry (MISB ST 0601 KLV) as configured texts onto NV12 pictures",
        "the stanag_overlay developers");
}

void installSignals(GstStanagOverlayClass* type)
{
    /**
     * GstStanagOverlay::get-draws:
     *
     * Returns: (transfer full): the structure "stanag-overlay-draws", whose list "draws" has a structure for each text
     * on the last picture: "text", its anchor "x" and "y", its height "size", and the box around it by "left", "top",
     * "right" and "bottom", all in pixels
     */
    g_signal_new_class_handler("get-draws", G_TYPE_FROM_CLASS(type),
                               static_cast<GSignalFlags>(G_SIGNAL_RUN_LAST | G_SIGNAL_ACTION),
                               G_CALLBACK(gst_overlay::getDraws), nullptr, nullptr, nullptr, GST_TYPE_STRUCTURE, 0);
}

}  // namespace

static void gst_stanag_overlay_class_init(GstStanagOverlayClass* type)
{
    GObjectClass* const object = G_OBJECT_CLASS(type);
    object->finalize = finalize;
    gst_overlay::installProperties(object);
    installSignals(type);

    GstElementClass* const element = GST_ELEMENT_CLASS(type);
    element->change_state = changeState;
    element->request_new_pad = gst_overlay::requestTelemetryPad;
    element->release_pad = gst_overlay::releaseTelemetryPad;
    describe(element);

    GstAggregatorClass* const base = &type->parent;
    base->start = start;
    base->aggregate = gst_overlay::passPicture;
    base->create_new_pad = gst_overlay::createTelemetryPad;
    base->sink_event = gst_overlay::takeVideoEvent;
    base->sink_query = gst_overlay::answerVideoQuery;
    base->src_event = gst_overlay::takeUpstreamEvent;
    base->src_query = gst_overlay::answerDownstream;
    base->negotiate = gst_overlay::keepTheVideosCaps;
}

static void gst_stanag_overlay_init(GstStanagOverlay* self)
{
    self->core = new Core;
    gst_overlay::makeVideoPads(self);
}
