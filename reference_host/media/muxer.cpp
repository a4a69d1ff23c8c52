// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Container writing with the atomic output file; the last step of a clip.
#include "media/muxer.h"

#include "media/encoder.h"
#include "media/interrupt.h"
#include "media/side_placer.h"
#include "media/stream_identity.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace media {
namespace {

/// What transport streams have a stream type or a registration for.
constexpr std::array<AVCodecID, 13> kInTransportStreams = {
    AV_CODEC_ID_MP2,  AV_CODEC_ID_MP3,          AV_CODEC_ID_AAC,         AV_CODEC_ID_AAC_LATM, AV_CODEC_ID_AC3,
    AV_CODEC_ID_EAC3, AV_CODEC_ID_DTS,          AV_CODEC_ID_OPUS,        AV_CODEC_ID_TRUEHD,   AV_CODEC_ID_S302M,
    AV_CODEC_ID_MP1,  AV_CODEC_ID_DVB_SUBTITLE, AV_CODEC_ID_DVB_TELETEXT};

/// How long a receiver may leave what is sent untaken once the program shall end.
constexpr auto kPatienceAtTheEnd = std::chrono::seconds(1);

std::string urlOf(OutputFile const& file)
{
    return file.path() == "-" ? "pipe:1" : file.writePath();
}

}  // namespace

AVOutputFormat const& containerFor(std::string const& output)
{
    bool const carriesTransportStream = output == "-" || output.compare(0, 5, "pipe:") == 0 ||
                                        output.compare(0, 6, "udp://") == 0 || output.compare(0, 6, "srt://") == 0 ||
                                        output.compare(0, 6, "tcp://") == 0;
    char const* const kUse = "; use .ts, .mp4 or .mkv";
    AVOutputFormat const* const format = carriesTransportStream ? av_guess_format("mpegts", nullptr, nullptr)
                                                                : av_guess_format(nullptr, output.c_str(), nullptr);
    if (format == nullptr && output.find("://") != std::string::npos) {
        throw UnknownChoice(output + ": nothing can be sent to such an address; use udp://, srt:// or tcp://");
    }
    if (format == nullptr || format->video_codec == AV_CODEC_ID_NONE) {
        throw UnknownChoice(output + ": no video container has this ending" + kUse);
    }
    if (std::strcmp(format->name, "image2") == 0) {
        throw UnknownChoice(output + ": is a single picture by its ending, which the command frame makes" + kUse);
    }
    return *format;
}

Muxer::Muxer(std::string const& output, MuxPace pace, std::function<void()> whileOpening)
    : file_(output)
    , pace_(pace)
    , whileOpening_(std::move(whileOpening))
{
    AVOutputFormat const& format = containerFor(output);
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, &format, nullptr, urlOf(file_).c_str());
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    context_.reset(context);
    if (std::strcmp(format.name, "mp4") == 0) {
        // FLAC and TrueHD in MP4 are standards by now, which the library still counts as experiments.
        context->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    }
    context->flush_packets = pace == MuxPace::AtOnce ? 1 : -1;
    context->interrupt_callback = AVIOInterruptCB{&Muxer::onPoll_, this};
    if ((format.flags & AVFMT_NOFILE) == 0) {
        open_();
    }
}

Muxer::~Muxer() = default;

void Muxer::open_()
{
    opening_.emplace(file_.path(), WaitingFor::Receiver, Waiting::Clock::now());
    int const opened =
        avio_open2(&context_->pb, urlOf(file_).c_str(), AVIO_FLAG_WRITE, &context_->interrupt_callback, nullptr);
    opening_.reset();
    if (opened < 0 && interrupted()) {
        throw EndedWhileOpening(file_.path() + ": interrupted before anything was written");
    }
    check_(opened);
    output_.reset(context_->pb);
}

/// Asked by the libraries before and while they wait. What is interrupted is still finished: only a receiver that has
/// stopped taking it ends that. Files are never given up, however long their disk takes.
int Muxer::onPoll_(void* self)
{
    Muxer& muxer = *static_cast<Muxer*>(self);
    Waiting::Clock::time_point const now = Waiting::Clock::now();
    if (!muxer.opening_) {
        bool const isStuck = now - muxer.stepBegan_ > kPatienceAtTheEnd && isLiveAddress(muxer.file_.path());
        return isStuck && interrupted() ? 1 : 0;
    }
    muxer.opening_->look(now);
    if (muxer.whileOpening_) {
        muxer.whileOpening_();
    }
    return interrupted() ? 1 : 0;
}

bool Muxer::isTransportStream() const
{
    return std::strcmp(container().name, "mpegts") == 0;
}

void Muxer::fail_(int code) const
{
    if (code == AVERROR_EXIT) {
        throw std::runtime_error(file_.path() +
                                 ": interrupted while nobody takes what is sent; what was sent is not whole");
    }
    throw std::runtime_error(writeFailure(file_.path(), errorText(code), AVUNERROR(code)));
}

void Muxer::check_(int code) const
{
    // The first failed write says why; what follows is only "invalid".
    if (context_->pb != nullptr && context_->pb->error < 0) {
        fail_(context_->pb->error);
    }
    if (code < 0) {
        fail_(code);
    }
}

AVStream& Muxer::newStream_()
{
    AVStream* const stream = avformat_new_stream(context_.get(), nullptr);
    if (stream == nullptr) {
        throw std::bad_alloc();
    }
    lastDecode_.emplace_back();
    return *stream;
}

int Muxer::addVideo(AVCodecContext const& encoder, AVRational timeBase)
{
    AVStream& stream = newStream_();
    check_(avcodec_parameters_from_context(stream.codecpar, &encoder));
    stream.time_base = timeBase;
    stream.avg_frame_rate = encoder.framerate;
    stream.sample_aspect_ratio = encoder.sample_aspect_ratio;
    return stream.index;
}

std::optional<int> Muxer::addKlv()
{
    if (!isTransportStream() &&
        avformat_query_codec(context_->oformat, AV_CODEC_ID_SMPTE_KLV, FF_COMPLIANCE_NORMAL) != 1) {
        return std::nullopt;
    }
    AVStream& stream = newStream_();
    stream.codecpar->codec_type = AVMEDIA_TYPE_DATA;
    stream.codecpar->codec_id = AV_CODEC_ID_SMPTE_KLV;
    stream.time_base = {1, 90000};
    return stream.index;
}

bool Muxer::takes_(AVStream const& source, bool fromTransportStream) const
{
    AVCodecID const codec = source.codecpar->codec_id;
    if (isTransportStream() && fromTransportStream) {
        return codec != AV_CODEC_ID_SCTE_35 && codec != AV_CODEC_ID_EPG;  // stand in tables
    }
    if (isTransportStream()) {
        // The muxer would write anything, as private data that nobody can read.
        return std::find(kInTransportStreams.begin(), kInTransportStreams.end(), codec) != kInTransportStreams.end();
    }
    bool const known =
        codec != AV_CODEC_ID_NONE && avformat_query_codec(context_->oformat, codec, FF_COMPLIANCE_NORMAL) != 0;
    return known && (canBegin_(&source) || !canBegin_(nullptr));
}

bool Muxer::canBegin_(AVStream const* further) const
{
    if ((container().flags & AVFMT_NOFILE) != 0) {
        return true;  // would write files of its own
    }
    AVFormatContext* made = nullptr;
    avformat_alloc_output_context2(&made, context_->oformat, nullptr, nullptr);
    std::unique_ptr<AVFormatContext, FreeOutput> const trial(made);
    if (!trial || avio_open_dyn_buf(&trial->pb) < 0) {
        throw std::bad_alloc();
    }
    trial->strict_std_compliance = context_->strict_std_compliance;
    std::vector<AVStream const*> streams(context_->streams, context_->streams + context_->nb_streams);
    if (further != nullptr) {
        streams.push_back(further);
    }
    for (AVStream const* const stream : streams) {
        AVStream* const copy = avformat_new_stream(trial.get(), nullptr);
        if (copy == nullptr || avcodec_parameters_copy(copy->codecpar, stream->codecpar) < 0) {
            throw std::bad_alloc();
        }
        copy->codecpar->codec_tag = stream == further ? 0 : copy->codecpar->codec_tag;
        copy->time_base = stream->time_base;
        copy->avg_frame_rate = stream->avg_frame_rate;
        copy->sample_aspect_ratio = stream->sample_aspect_ratio;
    }
    int const result = avformat_write_header(trial.get(), nullptr);
    std::uint8_t* written = nullptr;
    avio_close_dyn_buf(std::exchange(trial->pb, nullptr), &written);
    av_free(written);
    return result >= 0;
}

std::optional<int> Muxer::addCopy(AVStream const& source, bool fromTransportStream)
{
    if (!takes_(source, fromTransportStream)) {
        return std::nullopt;
    }
    return copyStream_(source);
}

std::optional<int> Muxer::addAttachment(AVStream const& source)
{
    bool const takesFiles = std::strcmp(container().name, "matroska") == 0;
    return takesFiles ? std::optional(copyStream_(source)) : std::nullopt;
}

int Muxer::copyStream_(AVStream const& source)
{
    AVStream& stream = newStream_();
    check_(avcodec_parameters_copy(stream.codecpar, source.codecpar));
    stream.codecpar->codec_tag = 0;  // the container's own tag
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_UNKNOWN) {
        stream.codecpar->codec_type = AVMEDIA_TYPE_DATA;
        stream.codecpar->codec_id = AV_CODEC_ID_BIN_DATA;
    }
    if (isTransportStream() && stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO && stream.codecpar->sample_rate == 0) {
        // Sound of a live input is not studied. FFmpeg wants some rate, but a transport stream does not tell it.
        constexpr int kAnyRate = 48000;
        stream.codecpar->sample_rate = kAnyRate;
    }
    stream.time_base = source.time_base;
    return stream.index;
}

std::vector<int> Muxer::keepIdentity(InputStreams const& source, std::map<int, int> const& streams)
{
    if (!isTransportStream() || !source.isTransportStream) {
        return {};
    }
    StreamIdentity identity = takeIdentity(source, *context_, streams);
    firstMapPid_ = identity.firstMapPid;
    if (output_ && identity.kept.source.association) {
        patch_.emplace(*output_, std::move(identity.kept));
        context_->pb = patch_->context();
    }
    return identity.lostPids;
}

void Muxer::keepServices(Bytes const& section)
{
    if (patch_) {
        patch_->patch().learnServices(section);
    }
}

void Muxer::keepUnit(AVPacket& packet, int stream, bool timed)
{
    AVStream const& output = *context_->streams[stream];
    std::optional<std::uint8_t> const id = unitIdOf(packet);
    if (id && patch_) {
        patch_->patch().learnUnitId(output.id, *id);
    }
    if (id && output.codecpar->codec_type != AVMEDIA_TYPE_AUDIO) {
        setTimed(packet, timed);
    }
}

bool Muxer::describeLight(int stream, PictureTraits const& traits)
{
    constexpr std::array<char const*, 4> kTellers = {"mp4", "mov", "matroska", "webm"};
    if (std::find(kTellers.begin(), kTellers.end(), std::string(container().name)) == kTellers.end()) {
        return false;
    }
    auto const put = [this, stream](AVPacketSideDataType type, std::vector<std::uint8_t> const& bytes) {
        std::uint8_t* const data =
            bytes.empty() ? nullptr : av_stream_new_side_data(context_->streams[stream], type, bytes.size());
        if (data != nullptr) {
            std::copy(bytes.begin(), bytes.end(), data);
        }
    };
    put(AV_PKT_DATA_MASTERING_DISPLAY_METADATA, traits.masteringDisplay);
    put(AV_PKT_DATA_CONTENT_LIGHT_LEVEL, traits.contentLight);
    return true;
}

void Muxer::begin()
{
    beginStep_();
    AVDictionary* options = nullptr;
    if (firstMapPid_ != 0) {
        av_dict_set_int(&options, "mpegts_pmt_start_pid", firstMapPid_, 0);
    }
    int const result = avformat_write_header(context_.get(), &options);
    av_dict_free(&options);
    check_(0);
    if (result < 0) {
        std::string const codec = avcodec_get_name(context_->streams[0]->codecpar->codec_id);
        throw UnknownChoice(file_.path() + ": " + context_->oformat->name + " does not take " + codec +
                            " video; choose another ending or --video-codec");
    }
}

void Muxer::write(AVPacket& packet, int stream, AVRational timeBase)
{
    beginStep_();
    auto const index = static_cast<std::size_t>(stream);
    packet.stream_index = stream;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, timeBase, context_->streams[stream]->time_base);
    if (packet.dts == AV_NOPTS_VALUE) {
        packet.dts = packet.pts;
    }
    if (packet.dts != AV_NOPTS_VALUE) {
        AVMediaType const type = context_->streams[stream]->codecpar->codec_type;
        std::int64_t const step = type == AVMEDIA_TYPE_DATA || type == AVMEDIA_TYPE_SUBTITLE ? 0 : 1;
        if (lastDecode_[index]) {
            packet.dts = std::max(packet.dts, *lastDecode_[index] + step);
        }
        packet.pts = packet.pts == AV_NOPTS_VALUE || packet.pts < packet.dts ? packet.dts : packet.pts;
        lastDecode_[index] = packet.dts;
    }
    check_(pace_ == MuxPace::AtOnce ? av_write_frame(context_.get(), &packet)
                                    : av_interleaved_write_frame(context_.get(), &packet));
}

void Muxer::finish(std::function<void()> const& lastLook)
{
    beginStep_();
    check_(av_write_trailer(context_.get()));
    if (output_) {
        avio_flush(context_->pb);
        check_(0);
        avio_flush(output_.get());
        context_->pb = output_.get();
        check_(0);
        context_->pb = nullptr;
        check_(avio_close(output_.release()));
    }
    if (lastLook) {
        lastLook();
    }
    file_.commit();
}

}  // namespace media
