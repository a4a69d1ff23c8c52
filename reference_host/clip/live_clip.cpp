// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The worker's side of live work: decoding, telemetry, drawing.
#include "clip/live_clip.h"

#include "FrameTime.h"
#include "imaging/imaging_access.h"
#include "media/fitted_picture.h"
#include "sw_number_text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace clip {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// A picture that is older than this, beside the wait for telemetry, is not drawn any more: work is too slow.
constexpr double kLongestDelay = 0.5;

/// A presentation time further from the decode time is damaged.
constexpr std::int64_t kMostReorderTicks = std::int64_t{4} * media::kLiveTimeBase.den;

/// A telemetry time within this of the pictures is of their clock.
constexpr double kSameClockSeconds = 5.0;

/// Packets that a decoder may hold; more are forgotten ones.
constexpr std::size_t kMaxArrivals = 256;

std::optional<std::int64_t> known(std::int64_t ticks)
{
    return ticks == AV_NOPTS_VALUE ? std::nullopt : std::optional(ticks);
}

/// The presentation time of a packet, unless it cannot be right.
std::optional<std::int64_t> soundPresentation(AVPacket const& packet)
{
    bool const damaged = packet.pts != AV_NOPTS_VALUE && packet.dts != AV_NOPTS_VALUE &&
                         (packet.pts < packet.dts || packet.pts - packet.dts > kMostReorderTicks);
    return damaged ? std::nullopt : known(packet.pts);
}

bool isUsable(AVRational rate)
{
    return rate.num > 0 && rate.den > 0 && av_q2d(rate) <= 1000.0;
}

media::FittedBox boxOf(AVFrame const& frame, media::PictureTraits const& shown)
{
    return media::fitInto(shown.width, shown.height, shown.sampleAspect, frame.width, frame.height,
                          frame.sample_aspect_ratio);
}

/// All of the picture; its last column and row too where it has an odd number of them.
media::FittedBox wholeOf(media::PictureTraits const& shown)
{
    return {0, 0, shown.width / 2 * 2, shown.height / 2 * 2};
}

/// When somebody who sees nothing wants to know why.
constexpr auto kTellWaitingAfter = std::chrono::seconds(2);

/// A pause that is longer, beside the time from picture to picture, is the sender's.
constexpr double kSenderPauseSeconds = 0.5;

}  // namespace

LiveClip::LiveClip(media::LiveQueue& queue, LiveClipOptions options)
    : queue_(queue)
    , options_(std::move(options))
    , telemetry_(options_.telemetry, telemetry::KeySelection::namedIn(options_.config))
    , renderer_(options_.look)
    , clock_(media::kLiveTimeBase)
    , began_(Clock::now())
{
    renderer_.plugin().setConfig(options_.config);
}

AVRational LiveClip::frameRate() const
{
    AVRational const own = decoder_ ? decoder_->frameRate() : AVRational{0, 1};
    return isUsable(own) ? own : program_->frameRate;
}

LiveCounts LiveClip::counts() const
{
    LiveCounts counts = counts_;
    counts.dropped += queue_.dropped();
    return counts;
}

std::optional<LiveFrame> LiveClip::next(media::LiveTime until)
{
    for (;;) {
        media::LiveTime const now = Clock::now();
        if (!waiting_.empty() && isReady_(waiting_.front(), now)) {
            Waiting front = std::move(waiting_.front());
            waiting_.pop_front();
            return finish_(std::move(front), now);
        }
        if (queue_.ended() && !drained_) {
            now_ = now;
            drain_();
            continue;
        }
        if (!toldWaiting_ && !lastVideo_ && now - began_ > kTellWaitingAfter) {
            toldWaiting_ = true;
            remarks_.push_back(options_.input + ": no picture has come yet; waiting for pictures");
        }
        if (now >= until || queue_.ended()) {
            return std::nullopt;
        }
        auto const wait = std::chrono::duration_cast<Clock::duration>(Seconds(options_.telemetryWaitSeconds));
        media::LiveTime const due = waiting_.empty() ? until : std::min(until, waiting_.front().arrival + wait);
        if (std::optional<media::LiveItem> item = queue_.pop(due)) {
            take_(std::move(*item));
        }
    }
}

void LiveClip::take_(media::LiveItem item)
{
    now_ = item.arrival;
    if (!item.packet) {
        lose_(item.lostBecause);
        return;
    }
    if (!program_ || item.program->opening != program_->opening) {
        open_(item);
    }
    program_ = item.program;
    if (item.kind == media::StreamKind::Video) {
        takeVideo_(std::move(item));
    } else {
        takeSide_(std::move(item));
    }
}

void LiveClip::lose_(std::string const& because)
{
    if (!lastVideo_) {
        tellCause_(because);
        return;
    }
    remarks_.push_back(because + "; waiting for it to come back");
    lost_ = true;
    drain_();
}

/// Said once, before anything has come, also behind the line that says only that: some attempts take longer to fail.
void LiveClip::tellCause_(std::string const& because)
{
    if (!toldCause_) {
        remarks_.push_back(because + "; waiting for pictures");
    }
    toldCause_ = true;
    toldWaiting_ = true;
}

/// Whoever comes into a stream sees nothing until decoding can begin.
void LiveClip::tellUndecoded_(media::LiveTime read)
{
    undecodedSince_ = undecodedSince_.value_or(read);
    if (!decodes_ && !toldUndecoded_ && read - *undecodedSince_ > kTellWaitingAfter) {
        toldUndecoded_ = true;
        remarks_.push_back(options_.input + ": pictures come, but none can be decoded yet; waiting for a key picture");
    }
}

/// A stream that is asked for by --klv and is not there; said once for what the input holds.
void LiveClip::tellMissingTelemetry_(media::LiveProgram const& program)
{
    std::string const missing = telemetry_.missingIn(program, options_.input);
    if (!missing.empty() && missing != toldMissing_) {
        toldMissing_ = missing;
        remarks_.push_back(missing);
    }
}

void LiveClip::open_(media::LiveItem const& item)
{
    drain_();
    drained_ = false;
    media::LiveProgram const& program = *item.program;
    AVStream const& video = program.stream(program.video);
    decoder_ = std::make_unique<media::Decoder>(video, options_.input, media::DecoderChoice{options_.threads, true});
    if (!timeline_) {
        auto const interval = std::llround(av_q2d(av_inv_q(program.frameRate)) / av_q2d(media::kLiveTimeBase));
        timeline_.emplace(media::kLiveTimeBase, interval, true);
        placer_.emplace(*timeline_);
    } else {
        ++counts_.reopened;
        afterOutage_ = true;
    }
    if (lost_ && lastVideo_) {
        double const away = Seconds(item.came - *lastVideo_).count();
        remarks_.push_back(options_.input + ": is back after " + sw_text::secondsText(away));
    }
    lost_ = false;
    decodes_ = false;
    undecodedSince_.reset();
    toldUndecoded_ = false;
    tellMissingTelemetry_(program);
}

/// Pictures that wait in the decoder for the next ones are not late because the sender was away: that is no work.
void LiveClip::forgetArrivalsAfterPause_(media::LiveTime read)
{
    double const pause = lastRead_ ? Seconds(read - *lastRead_).count() : 0.0;
    if (pause > kSenderPauseSeconds + timeline_->intervalSeconds()) {
        arrivals_.clear();
    }
    lastRead_ = read;
}

void LiveClip::takeVideo_(media::LiveItem item)
{
    AVPacket& packet = *item.packet;
    if (lastVideo_) {
        timeline_->setElapsed(Seconds(item.came - *lastVideo_).count(),
                              afterOutage_ ? media::Timeline::Since::Outage : media::Timeline::Since::Packet);
    }
    lastVideo_ = item.came;
    afterOutage_ = false;
    forgetArrivalsAfterPause_(item.arrival);
    media::Timeline::Placed const placed = timeline_->placeVideo(known(packet.dts), soundPresentation(packet));
    packet.dts = placed.decodeTicks;
    packet.pts = placed.presentTicks;
    placer_->placeUpToVideo(packet.pos);
    placeSides_();
    if (placed.newClock && (packet.flags & AV_PKT_FLAG_KEY) != 0) {
        decoder_->send(nullptr);
        receive_();
        decoder_->restart();
    }
    arrivals_[packet.pts] = item.arrival;
    if (arrivals_.size() > kMaxArrivals) {
        arrivals_.erase(arrivals_.begin());
    }
    decoder_->send(&packet);
    receive_();
    tellUndecoded_(item.arrival);
}

void LiveClip::takeSide_(media::LiveItem item)
{
    media::SideUnit unit;
    unit.stream = item.packet->stream_index;
    unit.kind = item.kind;
    std::optional<std::int64_t> const pts = known(item.packet->pts);
    std::optional<std::int64_t> const ticks = pts ? pts : known(item.packet->dts);
    unit.packet = std::move(item.packet);
    if (ticks) {
        unit.streamSeconds = media::secondsOf(*ticks, media::kLiveTimeBase);
    }
    if (unit.streamSeconds && timeline_->hasVideo()) {
        unit.seconds = timeline_->placeOther(*unit.streamSeconds);
        if (std::abs(unit.seconds - timeline_->slotSeconds()) < kSameClockSeconds) {
            placed_(std::move(unit));
            return;
        }
    }
    placer_->add(std::move(unit));
}

void LiveClip::placeSides_()
{
    for (media::SideUnit& unit : placer_->take()) {
        placed_(std::move(unit));
    }
}

void LiveClip::placed_(media::SideUnit unit)
{
    telemetry_.add(unit, *program_);
    if (observer_) {
        observer_(unit, *program_);
    }
}

void LiveClip::receive_()
{
    media::FramePtr frame = media::makeFrame();
    while (decoder_->receive(*frame)) {
        decodes_ = true;
        Waiting waiting;
        auto const interval = std::llround(timeline_->intervalSeconds() / av_q2d(media::kLiveTimeBase));
        waiting.ticks = known(frame->best_effort_timestamp).value_or(lastTicks_ ? *lastTicks_ + interval : 0);
        // Times rise, whatever the stream says.
        waiting.ticks = lastTicks_ ? std::max(waiting.ticks, *lastTicks_ + 1) : waiting.ticks;
        lastTicks_ = waiting.ticks;
        auto const arrival = arrivals_.find(frame->best_effort_timestamp);
        waiting.arrival = arrival == arrivals_.end() ? now_ : arrival->second;
        if (arrival != arrivals_.end()) {
            arrivals_.erase(arrival);
        }
        waiting.pushed = now_;
        waiting.frame = std::exchange(frame, media::makeFrame());
        waiting_.push_back(std::move(waiting));
    }
}

/// Gives out what decoder and placer hold: nothing follows that they could wait for.
void LiveClip::drain_()
{
    drained_ = true;
    if (!decoder_) {
        return;
    }
    // Pictures that wait in the decoder are not late because nothing came that would have pushed them out.
    arrivals_.clear();
    decoder_->send(nullptr);
    receive_();
    placer_->placeRest();
    placeSides_();
}

bool LiveClip::isReady_(Waiting const& front, media::LiveTime now) const
{
    return Seconds(now - front.arrival).count() >= options_.telemetryWaitSeconds || queue_.ended() ||
           !telemetry_.expectsFor(media::secondsOf(front.ticks, media::kLiveTimeBase));
}

LiveFrame LiveClip::finish_(Waiting waiting, media::LiveTime now)
{
    LiveFrame frame;
    frame.number = nextNumber_++;
    frame.ticks = waiting.ticks;
    frame.seconds = media::secondsOf(waiting.ticks, media::kLiveTimeBase);
    frame.arrival = waiting.arrival;
    if (Seconds(now - waiting.pushed).count() > kLongestDelay + options_.telemetryWaitSeconds) {
        ++counts_.dropped;
        return frame;
    }
    ++counts_.pictures;
    AVFrame const& decoded = *waiting.frame;
    learnTraits_(decoded);
    telemetry_.gaveUpFor(frame.seconds);
    frame.telemetry = telemetry_.choose(frame.seconds, frame.number);
    frame.timeNs = clock_.next(frame.ticks);
    frame.picture = renderer_.takePicture(static_cast<unsigned>(traits_.width), static_cast<unsigned>(traits_.height));
    convert_(decoded, *frame.picture);
    FrameTime const time(frame.timeNs);
    // The plugin takes frame number 0 for "none yet".
    renderer_.renderOnto(frame.number + 1, frame.picture, telemetry_.producers(), frame.telemetry);
    return frame;
}

void LiveClip::learnTraits_(AVFrame const& frame)
{
    if (traits_.width == 0) {
        traits_ = media::traitsOf(frame);
        imaging::setColor(renderer_.painter(),
                          traits_.color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                          traits_.color.fullRange);
    } else if (frame.width != lastWidth_ || frame.height != lastHeight_) {
        noteSize_(frame);
    }
    lastWidth_ = frame.width;
    lastHeight_ = frame.height;
    captions_ = captions_ || av_frame_get_side_data(&frame, AV_FRAME_DATA_A53_CC) != nullptr;
}

void LiveClip::noteSize_(AVFrame const& frame)
{
    bool const hasBars = boxOf(frame, traits_) != wholeOf(traits_);
    remarks_.push_back(options_.input + ": pictures change from " + media::sizeText(lastWidth_, lastHeight_) + " to " +
                       media::sizeText(frame.width, frame.height) + "; they are shown in " +
                       media::sizeText(traits_.width, traits_.height) + (hasBars ? " with black bars" : ""));
}

void LiveClip::convert_(AVFrame const& frame, zelvo::ZelvoPicture& picture)
{
    MappedNV12 const planes = imaging::planesOf(picture);
    media::FittedBox const box = boxOf(frame, traits_);
    bool const sameSize = frame.width == traits_.width && frame.height == traits_.height;
    if (sameSize || box == wholeOf(traits_)) {
        converter_.toNv12(frame, planes, traits_.color);
        return;
    }
    auto const width = static_cast<unsigned>(box.width);
    auto const height = static_cast<unsigned>(box.height);
    if (!fitted_ || fitted_->width() != width || fitted_->height() != height) {
        fitted_ = std::make_shared<zelvo::ZelvoPicture>(width, height);
    }
    MappedNV12 const inner = imaging::planesOf(*fitted_);
    converter_.toNv12(frame, inner, traits_.color);
    media::placeInto(planes, box, inner, traits_.color);
}

}  // namespace clip
