// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pads that telemetry comes through. The base class waits for data on all its pads, without an end in recordings,
// but telemetry may be late, missing or never come. So these hand what they get to the inbox themselves, and to the
// base class they count as pads whose stream has ended: it waits for the video alone.
#pragma once

#include "element.h"

namespace gst_overlay {

GType telemetryPadType();

/// A pad for the base class to add, named as asked or by the next number.
GstAggregatorPad* createTelemetryPad(GstAggregator* base, GstPadTemplate* offered, gchar const* name,
                                     GstCaps const* caps);
/// Adds one and begins with it.
GstPad* requestTelemetryPad(GstElement* element, GstPadTemplate* offered, gchar const* name, GstCaps const* caps);
void releaseTelemetryPad(GstElement* element, GstPad* pad);

/// Tells the base class anew that it need not wait for them; it forgets that in READY and in flushes.
void excuseTelemetryPads(GstStanagOverlay* self);
/// Flushes of the video; the base class passes on what all its pads have had.
void flushTelemetryPadsToo(GstStanagOverlay* self, GstEvent* flush);
/// Seeks.
void sendToTelemetrySources(GstStanagOverlay* self, GstEvent* event);

}  // namespace gst_overlay
