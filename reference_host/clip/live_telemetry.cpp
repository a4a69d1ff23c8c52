// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From telemetry units to what the plugin is given with a live picture.
#include "clip/live_telemetry.h"

#include "clip/host_keys.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace clip {
namespace {

/// Telemetry older than this no longer says where the aircraft is.
constexpr double kMaxAgeSeconds = 5.0;

}  // namespace

LiveTelemetry::LiveTelemetry(TelemetryOptions options, telemetry::KeySelection keys)
    : options_(std::move(options))
    , choice_(options_.stream)
    , klv_(std::move(keys))
{
    double const most = options_.maxAgeSeconds.value_or(kMaxAgeSeconds);
    timeline_.setMaxAge(most > 0.0 ? std::optional(most) : std::nullopt);
}

void LiveTelemetry::makeProducers_(media::LiveProgram const& program)
{
    for (int const stream : program.streamsOf(media::StreamKind::Klv)) {
        auto const number = static_cast<std::size_t>(program.numberAmongKind(stream));
        if (number >= waits_.size()) {
            timeline_.addProducer("klv-" + streamName(program.stream(stream)));
            waits_.emplace_back();
        }
    }
}

void LiveTelemetry::add(media::SideUnit const& unit, media::LiveProgram const& program)
{
    if (unit.kind != media::StreamKind::Klv || !choice_.takes(program.stream(unit.stream))) {
        return;
    }
    makeProducers_(program);
    auto const producer = static_cast<std::size_t>(program.numberAmongKind(unit.stream));
    double const seconds = unit.seconds + options_.offsetSeconds;
    for (telemetry::Packet& packet : klv_.decode(unit.stream, *unit.packet, unit.seconds)) {
        ++packets_;
        timeline_.add(producer, seconds, std::move(packet.payload));
        waits_[producer].arrived(seconds);
    }
}

bool LiveTelemetry::expectsFor(double seconds) const
{
    return std::any_of(waits_.begin(), waits_.end(),
                       [seconds](TelemetryWait const& wait) { return wait.expectsFor(seconds); });
}

void LiveTelemetry::gaveUpFor(double seconds)
{
    for (TelemetryWait& wait : waits_) {
        if (wait.expectsFor(seconds)) {
            wait.gaveUp();
        }
    }
}

std::vector<frame::Choice> LiveTelemetry::choose(double seconds, std::uint64_t frameNumber)
{
    firstSeconds_ = firstSeconds_.value_or(seconds);
    // The plugin takes frame number 0 for "none yet".
    std::uint64_t const frameIndex = frameNumber + 1;
    std::vector<frame::Choice> choices = timeline_.choose(seconds, frameIndex);
    producers_ = timeline_.producers();
    if (std::optional<double> const newest = timeline_.newestSeconds()) {
        age_ = std::max(0.0, seconds - *newest);
        SwJsonObject keys = hostKeys(*age_, seconds - *firstSeconds_, frameNumber);
        producers_.push_back(kHostProducer);
        choices.push_back({kHostProducer, std::make_shared<SwJsonObject const>(std::move(keys)), frameIndex, false});
    }
    return choices;
}

}  // namespace clip
