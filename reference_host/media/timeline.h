// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One rising time axis for a clip: transport streams may start their clocks anew in mid-stream (clips
// joined together, a sender that restarted), and telemetry may come without any time.
#pragma once

#include "media/ffmpeg_types.h"

#include <cstdint>
#include <optional>

namespace media {

/// Times of the video stream are ticks of its own time base, so that unbroken streams keep theirs to the
/// tick; times of other streams are seconds.
class Timeline {
public:
    struct Placed {
        std::int64_t decodeTicks;
        std::int64_t presentTicks;
        bool newClock;  ///< the stream's clock started anew with this packet
    };

    /// What passed before a live packet: no more than the packet before, or a time in which nothing could come.
    enum class Since { Packet, Outage };

    /// The video stream's time base, `intervalTicks` from one frame to the next; with `mayJump` false no
    /// jump is ever mended.
    Timeline(AVRational timeBase, std::int64_t intervalTicks, bool mayJump);

    /// Places the next video packet in stream order. A decode time that falls back, or leaps ahead by more
    /// than ten seconds, continues one interval after the packet before.
    Placed placeVideo(std::optional<std::int64_t> decodeTicks, std::optional<std::int64_t> presentTicks);

    /// For live streams: so long after the packet before has the next one come. A time that leaps ahead of that by more
    /// than two seconds is a new clock too, and a new clock's first packet stands so much later, not one interval.
    /// After an outage a time that differs from the real one by more than a second, either way, is a new clock.
    void setElapsed(double seconds, Since since = Since::Packet);

    /// Places a time of another stream, as read near the last placed video packet.
    double placeOther(double seconds) const;

    /// The last video packet's place in presentation order when pictures are shown as fast as they are
    /// decoded: its decode time plus the delay between decoding and showing.
    double slotSeconds() const;
    /// The slot of the video packet before; one interval earlier for the first one.
    double previousSlotSeconds() const { return previousSlot_; }
    double intervalSeconds() const;
    bool hasVideo() const { return last_.has_value(); }

private:
    bool jumped_(std::int64_t rawTicks) const;

    AVRational timeBase_;
    std::int64_t intervalTicks_;
    bool mayJump_;
    std::int64_t jumpStep_;
    double fallSeconds_;  ///< a step of less than this (negative: back) is a new clock
    double leapSeconds_;  ///< a leap ahead of this length is a new clock
    std::int64_t offset_ = 0;
    std::int64_t previousOffset_ = 0;
    std::int64_t jumpTicks_ = 0;  ///< decode time on this axis at which the offset last changed
    std::int64_t lead_ = 0;
    std::int64_t lastRaw_ = 0;
    std::optional<std::int64_t> last_;
    double previousSlot_ = 0.0;
};

}  // namespace media
