// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The reading loop of a clip of which only the telemetry is wanted.
#include "media/klv_unit_reader.h"

#include <cstdint>
#include <utility>

namespace media {
namespace {

std::optional<std::int64_t> known(std::int64_t ticks)
{
    return ticks == AV_NOPTS_VALUE ? std::nullopt : std::optional(ticks);
}

}  // namespace

KlvUnitReader::KlvUnitReader(Demuxer& demuxer) : demuxer_(demuxer), timeline_(timelineOf(demuxer)), placer_(timeline_)
{
    AVStream const* const video = demuxer.video();
    if (video != nullptr && known(video->start_time)) {
        start_ = secondsOf(video->start_time, video->time_base);
    }
}

std::optional<SideUnit> KlvUnitReader::next()
{
    while (ready_.empty() && !ended_) {
        readPacket_();
        for (SideUnit& unit : placer_.take()) {
            start_ = start_.value_or(unit.seconds);
            ready_.push_back(std::move(unit));
        }
    }
    if (ready_.empty()) {
        return std::nullopt;
    }
    SideUnit unit = std::move(ready_.front());
    ready_.pop_front();
    return unit;
}

void KlvUnitReader::readPacket_()
{
    PacketPtr packet = makePacket();
    if (!demuxer_.read(*packet)) {
        ended_ = true;
        placer_.placeRest();
        return;
    }
    StreamKind const kind = demuxer_.kindOf(packet->stream_index);
    if (kind == StreamKind::Video) {
        Timeline::Placed const placed = timeline_.placeVideo(known(packet->dts), known(packet->pts));
        start_ = start_.value_or(secondsOf(placed.presentTicks, demuxer_.video()->time_base));
        placer_.placeUpToVideo(packet->pos);
    } else if (kind == StreamKind::Klv) {
        placer_.add(sideUnitOf(std::move(packet), demuxer_));
        if (demuxer_.video() == nullptr) {
            placer_.placeRest();
        }
    }
}

}  // namespace media
