// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The reading thread: opens, reads, notices silence, opens again.
#include "media/live_input.h"

#include "media/interrupt.h"
#include "sw_number_text.h"

extern "C" {
#include <libavutil/dict.h>
}

#include <algorithm>
#include <new>
#include <utility>

namespace media {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Silence after which an input counts as lost. A sender that only pauses goes on on the same socket meanwhile.
constexpr milliseconds kSilence{3000};

/// How long other streams may go on without a picture: then the pictures have moved to another stream.
constexpr milliseconds kWithoutPictures{1000};

constexpr milliseconds kStep{50};

void copyStreams(AVFormatContext const& source, AVFormatContext& copy)
{
    for (unsigned index = 0; index < source.nb_streams; ++index) {
        AVStream const& stream = *source.streams[index];
        AVStream* const copied = avformat_new_stream(&copy, nullptr);
        if (copied == nullptr || avcodec_parameters_copy(copied->codecpar, stream.codecpar) < 0) {
            throw std::bad_alloc();
        }
        copied->id = stream.id;
        copied->disposition = stream.disposition;
        copied->sample_aspect_ratio = stream.sample_aspect_ratio;
        copied->time_base = kLiveTimeBase;
        av_dict_copy(&copied->metadata, stream.metadata, 0);
    }
}

void copyPrograms(AVFormatContext const& source, AVFormatContext& copy)
{
    for (unsigned number = 0; number < source.nb_programs; ++number) {
        AVProgram const& program = *source.programs[number];
        AVProgram* const copied = av_new_program(&copy, program.id);
        if (copied == nullptr) {
            throw std::bad_alloc();
        }
        copied->pmt_pid = program.pmt_pid;
        av_dict_copy(&copied->metadata, program.metadata, 0);
        for (unsigned index = 0; index < program.nb_stream_indexes; ++index) {
            av_program_add_stream_index(&copy, program.id, program.stream_index[index]);
        }
    }
}

std::shared_ptr<LiveProgram const> programOf(Demuxer const& demuxer, std::uint64_t opening)
{
    auto program = std::make_shared<LiveProgram>();
    static_cast<InputStreams&>(*program) = demuxer.streams();
    program->opening = opening;
    program->copy.reset(avformat_alloc_context());
    if (!program->copy) {
        throw std::bad_alloc();
    }
    copyStreams(demuxer.input(), *program->copy);
    copyPrograms(demuxer.input(), *program->copy);
    program->container = program->copy.get();
    program->frameRate = demuxer.frameRate();
    return program;
}

/// Whether the program still says what the demuxer knows.
bool describes(LiveProgram const& program, Demuxer const& demuxer)
{
    if (static_cast<int>(program.kinds.size()) != demuxer.streamCount()) {
        return false;
    }
    // Services are described less often than programs.
    if (program.tables.services.empty() != demuxer.tables().services.empty()) {
        return false;
    }
    for (int index = 0; index < demuxer.streamCount(); ++index) {
        if (program.stream(index).codecpar->codec_id != demuxer.stream(index).codecpar->codec_id) {
            return false;
        }
        if (program.kinds[static_cast<std::size_t>(index)] != demuxer.kindOf(index)) {
            return false;
        }
    }
    return true;
}

/// An address that cannot be meant does not become right by waiting.
bool isHopeless(int code)
{
    return code == AVERROR_PROTOCOL_NOT_FOUND || code == AVERROR(EINVAL) || code == AVERROR_OPTION_NOT_FOUND;
}

}  // namespace

LiveInput::LiveInput(LiveInputOptions options)
    : options_(std::move(options))
    , lastPicture_(Clock::now())
    , thread_([this] { run_(); })
{
}

LiveInput::~LiveInput()
{
    stop_ = true;
    thread_.join();
}

bool LiveInput::isOver_() const
{
    return stop_ || interrupted();
}

void LiveInput::run_()
{
    std::string failure;
    while (!isOver_()) {
        try {
            readUntilLost_();
        } catch (CannotOpen const& refused) {
            lostBecause_ = refused.code == AVERROR_EXIT ? nothingComes_() : refused.what();
            mayReturn_ = !(openings_ == 0 && isHopeless(refused.code));
            ended_ = options_.address == "-" && !silent_;
        } catch (std::exception const& refused) {
            lostBecause_ = refused.what();
        }
        if (isOver_() || (ended_ && openings_ > 0 && readError_.empty())) {
            break;
        }
        bool const neverCame = openings_ == 0 && !ended_ && mayReturn_;
        if (cameInAttempt_ || neverCame) {
            queue_.push({Clock::now(), nullptr, nullptr, StreamKind::Other, lostBecause_});
        }
        if (ended_ || !mayReturn_ || !pause_()) {
            failure = lostBecause_;
            break;
        }
    }
    queue_.close(failure);
}

void LiveInput::readUntilLost_()
{
    attempt_ = Clock::now();
    lastPacket_ = attempt_;
    cameInAttempt_ = false;
    silent_ = false;
    Demuxer demuxer(options_.address, {[this] { return shallAbandon_(); }, options_.studySound});
    if (demuxer.video() == nullptr) {
        lostBecause_ = options_.address + ": holds no video stream; give an address to which video is sent";
        return;
    }
    program_ = programOf(demuxer, ++openings_);
    readAll_(demuxer);
}

std::string LiveInput::nothingComes_() const
{
    return options_.address + ": nothing comes; check the address and that video is sent there";
}

bool LiveInput::shallAbandon_()
{
    silent_ = silent_ || Clock::now() - lastPacket_ > kSilence;
    return silent_ || isOver_();
}

void LiveInput::readAll_(Demuxer& demuxer)
{
    LiveTime lastOwnPicture = Clock::now();
    for (;;) {
        PacketPtr packet = makePacket();
        if (!demuxer.read(*packet)) {
            ended_ = options_.address == "-" && !silent_;
            readError_ = demuxer.readError();
            lostBecause_ = options_.address + ": " + (silent_ ? "nothing comes any more" : "has ended");
            if (!readError_.empty()) {
                lostBecause_ += ": " + readError_;
            }
            return;
        }
        // What the demuxer held until now came right behind the packet before.
        lastPacket_ = silent_ ? lastPacket_ : Clock::now();
        if (program_->stream(program_->video).codecpar->codec_id != demuxer.video()->codecpar->codec_id) {
            lostBecause_ = options_.address + ": the pictures are of another codec now";
            return;
        }
        if (demuxer.kindOf(packet->stream_index) == StreamKind::Video) {
            cameInAttempt_ = true;
            lastOwnPicture = lastPacket_;
            lastPicture_ = lastPacket_;
            pauses_.cameBack();
        } else if (lastPacket_ - lastOwnPicture > kWithoutPictures) {
            lostBecause_ = options_.address + ": the pictures no longer come";
            return;
        }
        handOn_(std::move(packet), demuxer);
    }
}

void LiveInput::handOn_(PacketPtr packet, Demuxer& demuxer)
{
    if (!describes(*program_, demuxer)) {
        program_ = programOf(demuxer, openings_);
    }
    int const stream = packet->stream_index;
    StreamKind const kind = demuxer.kindOf(stream);
    if (kind != StreamKind::Video && !goesBeside(kind)) {
        return;
    }
    av_packet_rescale_ts(packet.get(), demuxer.stream(stream).time_base, kLiveTimeBase);
    LiveTime const came = kind == StreamKind::Video ? demuxer.cameAt(*packet).value_or(lastPacket_) : lastPacket_;
    queue_.push({Clock::now(), program_, std::move(packet), kind, {}, came});
}

bool LiveInput::pause_()
{
    // An attempt that has lasted longer is followed at once.
    LiveTime const next = attempt_ + pauses_.next();
    for (;;) {
        LiveTime const now = Clock::now();
        if (options_.giveUpSeconds > 0.0 &&
            now - lastPicture_ > std::chrono::duration<double>(options_.giveUpSeconds)) {
            lostBecause_ += "; gave up after " + sw_text::secondsText(options_.giveUpSeconds) + " without a picture";
            return false;
        }
        if (isOver_() || now >= next) {
            return true;
        }
        std::this_thread::sleep_for(std::min<Clock::duration>(kStep, next - now));
    }
}

}  // namespace media
