// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Clips made for the tests, and the pictures of clips read back.
#pragma once

#include "Picture.h"
#include "SwJson.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clip_test {

struct ClipSpec {
    std::string path;
    int width = 320;
    int height = 240;
    int frames = 20;
    std::string codec{};                                  ///< empty: the container's best
    std::int64_t firstTicks = 90000;                      ///< of a 90 kHz clock
    std::vector<std::vector<SwJsonObject>> klvStreams{};  ///< per stream and frame; an empty payload is not sent
    bool sound = false;
    std::vector<std::int64_t> times{};  ///< ticks of the frames after the first one's; empty: 25 frames per second
    std::function<void(MappedNV12 const&)> paint{};  ///< of each frame in turn; empty: grey patterns
    std::int64_t soundLead = 0;                      ///< ticks by which sound begins before the first frame
    bool klvCells = false;                           ///< the first stream's telemetry stands in access unit cells
};

/// 25 grey frames per second, each with its own pattern, unless they are painted. Frame n is shown at firstTicks + n *
/// 3600, unless times are given.
void makeClip(ClipSpec const& spec);

/// All pictures of a clip as NV12.
std::vector<std::shared_ptr<zelvo::ZelvoPicture>> picturesOf(std::string const& path);

/// The same in the colours that the program writes pictures in, for comparing with PNG files.
void writePngOf(std::string const& path, zelvo::ZelvoPicture& picture);

/// Whether two pictures are equal in size, luma and chroma.
bool samePicture(zelvo::ZelvoPicture& a, zelvo::ZelvoPicture& b);

struct StreamCounts {
    int video = 0;
    int klv = 0;
    int sound = 0;
};

/// Packets per kind of stream; all zero when the file cannot be read.
StreamCounts packetsOf(std::string const& path);

/// Presentation times in seconds, in stream order.
struct StreamTimes {
    std::vector<double> video;
    std::vector<double> klv;
    std::vector<double> sound;
};

/// Times of the packets of each kind of stream.
StreamTimes timesOf(std::string const& path);

/// Reads one line of the program's JSON.
SwJsonObject parseLine(std::string const& line);

}  // namespace clip_test
