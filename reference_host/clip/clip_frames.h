// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The frames of a clip one after the other without their pictures: where each stands, and which telemetry it gets. All
// of it is kept, so that any of it can be looked at again with any configuration; an hour takes up to some 100 MB.
#pragma once

#include "clip/annotated_clip.h"
#include "clip/frame_clock.h"
#include "clip/packed_payloads.h"
#include "clip/payload_completer.h"
#include "clip/telemetry_feed.h"
#include "frame/telemetry_timeline.h"
#include "media/demuxer.h"
#include "media/frame_reader.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clip {

/// How frames are found.
enum class FramesFrom {
    Packets,  ///< nothing is decoded; sometimes packets do not tell
    Decoder,
};

class ClipFrames {
public:
    /// Opens the clip. The source's configuration does not count. Throws as AnnotatedClip does.
    ClipFrames(ClipSource const& source, FramesFrom from);

    /// Reads on until this frame is known; frames are counted from 0. False when the clip ends before, or packets do
    /// not tell any more. Throws std::runtime_error after an interrupt.
    bool reach(std::size_t number);
    /// Why packets do not tell the frames; then they have to be found by decoding. Empty as long as they do.
    std::string const& doubt() const { return reader_.doubt(); }
    /// The frame that is shown so long after the first one, or the last frame; the clip must have one.
    std::size_t shownAt(double seconds);

    /// How many frames are known, and whether they are all.
    std::size_t known() const { return frames_.size(); }
    bool complete() const { return complete_; }

    // Of a frame that is known:
    media::FramePlace const& place(std::size_t number) const { return frames_[number].place; }
    double seconds(std::size_t number) const { return place(number).seconds - place(0).seconds; }
    /// For FrameTime.
    std::uint64_t timeNs(std::size_t number) const { return frames_[number].timeNs; }

    media::Demuxer const& demuxer() const { return demuxer_; }
    std::vector<std::string> const& producers() const { return feed_.producers(); }

private:
    friend class TelemetryView;

    struct PackedChoice {
        std::uint64_t payloadFrame = 0;
        std::uint32_t producer = 0;
        std::uint32_t payload = 0;
        bool fromLookback = false;
    };
    struct KnownFrame {
        media::FramePlace place;
        std::uint64_t timeNs = 0;
        std::size_t choicesEnd = 0;  ///< behind this frame's choices
    };

    void keep_(media::FramePlace const& place);
    PackedChoice pack_(frame::Choice const& choice);

    media::Demuxer demuxer_;
    TelemetryFeed feed_;
    media::FrameReader reader_;
    FrameClock clock_;
    bool complete_ = false;
    std::vector<KnownFrame> frames_;
    std::vector<PackedChoice> choices_;
    PackedPayloads payloads_;
    std::vector<std::string> producerNames_;
    std::vector<PackedChoice> newest_;  ///< per producer
};

/// The telemetry of a clip's frames as it is for whoever looks at certain keys. Equal to TelemetryFeed's for these
/// keys, but for what nobody can see.
class TelemetryView {
public:
    /// `frames` must outlive the view.
    TelemetryView(ClipFrames const& frames, telemetry::KeySelection keys);

    /// What each producer delivers for a frame that is known.
    std::vector<frame::Choice> at(std::size_t number);

private:
    struct Unpacked {
        std::uint32_t number = 0;
        std::shared_ptr<SwJsonObject const> payload;
    };

    std::shared_ptr<SwJsonObject const> payloadOf_(ClipFrames::PackedChoice const& choice);
    void chooseKeys_();

    ClipFrames const& frames_;
    telemetry::KeySelection keys_;
    PayloadCompleter completer_;
    std::vector<std::vector<bool>> wanted_;     ///< per list of keys
    std::map<std::uint32_t, Unpacked> newest_;  ///< per producer
};

}  // namespace clip
