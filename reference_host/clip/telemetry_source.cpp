// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry without pictures: what the commands list that show keys, and what a telemetry file gives to a clip.
#include "clip/telemetry_source.h"

#include "clip/stream_choice.h"
#include "media/demuxer.h"
#include "media/klv_unit_reader.h"
#include "telemetry/file_kind.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace clip {
namespace {

using OnPacket = std::function<void(FoundPacket&)>;

/// Hands packets on and counts what they hold.
class Delivery {
public:
    Delivery(double offsetSeconds, OnPacket const& onPacket) : offsetSeconds_(offsetSeconds), onPacket_(onPacket) {}

    void deliver(FoundPacket found, TelemetrySummary& summary) const
    {
        ++summary.packets;
        summary.usable += found.packet.payload.empty() ? 0U : 1U;
        if (found.packet.timeSeconds) {
            *found.packet.timeSeconds += offsetSeconds_;
        }
        if (found.placeSeconds) {
            *found.placeSeconds += offsetSeconds_;
        }
        onPacket_(found);
    }

private:
    double offsetSeconds_;
    OnPacket const& onPacket_;
};

std::vector<std::string> streamsOf(std::vector<telemetry::Packet> const& packets)
{
    std::vector<std::string> names;
    for (telemetry::Packet const& packet : packets) {
        if (std::find(names.begin(), names.end(), packet.stream) == names.end()) {
            names.push_back(packet.stream);
        }
    }
    return names;
}

TelemetrySummary readPackets(std::string const& path, telemetry::FileKind kind, StreamChoice const& choice,
                             Delivery const& delivery)
{
    TelemetrySummary summary;
    summary.anyStream = true;
    summary.fromFile = true;
    summary.mayBeOld = kind == telemetry::FileKind::JsonLines;
    std::vector<telemetry::Packet> packets = kind == telemetry::FileKind::Klv
                                                 ? telemetry::readKlvFile(path, summary.counts)
                                                 : telemetry::readJsonLinesFile(path);
    for (std::string const& name : streamsOf(packets)) {
        if (!name.empty()) {
            summary.streams.push_back(name);
        }
    }
    choice.requireAmong(summary.streams, path);
    for (telemetry::Packet& packet : packets) {
        if (choice.takes(packet.stream)) {
            delivery.deliver({std::move(packet)}, summary);
        }
    }
    return summary;
}

TelemetrySummary readClip(media::Demuxer& demuxer, StreamChoice const& choice, Delivery const& delivery)
{
    choice.requireIn(demuxer);
    TelemetrySummary summary;
    summary.anyStream = !demuxer.streamsOf(media::StreamKind::Klv).empty();
    KlvStreams streams;
    media::KlvUnitReader reader(demuxer);
    while (std::optional<media::SideUnit> const unit = reader.next()) {
        summary.anyStream = true;
        AVStream const& stream = demuxer.stream(unit->stream);
        if (!choice.takes(stream)) {
            continue;
        }
        for (telemetry::Packet& packet : streams.decode(unit->stream, *unit->packet, unit->streamSeconds)) {
            packet.stream = streamName(stream);
            delivery.deliver({std::move(packet), unit->seconds - reader.startSeconds()}, summary);
        }
    }
    for (int const index : demuxer.streamsOf(media::StreamKind::Klv)) {
        if (choice.takes(demuxer.stream(index))) {
            summary.streams.push_back(streamName(demuxer.stream(index)));
        }
    }
    summary.counts = streams.counts();
    summary.readError = demuxer.readError();
    summary.startSeconds = reader.startSeconds();
    return summary;
}

void requireReadable(std::string const& path)
{
    auto const closeFile = [](std::FILE* file) { std::fclose(file); };
    std::unique_ptr<std::FILE, decltype(closeFile)> const file(std::fopen(path.c_str(), "rb"), closeFile);
    if (file == nullptr) {
        throw std::runtime_error(path + ": cannot open the telemetry file (" + std::strerror(errno) +
                                 "); check the name and its permissions");
    }
}

/// Somebody watches what comes from a live address.
std::unique_ptr<media::Demuxer> openInput(std::string const& input)
{
    return media::isLiveAddress(input) ? std::make_unique<media::Demuxer>(input, media::LiveReading::untilInterrupted())
                                       : std::make_unique<media::Demuxer>(input);
}

/// A clip that somebody names for its telemetry.
std::unique_ptr<media::Demuxer> openTelemetryClip(std::string const& path)
{
    requireReadable(path);
    try {
        return std::make_unique<media::Demuxer>(path);
    } catch (std::runtime_error const&) {
        throw std::runtime_error(path + ": holds no telemetry that can be read; give raw KLV, JSON Lines or a clip "
                                        "with KLV");
    }
}

}  // namespace

TelemetrySummary forEachPacket(std::string const& input, TelemetryOptions const& options, OnPacket const& onPacket)
{
    StreamChoice const choice(options.stream);
    Delivery const delivery(options.offsetSeconds, onPacket);
    std::string const& source = options.file.empty() ? input : options.file;
    // What is no file is opened as an address is, whatever its name.
    std::error_code ignored;
    bool const isFile = !options.file.empty() || std::filesystem::is_regular_file(input, ignored);
    telemetry::FileKind const kind = isFile ? telemetry::kindOfFile(source) : telemetry::FileKind::Other;
    if (kind != telemetry::FileKind::Other) {
        return readPackets(source, kind, choice, delivery);
    }
    auto const demuxer = options.file.empty() ? openInput(input) : openTelemetryClip(options.file);
    return readClip(*demuxer, choice, delivery);
}

}  // namespace clip
