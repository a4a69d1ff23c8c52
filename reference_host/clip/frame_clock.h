// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The time that the plugin is given with each frame of a clip: its presentation time, so that the same clip gives the
// same pictures however long the work takes.
#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <cstdint>
#include <optional>

namespace clip {

class FrameClock {
public:
    /// Frames' ticks are counted in this time base.
    explicit FrameClock(AVRational timeBase) : timeBase_(timeBase) {}

    /// The time of the next frame in nanoseconds, for FrameTime: an hour for the first frame, as 0 means "never" to the
    /// plugin, and from there on by presentation time, rounded down. It never falls: a frame whose presentation time
    /// lies before that of an earlier one gets the earlier one's time.
    std::uint64_t next(std::int64_t ticks);

private:
    AVRational timeBase_;
    std::optional<std::int64_t> firstTicks_;
    std::uint64_t last_ = 0;
};

}  // namespace clip
