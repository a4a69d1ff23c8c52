// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Opens a clip, a device or an address and hands out its packets, each with the role it plays here.
// First step of the flow: demuxer -> frame reader -> decoder -> NV12.
#pragma once

#include "media/arrival_times.h"
#include "media/ffmpeg_types.h"
#include "media/program_tables.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace media {

enum class StreamKind {
    Video,  ///< the one video stream that is shown
    Klv,    ///< telemetry
    Audio,
    Subtitle,
    Data,        ///< private data that is no telemetry
    Attachment,  ///< a file within the clip, such as a font; it has no packets
    Picture,     ///< further video streams and cover pictures
    Other,       ///< tracks that only serve others: chapter texts, time code
};

/// Whether packets of this kind go beside the pictures.
constexpr bool goesBeside(StreamKind kind)
{
    return kind == StreamKind::Klv || kind == StreamKind::Audio || kind == StreamKind::Subtitle ||
           kind == StreamKind::Data;
}

/// The streams of an input, with the role of each, and what a transport stream says of itself: what an output keeps.
struct InputStreams {
    AVFormatContext const* container = nullptr;  ///< streams and programs; not owned
    std::vector<StreamKind> kinds;               ///< per stream
    int video = -1;                              ///< the stream that is shown; -1: none
    bool isTransportStream = false;
    TransportTables tables;  ///< as read so far; empty for all else

    AVStream const& stream(int index) const { return *container->streams[index]; }
    std::vector<int> streamsOf(StreamKind kind) const;
    /// Whether a transport stream's tables say that the units of this one consist of access unit cells.
    bool isInCells(int index) const;
};

/// Whether the first four bytes of a universal key, the same for all KLV standards (SMPTE ST 336), stand among these.
bool holdsKlvKey(std::span<std::uint8_t const> bytes);

/// An input that cannot be opened, with the libraries' error code.
struct CannotOpen : std::runtime_error {
    CannotOpen(std::string const& text, int errorCode) : std::runtime_error(text), code(errorCode) {}

    int code;
};

/// How a live address is read.
struct LiveReading {
    std::function<bool()> abandon;  ///< asked some ten times a second while nothing comes; true ends opening or reading
    bool studySound = false;        ///< find out what is to be known of the sound too, which takes a while

    /// Never ended but by an interrupt.
    static LiveReading untilInterrupted()
    {
        return {[] { return false; }};
    }
};

/// Whether this is the address of something that has no end of its own.
bool isLiveAddress(std::string const& input);

class Demuxer {
public:
    /// Fills a buffer of the given size; returns the number of bytes, 0 at the end.
    using ByteSource = std::function<std::size_t(std::uint8_t*, std::size_t)>;

    /// Opens anything FFmpeg reads; "-" is standard input. Throws std::runtime_error with one line that
    /// names the input and the cure.
    explicit Demuxer(std::string const& url);
    /// Opens a live address with as little delay as can be: sizes and rates may still be unknown then. Throws
    /// CannotOpen.
    Demuxer(std::string const& url, LiveReading live);
    /// Reads a transport stream from `source`; `name` is used in messages.
    Demuxer(std::string name, ByteSource source);
    ~Demuxer();
    Demuxer(Demuxer const&) = delete;
    Demuxer& operator=(Demuxer const&) = delete;

    std::string const& name() const { return name_; }
    /// The next packet of any stream; false at the end, after a read error or an interrupt.
    bool read(AVPacket& packet);
    /// Of a live address: when the first byte of a video packet came, which may have been long before it was given out;
    /// empty when that is not known. Asked once for each packet, in stream order.
    std::optional<ArrivalTimes::Time> cameAt(AVPacket const& packet) { return arrivals_.of(packet.pos); }
    /// What ended reading early; empty when the input simply ended.
    std::string const& readError() const { return readError_; }

    /// The role of a packet's stream. A private data stream counts as telemetry from the first packet on
    /// that begins with a KLV key: some senders leave out the descriptor that would say so.
    StreamKind kindOf(int streamIndex) const;
    /// The stream that is shown, or null.
    AVStream const* video() const;
    AVStream const& stream(int streamIndex) const;
    /// Programs, chapters and tags of the whole input.
    AVFormatContext const& input() const { return *input_; }
    /// What a transport stream has said of itself so far; empty for all else.
    TransportTables const& tables() const;
    bool isTransportStream() const;
    int streamCount() const { return static_cast<int>(input_->nb_streams); }
    std::vector<int> streamsOf(StreamKind kind) const;
    /// All that is known by now, valid as long as the demuxer.
    InputStreams streams() const;
    /// Frames per second as far as known, 25 otherwise.
    AVRational frameRate() const;
    /// Empty when unknown (live input, pipes).
    std::optional<double> durationSeconds() const;
    /// Whether the input is a live address, which has no end of its own.
    bool isLive() const { return isLiveAddress(name_); }
    /// Whether time stamps may start anew in mid-stream (transport streams).
    bool timeMayJump() const;

private:
    struct CustomIo;
    struct Tap;

    void open_(char const* url, AVInputFormat const* format);
    void study_();
    bool shallEnd_() const;
    std::size_t readStandardInput_(std::uint8_t* bytes, std::size_t size) const;
    static int onPoll_(void* self);
    void sniffKlv_(AVPacket const& packet);

    std::string name_;
    LiveReading live_;              // asked by input_, as long as that lives
    ArrivalTimes arrivals_;         // outlives tap_
    std::unique_ptr<CustomIo> io_;  // outlives tap_
    std::unique_ptr<Tap> tap_;      // outlives input_
    InputPtr input_;
    int videoIndex_ = -1;
    std::vector<int> sniffedKlv_;
    std::string readError_;
};

}  // namespace media
