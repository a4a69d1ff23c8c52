// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads a clip picture by picture and runs ahead in the stream, so that telemetry which arrives a little
// after its picture is there in time. Between demuxer and the commands.
#pragma once

#include "media/decoder.h"
#include "media/demuxer.h"
#include "media/packet_frames.h"
#include "media/side_placer.h"
#include "media/timeline.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace media {

/// Where a frame stands in the clip.
struct FramePlace {
    std::uint64_t number = 0;  ///< counts from 0
    double seconds = 0.0;      ///< presentation time on the clip's time axis
    std::int64_t ticks = 0;    ///< the same in the video stream's time base
};

/// One picture.
struct VideoUnit : FramePlace {
    FramePtr frame;
};

class FrameReader {
public:
    /// The demuxer must have a video stream and outlive the reader. Pictures are given out when the stream
    /// has been read `aheadSeconds` beyond them.
    explicit FrameReader(Demuxer& demuxer, double aheadSeconds = 1.0, DecoderChoice const& decoding = {});

    /// The next picture in presentation order; empty at the end or after an interrupt.
    std::optional<VideoUnit> next();
    /// The place of the next frame, or with `further` 1 of the one after it; empty when there is none.
    std::optional<FramePlace> peek(std::size_t further = 0);
    /// Passes over the next frame, which peek() has shown.
    void skip();
    /// The side units that were not taken yet and that stand in the stream up to `aheadSeconds` after a frame shown at
    /// `seconds`, in stream order. What is further ahead is left for later frames, so that it does not matter how far
    /// decoding runs ahead.
    std::vector<SideUnit> takeSideUnits(double seconds = std::numeric_limits<double>::infinity());

    /// From now on, until settle(), places come from the packets and nothing is decoded. To be called first.
    void tellFromPackets();
    /// Ends that: decodes from the last place before the next frame where decoding can begin. False when the decoder
    /// does not give the frames that the packets told.
    bool settle();
    /// Why packets did not tell the frames; then the clip has to be read again and decoded from its beginning. Empty
    /// as long as they do.
    std::string const& doubt() const { return doubt_; }
    /// The clip's first picture, for what holds for all of them; null when it was decoded in its turn. Valid after
    /// settle().
    AVFrame const* firstPicture() const { return firstPicture_.get(); }

    /// Damaged packets and pictures so far.
    std::uint64_t damaged() const { return decoder_.damaged() - damagedBefore_; }
    AVRational timeBase() const { return timeBase_; }

private:
    /// A compressed picture that waits for its turn.
    struct WaitingVideo {
        PacketPtr packet;
        bool newClip = false;     ///< the decoder gives out the old clip's pictures first
        bool cleanStart = false;  ///< decoding can begin here
    };
    struct WaitingSide {
        SideUnit unit;
        double readUpTo;  ///< how far video had been read
    };

    std::optional<VideoUnit> decodeNext_();
    std::optional<FramePlace> peekTold_(std::size_t further);
    void readPacket_();
    void decodeFront_();
    void addVideo_(PacketPtr packet);
    bool frontIsDue_() const;
    VideoUnit finish_(FramePtr frame);
    void takeTold_();
    void decodeFirst_();
    void forgetBefore_(std::int64_t ticks);
    void keepSideUnits_();

    Demuxer& demuxer_;
    AVRational timeBase_;
    Timeline timeline_;
    SidePlacer side_;
    Decoder decoder_;
    double aheadSeconds_;
    std::deque<WaitingVideo> video_;                              ///< read, not yet decoded
    std::size_t videoBytes_ = 0;                                  ///< in video_
    std::deque<WaitingSide> sideUnits_;                           ///< placed, not yet taken
    std::deque<VideoUnit> held_;                                  ///< decoded, not yet given out
    double readUpTo_ = -std::numeric_limits<double>::infinity();  ///< greatest decode time of the video packets read
    bool ended_ = false;
    bool drained_ = false;
    bool betweenClips_ = false;  ///< the old clip's last pictures are being received
    std::uint64_t nextNumber_ = 0;
    std::optional<std::int64_t> lastTicks_;

    std::optional<PacketFrames> packets_;  ///< while packets tell the frames
    std::deque<std::int64_t> passed_;      ///< told frames from the first kept packet's on that were passed over
    std::deque<std::int64_t> told_;        ///< told frames that come next
    std::deque<std::int64_t> starts_;      ///< times of the packets in video_ where decoding can begin
    FramePtr firstPicture_;
    std::uint64_t damagedBefore_ = 0;  ///< in pictures that lead the one where decoding began
    std::string doubt_;
};

}  // namespace media
