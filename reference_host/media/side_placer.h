// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Gives telemetry and sound their places on the clip's time axis, beside the pictures. Between demuxer and
// whoever reads a clip.
#pragma once

#include "media/demuxer.h"
#include "media/timeline.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace media {

/// A packet that goes beside the pictures: telemetry or sound.
struct SideUnit {
    PacketPtr packet;
    int stream = 0;
    StreamKind kind = StreamKind::Other;
    std::optional<double> streamSeconds;  ///< the time it carries; empty when it carries none
    double seconds = 0.0;                 ///< its place on the clip's time axis
};

/// The id of the unit (PES packet) in which a transport stream carried the packet; empty elsewhere.
std::optional<std::uint8_t> unitIdOf(AVPacket const& packet);
/// FFmpeg's muxer tells by this id whether a unit of data carries a time.
void setTimed(AVPacket& packet, bool timed);

/// Whether anything of a sound packet is heard: encoders put a run-in before the sound, which players pass over.
bool isHeard(AVPacket const& packet, AVStream const& stream);

/// The time axis of the clip's video; of a clip without video one on which every time stays as it is.
Timeline timelineOf(Demuxer const& demuxer);

/// The unit of a packet that `demuxer` has just read; it has no place yet.
SideUnit sideUnitOf(PacketPtr packet, Demuxer const& demuxer);

class SidePlacer {
public:
    /// `timeline`, which must outlive this, places the clip's video packets.
    explicit SidePlacer(Timeline const& timeline) : timeline_(timeline) {}

    /// Takes a unit in stream order; it gets its place with the next video packet.
    void add(SideUnit unit);
    /// The timeline has placed the next video packet, which stands at this byte of the stream (negative: unknown).
    void placeUpToVideo(std::int64_t videoPosition);
    /// No video packet follows what was added: each unit without time takes a picture's time after the last one.
    void placeRest();
    /// The units that have their place, in stream order.
    std::vector<SideUnit> take();

private:
    void placeUntimed_(std::vector<SideUnit>& untimed, double from, double to);

    Timeline const& timeline_;
    std::vector<SideUnit> waiting_;
    std::vector<SideUnit> ready_;
};

}  // namespace media
