// keys: one JSON line per telemetry packet.
#include "cli/commands.h"
#include "cli/json_line.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/telemetry_source.h"

#include <cstdint>

namespace cli {

void runKeys(KeysOptions const& options)
{
    std::uint64_t number = 0;
    clip::TelemetrySummary const summary =
        clip::forEachPacket(options.input, options.telemetry, [&number](telemetry::Packet const& packet) {
            std::string line = "{\"packet\": " + std::to_string(number++) + ", \"pts\": ";
            if (packet.timeSeconds) {
                appendJsonNumber(line, *packet.timeSeconds);
            } else {
                line += "null";
            }
            line += ", \"checksum\": ";
            appendJsonString(line, telemetry::toText(packet.checksum));
            line += ", \"payload\": ";
            appendJson(line, SwJsonValue(packet.payload));
            writeLine(line + "}");
        });
    flushOutput();
    noteAll(clip::telemetryRemarks(options.telemetry.empty() ? options.input : options.telemetry, summary));
}

}  // namespace cli
