// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which telemetry belongs to which picture: per producer the newest packet at or before the picture's
// time. Between the telemetry decoder and the frame renderer.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace frame {

/// Clocks of different streams count in different units: two times, in seconds, that are closer than this are the same
/// moment. A tick of the 90 kHz clock is eleven times longer.
inline constexpr double kSameMoment = 1e-6;

/// One producer's telemetry for one picture.
struct Choice {
    std::string producer;
    std::shared_ptr<SwJsonObject const> payload;
    std::uint64_t payloadFrame = 0;  ///< the first frame that got this packet
    bool fromLookback = false;       ///< the packet is older than the previous frame
};

class TelemetryTimeline {
public:
    /// At most `maxWaiting` packets wait per producer, the oldest are dropped beyond that: a stream whose
    /// telemetry clock runs far ahead of its pictures must not fill the memory.
    explicit TelemetryTimeline(std::size_t maxWaiting = 4096) : maxWaiting_(maxWaiting) {}

    /// Makes a producer known and gives its number; producers that come first win when keys collide.
    std::size_t addProducer(std::string name);
    std::vector<std::string> const& producers() const { return names_; }

    /// Adds a packet; times may come in any order, of equal times the later packet wins. A packet without
    /// any key is left out: it says nothing.
    void add(std::size_t producer, double seconds, SwJsonObject payload);

    /// Called once for each packet that a frame gets, before it gets it.
    using Completion = std::function<void(std::string const& producer, SwJsonObject& payload)>;
    void setCompletion(Completion completion) { completion_ = std::move(completion); }

    /// From now on a packet that is older than its frame by more than this counts as gone; empty: none does.
    void setMaxAge(std::optional<double> seconds) { maxAge_ = seconds; }

    /// The packets for the next frame. Packets older than the chosen ones are forgotten. Producers without
    /// a packet at or before `seconds`, or with one that is too old, are left out. `frameIndex` counts from 1.
    std::vector<Choice> choose(double seconds, std::uint64_t frameIndex);
    /// The time of the newest packet, of all producers, at or before the last frame, however old; empty when there
    /// has been none.
    std::optional<double> newestSeconds() const { return newest_; }

private:
    struct Entry {
        double seconds;
        std::shared_ptr<SwJsonObject> payload;
        std::uint64_t firstFrame = 0;  ///< 0: not given to any frame yet
    };

    std::size_t maxWaiting_;
    std::optional<double> maxAge_;
    std::vector<std::string> names_;
    std::vector<std::deque<Entry>> entries_;  ///< per producer, by rising time
    Completion completion_;
    std::optional<double> previousSeconds_;
    std::optional<double> newest_;
};

}  // namespace frame
