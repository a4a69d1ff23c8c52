// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// keys: one JSON line, or row of a table, per telemetry packet.
#include "cli/commands.h"
#include "cli/csv_table.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/host_keys.h"
#include "clip/telemetry_source.h"
#include "media/demuxer.h"
#include "telemetry/derived_keys.h"
#include "telemetry/json_line.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace cli {
namespace {

void appendSeconds(std::string& line, std::optional<double> seconds)
{
    if (seconds) {
        telemetry::appendJsonNumber(line, *seconds);
    } else {
        line += "null";
    }
}

std::string packetLine(std::uint64_t number, clip::FoundPacket const& found)
{
    telemetry::Packet const& packet = found.packet;
    std::string line = "{\"packet\": " + std::to_string(number) + ", \"pts\": ";
    appendSeconds(line, packet.timeSeconds);
    line += ", \"checksum\": ";
    telemetry::appendJsonString(line, telemetry::toText(packet.checksum));
    line += ", \"payload\": ";
    telemetry::appendJson(line, SwJsonValue(packet.payload));
    if (!packet.stream.empty()) {
        line += ", \"stream\": ";
        telemetry::appendJsonString(line, packet.stream);
    }
    if (found.placeSeconds) {
        line += ", \"t\": ";
        appendSeconds(line, clip::toMicroseconds(*found.placeSeconds));
    }
    return line + "}";
}

std::string const& sourceOf(KeysOptions const& options)
{
    return options.telemetry.file.empty() ? options.input : options.telemetry.file;
}

using OnPacket = std::function<void(clip::FoundPacket&)>;

/// Every packet with all keys that are asked for.
clip::TelemetrySummary forEachPacket(KeysOptions const& options, OnPacket const& onPacket)
{
    telemetry::DerivedKeyMaker derived(options.derived ? telemetry::KeySelection::withDerived()
                                                       : telemetry::KeySelection());
    return clip::forEachPacket(options.input, options.telemetry, [&](clip::FoundPacket& found) {
        derived.addTo(found.packet.payload);
        onPacket(found);
    });
}

clip::TelemetrySummary listLines(KeysOptions const& options)
{
    std::uint64_t number = 0;
    bool const live = media::isLiveAddress(options.input);
    return forEachPacket(options, [&number, live](clip::FoundPacket const& found) {
        writeLine(packetLine(number++, found));
        if (live) {
            flushOutput();  // somebody watches
        }
    });
}

/// What stands in front of a packet's keys.
std::vector<std::string> const kPacketColumns = {"packet", "pts", "checksum", "stream", "t"};

std::string packetRow(std::uint64_t number, clip::FoundPacket const& found, std::set<std::string> const& keys)
{
    telemetry::Packet const& packet = found.packet;
    auto const seconds = [](std::optional<double> value) { return value ? SwJsonValue(*value) : SwJsonValue(); };
    std::optional<double> const place =
        found.placeSeconds ? std::optional(clip::toMicroseconds(*found.placeSeconds)) : std::nullopt;
    std::string row;
    appendCell(row, SwJsonValue(number));
    appendCell(row, seconds(packet.timeSeconds));
    appendCell(row, SwJsonValue(telemetry::toText(packet.checksum)));
    appendCell(row, packet.stream.empty() ? SwJsonValue() : SwJsonValue(packet.stream));
    appendCell(row, seconds(place));
    for (std::string const& key : keys) {
        appendCell(row, packet.payload[key]);
    }
    return row;
}

void writeHeader(std::set<std::string> const& keys)
{
    std::string row;
    for (std::string const& column : kPacketColumns) {
        appendCell(row, SwJsonValue(column));
    }
    for (std::string const& key : keys) {
        appendCell(row, SwJsonValue(key));
    }
    writeLine(row);
}

/// Which columns there are is known only at the end: a file is read twice, and what cannot be is kept.
clip::TelemetrySummary listTable(KeysOptions const& options)
{
    std::error_code ignored;
    bool const twice = std::filesystem::is_regular_file(sourceOf(options), ignored);
    std::set<std::string> keys;
    std::vector<clip::FoundPacket> kept;
    clip::TelemetrySummary summary = forEachPacket(options, [&](clip::FoundPacket& found) {
        for (auto const& [key, value] : found.packet.payload) {
            keys.insert(key);
        }
        if (!twice) {
            kept.push_back(std::move(found));
        }
    });
    writeHeader(keys);
    std::uint64_t number = 0;
    for (clip::FoundPacket const& found : kept) {
        writeLine(packetRow(number++, found, keys));
    }
    return twice ? forEachPacket(options,
                                 [&](clip::FoundPacket const& found) { writeLine(packetRow(number++, found, keys)); })
                 : summary;
}

}  // namespace

void runKeys(KeysOptions const& options)
{
    clip::TelemetrySummary const summary = options.csv ? listTable(options) : listLines(options);
    flushOutput();
    noteAll(clip::telemetryRemarks(sourceOf(options), summary));
}

}  // namespace cli
