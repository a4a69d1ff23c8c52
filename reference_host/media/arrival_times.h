// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// When each byte of a live input came: demuxers hold what they have read until more comes, so that the time at which
// they give out a packet says little about the sender.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace media {

class ArrivalTimes {
public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    /// So many bytes more have come at this time.
    void came(std::int64_t bytes, Time when);
    /// When the byte at this place came; empty when it has not come, or nobody can know. What came before it is
    /// forgotten: places rise from call to call.
    std::optional<Time> of(std::int64_t place);

private:
    struct Piece {
        std::int64_t end;
        Time when;
    };

    std::int64_t end_ = 0;
    std::deque<Piece> pieces_;
};

}  // namespace media
