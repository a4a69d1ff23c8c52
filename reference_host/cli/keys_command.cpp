// keys: one JSON line per telemetry packet.
#include "commands.h"
#include "json_line.h"
#include "messages.h"
#include "standard_output.h"
#include "telemetry_source.h"

#include <cstdint>

namespace cli {

void runKeys(KeysOptions const& options)
{
    std::uint64_t number = 0;
    TelemetrySummary const summary =
        forEachPacket(options.input, options.telemetry, [&number](telemetry::Packet const& packet) {
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
    for (std::string const& remark :
         telemetryRemarks(options.telemetry.empty() ? options.input : options.telemetry, summary)) {
        note(remark);
    }
}

}  // namespace cli
