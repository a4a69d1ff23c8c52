// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where a picture's telemetry comes from.
#include "clip/telemetry_feed.h"

#include "clip/host_keys.h"
#include "clip/telemetry_placement.h"
#include "clip/telemetry_source.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>

namespace clip {
namespace {

/// Telemetry older than this no longer says where the aircraft is.
constexpr double kMaxAgeSeconds = 5.0;

/// Packets of a stream that may wait for their pictures, and how many more for each second of offset.
constexpr double kMaxWaiting = 4096.0;
constexpr double kMaxPerSecond = 1000.0;

/// Earlier telemetry stands far ahead in the file: it is read once for itself, rather than that all pictures
/// between wait in memory. A pipe cannot be read twice.
bool takesFileTwice(TelemetryOptions const& options, std::string const& input)
{
    std::error_code ignored;
    return options.file.empty() && options.offsetSeconds < 0.0 && std::filesystem::is_regular_file(input, ignored);
}

TelemetryOptions withSource(TelemetryOptions options, std::string const& input)
{
    if (takesFileTwice(options, input)) {
        options.file = input;
    }
    return options;
}

std::size_t maxWaiting(TelemetryOptions const& options)
{
    double const most = kMaxWaiting + kMaxPerSecond * std::abs(options.offsetSeconds);
    bool const bounded = options.file.empty() && most < 1e9;
    return bounded ? static_cast<std::size_t>(most) : std::numeric_limits<std::size_t>::max();
}

std::string producerName(std::string const& stream)
{
    return "klv-" + stream;
}

}  // namespace

TelemetryFeed::TelemetryFeed(media::Demuxer const& demuxer, TelemetryOptions options, telemetry::KeySelection keys,
                             Payloads payloads)
    : demuxer_(demuxer)
    , options_(withSource(options, demuxer.name()))
    , choice_(options.stream)
    , ownFile_(takesFileTwice(options, demuxer.name()))
    , hostKeysWanted_(wantsHostKeys(keys))
    , payloads_(payloads)
    , completer_(keys)
    , klv_(std::move(keys))
    , timeline_(maxWaiting(options_))
{
    if (readsFile_()) {
        readFile_();
    } else {
        choice_.requireIn(demuxer_);
        for (int const stream : demuxer_.streamsOf(media::StreamKind::Klv)) {
            if (choice_.takes(demuxer_.stream(stream))) {
                producerOf_(stream);
            }
        }
    }
    timeline_.setMaxAge(maxAge_());
    if (payloads_ == Payloads::Complete) {
        timeline_.setCompletion(
            [this](std::string const& producer, SwJsonObject& payload) { completer_.complete(producer, payload); });
    }
    producers_ = timeline_.producers();
}

std::optional<double> TelemetryFeed::maxAge_() const
{
    double const seconds = options_.maxAgeSeconds.value_or(summary_.mayBeOld ? 0.0 : kMaxAgeSeconds);
    return seconds > 0.0 ? std::optional(seconds) : std::nullopt;
}

double TelemetryFeed::aheadSeconds(double lateSeconds) const
{
    return readsFile_() ? lateSeconds : lateSeconds + std::max(0.0, -options_.offsetSeconds);
}

void TelemetryFeed::readFile_()
{
    TelemetryOptions plain = options_;
    plain.offsetSeconds = 0.0;  // packets that have no time yet get it too
    summary_ = forEachPacket(demuxer_.name(), plain, [this](FoundPacket& found) {
        found.packet.timeSeconds = found.placeSeconds ? found.placeSeconds : found.packet.timeSeconds;
        filePackets_[found.packet.stream].push_back(std::move(found.packet));
    });
}

void TelemetryFeed::begin(double firstSeconds)
{
    firstSeconds_ = firstSeconds;
    for (std::string const& stream : summary_.streams) {
        placeFile_(stream);
    }
    placeFile_("");
    producers_ = timeline_.producers();
}

void TelemetryFeed::placeFile_(std::string const& stream)
{
    auto const found = filePackets_.find(stream);
    if (found == filePackets_.end()) {
        return;
    }
    std::size_t const producer = timeline_.addProducer(stream.empty() ? options_.file : producerName(stream));
    ClipLength const length{demuxer_.durationSeconds(), 1.0 / av_q2d(demuxer_.frameRate())};
    Placement const placement = placePackets(found->second, length);
    for (std::string const& remark : placement.remarks) {
        placementRemarks_.push_back(options_.file + ": " + (stream.empty() ? "" : "stream " + stream + ": ") + remark);
    }
    if (found->second.front().lasting) {
        std::string const& name = timeline_.producers()[producer];
        constants_[name] = found->second.front().payload;
        completer_.setConstants(name, constants_[name]);
    }
    double const start = (ownFile_ ? summary_.startSeconds : firstSeconds_) + options_.offsetSeconds;
    for (std::size_t index = 0; index < found->second.size(); ++index) {
        timeline_.add(producer, start + placement.seconds[index], std::move(found->second[index].payload));
    }
    filePackets_.erase(found);
}

std::size_t TelemetryFeed::producerOf_(int stream)
{
    auto const known = producerOfStream_.find(stream);
    if (known != producerOfStream_.end()) {
        return known->second;
    }
    summary_.anyStream = true;
    return producerOfStream_[stream] = timeline_.addProducer(producerName(streamName(demuxer_.stream(stream))));
}

void TelemetryFeed::add(media::SideUnit const& unit)
{
    if (readsFile_() || unit.kind != media::StreamKind::Klv || !choice_.takes(demuxer_.stream(unit.stream))) {
        return;
    }
    std::size_t const producer = producerOf_(unit.stream);
    for (telemetry::Packet& packet : klv_.decode(unit.stream, *unit.packet, unit.seconds)) {
        ++summary_.packets;
        summary_.usable += packet.payload.empty() ? 0U : 1U;
        timeline_.add(producer, unit.seconds + options_.offsetSeconds, std::move(packet.payload));
    }
}

std::vector<frame::Choice> TelemetryFeed::choose(double seconds, std::uint64_t frameNumber)
{
    // The plugin takes frame number 0 for "none yet".
    std::uint64_t const frameIndex = frameNumber + 1;
    std::vector<frame::Choice> choices = timeline_.choose(seconds, frameIndex);
    std::optional<double> const newest = timeline_.newestSeconds();
    std::size_t const known = timeline_.producers().size();
    if (producers_.size() != known + (newest ? 1 : 0)) {
        producers_ = timeline_.producers();
        if (newest) {
            producers_.push_back(kHostProducer);
        }
    }
    if (newest && (hostKeysWanted_ || choices.empty())) {
        SwJsonObject keys = hostKeys(std::max(0.0, seconds - *newest), seconds - firstSeconds_, frameNumber);
        if (payloads_ == Payloads::Complete) {
            completer_.complete(kHostProducer, keys);
        }
        choices.push_back({kHostProducer, std::make_shared<SwJsonObject const>(std::move(keys)), frameIndex, false});
    }
    return choices;
}

TelemetryCounts TelemetryFeed::counts() const
{
    return {timeline_.producers().size(), summary_.packets, readsFile_() ? summary_.counts : klv_.counts()};
}

std::vector<std::string> TelemetryFeed::remarks() const
{
    TelemetrySummary summary = summary_;
    summary.counts = counts().klv;
    std::vector<std::string> remarks = telemetryRemarks(readsFile_() ? options_.file : demuxer_.name(), summary);
    remarks.insert(remarks.end(), placementRemarks_.begin(), placementRemarks_.end());
    return remarks;
}

}  // namespace clip
