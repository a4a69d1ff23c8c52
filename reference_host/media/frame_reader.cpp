// The reading loop: packets in stream order in, pictures in presentation order out. Compressed packets
// wait here, not pictures, so that reading ahead costs little memory.
#include "media/frame_reader.h"

#include "media/interrupt.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace media {
namespace {

/// Compressed video that may wait for telemetry; a stream that runs on without times stops here.
constexpr std::size_t kMaxWaitingBytes = 64U << 20U;
constexpr std::size_t kMaxWaitingUnits = 4096;

std::optional<std::int64_t> known(std::int64_t ticks)
{
    return ticks == AV_NOPTS_VALUE ? std::nullopt : std::optional(ticks);
}

AVStream const& videoOf(Demuxer const& demuxer)
{
    AVStream const* const video = demuxer.video();
    if (video == nullptr) {
        throw std::runtime_error(demuxer.name() + ": holds no video stream; give a clip with video");
    }
    return *video;
}

}  // namespace

FrameReader::FrameReader(Demuxer& demuxer, double aheadSeconds)
    : demuxer_(demuxer)
    , timeBase_(videoOf(demuxer).time_base)
    , timeline_(timelineOf(demuxer))
    , side_(timeline_)
    , decoder_(videoOf(demuxer), demuxer.name())
    , aheadSeconds_(aheadSeconds)
{
}

std::optional<VideoUnit> FrameReader::next()
{
    for (;;) {
        if (interrupted()) {
            return std::nullopt;
        }
        FramePtr frame = makeFrame();
        if (decoder_.receive(*frame)) {
            return finish_(std::move(frame));
        }
        if (drained_) {
            return std::nullopt;
        }
        if (frontIsDue_()) {
            decodeFront_();
        } else if (ended_) {
            decoder_.send(nullptr);
            drained_ = true;
        } else {
            readPacket_();
        }
    }
}

void FrameReader::decodeFront_()
{
    // Some decoders drop the picture that they hold back when the next one is of another size.
    if (video_.front().newClip && !betweenClips_) {
        decoder_.send(nullptr);
        betweenClips_ = true;
        return;
    }
    if (betweenClips_) {
        decoder_.restart();
        betweenClips_ = false;
    }
    PacketPtr const packet = std::move(video_.front().packet);
    video_.pop_front();
    videoBytes_ -= static_cast<std::size_t>(packet->size);
    decoder_.send(packet.get());
}

bool FrameReader::frontIsDue_() const
{
    if (video_.empty()) {
        return false;
    }
    if (ended_ || videoBytes_ > kMaxWaitingBytes || video_.size() > kMaxWaitingUnits) {
        return true;
    }
    double const present = secondsOf(video_.front().packet->pts, timeBase_);
    return readUpTo_ >= present + aheadSeconds_;
}

void FrameReader::readPacket_()
{
    PacketPtr packet = makePacket();
    if (!demuxer_.read(*packet)) {
        ended_ = true;
        side_.placeRest();
        return;
    }
    StreamKind const kind = demuxer_.kindOf(packet->stream_index);
    if (kind == StreamKind::Video) {
        addVideo_(std::move(packet));
    } else if (kind != StreamKind::Other) {
        side_.add(sideUnitOf(std::move(packet), demuxer_));
    }
}

void FrameReader::addVideo_(PacketPtr packet)
{
    Timeline::Placed const placed = timeline_.placeVideo(known(packet->dts), known(packet->pts));
    packet->dts = placed.decodeTicks;
    packet->pts = placed.presentTicks;
    readUpTo_ = secondsOf(placed.decodeTicks, timeBase_);
    side_.placeUpToVideo(packet->pos);
    videoBytes_ += static_cast<std::size_t>(packet->size);
    // A clock that jumps in front of a dependent picture is a disturbance, not another clip.
    bool const newClip = placed.newClock && (packet->flags & AV_PKT_FLAG_KEY) != 0;
    video_.push_back({std::move(packet), newClip});
}

VideoUnit FrameReader::finish_(FramePtr frame)
{
    VideoUnit unit;
    auto const interval = std::llround(timeline_.intervalSeconds() / av_q2d(timeBase_));
    std::int64_t const guessed = lastTicks_ ? *lastTicks_ + interval : 0;
    unit.ticks = known(frame->best_effort_timestamp).value_or(guessed);
    unit.seconds = secondsOf(unit.ticks, timeBase_);
    unit.number = nextNumber_++;
    unit.frame = std::move(frame);
    lastTicks_ = unit.ticks;
    return unit;
}

}  // namespace media
