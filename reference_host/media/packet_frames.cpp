// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Brings packets into the order in which a decoder gives out their pictures.
#include "media/packet_frames.h"

#include <algorithm>

namespace media {
namespace {

/// How many pictures the decoder holds back. The libraries have found it out while opening the clip.
std::size_t reorderOf(AVCodecParameters const& codec)
{
    switch (codec.codec_id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC:
        return static_cast<std::size_t>(std::max(0, codec.video_delay));
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
        return 1;
    default:
        return 0;
    }
}

}  // namespace

PacketFrames::PacketFrames(AVStream const& video) : reorder_(reorderOf(*video.codecpar)), inspector_(video) {}

std::string PacketFrames::doubtOf_(AVPacket const& packet, Timeline::Placed const& placed, bool cleanStart) const
{
    if (!first_ && !cleanStart) {
        return "the stream does not begin with a key picture";
    }
    if (packet.pts == AV_NOPTS_VALUE) {
        return "a packet has no presentation time";
    }
    if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) {
        return "a packet is damaged";
    }
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) {
        return "a picture is not to be shown";
    }
    if (packet.side_data_elems > 0 &&
        (av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr ||
         av_packet_get_side_data(&packet, AV_PKT_DATA_PARAM_CHANGE, nullptr) != nullptr)) {
        return "the pictures' parameters change";
    }
    if (placed.newClock) {
        return "the stream's clock starts anew";
    }
    std::int64_t const time = placed.presentTicks;
    if (first_ && time < *first_) {
        return "a picture is shown before the first key picture";
    }
    if (held_.count(time) != 0 || (last_ && time == *last_)) {
        return "two packets have the same presentation time";
    }
    bool const beforeWhatStands = cleanStart && !held_.empty() && time < *held_.rbegin();
    if (beforeWhatStands || (last_ && time < *last_)) {
        return "a packet comes later than the decoder expects";
    }
    return "";
}

bool PacketFrames::add(AVPacket const& packet, Timeline::Placed const& placed)
{
    if (!doubt_.empty()) {
        return false;
    }
    PacketInspector::Finding const finding = inspector_.inspect(packet);
    doubt_ = finding.doubt.empty() ? doubtOf_(packet, placed, finding.cleanStart) : finding.doubt;
    if (!doubt_.empty()) {
        return false;
    }
    std::int64_t const time = placed.presentTicks;
    first_ = first_.value_or(time);
    held_.insert(time);
    while (held_.size() > reorder_) {
        last_ = *held_.begin();
        told_.push_back(*last_);
        held_.erase(held_.begin());
    }
    return finding.cleanStart;
}

void PacketFrames::end()
{
    told_.insert(told_.end(), held_.begin(), held_.end());
    held_.clear();
}

std::optional<std::int64_t> PacketFrames::next()
{
    if (told_.empty()) {
        return std::nullopt;
    }
    std::int64_t const ticks = told_.front();
    told_.pop_front();
    return ticks;
}

}  // namespace media
