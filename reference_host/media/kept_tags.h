// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a container says beside its streams: titles and other tags, chapters, time code. Copied as far as the output
// takes it. Used when an output is begun.
#pragma once

#include "media/demuxer.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace media {

/// The part of the input that the output holds, in seconds of the input's own times.
struct KeptPart {
    double zeroSeconds = 0.0;          ///< what is time 0 in the output
    double beginSeconds = 0.0;         ///< of the first picture
    std::optional<double> endSeconds;  ///< empty: the input's end
    std::int64_t framesBefore = 0;     ///< pictures of the input before the first one
};

/// Copies tags, chapters and time code to `output`, whose streams stand; `streams` gives the output's stream for
/// each of the input's. Returns what the container does not take, a line each: "mpegts cannot carry chapters; 3 are
/// left out (.mp4 and .mkv carry them)".
std::vector<std::string> keepTags(Demuxer const& input, AVFormatContext& output, std::map<int, int> const& streams,
                                  KeptPart const& part);

/// "01:00:00:00" and 25 frames later, at 25 frames per second: "01:00:01:00". Empty when it is no time code.
std::string laterTimecode(std::string const& timecode, AVRational frameRate, std::int64_t frames);

}  // namespace media
