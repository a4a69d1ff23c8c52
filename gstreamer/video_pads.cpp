// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Events and queries of the video. The base class would make a stream-start of its own, drop tags and answer
// allocations itself; behind the element the stream is to be the video's, so that these go past it.
#include "video_pads.h"

#include "telemetry_pads.h"

namespace gst_overlay {
namespace {

/// From so many lines on, pictures that do not name their colours have those of BT.709.
constexpr int kBt709FromLines = 720;

PictureColor colorOf(GstVideoInfo const& info, GstCaps const* caps)
{
    bool const isNamed = gst_structure_has_field(gst_caps_get_structure(caps, 0), "colorimetry") != FALSE &&
                         info.colorimetry.matrix != GST_VIDEO_COLOR_MATRIX_UNKNOWN;
    return {isNamed ? info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT709 : info.height >= kBt709FromLines,
            info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255};
}

void takeCaps(Core& core, GstEvent* event)
{
    GstCaps* caps = nullptr;
    gst_event_parse_caps(event, &caps);
    core.video.hasInfo = gst_video_info_from_caps(&core.video.info, caps) != FALSE;
    if (auto const overlay = picturesOf(core); overlay && core.video.hasInfo) {
        overlay->setColor(colorOf(core.video.info, caps));
    }
}

/// The base class begins with a stream-start that it makes up. It is let out into nothing, the video's follows.
void beginStream(GstStanagOverlay* self, GstEvent* event)
{
    self->core->video.isBaseSpeaking = true;
    gst_aggregator_set_src_caps(&self->base, nullptr);
    self->core->video.isBaseSpeaking = false;
    baseClass().sink_event(&self->base, self->sink, gst_event_ref(event));
}

/// The base class sends a segment before the next picture. A list of no pictures makes it go out now, so that events
/// that come between the two stay there.
gboolean passSegment(GstStanagOverlay* self, GstEvent* event)
{
    Video& video = self->core->video;
    gst_event_copy_segment(event, &video.segment);
    self->core->inbox.beginPictures();
    baseClass().sink_event(&self->base, self->sink, event);
    gst_aggregator_update_segment(&self->base, &video.segment);
    return gst_aggregator_finish_buffer_list(&self->base, gst_buffer_list_new_sized(1)) == GST_FLOW_OK ? TRUE : FALSE;
}

/// The base class has stopped its thread when this returns.
gboolean startFlush(GstStanagOverlay* self, GstEvent* event)
{
    self->core->inbox.startPictureFlush();
    std::lock_guard const hold(self->core->padLock);
    flushTelemetryPadsToo(self, event);
    return baseClass().sink_event(&self->base, self->sink, event);
}

/// It starts it again when all pads have had this.
gboolean finishFlush(GstStanagOverlay* self, GstEvent* event)
{
    Core& core = *self->core;
    core.inbox.finishPictureFlush();
    gst_segment_init(&core.video.segment, GST_FORMAT_TIME);
    core.video.any = false;
    if (auto const overlay = picturesOf(core)) {
        overlay->restart();
    }
    std::lock_guard const hold(core.padLock);
    flushTelemetryPadsToo(self, event);
    excuseTelemetryPads(self);
    return baseClass().sink_event(&self->base, self->sink, event);
}

/// What the base class says for itself, and lists without pictures, go nowhere.
GstPadProbeReturn dropWhatIsNotTheVideos(GstPad* pad, GstPadProbeInfo* info, gpointer)
{
    if ((info->type & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0) {
        return gst_buffer_list_length(gst_pad_probe_info_get_buffer_list(info)) == 0 ? GST_PAD_PROBE_DROP
                                                                                     : GST_PAD_PROBE_OK;
    }
    bool const isStreamStart = GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) == GST_EVENT_STREAM_START;
    return isStreamStart && coreOf(GST_PAD_PARENT(pad)).video.isBaseSpeaking ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

/// Video goes from sink to src; telemetry goes nowhere.
GstIterator* linksOf(GstPad* pad, GstObject* parent)
{
    GstStanagOverlay* const self = overlayOf(parent);
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GST_TYPE_PAD);
    g_value_set_object(&value, pad == srcOf(self) ? sinkOf(self) : srcOf(self));
    GstIterator* const links = gst_iterator_new_single(GST_TYPE_PAD, &value);
    g_value_unset(&value);
    return links;
}

/// Live pictures may wait here for their telemetry.
void addLatency(Core& core, GstQuery* query)
{
    gboolean live = FALSE;
    GstClockTime least = 0;
    GstClockTime most = 0;
    gst_query_parse_latency(query, &live, &least, &most);
    if (live == FALSE || core.inbox.producers().empty()) {
        return;
    }
    std::lock_guard const hold(core.lock);
    // What waits is not kept here: it holds up who brings it, so that more cannot be delayed than before.
    gst_query_set_latency(query, live, least + core.settings.timeout, most);
}

}  // namespace

void makeVideoPads(GstStanagOverlay* self)
{
    GstPadTemplate* const sink = gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(self), "sink");
    self->sink = static_cast<GstAggregatorPad*>(
        g_object_new(GST_TYPE_AGGREGATOR_PAD, "name", "sink", "direction", GST_PAD_SINK, "template", sink, nullptr));
    gst_pad_set_iterate_internal_links_function(sinkOf(self), linksOf);
    GST_PAD_SET_PROXY_CAPS(sinkOf(self));
    GST_PAD_SET_PROXY_ALLOCATION(sinkOf(self));
    GST_PAD_SET_PROXY_SCHEDULING(sinkOf(self));
    gst_element_add_pad(elementOf(self), sinkOf(self));
    gst_pad_set_iterate_internal_links_function(srcOf(self), linksOf);
    GST_PAD_SET_PROXY_CAPS(srcOf(self));
    auto const types =
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_BUFFER_LIST);
    gst_pad_add_probe(srcOf(self), types, dropWhatIsNotTheVideos, nullptr, nullptr);
}

gboolean takeVideoEvent(GstAggregator* base, GstAggregatorPad* pad, GstEvent* event)
{
    GstStanagOverlay* const self = overlayOf(base);
    Core& core = *self->core;
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
        beginStream(self, event);
        break;
    case GST_EVENT_CAPS:
        takeCaps(core, event);
        break;
    case GST_EVENT_SEGMENT:
        return passSegment(self, event);
    case GST_EVENT_EOS:
        core.inbox.endPictures();
        return baseClass().sink_event(base, pad, event);
    case GST_EVENT_FLUSH_START:
        return startFlush(self, event);
    case GST_EVENT_FLUSH_STOP:
        return finishFlush(self, event);
    default:
        break;
    }
    return gst_pad_push_event(srcOf(self), event);
}

gboolean answerVideoQuery(GstAggregator* base, GstAggregatorPad* pad, GstQuery* query)
{
    return gst_pad_query_default(&pad->parent, GST_OBJECT_CAST(base), query);
}

/// A seek goes to the telemetry's sources too. Demuxers that have had it from the video know it by its number.
gboolean takeUpstreamEvent(GstAggregator* base, GstEvent* event)
{
    GstStanagOverlay* const self = overlayOf(base);
    if (GST_EVENT_TYPE(event) != GST_EVENT_SEEK) {
        return gst_pad_push_event(sinkOf(self), event);
    }
    GstEvent* const seek = gst_event_ref(event);
    gboolean const done = gst_pad_push_event(sinkOf(self), event);
    sendToTelemetrySources(self, seek);
    gst_event_unref(seek);
    return done;
}

gboolean answerDownstream(GstAggregator* base, GstQuery* query)
{
    if (GST_QUERY_TYPE(query) != GST_QUERY_LATENCY) {
        return gst_pad_query_default(base->srcpad, GST_OBJECT_CAST(base), query);
    }
    gboolean const answered = baseClass().src_query(base, query);
    if (answered != FALSE) {
        addLatency(coreOf(base), query);
    }
    return answered;
}

gboolean keepTheVideosCaps(GstAggregator*)
{
    return TRUE;
}

}  // namespace gst_overlay
