// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Packets of a live input on their way from the thread that reads them to the one that draws. Bounded: who draws too
// slowly loses pictures, not time.
#pragma once

#include "media/demuxer.h"
#include "media/ffmpeg_types.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace media {

using LiveTime = std::chrono::steady_clock::time_point;

/// All times of live packets are ticks of this clock, whatever the input counts in.
inline constexpr AVRational kLiveTimeBase{1, 90000};

/// What a live input holds, copied from what the reading thread goes on working with.
struct LiveProgram : InputStreams {
    struct FreeContext {
        void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    };

    std::uint64_t opening = 0;                           ///< another one each time the input was opened
    std::unique_ptr<AVFormatContext, FreeContext> copy;  ///< the container
    AVRational frameRate{25, 1};                         ///< as far as known

    /// How many streams of the same kind stand before this one.
    int numberAmongKind(int index) const;
};

/// A packet, or the news that the input is lost.
struct LiveItem {
    LiveTime arrival;  ///< when it was read
    std::shared_ptr<LiveProgram const> program{};
    PacketPtr packet{};  ///< none: the input is lost
    StreamKind kind = StreamKind::Other;
    std::string lostBecause{};
    LiveTime came{};  ///< of a packet: when its bytes came; the demuxer may have held them since
};

class LiveQueue {
public:
    /// Adds an item. When pictures have waited for a whole second, they are dropped, and so are those that come until
    /// the next one at which decoding can begin; telemetry and sound stay.
    void push(LiveItem item);
    /// The oldest item; empty when there is none until then, or no more at all.
    std::optional<LiveItem> pop(LiveTime until);
    /// Nothing will be pushed any more; `reason` says why when that is a failure.
    void close(std::string reason = "");

    /// Whether all has been taken and nothing more will come.
    bool ended() const;
    std::string failure() const;
    /// Pictures dropped so far.
    std::uint64_t dropped() const;

private:
    void makeRoom_(LiveItem const& item);
    void dropPictures_();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<LiveItem> items_;
    std::uint64_t dropped_ = 0;
    bool untilKey_ = false;
    bool closed_ = false;
    std::string failure_;
};

}  // namespace media
