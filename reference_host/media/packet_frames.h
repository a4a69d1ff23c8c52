// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tells a video stream's frames from its packets, without decoding: when each is shown, in which order, and where
// decoding can begin. Where that is not certain it says why, and whoever needs the frames has to decode.
#pragma once

#include "media/ffmpeg_types.h"
#include "media/packet_inspector.h"
#include "media/timeline.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>

namespace media {

class PacketFrames {
public:
    /// Tells nothing for codecs whose packets are not known to hold one shown picture each.
    explicit PacketFrames(AVStream const& video);

    /// Takes the next packet in stream order, still with its own times, and its place on the clip's axis. True when
    /// decoding can begin with it: every frame shown from its time on comes out as in a full run.
    bool add(AVPacket const& packet, Timeline::Placed const& placed);
    /// No packet follows.
    void end();

    /// The presentation time of the next frame in the order in which frames are shown; empty until packets have told
    /// it.
    std::optional<std::int64_t> next();

    /// Why the packets do not tell the frames; empty as long as they do. Packets are doubted that lack a presentation
    /// time, share one with another packet or come later than the decoder's reordering allows; that are marked as
    /// damaged or not to be shown; that hold a field, no picture or new parameters; that start a new clock; that
    /// are shown before the stream's first key picture; and streams that begin without one or whose codec is not
    /// H.264, HEVC, MPEG-1, MPEG-2 or made of key pictures only.
    std::string const& doubt() const { return doubt_; }

private:
    std::string doubtOf_(AVPacket const& packet, Timeline::Placed const& placed, bool cleanStart) const;

    std::size_t reorder_ = 0;  ///< pictures that the decoder holds back to bring them into order
    PacketInspector inspector_;
    std::string doubt_;
    std::set<std::int64_t> held_;  ///< times of pictures that later ones may still come before
    std::deque<std::int64_t> told_;
    std::optional<std::int64_t> first_;
    std::optional<std::int64_t> last_;  ///< told last
};

}  // namespace media
