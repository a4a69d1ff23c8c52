// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes the encoded video with the copied telemetry and sound into a container. Last step of the flow.
#pragma once

#include "media/demuxer.h"
#include "media/ffmpeg_types.h"
#include "media/kept_tags.h"
#include "media/output_file.h"
#include "media/patched_output.h"
#include "media/picture_traits.h"
#include "media/waiting.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace media {

/// The container for an output by its ending or address: udp:// and srt:// carry a transport stream,
/// "-" (standard output) too. Throws UnknownChoice when the ending says nothing.
AVOutputFormat const& containerFor(std::string const& output);

/// When packets leave for the output.
enum class MuxPace {
    Ordered,  ///< in the order of their times over all streams
    AtOnce,   ///< as they come, each flushed: nothing waits for the packet of another stream
};

/// An interrupt came while the output was still being opened: nothing was written.
struct EndedWhileOpening : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Muxer {
public:
    /// Creates the output; nothing is under its name before finish(). An address may wait for its receiver for any
    /// time; meanwhile `whileOpening` is called some ten times a second. Throws EndedWhileOpening when an interrupt
    /// ends that, else std::runtime_error.
    explicit Muxer(std::string const& output, MuxPace pace = MuxPace::Ordered, std::function<void()> whileOpening = {});
    ~Muxer();
    Muxer(Muxer const&) = delete;
    Muxer& operator=(Muxer const&) = delete;

    AVOutputFormat const& container() const { return *context_->oformat; }

    bool isTransportStream() const;
    /// Whether times below 0 may be written.
    bool takesNegativeTimes() const { return (container().flags & AVFMT_TS_NEGATIVE) != 0; }

    /// Streams are added before begin(); each call gives the stream's number for write().
    int addVideo(AVCodecContext const& encoder, AVRational timeBase);
    /// A telemetry stream; empty when the container does not carry KLV.
    std::optional<int> addKlv();
    /// A stream whose packets are passed on as they are; empty when the container does not carry it. A transport stream
    /// carries whatever came from a transport stream in units of its own.
    std::optional<int> addCopy(AVStream const& source, bool fromTransportStream = false);
    /// A file within the clip; empty when the container takes none.
    std::optional<int> addAttachment(AVStream const& source);
    /// Tells of the picture's light; false when the container has no place for it.
    bool describeLight(int stream, PictureTraits const& traits);

    /// In a transport stream made from a transport stream, programs and streams keep their numbers, names, types and
    /// descriptors. `streams` gives the output's stream for each copied one of the input; the rest is the input's
    /// shown video. To be called when all streams were added. Returns the PIDs that could not be kept.
    std::vector<int> keepIdentity(InputStreams const& source, std::map<int, int> const& streams);
    /// The same for services that the input has described only now; the first description stays.
    void keepServices(Bytes const& section);
    /// The same for the unit of a copied packet: its id is that of the stream's first unit, and a unit of data that
    /// is not `timed` carries no time.
    void keepUnit(AVPacket& packet, int stream, bool timed);

    /// As media::keepTags; to be called behind keepIdentity().
    std::vector<std::string> keepTags(Demuxer const& source, std::map<int, int> const& streams, KeptPart const& part)
    {
        return media::keepTags(source, *context_, streams, part);
    }

    /// Throws UnknownChoice when the container does not take the streams.
    void begin();
    /// Takes the packet's contents; its times are in `timeBase`. A decode time of pictures or sound that does not rise
    /// is moved on by one tick, as no container takes it otherwise; that of other streams may stay the same.
    void write(AVPacket& packet, int stream, AVRational timeBase);
    /// Completes the file and puts it under its name. `lastLook` is called in between; when it throws, nothing is left.
    void finish(std::function<void()> const& lastLook = {});

private:
    struct FreeOutput {
        void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    };
    struct CloseOutput {
        void operator()(AVIOContext* context) const { avio_close(context); }
    };

    static int onPoll_(void* self);
    void open_();
    /// What is sent from here to the next call is one step.
    void beginStep_() { stepBegan_ = Waiting::Clock::now(); }
    AVStream& newStream_();
    int copyStream_(AVStream const& source);
    bool takes_(AVStream const& source, bool fromTransportStream) const;
    /// Whether the container can be begun with the streams so far and a further one; tried in memory, as some muxers
    /// refuse only then what they said that they take.
    bool canBegin_(AVStream const* further) const;
    [[noreturn]] void fail_(int code) const;
    void check_(int code) const;

    OutputFile file_;
    MuxPace pace_;
    std::function<void()> whileOpening_;
    std::optional<Waiting> opening_;  ///< while the output is being opened
    Waiting::Clock::time_point stepBegan_;
    std::unique_ptr<AVIOContext, CloseOutput> output_;  ///< what is written to, through patch_ if there is one
    std::optional<PatchedOutput> patch_;
    std::unique_ptr<AVFormatContext, FreeOutput> context_;
    int firstMapPid_ = 0;                                  ///< for the program maps; 0: the muxer's own
    std::vector<std::optional<std::int64_t>> lastDecode_;  ///< per stream, in the stream's time base
};

}  // namespace media
