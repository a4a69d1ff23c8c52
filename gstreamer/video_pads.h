// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The video's two pads: what passes beside pictures, and what is asked. Events go through as they are.
#pragma once

#include "element.h"

namespace gst_overlay {

/// Adds the video's sink, and sets up the src that the base class has made.
void makeVideoPads(GstStanagOverlay* self);

// Operations of the base class.
gboolean takeVideoEvent(GstAggregator* base, GstAggregatorPad* pad, GstEvent* event);
gboolean answerVideoQuery(GstAggregator* base, GstAggregatorPad* pad, GstQuery* query);
gboolean takeUpstreamEvent(GstAggregator* base, GstEvent* event);
gboolean answerDownstream(GstAggregator* base, GstQuery* query);
gboolean keepTheVideosCaps(GstAggregator* base);

}  // namespace gst_overlay
