// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element's instance, for the units that it is made of.
#pragma once

#include "picture_overlay.h"
#include "telemetry_inbox.h"

#include <gst/base/gstaggregator.h>
#include <gst/video/video.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace gst_overlay {

inline constexpr guint64 kDefaultTimeout = 100 * GST_MSECOND;
inline constexpr guint64 kDefaultMaxAge = 5 * GST_SECOND;

/// What properties say.
struct Settings {
    std::string config;
    std::string configFile;
    guint64 timeout = kDefaultTimeout;
    guint64 maxAge = kDefaultMaxAge;
    frame::Look look;
};

/// What the element's own thread, which pictures leave by, knows of the video. Flushes stop that thread before they
/// change it.
struct Video {
    GstVideoInfo info{};
    bool hasInfo = false;
    GstSegment segment{};
    std::uint64_t lastNs = 0;  ///< running time of the last picture
    bool any = false;          ///< there has been one
    GstClockTime lastDuration = 0;
    bool isBaseSpeaking = false;  ///< the base class makes events that nobody shall see
};

struct Core {
    std::mutex lock;  ///< of the settings, the warning and the pointer to the overlay
    Settings settings;
    std::string warning;  ///< could not be posted yet
    std::shared_ptr<PictureOverlay> overlay;
    TelemetryInbox inbox;
    Video video;
    std::mutex padLock;  ///< while pads come, or a flush goes through all of them
    unsigned nextPad = 0;
    std::atomic<guint64> drawn = 0;
};

}  // namespace gst_overlay

struct GstStanagOverlay {
    GstAggregator base;
    GstAggregatorPad* sink;  ///< of the video; the base class owns it
    gst_overlay::Core* core;
};

struct GstStanagOverlayClass {
    GstAggregatorClass parent;
};

namespace gst_overlay {

inline GstStanagOverlay* overlayOf(gpointer instance)
{
    return static_cast<GstStanagOverlay*>(instance);
}

inline Core& coreOf(gpointer instance)
{
    return *overlayOf(instance)->core;
}

inline GstElement* elementOf(GstStanagOverlay* self)
{
    return &self->base.parent;
}

/// The video's pad, as a plain one.
inline GstPad* sinkOf(GstStanagOverlay* self)
{
    return &self->sink->parent;
}

inline GstPad* srcOf(GstStanagOverlay* self)
{
    return self->base.srcpad;
}

/// Null below READY. Held by its own reference: what draws is not to be waited for under the lock of the settings.
inline std::shared_ptr<PictureOverlay> picturesOf(Core& core)
{
    std::lock_guard const hold(core.lock);
    return core.overlay;
}

/// The operations that the element's own go on to.
inline GstAggregatorClass& baseClass()
{
    return *static_cast<GstAggregatorClass*>(g_type_class_peek(GST_TYPE_AGGREGATOR));
}

}  // namespace gst_overlay
