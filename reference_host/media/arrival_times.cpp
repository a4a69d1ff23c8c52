// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bounded notes of which bytes came when.
#include "media/arrival_times.h"

#include <cstddef>

namespace media {
namespace {

/// Far more datagrams than a picture has; who asks for none forgets the oldest.
constexpr std::size_t kMostPieces = 65536;

}  // namespace

void ArrivalTimes::came(std::int64_t bytes, Time when)
{
    end_ += bytes;
    pieces_.push_back({end_, when});
    if (pieces_.size() > kMostPieces) {
        pieces_.pop_front();
    }
}

std::optional<ArrivalTimes::Time> ArrivalTimes::of(std::int64_t place)
{
    while (place >= 0 && !pieces_.empty() && pieces_.front().end <= place) {
        pieces_.pop_front();
    }
    return place < 0 || pieces_.empty() ? std::nullopt : std::optional(pieces_.front().when);
}

}  // namespace media
