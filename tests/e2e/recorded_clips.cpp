// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Recorded clips and telemetry for those that bring none.
#include "recorded_clips.h"

#include "file_bytes.h"

namespace e2e {

std::string recordedClip(std::string const& name)
{
    return std::string(OVERLAY_RECORDED_DATA) + "/" + name;
}

std::vector<std::string> telemetryFor(std::string const& name, std::string const& path)
{
    bool const hasNone =
        name.find("no_klv") != std::string::npos || name.find("eg0104") != std::string::npos;  // a foreign set
    if (!hasNone) {
        return {};
    }
    std::string lines = "{\"platform_tail_number\":\"T 0123\"}\n";
    for (int number = 0; number < 40; ++number) {
        std::string const count = std::to_string(number);
        lines += "{\"t\":" + std::to_string(0.05 * number) + ",\"sensor_alt_m\":" + count +
                 ",\"utc_timestamp_us\":" + std::to_string(1700000000000000 + 50000LL * number);
        if (number % 8 < 5) {
            lines += ",\"heading_deg\":" + std::to_string(number * 7 % 100) + ",\"sensor_lat_deg\":40." + count +
                     ",\"tilt_deg\":-" + count + ",\"measured_slant_range_m\":" + std::to_string(number * 5) +
                     ",\"frame_center_lat_deg\":41." + count + ",\"laser_range_enabled\":true";
        }
        lines += "}\n";
    }
    file_test::writeFile(path, lines);
    return {"--telemetry", path};
}

}  // namespace e2e
