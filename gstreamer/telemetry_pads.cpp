// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From buffers and events of KLV to the inbox.
#include "telemetry_pads.h"

#include "running_time.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

/// A pad that telemetry comes through.
struct GstStanagOverlayPad {
    GstAggregatorPad base;
    guint id;
    GstSegment segment;
};

struct GstStanagOverlayPadClass {
    GstAggregatorPadClass parent;
};

// The macro casts as C does.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
G_DEFINE_TYPE(GstStanagOverlayPad, gst_stanag_overlay_pad, GST_TYPE_AGGREGATOR_PAD)
#pragma GCC diagnostic pop

static void gst_stanag_overlay_pad_class_init(GstStanagOverlayPadClass*) {}

static void gst_stanag_overlay_pad_init(GstStanagOverlayPad* pad)
{
    gst_segment_init(&pad->segment, GST_FORMAT_TIME);
}

namespace gst_overlay {
namespace {

GstStanagOverlayPad& telemetryPad(gpointer pad)
{
    return *static_cast<GstStanagOverlayPad*>(pad);
}

GstFlowReturn flowOf(TelemetryInbox::Taken taken)
{
    switch (taken) {
    case TelemetryInbox::Taken::Flushing:
        return GST_FLOW_FLUSHING;
    case TelemetryInbox::Taken::Ended:
        return GST_FLOW_EOS;
    default:
        return GST_FLOW_OK;
    }
}

GstFlowReturn takeBuffer(GstPad* pad, GstObject* parent, GstBuffer* buffer)
{
    Core& core = coreOf(parent);
    GstStanagOverlayPad const& own = telemetryPad(pad);
    std::optional<gint64> const running = runningTime(own.segment, GST_BUFFER_PTS(buffer));
    std::optional<double> const seconds = running ? std::optional(secondsOf(*running)) : std::nullopt;
    auto taken = TelemetryInbox::Taken::Yes;
    GstMapInfo map;
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP)) {
        if (seconds) {
            core.inbox.advance(own.id, *seconds);
        }
    } else if (gst_buffer_map(buffer, &map, GST_MAP_READ) != FALSE) {
        taken = core.inbox.add(own.id, {map.data, map.size}, seconds);
        gst_buffer_unmap(buffer, &map);
    }
    gst_buffer_unref(buffer);
    return flowOf(taken);
}

/// Nothing comes up to the end of the gap.
void takeGap(Core& core, GstStanagOverlayPad const& pad, GstEvent* event)
{
    GstClockTime begin = GST_CLOCK_TIME_NONE;
    GstClockTime duration = GST_CLOCK_TIME_NONE;
    gst_event_parse_gap(event, &begin, &duration);
    GstClockTime const end = GST_CLOCK_TIME_IS_VALID(duration) ? begin + duration : begin;
    if (auto const running = runningTime(pad.segment, end)) {
        core.inbox.advance(pad.id, secondsOf(*running));
    }
}

/// Events of telemetry end here: what follows the element is video.
GstFlowReturn takeEvent(GstPad* pad, GstObject* parent, GstEvent* event)
{
    Core& core = coreOf(parent);
    GstStanagOverlayPad& own = telemetryPad(pad);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
        core.inbox.begin(own.id);
        break;
    case GST_EVENT_SEGMENT:
        gst_event_copy_segment(event, &own.segment);
        core.inbox.begin(own.id);
        break;
    case GST_EVENT_GAP:
        takeGap(core, own, event);
        break;
    case GST_EVENT_EOS:
        core.inbox.end(own.id);
        break;
    case GST_EVENT_FLUSH_START:
        core.inbox.startFlush(own.id);
        break;
    case GST_EVENT_FLUSH_STOP:
        gst_segment_init(&own.segment, GST_FORMAT_TIME);
        core.inbox.finishFlush(own.id);
        break;
    default:
        break;
    }
    gst_event_unref(event);
    return GST_FLOW_OK;
}

/// Nothing that goes into such a pad comes out anywhere.
GstIterator* noLinks(GstPad*, GstObject*)
{
    return nullptr;
}

/// The number that a name asks for, or the next.
guint numberOf(Core& core, gchar const* name)
{
    guint id = core.nextPad;
    if (name != nullptr && std::sscanf(name, "klv_%u", &id) != 1) {
        id = core.nextPad;
    }
    core.nextPad = std::max(core.nextPad, id + 1);
    return id;
}

void excuse(GstStanagOverlay* self, GstAggregatorPad* pad)
{
    baseClass().sink_event(&self->base, pad, gst_event_new_eos());
}

template <class Act>
void forEachTelemetryPad(GstStanagOverlay* self, Act act)
{
    gst_element_foreach_sink_pad(
        elementOf(self),
        [](GstElement*, GstPad* pad, gpointer data) -> gboolean {
            if (G_TYPE_CHECK_INSTANCE_TYPE(pad, telemetryPadType())) {
                (*static_cast<Act*>(data))(&telemetryPad(pad).base);
            }
            return TRUE;
        },
        &act);
}

}  // namespace

GType telemetryPadType()
{
    return gst_stanag_overlay_pad_get_type();
}

GstAggregatorPad* createTelemetryPad(GstAggregator* base, GstPadTemplate* offered, gchar const* name, GstCaps const*)
{
    GstStanagOverlay* const self = overlayOf(base);
    guint const id = numberOf(*self->core, name);
    std::string const padName = "klv_" + std::to_string(id);
    auto& own = telemetryPad(g_object_new(telemetryPadType(), "name", padName.c_str(), "direction", offered->direction,
                                          "template", offered, nullptr));
    own.id = id;
    GstPad* const pad = &own.base.parent;
    gst_pad_set_chain_function(pad, takeBuffer);
    gst_pad_set_event_full_function(pad, takeEvent);
    gst_pad_set_query_function(pad, gst_pad_query_default);
    gst_pad_set_iterate_internal_links_function(pad, noLinks);
    // Before the base class knows the pad, so that it never waits for it.
    excuse(self, &own.base);
    self->core->inbox.addProducer(id, padName);
    gst_pad_set_active(pad, TRUE);
    return &own.base;
}

GstPad* requestTelemetryPad(GstElement* element, GstPadTemplate* offered, gchar const* name, GstCaps const* caps)
{
    GstPad* pad = nullptr;
    {
        std::lock_guard const hold(coreOf(element).padLock);
        pad = GST_ELEMENT_CLASS(&baseClass())->request_new_pad(element, offered, name, caps);
    }
    gst_element_post_message(element, gst_message_new_latency(GST_OBJECT_CAST(element)));
    return pad;
}

void releaseTelemetryPad(GstElement* element, GstPad* pad)
{
    coreOf(element).inbox.removeProducer(telemetryPad(pad).id);
    gst_pad_set_active(pad, FALSE);
    GST_ELEMENT_CLASS(&baseClass())->release_pad(element, pad);
}

void excuseTelemetryPads(GstStanagOverlay* self)
{
    forEachTelemetryPad(self, [self](GstAggregatorPad* pad) { excuse(self, pad); });
}

void flushTelemetryPadsToo(GstStanagOverlay* self, GstEvent* flush)
{
    forEachTelemetryPad(
        self, [self, flush](GstAggregatorPad* pad) { baseClass().sink_event(&self->base, pad, gst_event_ref(flush)); });
}

void sendToTelemetrySources(GstStanagOverlay* self, GstEvent* event)
{
    forEachTelemetryPad(self,
                        [event](GstAggregatorPad* pad) { gst_pad_push_event(&pad->parent, gst_event_ref(event)); });
}

}  // namespace gst_overlay
