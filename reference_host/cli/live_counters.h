// What live work says of itself every few seconds.
#pragma once

#include "clip/live_clip.h"

#include <optional>
#include <string>

namespace cli {

/// "250 pictures, 3 dropped, 1 reopened, telemetry 0.020 s old, delay 45 ms": all since the beginning, but the age that
/// telemetry has now ("no telemetry" without) and the greatest delay since the last line.
std::string liveLine(clip::LiveCounts const& counts, std::optional<double> telemetryAge, double delaySeconds);

}  // namespace cli
