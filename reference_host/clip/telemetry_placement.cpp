// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Times for telemetry that comes without a clip of its own.
#include "clip/telemetry_placement.h"

#include "sw_number_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace clip {
namespace {

using sw_text::counted;

constexpr char const* kStampKey = "utc_timestamp_us";

/// A leap ahead that is no longer than this is a gap in every clip.
constexpr double kGapSeconds = 10.0;
/// The same where the clip's length is unknown; clocks that are set leap by more.
constexpr double kGapOfUnknownSeconds = 3600.0;
/// A fall back up to this length is disorder: senders follow the decoding order of the pictures.
constexpr double kDisorderSeconds = 1.0;

using Stamps = std::vector<std::optional<std::int64_t>>;

/// Stamps in microseconds; packets without one, or with 0, have none.
Stamps stampsOf(std::vector<telemetry::Packet> const& packets)
{
    Stamps stamps;
    stamps.reserve(packets.size());
    for (telemetry::Packet const& packet : packets) {
        SwJsonValue const& stamp = packet.payload[kStampKey];
        bool const usable = stamp.isInt() && stamp.toInt() > 0;
        stamps.push_back(usable ? std::optional(stamp.toInt()) : std::nullopt);
    }
    return stamps;
}

/// Gives stamped packets their places one after the other.
class StampWalk {
public:
    /// A leap ahead by more than `longestGap` seconds is a new clock.
    explicit StampWalk(double longestGap) : longestGap_(longestGap) {}

    /// The place of the next stamped packet.
    double next(std::int64_t stamp)
    {
        if (newest_ == 0) {
            newest_ = stamp;
            return place_;
        }
        double const ahead = static_cast<double>(stamp - newest_) / 1e6;
        if (ahead < -kDisorderSeconds || ahead > longestGap_) {
            ++disorders_;
            place_ += step_;
        } else if (ahead < 0.0) {
            ++disorders_;
            return place_;
        } else {
            place_ += ahead;
            step_ = ahead > 0.0 ? ahead : step_;
        }
        newest_ = stamp;
        return place_;
    }
    std::size_t disorders() const { return disorders_; }

private:
    double longestGap_;
    std::int64_t newest_ = 0;  ///< of the clock that runs now; 0: no stamp yet
    double place_ = 0.0;       ///< of the newest stamp
    double step_ = 0.0;
    std::size_t disorders_ = 0;
};

/// Fills the places between two stamped packets evenly.
void fillBetween(std::vector<double>& seconds, std::size_t first, std::size_t last)
{
    double const from = seconds[first];
    double const step = (seconds[last] - from) / static_cast<double>(last - first);
    for (std::size_t between = first + 1; between < last; ++between) {
        seconds[between] = from + step * static_cast<double>(between - first);
    }
}

/// Whether it is the one packet that has to say nothing of when it holds.
bool holdsFromTheStart(std::vector<telemetry::Packet> const& packets, std::size_t index)
{
    return index == 0 && packets[index].lasting;
}

Placement byStamps(std::vector<telemetry::Packet> const& packets, Stamps const& stamps, double longestGap)
{
    Placement placement;
    placement.seconds.resize(stamps.size());
    StampWalk walk(longestGap);
    std::size_t without = 0;
    std::optional<std::size_t> before;
    for (std::size_t index = 0; index < stamps.size(); ++index) {
        if (!stamps[index]) {
            without += holdsFromTheStart(packets, index) ? 0U : 1U;
            placement.seconds[index] = before ? placement.seconds[*before] : 0.0;
            continue;
        }
        placement.seconds[index] = walk.next(*stamps[index]);
        if (before) {
            fillBetween(placement.seconds, *before, index);
        }
        before = index;
    }
    if (without > 0) {
        placement.remarks.push_back(counted(without, "packet has no time stamp; it stands between its neighbours",
                                            "packets have no time stamp; they stand between their neighbours"));
    }
    if (walk.disorders() > 0) {
        placement.remarks.push_back(counted(walk.disorders(),
                                            "time stamp jumps or runs backwards; reading order decides there",
                                            "time stamps jump or run backwards; reading order decides there"));
    }
    return placement;
}

Placement spread(std::vector<telemetry::Packet> const& packets, ClipLength const& length)
{
    Placement placement;
    double const step = length.seconds ? *length.seconds / static_cast<double>(packets.size()) : length.frameSeconds;
    double earliest = 0.0;
    std::size_t without = 0;
    for (std::size_t index = 0; index < packets.size(); ++index) {
        std::optional<double> const time = packets[index].timeSeconds;
        without += time || holdsFromTheStart(packets, index) ? 0U : 1U;
        placement.seconds.push_back(time.value_or(static_cast<double>(index) * step));
        earliest = std::min(earliest, placement.seconds.back());
    }
    if (!packets.empty() && holdsFromTheStart(packets, 0) && !packets.front().timeSeconds) {
        placement.seconds.front() = earliest;
    }
    if (without > 0) {
        placement.remarks.push_back(counted(without, "packet has no time; it was spread evenly over the clip",
                                            "packets have no time; they were spread evenly over the clip"));
    }
    return placement;
}

}  // namespace

Placement placePackets(std::vector<telemetry::Packet> const& packets, ClipLength const& length)
{
    Stamps const stamps = stampsOf(packets);
    bool const timed = std::any_of(packets.begin(), packets.end(),
                                   [](telemetry::Packet const& packet) { return packet.timeSeconds.has_value(); });
    bool const stamped = std::any_of(stamps.begin(), stamps.end(), [](auto const& stamp) { return stamp.has_value(); });
    double const longestGap = std::max(kGapSeconds, length.seconds.value_or(kGapOfUnknownSeconds));
    return !timed && stamped ? byStamps(packets, stamps, longestGap) : spread(packets, length);
}

}  // namespace clip
