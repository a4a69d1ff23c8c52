// From live pictures and packets to an address or a file.
#include "clip/live_writer.h"

#include "clip/klv_sidecar.h"
#include "imaging/imaging_access.h"

#include <cmath>
#include <cstddef>

namespace clip {
namespace {

/// Far more than comes between two pictures.
constexpr std::size_t kMaxWaiting = 4096;

}  // namespace

LiveWriter::LiveWriter(std::string output, media::EncoderChoice choice)
    : output_(std::move(output))
    , choice_(std::move(choice))
    , muxer_(output_, media::MuxPace::AtOnce)
{
    choice_.lowDelay = true;
}

void LiveWriter::addSide(media::SideUnit& unit, media::LiveProgram const& program)
{
    if (unit.kind == media::StreamKind::Klv) {
        // The output's stream is an asynchronous one, which has no headers of access units.
        auto const klv = withoutCells({unit.packet->data, static_cast<std::size_t>(unit.packet->size)});
        if (klv.size() != static_cast<std::size_t>(unit.packet->size)) {
            unit.packet = media::makePacket(klv, unit.packet->pts);
        }
    }
    StreamRole const role{unit.kind, program.numberAmongKind(unit.stream)};
    side_.emplace(unit.seconds, Side{std::move(unit.packet), program.stream(unit.stream).codecpar->codec_id, role});
    if (side_.size() > kMaxWaiting) {
        side_.erase(side_.begin());
    }
}

void LiveWriter::addPicture(LiveFrame const& frame, LiveClip const& clip)
{
    if (frame.picture) {
        if (!encoder_) {
            begin_(clip);
        }
        encoder_->encode(
            imaging::planesOf(*frame.picture), frame.ticks, [this](AVPacket& packet) { writeVideo_(packet); },
            frame.picture);
    }
    if (encoder_) {
        writeSideUpTo_(frame.seconds);
    }
}

void LiveWriter::begin_(LiveClip const& clip)
{
    media::EncoderSettings settings;
    settings.choice = choice_;
    settings.picture = clip.traits();
    settings.frameRate = clip.frameRate();
    settings.timeBase = media::kLiveTimeBase;
    encoder_ = std::make_unique<media::Encoder>(settings, muxer_.container());
    videoStream_ = muxer_.addVideo(encoder_->context(), media::kLiveTimeBase);
    addSideStreams_(clip.program());
    muxer_.begin();
}

void LiveWriter::addSideStreams_(media::LiveProgram const& program)
{
    std::string const container = muxer_.container().name;
    for (int const stream : program.streamsOf(media::StreamKind::Klv)) {
        AVCodecID const codec = program.stream(stream).codecpar->codec_id;
        if (auto const output = muxer_.addKlv()) {
            outputs_[{media::StreamKind::Klv, program.numberAmongKind(stream)}] = {*output, codec};
        } else {
            remarks_.push_back(output_ + ": " + container +
                               " cannot carry KLV; the telemetry stream is left out (.ts carries it)");
        }
    }
    for (int const stream : program.streamsOf(media::StreamKind::Audio)) {
        AVCodecID const codec = program.stream(stream).codecpar->codec_id;
        if (auto const output = muxer_.addCopy(program.stream(stream))) {
            outputs_[{media::StreamKind::Audio, program.numberAmongKind(stream)}] = {*output, codec};
        } else {
            remarks_.push_back(output_ + ": " + container + " cannot carry " + avcodec_get_name(codec) +
                               "; the sound is left out (.mkv carries it)");
        }
    }
}

void LiveWriter::writeSideUpTo_(double seconds)
{
    auto const end = side_.upper_bound(seconds);
    for (auto next = side_.begin(); next != end; ++next) {
        Side& side = next->second;
        auto const output = outputs_.find(side.role);
        bool const fits = output != outputs_.end() &&
                          (side.role.first == media::StreamKind::Klv || output->second.codec == side.codec);
        if (fits) {
            side.packet->pts = std::llround(next->first / av_q2d(media::kLiveTimeBase));
            side.packet->dts = side.packet->pts;
            muxer_.write(*side.packet, output->second.stream, media::kLiveTimeBase);
        }
    }
    side_.erase(side_.begin(), end);
}

void LiveWriter::finish()
{
    if (!encoder_) {
        return;
    }
    encoder_->flush([this](AVPacket& packet) { writeVideo_(packet); });
    muxer_.finish();
}

}  // namespace clip
