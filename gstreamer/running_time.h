// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Times of buffers as the element counts them.
#pragma once

#include <gst/gst.h>

#include <optional>

namespace gst_overlay {

inline constexpr double kNanoseconds = 1e9;

/// In nanoseconds, negative before the segment's beginning; empty without a time.
inline std::optional<gint64> runningTime(GstSegment const& segment, GstClockTime time)
{
    if (!GST_CLOCK_TIME_IS_VALID(time) || segment.format != GST_FORMAT_TIME) {
        return std::nullopt;
    }
    guint64 running = 0;
    int const sign = gst_segment_to_running_time_full(&segment, GST_FORMAT_TIME, time, &running);
    return sign == 0 ? std::nullopt : std::optional(sign * static_cast<gint64>(running));
}

inline double secondsOf(gint64 nanoseconds)
{
    return static_cast<double>(nanoseconds) / kNanoseconds;
}

}  // namespace gst_overlay
