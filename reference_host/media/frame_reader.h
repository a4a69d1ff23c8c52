// Reads a clip picture by picture and runs ahead in the stream, so that telemetry which arrives a little
// after its picture is there in time. Between demuxer and the commands.
#pragma once

#include "media/decoder.h"
#include "media/demuxer.h"
#include "media/side_placer.h"
#include "media/timeline.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace media {

/// One picture.
struct VideoUnit {
    FramePtr frame;
    std::uint64_t number = 0;  ///< counts from 0
    double seconds = 0.0;      ///< presentation time on the clip's time axis
    std::int64_t ticks = 0;    ///< the same in the video stream's time base
};

class FrameReader {
public:
    /// The demuxer must have a video stream and outlive the reader. Pictures are given out when the stream
    /// has been read `aheadSeconds` beyond them.
    explicit FrameReader(Demuxer& demuxer, double aheadSeconds = 1.0);

    /// The next picture in presentation order; empty at the end or after an interrupt.
    std::optional<VideoUnit> next();
    /// The side units read since the last call, in stream order; some may lie ahead of the last picture.
    std::vector<SideUnit> takeSideUnits() { return side_.take(); }

    /// Damaged packets and pictures so far.
    std::uint64_t damaged() const { return decoder_.damaged(); }
    AVRational timeBase() const { return timeBase_; }

private:
    /// A compressed picture that waits for its turn.
    struct WaitingVideo {
        PacketPtr packet;
        bool newClip = false;  ///< the decoder gives out the old clip's pictures first
    };

    void readPacket_();
    void decodeFront_();
    void addVideo_(PacketPtr packet);
    bool frontIsDue_() const;
    VideoUnit finish_(FramePtr frame);

    Demuxer& demuxer_;
    AVRational timeBase_;
    Timeline timeline_;
    SidePlacer side_;
    Decoder decoder_;
    double aheadSeconds_;
    std::deque<WaitingVideo> video_;  ///< read, not yet decoded
    std::size_t videoBytes_ = 0;      ///< in video_
    double readUpTo_ = 0.0;           ///< decode time of the newest video packet read
    bool ended_ = false;
    bool drained_ = false;
    bool betweenClips_ = false;  ///< the old clip's last pictures are being received
    std::uint64_t nextNumber_ = 0;
    std::optional<std::int64_t> lastTicks_;
};

}  // namespace media
