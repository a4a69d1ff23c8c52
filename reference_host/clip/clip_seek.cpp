// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Passing over frames by their packets, and once more by decoding where packets do not tell the frames.
#include "clip/clip_seek.h"

#include "media/interrupt.h"
#include "sw_number_text.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace clip {
namespace {

using frame::kSameMoment;
using sw_text::secondsText;

/// Passes over the frames before the wanted one, which peek() then shows. When the clip ends before it, gives the
/// clip's length in seconds.
using Advance = std::function<std::optional<double>(AnnotatedClip& clip)>;

double endOf(AnnotatedClip const& clip, media::FramePlace const& last)
{
    return clip.sinceFirst(last) + 1.0 / av_q2d(clip.demuxer().frameRate());
}

std::optional<double> advanceToShown(AnnotatedClip& clip, double seconds)
{
    std::optional<media::FramePlace> place = clip.peek();
    double const latest = place ? place->seconds + seconds + kSameMoment : 0.0;
    while (place) {
        std::optional<media::FramePlace> const following = clip.peek(1);
        if (!following) {
            // The last picture is shown for one more interval.
            double const end = endOf(clip, *place);
            return seconds < end ? std::nullopt : std::optional(end);
        }
        if (following->seconds > latest) {
            break;
        }
        clip.pass();
        place = following;
    }
    return std::nullopt;
}

std::optional<double> advanceToFirstFrom(AnnotatedClip& clip, double seconds)
{
    std::optional<media::FramePlace> place = clip.peek();
    std::optional<media::FramePlace> last;
    double const earliest = place ? place->seconds + seconds - kSameMoment : 0.0;
    while (place && place->seconds < earliest) {
        last = place;
        clip.pass();
        place = clip.peek();
    }
    return last && !place ? std::optional(endOf(clip, *last)) : std::nullopt;
}

/// A clip that can be read a second time when packets turn out not to tell its frames.
bool canBeReadAgain(ClipSource const& source)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(source.input, ignored) &&
           (source.telemetry.file.empty() || std::filesystem::is_regular_file(source.telemetry.file, ignored));
}

std::unique_ptr<AnnotatedClip> open(ClipSource const& source)
{
    return std::make_unique<AnnotatedClip>(source);
}

std::unique_ptr<AnnotatedClip> openAdvanced(ClipSource const& source, std::string const& wanted, Advance const& advance)
{
    std::unique_ptr<AnnotatedClip> clip = open(source);
    std::optional<double> end;
    bool reached = false;
    if (canBeReadAgain(source)) {
        clip->tellFromPackets();
        end = advance(*clip);
        reached = clip->settle();
        if (!reached) {
            clip = open(source);
        }
    }
    if (!reached) {
        end = advance(*clip);
    }
    if (end && !media::interrupted()) {
        throw std::runtime_error(source.input + ": has no picture " + wanted + ": it ends at " + secondsText(*end) +
                                 "; give an earlier time");
    }
    return clip;
}

/// Whether a frame lies behind the range.
bool isBehind(ClipRange const& range, media::FramePlace const& place, AnnotatedClip const& clip)
{
    return range.to && clip.sinceFirst(place) >= *range.to - kSameMoment;
}

}  // namespace

std::unique_ptr<AnnotatedClip> openShownAt(ClipSource const& source, double seconds)
{
    return openAdvanced(source, "at " + secondsText(seconds),
                        [seconds](AnnotatedClip& clip) { return advanceToShown(clip, seconds); });
}

std::unique_ptr<AnnotatedClip> openRange(ClipSource const& source, ClipRange const& range)
{
    if (!range.from || *range.from <= 0.0) {
        return open(source);
    }
    double const from = *range.from;
    auto clip = openAdvanced(source, "at or after " + secondsText(from),
                             [from](AnnotatedClip& opened) { return advanceToFirstFrom(opened, from); });
    std::optional<media::FramePlace> const place = clip->peek();
    if (place && isBehind(range, *place, *clip)) {
        throw std::runtime_error(source.input + ": has no picture from " + secondsText(from) + " to " +
                                 secondsText(*range.to) + "; give a longer range");
    }
    return clip;
}

std::optional<ClipFrame> nextOf(AnnotatedClip& clip, ClipRange const& range)
{
    std::optional<media::FramePlace> const place = range.to ? clip.peek() : std::nullopt;
    if (place && isBehind(range, *place, clip)) {
        clip.endBefore(*place);
        return std::nullopt;
    }
    return clip.next();
}

std::optional<double> secondsOf(ClipRange const& range, AnnotatedClip const& clip)
{
    std::optional<double> const whole = clip.demuxer().durationSeconds();
    double const from = range.from.value_or(0.0);
    if (!range.to) {
        return whole ? std::optional(*whole - from) : std::nullopt;
    }
    return std::min(*range.to, whole.value_or(*range.to)) - from;
}

}  // namespace clip
