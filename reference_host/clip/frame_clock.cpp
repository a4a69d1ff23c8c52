// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From presentation times to the plugin's nanoseconds.
#include "clip/frame_clock.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <limits>

namespace clip {
namespace {

constexpr std::int64_t kFirstFrameNs = 3600000000000;

/// Hostile files hold any 64-bit time; what lies further from the first frame than this counts as this far.
constexpr std::int64_t kMostNs = std::numeric_limits<std::int64_t>::max() / 4;

std::int64_t nanoseconds(std::int64_t ticks, AVRational timeBase)
{
    constexpr AVRational kNanosecond{1, 1000000000};
    // Always downwards: two frames whose ticks lie equally far apart have nanoseconds equally far apart.
    std::int64_t const ns = av_rescale_q_rnd(ticks, timeBase, kNanosecond, AV_ROUND_DOWN);
    constexpr std::int64_t kOverflow = std::numeric_limits<std::int64_t>::min();
    return ns == kOverflow ? kMostNs : std::clamp(ns, -kMostNs, kMostNs);
}

}  // namespace

std::uint64_t FrameClock::next(std::int64_t ticks)
{
    firstTicks_ = firstTicks_.value_or(ticks);
    std::int64_t const ns = kFirstFrameNs + nanoseconds(ticks - *firstTicks_, timeBase_);
    last_ = std::max(last_, static_cast<std::uint64_t>(std::max(ns, kFirstFrameNs)));
    return last_;
}

}  // namespace clip
