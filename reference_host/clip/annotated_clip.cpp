// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The way of a picture through the host: reader, converter, telemetry, plugin.
#include "clip/annotated_clip.h"

#include "FrameTime.h"
#include "clip/config_memory.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace clip {
namespace {

/// kLateSeconds where somebody watches.
constexpr double kWatchedLateSeconds = 0.1;

bool isWatched(ClipSource const& source)
{
    return source.watched && media::isLiveAddress(source.input);
}

media::Demuxer openClip(ClipSource const& source)
{
    if (isWatched(source)) {
        return media::Demuxer(source.input, media::LiveReading::untilInterrupted());
    }
    return media::Demuxer(source.input);
}

media::DecoderChoice decodingOf(ClipSource const& source)
{
    return {source.decoding.threads, source.decoding.lowDelay || isWatched(source)};
}

/// The plugin takes frame number 0 for "none yet".
std::uint64_t indexOf(media::FramePlace const& place)
{
    return place.number + 1;
}

/// Until when a unit counts: a subtitle until it is no longer shown, all else at its time only.
double endOf(media::SideUnit const& unit, media::Demuxer const& demuxer)
{
    bool const lasts = unit.kind == media::StreamKind::Subtitle;
    AVRational const timeBase = demuxer.stream(unit.stream).time_base;
    return unit.seconds + (lasts ? media::secondsOf(unit.packet->duration, timeBase) : 0.0);
}

/// A subtitle that is shown already when its part begins.
void cutBegin(media::SideUnit& unit, double seconds, media::Demuxer const& demuxer)
{
    AVRational const timeBase = demuxer.stream(unit.stream).time_base;
    unit.packet->duration = std::llround((endOf(unit, demuxer) - seconds) / av_q2d(timeBase));
    unit.seconds = seconds;
}

}  // namespace

AnnotatedClip::AnnotatedClip(ClipSource const& source)
    : demuxer_(openClip(source))
    , telemetry_(demuxer_, source.telemetry, telemetry::KeySelection::namedIn(source.config))
    , reader_(demuxer_, telemetry_.aheadSeconds(isWatched(source) ? kWatchedLateSeconds : kLateSeconds),
              decodingOf(source))
    , clock_(reader_.timeBase())
    , converter_(demuxer_)
    , renderer_(source.look)
    , memoryNs_(memoryNsOf(source.config))
{
    renderer_.plugin().setConfig(source.config);
}

std::optional<ClipFrame> AnnotatedClip::next()
{
    std::optional<media::VideoUnit> unit = reader_.next();
    if (!unit) {
        takeSideUnits_(std::numeric_limits<double>::infinity());
        return std::nullopt;
    }
    AVFrame const& decoded = *unit->frame;
    captions_ = captions_ || av_frame_get_side_data(&decoded, AV_FRAME_DATA_A53_CC) != nullptr;
    media::PictureTraits const shown = converter_.traitsOf(decoded);
    if (!begin_) {
        learnTraits_(reader_.firstPicture() != nullptr ? *reader_.firstPicture() : decoded);
        begin_ = *unit;
    } else if (sizeChange_.empty() && (shown.width != traits_.width || shown.height != traits_.height)) {
        sizeChange_ = "pictures change from " + media::sizeText(traits_.width, traits_.height) + " to " +
                      media::sizeText(shown.width, shown.height) + " at frame " + std::to_string(unit->number) +
                      "; they were scaled to the first size";
    }
    ClipFrame frame{*unit, 0, nullptr, {}};
    frame.telemetry = telemetryFor_(*unit);
    frame.timeNs = clock_.next(unit->ticks);
    frame.picture = renderer_.takePicture(static_cast<unsigned>(traits_.width), static_cast<unsigned>(traits_.height));
    converter_.convert(decoded, traits_.color, *frame.picture);
    return frame;
}

std::vector<frame::Choice> AnnotatedClip::telemetryFor_(media::FramePlace const& place)
{
    takeSideUnits_(place.seconds);
    if (!first_) {
        first_ = place;
        telemetry_.begin(place.seconds);
    }
    return telemetry_.choose(place.seconds, place.number);
}

void AnnotatedClip::pass()
{
    media::FramePlace const place = reader_.peek().value();
    reader_.skip();
    std::vector<frame::Choice> telemetry = telemetryFor_(place);
    std::uint64_t const timeNs = clock_.next(place.ticks);
    passed_.push_back({indexOf(place), timeNs, std::move(telemetry)});
    if (!memoryNs_) {
        showPassed_();
        return;
    }
    while (timeNs - passed_.front().timeNs > *memoryNs_) {
        passed_.pop_front();
    }
}

void AnnotatedClip::showPassed_()
{
    for (PassedFrame const& passed : passed_) {
        FrameTime const time(passed.timeNs);
        renderer_.pass(passed.index, telemetry_.producers(), passed.telemetry);
    }
    passed_.clear();
}

std::shared_ptr<zelvo::ZelvoPicture> AnnotatedClip::annotate(ClipFrame const& frame)
{
    showPassed_();
    FrameTime const time(frame.timeNs);
    renderer_.renderOnto(indexOf(frame), frame.picture, telemetry_.producers(), frame.telemetry);
    return frame.picture;
}

void AnnotatedClip::learnTraits_(AVFrame const& frame)
{
    traits_ = converter_.traitsOf(frame);
    imaging::setColor(renderer_.painter(),
                      traits_.color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                      traits_.color.fullRange);
}

void AnnotatedClip::takeSideUnits_(double seconds)
{
    for (media::SideUnit& unit : reader_.takeSideUnits(seconds)) {
        telemetry_.add(unit);
        unobserved_.push_back(std::move(unit));
    }
    if (begin_) {
        observe_();
        return;
    }
    // The first picture that next() will give is not earlier.
    std::erase_if(unobserved_, [this, seconds](media::SideUnit const& unit) {
        return unit.seconds < seconds && endOf(unit, demuxer_) <= seconds;
    });
}

void AnnotatedClip::observe_()
{
    bool const cut = begin_->number > 0;
    for (media::SideUnit& unit : unobserved_) {
        if (cut && unit.seconds < begin_->seconds) {
            if (endOf(unit, demuxer_) <= begin_->seconds) {
                continue;
            }
            cutBegin(unit, begin_->seconds, demuxer_);
        }
        if (observer_) {
            observer_(unit);
        }
    }
    unobserved_.clear();
}

std::vector<std::string> AnnotatedClip::remarks() const
{
    std::vector<std::string> remarks = telemetry_.remarks();
    if (reader_.damaged() > 0) {
        remarks.push_back(demuxer_.name() + ": " + std::to_string(reader_.damaged()) +
                          " damaged video packets or pictures");
    }
    if (!demuxer_.readError().empty()) {
        remarks.push_back(demuxer_.name() + ": reading ended early: " + demuxer_.readError());
    }
    if (converter_.slanting()) {
        remarks.push_back(
            demuxer_.name() +
            ": pictures that are to be shown turned by other than right angles were left as they are stored");
    }
    if (!sizeChange_.empty()) {
        remarks.push_back(demuxer_.name() + ": " + sizeChange_);
    }
    return remarks;
}

std::runtime_error noPictures(std::string const& input)
{
    return std::runtime_error(input + (media::interrupted()
                                           ? ": interrupted before the first picture; start again"
                                           : ": holds no picture that can be decoded; give a clip with video"));
}

}  // namespace clip
