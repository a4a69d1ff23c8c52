// The places of what goes beside the pictures: by its own time, or by its place in the byte stream.
#include "media/side_placer.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace media {
namespace {

/// Units that may wait for a picture; a stream without further pictures stops here.
constexpr std::size_t kMaxWaitingUnits = 4096;

}  // namespace

Timeline timelineOf(Demuxer const& demuxer)
{
    AVStream const* const video = demuxer.video();
    AVRational const timeBase = video == nullptr ? AVRational{1, 90000} : video->time_base;
    double const frameSeconds = 1.0 / av_q2d(demuxer.frameRate());
    return {timeBase, std::llround(frameSeconds / av_q2d(timeBase)), demuxer.timeMayJump()};
}

SideUnit sideUnitOf(PacketPtr packet, Demuxer const& demuxer)
{
    SideUnit unit;
    unit.stream = packet->stream_index;
    unit.kind = demuxer.kindOf(unit.stream);
    std::int64_t const ticks = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
    if (ticks != AV_NOPTS_VALUE) {
        unit.streamSeconds = secondsOf(ticks, demuxer.stream(unit.stream).time_base);
    }
    unit.packet = std::move(packet);
    return unit;
}

void SidePlacer::add(SideUnit unit)
{
    waiting_.push_back(std::move(unit));
    if (waiting_.size() > kMaxWaitingUnits) {
        placeRest();
    }
}

std::vector<SideUnit> SidePlacer::take()
{
    return std::exchange(ready_, {});
}

void SidePlacer::placeUpToVideo(std::int64_t videoPosition)
{
    // The demuxer gives out a picture only when the next one begins, small units at once: the place in the
    // byte stream tells which unit stood before this picture.
    std::vector<SideUnit> later;
    std::vector<SideUnit> untimed;
    for (SideUnit& unit : waiting_) {
        if (unit.streamSeconds) {
            unit.seconds = timeline_.placeOther(*unit.streamSeconds);
            ready_.push_back(std::move(unit));
        } else if (videoPosition >= 0 && unit.packet->pos > videoPosition) {
            later.push_back(std::move(unit));
        } else {
            untimed.push_back(std::move(unit));
        }
    }
    waiting_ = std::move(later);
    placeUntimed_(untimed, timeline_.previousSlotSeconds(), timeline_.slotSeconds());
}

void SidePlacer::placeUntimed_(std::vector<SideUnit>& untimed, double from, double to)
{
    // Spread evenly, the last one on the picture itself.
    auto const count = static_cast<double>(untimed.size());
    double nth = 0.0;
    for (SideUnit& unit : untimed) {
        nth += 1.0;
        unit.seconds = nth == count ? to : from + (to - from) * nth / count;
        ready_.push_back(std::move(unit));
    }
}

void SidePlacer::placeRest()
{
    double slot = timeline_.slotSeconds();
    for (SideUnit& unit : waiting_) {
        if (unit.streamSeconds) {
            unit.seconds = timeline_.placeOther(*unit.streamSeconds);
        } else {
            slot += timeline_.intervalSeconds();
            unit.seconds = slot;
        }
        ready_.push_back(std::move(unit));
    }
    waiting_.clear();
}

}  // namespace media
