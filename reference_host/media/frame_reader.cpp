// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The reading loop: packets in stream order in, pictures in presentation order out. Compressed packets
// wait here, not pictures, so that reading ahead costs little memory.
#include "media/frame_reader.h"

#include "media/interrupt.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace media {
namespace {

/// Compressed video that may wait for telemetry; a stream that runs on without times stops here.
constexpr std::size_t kMaxWaitingBytes = 64U << 20U;
constexpr std::size_t kMaxWaitingUnits = 4096;

/// Compressed video that is kept for the time when decoding begins.
constexpr std::size_t kMaxKeptBytes = 256U << 20U;

constexpr char const* kOtherPictures = "the decoder gives other pictures than the packets tell";
constexpr char const* kDamaged = "pictures are damaged, and what stands in their place may come from before them";

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

FrameReader::FrameReader(Demuxer& demuxer, double aheadSeconds, DecoderChoice const& decoding)
    : demuxer_(demuxer)
    , timeBase_(videoOf(demuxer).time_base)
    , timeline_(timelineOf(demuxer))
    , side_(timeline_)
    , decoder_(videoOf(demuxer), demuxer.name(), decoding)
    , aheadSeconds_(aheadSeconds)
{
}

std::optional<VideoUnit> FrameReader::next()
{
    if (held_.empty()) {
        return decodeNext_();
    }
    VideoUnit unit = std::move(held_.front());
    held_.pop_front();
    return unit;
}

std::optional<FramePlace> FrameReader::peek(std::size_t further)
{
    if (packets_) {
        return peekTold_(further);
    }
    while (held_.size() <= further) {
        std::optional<VideoUnit> unit = decodeNext_();
        if (!unit) {
            return std::nullopt;
        }
        held_.push_back(std::move(*unit));
    }
    return held_[further];
}

void FrameReader::skip()
{
    if (!packets_) {
        held_.pop_front();
        return;
    }
    lastTicks_ = told_.front();
    passed_.push_back(told_.front());
    told_.pop_front();
    ++nextNumber_;
}

std::vector<SideUnit> FrameReader::takeSideUnits(double seconds)
{
    keepSideUnits_();
    std::vector<SideUnit> units;
    while (!sideUnits_.empty() && sideUnits_.front().readUpTo < seconds + aheadSeconds_) {
        units.push_back(std::move(sideUnits_.front().unit));
        sideUnits_.pop_front();
    }
    return units;
}

void FrameReader::keepSideUnits_()
{
    for (SideUnit& unit : side_.take()) {
        sideUnits_.push_back({std::move(unit), readUpTo_});
    }
}

std::optional<VideoUnit> FrameReader::decodeNext_()
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
        keepSideUnits_();
        if (packets_) {
            packets_->end();
        }
        return;
    }
    StreamKind const kind = demuxer_.kindOf(packet->stream_index);
    if (kind == StreamKind::Video) {
        addVideo_(std::move(packet));
    } else if (goesBeside(kind)) {
        side_.add(sideUnitOf(std::move(packet), demuxer_));
    }
}

void FrameReader::addVideo_(PacketPtr packet)
{
    Timeline::Placed const placed = timeline_.placeVideo(known(packet->dts), known(packet->pts));
    bool const cleanStart = packets_ && packets_->add(*packet, placed);
    packet->dts = placed.decodeTicks;
    packet->pts = placed.presentTicks;
    // What was placed before stands before this packet.
    keepSideUnits_();
    readUpTo_ = std::max(readUpTo_, secondsOf(placed.decodeTicks, timeBase_));
    side_.placeUpToVideo(packet->pos);
    keepSideUnits_();
    videoBytes_ += static_cast<std::size_t>(packet->size);
    // A clock that jumps in front of a dependent picture is a disturbance, not another clip.
    bool const newClip = placed.newClock && (packet->flags & AV_PKT_FLAG_KEY) != 0;
    if (cleanStart) {
        starts_.push_back(packet->pts);
    }
    video_.push_back({std::move(packet), newClip, cleanStart});
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

void FrameReader::tellFromPackets()
{
    packets_.emplace(*demuxer_.video());
}

std::optional<FramePlace> FrameReader::peekTold_(std::size_t further)
{
    takeTold_();
    while (!ended_ && doubt_.empty() && !interrupted() &&
           (told_.size() <= further || readUpTo_ < secondsOf(told_[further], timeBase_) + aheadSeconds_)) {
        readPacket_();
        takeTold_();
    }
    if (!doubt_.empty() || interrupted() || told_.size() <= further) {
        return std::nullopt;
    }
    if (!firstPicture_) {
        decodeFirst_();
    }
    forgetBefore_(told_.front());
    FramePlace place;
    place.number = nextNumber_ + further;
    place.ticks = told_[further];
    place.seconds = secondsOf(place.ticks, timeBase_);
    return doubt_.empty() ? std::optional(place) : std::nullopt;
}

void FrameReader::takeTold_()
{
    while (std::optional<std::int64_t> const ticks = packets_->next()) {
        told_.push_back(*ticks);
    }
    doubt_ = packets_->doubt();
    if (videoBytes_ > kMaxKeptBytes) {
        doubt_ = "key pictures lie too far apart";
    }
}

void FrameReader::decodeFirst_()
{
    Decoder decoder(*demuxer_.video(), demuxer_.name());
    firstPicture_ = makeFrame();
    bool decoded = false;
    for (auto next = video_.begin(); next != video_.end() && !decoded; ++next) {
        decoder.send(next->packet.get());
        decoded = decoder.receive(*firstPicture_);
    }
    if (!decoded) {
        decoder.send(nullptr);
        decoded = decoder.receive(*firstPicture_);
    }
    if (!decoded || firstPicture_->best_effort_timestamp != told_.front()) {
        doubt_ = kOtherPictures;
    }
}

void FrameReader::forgetBefore_(std::int64_t ticks)
{
    while (starts_.size() > 1 && starts_[1] <= ticks) {
        starts_.pop_front();
        do {
            videoBytes_ -= static_cast<std::size_t>(video_.front().packet->size);
            video_.pop_front();
        } while (!video_.front().cleanStart);
    }
    while (!passed_.empty() && passed_.front() < starts_.front()) {
        passed_.pop_front();
    }
}

bool FrameReader::settle()
{
    if (!doubt_.empty() || told_.empty()) {
        video_.clear();
        packets_.reset();
        return doubt_.empty();
    }
    packets_.reset();
    std::uint64_t const number = nextNumber_;
    std::deque<std::int64_t> expected = std::move(passed_);
    expected.push_back(told_.front());
    while (std::optional<VideoUnit> unit = decodeNext_()) {
        if (unit->ticks < starts_.front()) {
            damagedBefore_ = decoder_.damaged();
            continue;  // leads the picture where decoding began, and refers to what stands before it
        }
        if (damaged() > 0) {
            doubt_ = kDamaged;
            return false;
        }
        if (unit->ticks != expected.front()) {
            break;
        }
        expected.pop_front();
        if (expected.empty()) {
            unit->number = number;
            nextNumber_ = number + 1;
            held_.push_back(std::move(*unit));
            return true;
        }
    }
    doubt_ = interrupted() ? "" : kOtherPictures;
    return doubt_.empty();
}

}  // namespace media
