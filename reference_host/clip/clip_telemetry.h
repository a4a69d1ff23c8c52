// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry of a clip: decodes its KLV streams and sums up what they held.
#pragma once

#include "media/frame_reader.h"
#include "telemetry/telemetry.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace clip {

/// What was found, for the remarks that people read.
struct TelemetrySummary {
    telemetry::KlvCounts counts;
    std::uint64_t packets = 0;  ///< in any form
    std::uint64_t usable = 0;   ///< packets that held at least one key
    bool anyStream = false;     ///< whether there was a telemetry stream or file at all
    bool fromFile = false;      ///< whether it was a telemetry file, not a clip
    bool mayBeOld = false;      ///< whether it came from JSON Lines, whose first line may hold constants for all time
    std::string readError;      ///< what ended reading early; empty when the input simply ended
    std::vector<std::string> streams;  ///< names of the streams in the order in which they win
    double startSeconds = 0.0;         ///< of a clip: when its first picture is shown, on its own axis
};

/// How much telemetry has been read so far.
struct TelemetryCounts {
    std::uint64_t streams = 0;  ///< that could deliver; a telemetry file counts as one, or as those that it lists
    std::uint64_t packets = 0;  ///< in any form, wrong checksums included
    telemetry::KlvCounts klv;   ///< all zero for telemetry that is no KLV
};

class KlvStreams {
public:
    /// Makes the wanted keys; see telemetry::KlvDecoder.
    explicit KlvStreams(telemetry::KeySelection keys = {}) : keys_(std::move(keys)) {}

    /// The packets of one data unit of the stream; `seconds` is the time they get.
    std::vector<telemetry::Packet> decode(int stream, AVPacket const& unit, std::optional<double> seconds);
    /// Counts over all streams.
    telemetry::KlvCounts counts() const;

private:
    telemetry::KeySelection keys_;
    std::map<int, telemetry::KlvDecoder> decoders_;
};

/// One remark per matter that somebody should know: reading that ended early, no usable telemetry, wrong
/// checksums, cut packets.
/// Empty when all is well.
std::vector<std::string> telemetryRemarks(std::string const& source, TelemetrySummary const& summary);

}  // namespace clip
