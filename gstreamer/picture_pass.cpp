// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Time, telemetry and drawing of a picture; the rules of waiting stand in telemetry_inbox.h, the drawing in
// picture_overlay.h.
#include "picture_pass.h"

#include "mapped_picture.h"
#include "running_time.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>

namespace gst_overlay {
namespace {

/// What of the settings a picture asks for.
struct Limits {
    std::chrono::nanoseconds timeout;
    std::optional<double> maxAge;
};

Limits limitsOf(Core& core)
{
    std::lock_guard const hold(core.lock);
    guint64 const maxAge = core.settings.maxAge;
    return {std::chrono::nanoseconds(core.settings.timeout),
            maxAge == 0 ? std::nullopt : std::optional(static_cast<double>(maxAge) / kNanoseconds)};
}

/// Pictures without a time follow the one before.
std::uint64_t pictureTime(Video& video, GstBuffer const& buffer)
{
    GstClockTime const time = GST_BUFFER_PTS_IS_VALID(&buffer) ? GST_BUFFER_PTS(&buffer) : GST_BUFFER_DTS(&buffer);
    std::optional<gint64> const running = runningTime(video.segment, time);
    std::uint64_t const follows = video.any ? video.lastNs + video.lastDuration : 0;
    // A picture before the segment's beginning is not shown, so that no better time is needed.
    video.lastNs = running ? static_cast<std::uint64_t>(std::max<gint64>(*running, 0)) : follows;
    video.lastDuration = GST_BUFFER_DURATION_IS_VALID(&buffer) ? GST_BUFFER_DURATION(&buffer) : 0;
    video.any = true;
    return video.lastNs;
}

/// The base class has asked the video's source.
TelemetryInbox::Source sourceOf(GstAggregator* base)
{
    return GST_CLOCK_TIME_IS_VALID(gst_aggregator_get_latency(base)) ? TelemetryInbox::Source::Live
                                                                     : TelemetryInbox::Source::Recording;
}

/// Draws on the buffer, which may be replaced by a copy. Throws what the plugin throws. Returns false when the planes
/// cannot be had.
bool annotate(Core& core, PictureOverlay& overlay, GstBuffer*& buffer, std::uint64_t runningNs,
              std::optional<double> maxAge)
{
    PictureMoment moment;
    moment.runningNs = runningNs;
    moment.choices = core.inbox.choose(secondsOf(static_cast<gint64>(runningNs)), overlay.nextIndex(), maxAge);
    moment.producers = core.inbox.producers();
    moment.newestSeconds = core.inbox.newestSeconds();
    MappedPicture picture(core.video.info, buffer);
    if (overlay.draw(std::move(moment), [&picture] { return picture.planes(); })) {
        ++core.drawn;
    }
    return !picture.failed();
}

/// Posts what went wrong.
GstFlowReturn draw(GstStanagOverlay* self, PictureOverlay& overlay, GstBuffer*& buffer)
{
    Core& core = *self->core;
    Limits const limits = limitsOf(core);
    std::uint64_t const runningNs = pictureTime(core.video, *buffer);
    if (!core.inbox.waitFor(secondsOf(static_cast<gint64>(runningNs)), limits.timeout, sourceOf(&self->base))) {
        // Who flushes or stops ends the base class's thread too; until then there is nothing to do.
        return GST_AGGREGATOR_FLOW_NEED_DATA;
    }
    try {
        if (!annotate(core, overlay, buffer, runningNs, limits.maxAge)) {
            GST_ELEMENT_ERROR(self, RESOURCE, WRITE, ("a picture's memory cannot be written to"),
                              ("put videoconvert or the decoder's download element before this one"));
            return GST_FLOW_ERROR;
        }
    } catch (std::exception const& failure) {
        GST_ELEMENT_ERROR(self, LIBRARY, FAILED, ("%s", failure.what()), (nullptr));
        return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

}  // namespace

GstFlowReturn passPicture(GstAggregator* base, gboolean)
{
    GstStanagOverlay* const self = overlayOf(base);
    GstBuffer* buffer = gst_aggregator_pad_pop_buffer(self->sink);
    if (buffer == nullptr) {
        return gst_aggregator_pad_is_eos(self->sink) != FALSE ? GST_FLOW_EOS : GST_AGGREGATOR_FLOW_NEED_DATA;
    }
    gst_aggregator_selected_samples(base, GST_BUFFER_PTS(buffer), GST_BUFFER_DTS(buffer), GST_BUFFER_DURATION(buffer),
                                    nullptr);
    std::shared_ptr<PictureOverlay> const overlay = picturesOf(*self->core);
    GstFlowReturn const drawn =
        self->core->video.hasInfo && overlay ? draw(self, *overlay, buffer) : GST_FLOW_NOT_NEGOTIATED;
    if (drawn != GST_FLOW_OK) {
        gst_buffer_unref(buffer);
        return drawn;
    }
    return gst_aggregator_finish_buffer(base, buffer);
}

}  // namespace gst_overlay
