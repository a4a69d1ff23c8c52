// A clip on its way through the plugin: read, decoded, converted to NV12, joined with its telemetry and
// drawn on, picture by picture. What burn, frame and text have in common.
#pragma once

#include "clip/frame_clock.h"
#include "clip/telemetry_feed.h"
#include "clip/telemetry_options.h"
#include "frame/frame_renderer.h"
#include "media/demuxer.h"
#include "media/frame_converter.h"
#include "media/frame_reader.h"
#include "media/picture_traits.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace clip {

/// One picture before the plugin has drawn on it.
struct ClipFrame {
    std::uint64_t number = 0;  ///< counts from 0
    double seconds = 0.0;      ///< presentation time on the stream's own axis
    std::int64_t ticks = 0;    ///< the same in AnnotatedClip::timeBase()
    std::uint64_t timeNs = 0;  ///< the same as the plugin is told it; see FrameClock
    std::shared_ptr<zelvo::ZelvoPicture> picture;
    std::vector<frame::Choice> telemetry;
};

class AnnotatedClip {
public:
    /// Opens the clip and the telemetry that is to be shown with it. `config` goes to the plugin. Throws
    /// std::runtime_error with one line, media::UnknownChoice for a telemetry stream that cannot be meant.
    AnnotatedClip(std::string const& input, TelemetryOptions const& telemetry, std::string const& config);

    /// Called for every telemetry and sound packet of the clip as it is read, ahead of the pictures.
    void setSideObserver(std::function<void(media::SideUnit&)> observer) { observer_ = std::move(observer); }

    /// The next picture; empty at the end or after an interrupt. Pictures of another size than the first
    /// are scaled to it.
    std::optional<ClipFrame> next();
    /// The picture with the plugin's drawing.
    std::shared_ptr<zelvo::ZelvoPicture> annotate(ClipFrame const& frame);

    media::Demuxer const& demuxer() const { return demuxer_; }
    AVRational timeBase() const { return reader_.timeBase(); }
    Painter& painter() { return renderer_.painter(); }
    /// Of the first picture; valid once next() has given one.
    media::PictureTraits const& traits() const { return traits_; }

    /// Remarks about telemetry, damage and size changes, for the end of a command.
    std::vector<std::string> remarks() const;

private:
    void learnTraits_(AVFrame const& frame);
    void takeSideUnits_();

    media::Demuxer demuxer_;
    TelemetryFeed telemetry_;
    media::FrameReader reader_;
    FrameClock clock_;
    media::FrameConverter converter_;
    frame::FrameRenderer renderer_;
    std::function<void(media::SideUnit&)> observer_;
    media::PictureTraits traits_;
    std::uint64_t frames_ = 0;
    std::string sizeChange_;
};

/// The failure of a clip from which no picture came.
std::runtime_error noPictures(std::string const& input);

}  // namespace clip
