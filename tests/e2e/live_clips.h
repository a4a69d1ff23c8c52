// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What live tests send: clips that differ in clock, size, codec and program.
#pragma once

#include <cstdint>
#include <string>

namespace live_test {

/// 60 seconds of 25 pictures with telemetry for each: heading_deg is the picture's number. Key pictures come twice a
/// second.
struct LiveClipSpec {
    std::string path;
    int width = 96;
    int height = 64;
    std::int64_t firstTicks = 90000;
    int frames = 1500;
    bool klvCells = false;  ///< telemetry stands in access unit cells
    bool sound = false;
};
void makeLiveClip(LiveClipSpec const& spec);

/// The same packets under other PIDs, in another program.
void makeOtherProgram(std::string const& from, std::string const& to);

/// The same packets, but each of the telemetry stands so many pictures later.
void makeTelemetryLate(std::string const& from, std::string const& to, int pictures);

}  // namespace live_test
