// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Live pictures on their way through the plugin: as they come, on one time axis that rises whatever becomes of the
// input, each with its telemetry as far as that comes in time. Between live input and live writer.
#pragma once

#include "clip/annotated_clip.h"
#include "clip/live_telemetry.h"
#include "media/decoder.h"
#include "media/live_queue.h"
#include "media/side_placer.h"
#include "media/timeline.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace clip {

/// What has happened since the beginning, for people.
struct LiveCounts {
    std::uint64_t pictures = 0;  ///< drawn
    std::uint64_t dropped = 0;   ///< came too late to be drawn
    std::uint64_t reopened = 0;  ///< times that the input was opened again
};

/// A live picture. Without `picture` it came too late and was dropped.
struct LiveFrame : ClipFrame {
    media::LiveTime arrival{};  ///< of its packet
};

struct LiveClipOptions {
    std::string input;  ///< its name, for messages
    TelemetryOptions telemetry;
    double telemetryWaitSeconds = 0.1;  ///< how long a picture's telemetry is waited for
    std::string config;                 ///< the configuration's text
    int threads = 0;                    ///< of the decoder; 0: as many as there are processors
    frame::Look look{};
};

class LiveClip {
public:
    using SideObserver = std::function<void(media::SideUnit&, media::LiveProgram const&)>;

    /// `queue`, which must outlive this, brings the packets. Throws std::runtime_error with one line when the plugin
    /// cannot be had, media::UnknownChoice for a telemetry stream that cannot be meant.
    LiveClip(media::LiveQueue& queue, LiveClipOptions options);

    /// Called for every telemetry and sound packet at its place, not later than a picture after it.
    void setSideObserver(SideObserver observer) { observer_ = std::move(observer); }

    /// The next picture, drawn on or dropped; empty when there is none until then, or none any more. Pictures of
    /// another size than the first are fitted into it, with black bars where their shape is another.
    std::optional<LiveFrame> next(media::LiveTime until);

    /// Of the first picture; valid once next() has given one.
    media::PictureTraits const& traits() const { return traits_; }
    media::LiveProgram const& program() const { return *program_; }
    /// Pictures per second, by the stream, else by the container, else 25.
    AVRational frameRate() const;
    LiveCounts counts() const;
    TelemetryCounts telemetryCounts() const { return telemetry_.counts(); }
    /// Whether pictures carry captions, which nobody draws.
    bool hasCaptions() const { return captions_; }
    std::optional<double> telemetryAge() const { return telemetry_.ageSeconds(); }
    /// What somebody should know of the input, said once.
    std::vector<std::string> takeRemarks() { return std::exchange(remarks_, {}); }

private:
    /// A decoded picture that waits for its telemetry.
    struct Waiting {
        media::FramePtr frame;
        std::int64_t ticks = 0;
        media::LiveTime arrival{};
        media::LiveTime pushed{};  ///< when what made the decoder give it out was read
    };

    void take_(media::LiveItem item);
    void lose_(std::string const& because);
    void tellCause_(std::string const& because);
    void tellUndecoded_(media::LiveTime read);
    void tellMissingTelemetry_(media::LiveProgram const& program);
    void open_(media::LiveItem const& item);
    void forgetArrivalsAfterPause_(media::LiveTime read);
    void takeVideo_(media::LiveItem item);
    void takeSide_(media::LiveItem item);
    void placeSides_();
    void placed_(media::SideUnit unit);
    void receive_();
    void drain_();
    bool isReady_(Waiting const& front, media::LiveTime now) const;
    LiveFrame finish_(Waiting waiting, media::LiveTime now);
    void learnTraits_(AVFrame const& frame);
    void noteSize_(AVFrame const& frame);
    void convert_(AVFrame const& frame, zelvo::ZelvoPicture& picture);

    media::LiveQueue& queue_;
    LiveClipOptions options_;
    LiveTelemetry telemetry_;
    frame::FrameRenderer renderer_;
    media::FrameConverter converter_;
    FrameClock clock_;
    SideObserver observer_;
    std::shared_ptr<media::LiveProgram const> program_;
    std::optional<media::Timeline> timeline_;
    std::optional<media::SidePlacer> placer_;
    std::unique_ptr<media::Decoder> decoder_;
    std::map<std::int64_t, media::LiveTime> arrivals_;  ///< by presentation time, of packets in the decoder
    media::LiveTime now_{};                             ///< when what is worked on was read
    std::optional<media::LiveTime> lastVideo_;          ///< when the last picture came
    std::optional<media::LiveTime> lastRead_;           ///< when it was read, which may be later
    std::optional<media::LiveTime> undecodedSince_;     ///< the first picture's packet of this opening was read
    bool decodes_ = false;                              ///< a picture of this opening has been decoded
    bool lost_ = false;
    bool afterOutage_ = false;  ///< no picture has come since
    bool drained_ = false;
    std::deque<Waiting> waiting_;
    media::PictureTraits traits_;
    std::uint64_t nextNumber_ = 0;
    std::optional<std::int64_t> lastTicks_;
    LiveCounts counts_;
    std::vector<std::string> remarks_;
    int lastWidth_ = 0;
    int lastHeight_ = 0;
    std::shared_ptr<zelvo::ZelvoPicture> fitted_;  ///< a picture of another shape, before it gets its bars
    bool captions_ = false;
    bool toldWaiting_ = false;    ///< for the first picture
    bool toldCause_ = false;      ///< why the first picture does not come
    bool toldUndecoded_ = false;  ///< of this opening
    std::string toldMissing_;     ///< of the telemetry
    media::LiveTime const began_;
};

}  // namespace clip
