// The line of counters of live work.
#include "cli/live_counters.h"

#include "sw_number_text.h"

#include <cmath>

namespace cli {

std::string liveLine(clip::LiveCounts const& counts, std::optional<double> telemetryAge, double delaySeconds)
{
    std::string const age = telemetryAge ? "telemetry " + sw_text::secondsText(*telemetryAge) + " old" : "no telemetry";
    return sw_text::counted(counts.pictures, "picture", "pictures") + ", " + std::to_string(counts.dropped) +
           " dropped, " + std::to_string(counts.reopened) + " reopened, " + age + ", delay " +
           std::to_string(std::llround(delaySeconds * 1e3)) + " ms";
}

}  // namespace cli
