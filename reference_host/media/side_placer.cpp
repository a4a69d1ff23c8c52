// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The places of what goes beside the pictures: by its own time, or by its place in the byte stream.
#include "media/side_placer.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

namespace media {
namespace {

/// Units that may wait for a picture; a stream without further pictures stops here.
constexpr std::size_t kMaxWaitingUnits = 4096;

}  // namespace

std::optional<std::uint8_t> unitIdOf(AVPacket const& packet)
{
    std::size_t size = 0;
    std::uint8_t const* const data = av_packet_get_side_data(&packet, AV_PKT_DATA_MPEGTS_STREAM_ID, &size);
    return size > 0 ? std::optional(*data) : std::nullopt;
}

void setTimed(AVPacket& packet, bool timed)
{
    constexpr std::uint8_t kMetadataUnit = 0xFC;
    constexpr std::uint8_t kPrivateUnit = 0xBD;
    std::uint8_t* const data = av_packet_new_side_data(&packet, AV_PKT_DATA_MPEGTS_STREAM_ID, 1);
    if (data == nullptr) {
        throw std::bad_alloc();
    }
    *data = timed ? kMetadataUnit : kPrivateUnit;
}

bool isHeard(AVPacket const& packet, AVStream const& stream)
{
    constexpr std::size_t kSkipBytes = 4;
    std::size_t size = 0;
    std::uint8_t const* const data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    std::int64_t const skipped = data == nullptr || size < kSkipBytes ? 0 : AV_RL32(data);
    return av_compare_ts(packet.duration, stream.time_base, skipped,
                         AVRational{1, std::max(1, stream.codecpar->sample_rate)}) > 0;
}

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
