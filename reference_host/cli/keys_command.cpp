// keys: one JSON line per telemetry packet.
#include "cli/commands.h"
#include "cli/json_line.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/host_keys.h"
#include "clip/telemetry_source.h"
#include "media/demuxer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace cli {
namespace {

void appendSeconds(std::string& line, std::optional<double> seconds)
{
    if (seconds) {
        appendJsonNumber(line, *seconds);
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
    appendJsonString(line, telemetry::toText(packet.checksum));
    line += ", \"payload\": ";
    appendJson(line, SwJsonValue(packet.payload));
    if (!packet.stream.empty()) {
        line += ", \"stream\": ";
        appendJsonString(line, packet.stream);
    }
    if (found.placeSeconds) {
        line += ", \"t\": ";
        appendSeconds(line, clip::toMicroseconds(*found.placeSeconds));
    }
    return line + "}";
}

}  // namespace

void runKeys(KeysOptions const& options)
{
    std::uint64_t number = 0;
    bool const live = media::isLiveAddress(options.input);
    auto const print = [&number, live](clip::FoundPacket const& found) {
        writeLine(packetLine(number++, found));
        if (live) {
            flushOutput();  // somebody watches
        }
    };
    clip::TelemetrySummary const summary = clip::forEachPacket(options.input, options.telemetry, print);
    flushOutput();
    noteAll(clip::telemetryRemarks(options.telemetry.file.empty() ? options.input : options.telemetry.file, summary));
}

}  // namespace cli
