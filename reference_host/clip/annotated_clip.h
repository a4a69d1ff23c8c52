// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A clip on its way through the plugin: read, decoded, converted to NV12, joined with its telemetry and
// drawn on, picture by picture. What burn, frame and text have in common.
#pragma once

#include "clip/frame_clock.h"
#include "clip/telemetry_feed.h"
#include "clip/telemetry_options.h"
#include "clip/upright_converter.h"
#include "frame/frame_renderer.h"
#include "media/demuxer.h"
#include "media/frame_reader.h"
#include "media/picture_traits.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace clip {

/// One picture with what the plugin is to draw on it.
struct ClipFrame : media::FramePlace {
    std::uint64_t timeNs = 0;  ///< presentation time as the plugin is told it; see FrameClock
    std::shared_ptr<zelvo::ZelvoPicture> picture;
    std::vector<frame::Choice> telemetry;
};

/// What an AnnotatedClip is opened with.
struct ClipSource {
    std::string input;
    TelemetryOptions telemetry;
    std::string config;  ///< the configuration's text
    media::DecoderChoice decoding{};
    frame::Look look{};
    bool watched =
        false;  ///< a live address gives its pictures at once: telemetry is waited for a tenth of a second only
};

class AnnotatedClip {
public:
    /// Opens the clip and the telemetry that is to be shown with it. Throws std::runtime_error with one line,
    /// media::UnknownChoice for a telemetry stream that cannot be meant.
    explicit AnnotatedClip(ClipSource const& source);

    /// Called for every telemetry and sound packet of the clip as it is read, ahead of the pictures; not for those
    /// that lie before the first picture that next() gives, if frames were passed over. A subtitle that reaches into
    /// what follows begins with that picture then.
    void setSideObserver(std::function<void(media::SideUnit&)> observer) { observer_ = std::move(observer); }

    /// The next picture, upright; empty at the end or after an interrupt. Pictures of another size than the first
    /// are scaled to it.
    std::optional<ClipFrame> next();
    /// The place of the next frame, or with `further` 1 of the one after it; empty when there is none.
    std::optional<media::FramePlace> peek(std::size_t further = 0) { return reader_.peek(further); }
    /// Passes over the next frame, which peek() has shown. The plugin sees it as any other, without its picture, before
    /// it draws on the next one that is given out; it does not see frames on which nothing there can depend.
    void pass();
    /// A range ends before this place, which peek() has shown: what belongs beside its pictures goes to the observer.
    void endBefore(media::FramePlace const& place) { takeSideUnits_(place.seconds); }

    /// As FrameReader's; for passing over many frames. To be called before anything is read.
    void tellFromPackets() { reader_.tellFromPackets(); }
    bool settle() { return reader_.settle(); }
    std::string const& doubt() const { return reader_.doubt(); }
    /// Seconds from the clip's first frame to this place; 0 as long as no frame was given out or passed over.
    double sinceFirst(media::FramePlace const& place) const { return first_ ? place.seconds - first_->seconds : 0.0; }
    /// Ticks of timeBase() from the clip's first frame to the first one that next() has given.
    std::int64_t passedTicks() const { return begin_->ticks - first_->ticks; }
    /// The place of the first frame that next() has given.
    media::FramePlace const& begin() const { return *begin_; }
    /// Whether pictures carry captions, which nobody draws.
    bool hasCaptions() const { return captions_; }
    /// Lets the plugin draw on the frame's picture, and gives it.
    std::shared_ptr<zelvo::ZelvoPicture> annotate(ClipFrame const& frame);

    media::Demuxer const& demuxer() const { return demuxer_; }
    AVRational timeBase() const { return reader_.timeBase(); }
    Painter& painter() { return renderer_.painter(); }
    /// Of the first picture; valid once next() has given one.
    media::PictureTraits const& traits() const { return traits_; }

    TelemetryCounts telemetryCounts() const { return telemetry_.counts(); }
    /// Remarks about telemetry, damage and size changes, for the end of a command.
    std::vector<std::string> remarks() const;

private:
    void learnTraits_(AVFrame const& frame);
    std::vector<frame::Choice> telemetryFor_(media::FramePlace const& place);
    void takeSideUnits_(double seconds);
    void observe_();
    void showPassed_();

    /// A frame that was passed over.
    struct PassedFrame {
        std::uint64_t index = 0;
        std::uint64_t timeNs = 0;
        std::vector<frame::Choice> telemetry;
    };

    media::Demuxer demuxer_;
    TelemetryFeed telemetry_;
    media::FrameReader reader_;
    FrameClock clock_;
    UprightConverter converter_;
    frame::FrameRenderer renderer_;
    std::function<void(media::SideUnit&)> observer_;
    std::deque<media::SideUnit> unobserved_;
    media::PictureTraits traits_;
    std::optional<std::uint64_t> memoryNs_;  ///< of the plugin with this configuration; empty: without bound
    std::deque<PassedFrame> passed_;         ///< those that the plugin is still to see
    std::optional<media::FramePlace> first_;
    std::optional<media::FramePlace> begin_;
    std::string sizeChange_;
    bool captions_ = false;
};

/// The failure of a clip from which no picture came.
std::runtime_error noPictures(std::string const& input);

}  // namespace clip
