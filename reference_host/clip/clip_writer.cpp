// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From annotated pictures and packets to a finished file; last step of burn.
#include "clip/clip_writer.h"

#include "clip/picture_losses.h"
#include "clip/stream_choice.h"
#include "imaging/imaging_access.h"
#include "sw_number_text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace clip {

ClipWriter::ClipWriter(std::string output, media::EncoderChoice choice, AnnotatedClip const& clip, OutputParts parts)
    : output_(std::move(output))
    , choice_(std::move(choice))
    , clip_(clip)
    , parts_(parts)
    , muxer_(output_)
{
}

void ClipWriter::addSide(media::SideUnit& unit)
{
    if (begun_ && !goesOut_(unit.stream)) {
        return;
    }
    side_.emplace(unit.seconds, std::move(unit));
    if (side_.size() > kMaxWaiting) {
        side_.erase(side_.begin());
    }
}

bool ClipWriter::goesOut_(int stream) const
{
    return streams_.copied.count(stream) != 0 || streams_.sidecars.count(stream) != 0;
}

void ClipWriter::addPicture(ClipFrame const& frame, std::shared_ptr<zelvo::ZelvoPicture> const& picture)
{
    if (!begun_) {
        begin_();
    }
    encoder_->encode(
        imaging::planesOf(*picture), frame.ticks - zeroTicks_(), [this](AVPacket& packet) { writeVideo_(packet); },
        picture);
    writeSideUpTo_(side_.upper_bound(frame.seconds));
}

void ClipWriter::finish(bool whole, std::function<void()> const& lastLook)
{
    end_(whole ? side_.end() : side_.begin(), lastLook);
}

void ClipWriter::finishBefore(double seconds, std::function<void()> const& lastLook)
{
    end_(side_.lower_bound(seconds), lastLook);
}

void ClipWriter::end_(SideUnits::iterator sideEnd, std::function<void()> const& lastLook)
{
    if (!begun_) {
        throw noPictures(clip_.demuxer().name());
    }
    encoder_->flush([this](AVPacket& packet) { writeVideo_(packet); });
    writeSideUpTo_(sideEnd);
    finishRemarks_();
    muxer_.finish(lastLook);
    for (auto& [stream, sidecar] : streams_.sidecars) {
        sidecar->finish();
    }
}

void ClipWriter::begin_()
{
    media::PictureTraits const& traits = clip_.traits();
    media::EncoderSettings settings;
    settings.choice = choice_;
    settings.picture = traits;
    settings.frameRate = clip_.demuxer().frameRate();
    settings.timeBase = clip_.timeBase();
    settings.inOrder = muxer_.isTransportStream() && beginsNearZero_();
    encoder_ = std::make_unique<media::Encoder>(settings, muxer_.container());
    videoStream_ = muxer_.addVideo(encoder_->context(), clip_.timeBase());
    remarks_ = describePictures(muxer_, videoStream_, *encoder_, traits, output_);
    streams_ = addOutputStreams(clip_.demuxer().streams(), muxer_, output_,
                                parts_.sidecar ? SidecarUse::Wanted : SidecarUse::Offered);
    remarks_.insert(remarks_.end(), streams_.remarks.begin(), streams_.remarks.end());
    keepTags_();
    muxer_.begin();
    begun_ = true;
}

/// Tags, chapters and time code.
void ClipWriter::keepTags_()
{
    media::KeptPart part;
    part.zeroSeconds = media::secondsOf(zeroTicks_(), clip_.timeBase());
    part.beginSeconds = clip_.begin().seconds;
    part.framesBefore = static_cast<std::int64_t>(clip_.begin().number);
    part.endSeconds = rangeEnd_();
    std::map<int, int> all = streams_.copied;
    all[clip_.demuxer().video()->index] = videoStream_;
    for (std::string const& line : muxer_.keepTags(clip_.demuxer(), all, part)) {
        remarks_.push_back(output_ + ": " + line);
    }
}

/// On the clip's axis; empty: the clip's end.
std::optional<double> ClipWriter::rangeEnd_() const
{
    if (!parts_.endSeconds) {
        return std::nullopt;
    }
    return clip_.begin().seconds - media::secondsOf(clip_.passedTicks(), clip_.timeBase()) + *parts_.endSeconds;
}

/// Where the output's time 0 lies on the clip's axis. A transport stream keeps the clip's times, and a part of a clip
/// begins at the time at which the whole clip begins; everything else begins with its first picture.
std::int64_t ClipWriter::zeroTicks_() const
{
    return muxer_.isTransportStream() ? clip_.passedTicks() : clip_.begin().ticks;
}

/// Pictures that are sent before they are shown would then be sent before time 0.
bool ClipWriter::beginsNearZero_() const
{
    constexpr double kMostReordered = 5.0;
    double const first = media::secondsOf(clip_.begin().ticks - zeroTicks_(), clip_.timeBase());
    return first < kMostReordered / av_q2d(clip_.demuxer().frameRate());
}

void ClipWriter::writeSideUpTo_(SideUnits::iterator end)
{
    double const zero = media::secondsOf(zeroTicks_(), clip_.timeBase());
    for (auto next = side_.begin(); next != end; ++next) {
        writeSide_(next->second, zero);
    }
    side_.erase(side_.begin(), end);
}

void ClipWriter::writeSide_(media::SideUnit& unit, double zeroSeconds)
{
    auto const sidecar = streams_.sidecars.find(unit.stream);
    if (sidecar != streams_.sidecars.end()) {
        sidecar->second->add({unit.packet->data, static_cast<std::size_t>(unit.packet->size)});
    }
    auto const output = streams_.copied.find(unit.stream);
    if (output == streams_.copied.end()) {
        return;
    }
    // Times on the clip's one axis: those of joined clips rise where the originals start anew.
    AVRational const timeBase = clip_.demuxer().stream(unit.stream).time_base;
    unit.packet->pts = std::llround((unit.seconds - zeroSeconds) / av_q2d(timeBase));
    if (unit.kind == media::StreamKind::Subtitle) {
        cutEvent_(unit, timeBase);
    }
    if (unit.packet->pts < 0 && !muxer_.takesNegativeTimes()) {
        if (unit.streamSeconds && unit.packet->pts + unit.packet->duration <= 0) {
            leaveOut_(unit);
            return;
        }
        unit.packet->pts = 0;  // lasts beyond it, or carries no time but only its place in the stream
    }
    unit.packet->dts = unit.packet->pts;
    muxer_.keepUnit(*unit.packet, output->second, unit.streamSeconds.has_value());
    muxer_.write(*unit.packet, output->second, timeBase);
}

/// A subtitle is shown no longer than the pictures of the part to which it belongs.
void ClipWriter::cutEvent_(media::SideUnit& unit, AVRational timeBase) const
{
    std::int64_t& duration = unit.packet->duration;
    if (std::optional<double> const end = rangeEnd_()) {
        duration = std::clamp<std::int64_t>(std::llround((*end - unit.seconds) / av_q2d(timeBase)), 0, duration);
    }
}

void ClipWriter::leaveOut_(media::SideUnit const& unit)
{
    AVStream const& stream = clip_.demuxer().stream(unit.stream);
    bool const heard = media::isHeard(*unit.packet, stream);
    soundBeforeZero_ += heard ? media::secondsOf(unit.packet->duration, stream.time_base) : 0.0;
}

void ClipWriter::finishRemarks_()
{
    if (soundBeforeZero_ > 0.0) {
        remarks_.push_back(output_ + ": " + sw_text::secondsText(soundBeforeZero_) +
                           " of sound before the first picture are left out (.mp4 carries them)");
    }
    if (clip_.hasCaptions()) {
        remarks_.push_back(captionsAreLeftOut(output_));
    }
}

}  // namespace clip
