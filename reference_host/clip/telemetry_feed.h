// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry of a clip's pictures: from the clip's own streams or from a telemetry file, placed on the clip's
// time axis and handed out picture by picture. Between demuxer and frame renderer.
#pragma once

#include "clip/clip_telemetry.h"
#include "clip/payload_completer.h"
#include "clip/stream_choice.h"
#include "clip/telemetry_options.h"
#include "frame/telemetry_timeline.h"
#include "media/demuxer.h"
#include "media/side_placer.h"
#include "telemetry/key_selection.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace clip {

/// Telemetry that arrives this much after its picture is still in time, in seconds.
inline constexpr double kLateSeconds = 1.0;

/// How a picture's payloads are given out.
enum class Payloads {
    Complete,
    Bare,  ///< as they came: a PayloadCompleter is to add what is missing
};

class TelemetryFeed {
public:
    /// Reads the telemetry file if there is one. `demuxer` is the clip's and must outlive the feed; `keys` are those
    /// that the plugin will look at. Throws std::runtime_error with one line, media::UnknownChoice for a stream that
    /// cannot be meant.
    TelemetryFeed(media::Demuxer const& demuxer, TelemetryOptions options, telemetry::KeySelection keys,
                  Payloads payloads = Payloads::Complete);
    TelemetryFeed(TelemetryFeed const&) = delete;
    TelemetryFeed& operator=(TelemetryFeed const&) = delete;

    /// How far beyond a picture the clip must have been read for that picture's telemetry to be here, when that stands
    /// so much after it at most.
    double aheadSeconds(double lateSeconds) const;

    /// When the clip's first picture is shown; to be called before choose().
    void begin(double firstSeconds);
    /// A telemetry unit of the clip, at its place; of no concern when a file takes its part.
    void add(media::SideUnit const& unit);

    /// What each producer delivers for the next picture. Once there has been telemetry, the host's own keys are
    /// among it for every picture, unless they are not wanted and others deliver.
    std::vector<frame::Choice> choose(double seconds, std::uint64_t frameNumber);
    /// For completing bare payloads: the constants by producer. Valid after begin().
    std::map<std::string, SwJsonObject> const& constants() const { return constants_; }
    /// All that could deliver, in the order in which they win.
    std::vector<std::string> const& producers() const { return producers_; }

    TelemetryCounts counts() const;
    /// Remarks about the telemetry, for the end of a command.
    std::vector<std::string> remarks() const;

private:
    bool readsFile_() const { return !options_.file.empty(); }
    void readFile_();
    void placeFile_(std::string const& stream);
    std::size_t producerOf_(int stream);
    std::optional<double> maxAge_() const;

    media::Demuxer const& demuxer_;
    TelemetryOptions options_;
    StreamChoice choice_;
    bool ownFile_ = false;                                               ///< the telemetry file is the clip itself
    std::map<std::string, std::vector<telemetry::Packet>> filePackets_;  ///< by stream, until they are placed
    bool hostKeysWanted_;
    Payloads payloads_;
    PayloadCompleter completer_;
    std::map<std::string, SwJsonObject> constants_;
    KlvStreams klv_;
    std::map<int, std::size_t> producerOfStream_;
    frame::TelemetryTimeline timeline_;
    std::vector<std::string> producers_;
    TelemetrySummary summary_;
    std::vector<std::string> placementRemarks_;
    double firstSeconds_ = 0.0;
};

}  // namespace clip
