// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry of live pictures: decoded as it comes, chosen picture by picture. The n-th telemetry stream of an input
// that comes back takes the place of the n-th one before.
#pragma once

#include "clip/clip_telemetry.h"
#include "clip/stream_choice.h"
#include "clip/telemetry_options.h"
#include "clip/telemetry_wait.h"
#include "frame/telemetry_timeline.h"
#include "media/live_queue.h"
#include "media/side_placer.h"
#include "telemetry/key_selection.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace clip {

class LiveTelemetry {
public:
    /// Throws media::UnknownChoice for a stream that cannot be meant.
    LiveTelemetry(TelemetryOptions options, telemetry::KeySelection keys);

    /// One line when the chosen stream is not in the program, which lists those that are; else empty.
    std::string missingIn(media::LiveProgram const& program, std::string const& source) const
    {
        return choice_.missingIn(program, source);
    }
    /// A telemetry unit at its place.
    void add(media::SideUnit const& unit, media::LiveProgram const& program);
    /// Whether telemetry that belongs to a picture of this time is likely to come in a moment.
    bool expectsFor(double seconds) const;
    /// The picture of this time is drawn without what was expected for it.
    void gaveUpFor(double seconds);

    /// What each producer delivers for the next picture, with the host's own keys once there has been telemetry.
    std::vector<frame::Choice> choose(double seconds, std::uint64_t frameNumber);
    std::vector<std::string> const& producers() const { return producers_; }
    TelemetryCounts counts() const { return {timeline_.producers().size(), packets_, klv_.counts()}; }
    /// How much older the newest telemetry was than the last picture; empty when there has been none.
    std::optional<double> ageSeconds() const { return age_; }

private:
    void makeProducers_(media::LiveProgram const& program);

    TelemetryOptions options_;
    StreamChoice choice_;
    KlvStreams klv_;
    frame::TelemetryTimeline timeline_;
    std::vector<TelemetryWait> waits_;  ///< per telemetry producer
    std::vector<std::string> producers_;
    std::uint64_t packets_ = 0;
    std::optional<double> firstSeconds_;
    std::optional<double> age_;
};

}  // namespace clip
