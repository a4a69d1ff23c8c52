// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Opening inputs and naming the role of each stream; the first step of a clip.
#include "media/demuxer.h"

#include "media/interrupt.h"
#include "media/tapped_input.h"
#include "media/waiting.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mem.h>
}

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace media {
namespace {

/// Where a key may begin in a data unit: an access unit header of 5 bytes may stand before it.
constexpr std::size_t kSniffBytes = 16;

/// Bytes that opening a live address may take: they hold the program table, and the pictures among them are not lost.
constexpr char const* kLiveProbeBytes = "65536";

/// Time of the stream that may be looked at for what the program table does not tell.
constexpr std::int64_t kLiveStudyTicks = AV_TIME_BASE;

/// What FFmpeg gives out as chapters, or as the tag of a time code, once more.
bool isHelper(AVStream const& stream)
{
    return stream.discard == AVDISCARD_ALL || stream.codecpar->codec_tag == MKTAG('t', 'm', 'c', 'd');
}

std::string cureFor(std::string const& url, int code)
{
    if (url.find("://") != std::string::npos) {
        return "check the address and that video is sent there";
    }
    if (code == AVERROR(ENOENT)) {
        return "check the path";
    }
    if (code == AVERROR(EACCES)) {
        return "make it readable";
    }
    if (code == AVERROR_INVALIDDATA || code == AVERROR_EOF) {
        return "give a file or an address that holds video";
    }
    return "check that it can be read";
}

}  // namespace

bool isLiveAddress(std::string const& input)
{
    static constexpr std::array<std::string_view, 7> kLive = {
        "udp:", "rtp:", "rtsp:", "rtmp:", "srt:", "tcp:", "rist:"};
    return std::any_of(kLive.begin(), kLive.end(),
                       [&input](std::string_view scheme) { return input.compare(0, scheme.size(), scheme) == 0; });
}

std::vector<int> InputStreams::streamsOf(StreamKind kind) const
{
    std::vector<int> found;
    for (std::size_t index = 0; index < kinds.size(); ++index) {
        if (kinds[index] == kind) {
            found.push_back(static_cast<int>(index));
        }
    }
    return found;
}

bool InputStreams::isInCells(int index) const
{
    auto const isSo = [pid = stream(index).id](MappedStream const& mapped) {
        return mapped.pid == pid && mapped.type == kSynchronousMetadata;
    };
    return std::any_of(tables.maps.begin(), tables.maps.end(), [&isSo](auto const& map) {
        return std::any_of(map.second.streams.begin(), map.second.streams.end(), isSo);
    });
}

bool holdsKlvKey(std::span<std::uint8_t const> bytes)
{
    constexpr std::array<std::uint8_t, 4> kPrefix = {0x06, 0x0E, 0x2B, 0x34};
    return std::search(bytes.begin(), bytes.end(), kPrefix.begin(), kPrefix.end()) != bytes.end();
}

struct Demuxer::CustomIo {
    ByteSource source;
    AVIOContext* context = nullptr;

    explicit CustomIo(ByteSource bytes) : source(std::move(bytes))
    {
        constexpr int kBufferBytes = 32768;
        auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
        context = avio_alloc_context(buffer, kBufferBytes, 0, this, &CustomIo::onRead, nullptr, nullptr);
        if (context == nullptr) {
            av_free(buffer);
            throw std::bad_alloc();
        }
    }
    ~CustomIo()
    {
        av_freep(static_cast<void*>(&context->buffer));
        avio_context_free(&context);
    }
    CustomIo(CustomIo const&) = delete;
    CustomIo& operator=(CustomIo const&) = delete;

    static int onRead(void* self, std::uint8_t* bytes, int size)
    {
        auto const got = static_cast<CustomIo*>(self)->source(bytes, static_cast<std::size_t>(size));
        return got == 0 ? AVERROR_EOF : static_cast<int>(got);
    }
};

/// The tap in the input's bytes. FFmpeg opens the input and others that it names (playlists do); the first one is it.
struct Demuxer::Tap {
    using OpenFunction = decltype(AVFormatContext::io_open);

    struct Close {
        void operator()(AVIOContext* context) const { avio_close(context); }
    };

    OpenFunction open = nullptr;               ///< FFmpeg's own
    ArrivalTimes* arrivals = nullptr;          ///< of a live address
    std::unique_ptr<AVIOContext, Close> file;  ///< empty for bytes from a source
    std::optional<TappedInput> input;
    std::optional<Waiting> waiting;  ///< while a live address is being opened

    static int onOpen(AVFormatContext* context, AVIOContext** opened, char const* url, int flags,
                      AVDictionary** options)
    {
        Tap& tap = *static_cast<Tap*>(context->opaque);
        int const result = tap.open(context, opened, url, flags, options);
        if (result >= 0 && opened == &context->pb && !tap.input) {
            tap.file.reset(*opened);
            tap.input.emplace(*tap.file, tap.arrivals);
            *opened = tap.input->context();
            context->flags |= AVFMT_FLAG_CUSTOM_IO;  // FFmpeg leaves closing to us
        }
        return result;
    }
};

Demuxer::Demuxer(std::string const& url) : name_(url)
{
    open_(url == "-" ? "pipe:0" : url.c_str(), nullptr);
}

Demuxer::Demuxer(std::string name, ByteSource source)
    : name_(std::move(name))
    , io_(std::make_unique<CustomIo>(std::move(source)))
{
    open_(nullptr, av_find_input_format("mpegts"));
}

Demuxer::Demuxer(std::string const& url, LiveReading live) : name_(url), live_(std::move(live))
{
    if (url == "-") {
        io_ = std::make_unique<CustomIo>(
            [this](std::uint8_t* bytes, std::size_t size) { return readStandardInput_(bytes, size); });
    }
    open_(url.c_str(), nullptr);
}

Demuxer::~Demuxer() = default;

bool Demuxer::shallEnd_() const
{
    return interrupted() || (live_.abandon && live_.abandon());
}

/// A plain read of a pipe to which nobody writes would come back neither for a signal nor for silence.
std::size_t Demuxer::readStandardInput_(std::uint8_t* bytes, std::size_t size) const
{
    constexpr int kPollMs = 50;
    while (!shallEnd_()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, kPollMs) <= 0) {
            continue;
        }
        ssize_t const got = ::read(STDIN_FILENO, bytes, size);
        if (got >= 0 || errno != EINTR) {
            return static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        }
    }
    return 0;
}

int Demuxer::onPoll_(void* self)
{
    Demuxer& demuxer = *static_cast<Demuxer*>(self);
    if (demuxer.tap_->waiting) {
        demuxer.tap_->waiting->look(Waiting::Clock::now());
    }
    return demuxer.shallEnd_() ? 1 : 0;
}

void Demuxer::open_(char const* url, AVInputFormat const* format)
{
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    context->interrupt_callback = AVIOInterruptCB{&Demuxer::onPoll_, this};
    tap_ = std::make_unique<Tap>();
    tap_->arrivals = live_.abandon ? &arrivals_ : nullptr;
    if (io_) {
        tap_->input.emplace(*io_->context, tap_->arrivals);
        context->pb = tap_->input->context();
    } else {
        tap_->open = context->io_open;
        context->io_open = &Tap::onOpen;
        context->opaque = tap_.get();
    }
    AVDictionary* options = nullptr;
    if (live_.abandon) {
        av_dict_set(&options, "probesize", kLiveProbeBytes, 0);
        av_dict_set(&options, "overrun_nonfatal", "1", 0);  // a burst that is too long loses packets, not the address
    }
    if (isLiveAddress(name_)) {
        tap_->waiting.emplace(name_, WaitingFor::Sender, Waiting::Clock::now());
    }
    // On failure the call frees the context.
    int const opened = avformat_open_input(&context, url, format, &options);
    tap_->waiting.reset();
    av_dict_free(&options);
    if (opened < 0 && interrupted()) {
        throw std::runtime_error(name_ + ": interrupted before anything was read; start again");
    }
    if (opened < 0) {
        throw CannotOpen(name_ + ": cannot be opened: " + errorText(opened) + "; " + cureFor(name_, opened), opened);
    }
    input_.reset(context);
    study_();
}

void Demuxer::study_()
{
    AVFormatContext* const context = input_.get();
    auto const findVideo = [context] { return av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0); };
    if (live_.abandon) {
        context->max_analyze_duration = kLiveStudyTicks;
        videoIndex_ = findVideo();
        // A live picture is not kept waiting until all is known: its decoder finds out the rest.
        if (videoIndex_ >= 0 && !live_.studySound) {
            return;
        }
    }
    avformat_find_stream_info(context, nullptr);  // what it does not find, the decoder will
    videoIndex_ = findVideo();
}

bool Demuxer::read(AVPacket& packet)
{
    for (;;) {
        // The libraries end a live input themselves, and give out before that what they still hold.
        if (!live_.abandon && shallEnd_()) {
            return false;
        }
        int const result = av_read_frame(input_.get(), &packet);
        if (result == AVERROR(EAGAIN)) {
            continue;
        }
        if (result < 0) {
            if (result != AVERROR_EOF && result != AVERROR_EXIT) {
                readError_ = errorText(result);
            }
            return false;
        }
        sniffKlv_(packet);
        return true;
    }
}

void Demuxer::sniffKlv_(AVPacket const& packet)
{
    if (kindOf(packet.stream_index) != StreamKind::Data || packet.data == nullptr) {
        return;
    }
    AVCodecParameters const& codec = *stream(packet.stream_index).codecpar;
    bool const unnamedData = codec.codec_type == AVMEDIA_TYPE_UNKNOWN ||
                             (codec.codec_type == AVMEDIA_TYPE_DATA &&
                              (codec.codec_id == AV_CODEC_ID_NONE || codec.codec_id == AV_CODEC_ID_BIN_DATA));
    if (!unnamedData) {
        return;
    }
    if (holdsKlvKey({packet.data, std::min(static_cast<std::size_t>(packet.size), kSniffBytes)})) {
        sniffedKlv_.push_back(packet.stream_index);
    }
}

StreamKind Demuxer::kindOf(int streamIndex) const
{
    if (streamIndex == videoIndex_) {
        return StreamKind::Video;
    }
    AVCodecParameters const& codec = *stream(streamIndex).codecpar;
    if (codec.codec_id == AV_CODEC_ID_SMPTE_KLV || codec.codec_tag == MKTAG('K', 'L', 'V', 'A') ||
        std::find(sniffedKlv_.begin(), sniffedKlv_.end(), streamIndex) != sniffedKlv_.end()) {
        return StreamKind::Klv;
    }
    switch (codec.codec_type) {
    case AVMEDIA_TYPE_VIDEO:
        return StreamKind::Picture;
    case AVMEDIA_TYPE_AUDIO:
        return StreamKind::Audio;
    case AVMEDIA_TYPE_SUBTITLE:
        return StreamKind::Subtitle;
    case AVMEDIA_TYPE_ATTACHMENT:
        return StreamKind::Attachment;
    default:
        return isHelper(stream(streamIndex)) ? StreamKind::Other : StreamKind::Data;
    }
}

AVStream const* Demuxer::video() const
{
    return videoIndex_ < 0 ? nullptr : input_->streams[videoIndex_];
}

AVStream const& Demuxer::stream(int streamIndex) const
{
    return *input_->streams[streamIndex];
}

TransportTables const& Demuxer::tables() const
{
    static TransportTables const none;
    return tap_->input && isTransportStream() ? tap_->input->tables() : none;
}

bool Demuxer::isTransportStream() const
{
    return std::string_view(input_->iformat->name) == "mpegts";
}

std::vector<int> Demuxer::streamsOf(StreamKind kind) const
{
    std::vector<int> found;
    for (int index = 0; index < static_cast<int>(input_->nb_streams); ++index) {
        if (kindOf(index) == kind) {
            found.push_back(index);
        }
    }
    return found;
}

InputStreams Demuxer::streams() const
{
    InputStreams streams{input_.get(), {}, videoIndex_, isTransportStream(), tables()};
    for (int index = 0; index < streamCount(); ++index) {
        streams.kinds.push_back(kindOf(index));
    }
    return streams;
}

AVRational Demuxer::frameRate() const
{
    constexpr AVRational kFallback{25, 1};
    if (videoIndex_ < 0) {
        return kFallback;
    }
    AVRational const guessed = av_guess_frame_rate(input_.get(), input_->streams[videoIndex_], nullptr);
    double const value = guessed.den == 0 ? 0.0 : av_q2d(guessed);
    // A stream whose real rate is unknown reports its clock instead.
    return value > 0.01 && value <= 1000.0 ? guessed : kFallback;
}

std::optional<double> Demuxer::durationSeconds() const
{
    if (input_->duration == AV_NOPTS_VALUE || input_->duration <= 0) {
        return std::nullopt;
    }
    return static_cast<double>(input_->duration) / AV_TIME_BASE;
}

bool Demuxer::timeMayJump() const
{
    return (input_->iformat->flags & AVFMT_TS_DISCONT) != 0;
}

}  // namespace media
