// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From live pictures and packets to an address or a file.
#include "clip/live_writer.h"

#include "clip/klv_cells.h"
#include "clip/output_streams.h"
#include "clip/picture_losses.h"
#include "imaging/imaging_access.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

namespace clip {
namespace {

/// Far more than comes between two pictures.
constexpr std::size_t kMaxWaiting = 4096;

}  // namespace

LiveWriter::Input LiveWriter::inputOf(media::LiveProgram const& program, int stream)
{
    Input input;
    input.opening = program.opening;
    input.stream = stream;
    input.kind = program.kinds[static_cast<std::size_t>(stream)];
    input.numberAmongKind = program.numberAmongKind(stream);
    input.codec = program.stream(stream).codecpar->codec_id;
    return input;
}

LiveWriter::LiveWriter(std::string output, media::EncoderChoice choice, std::function<void()> whileOpening)
    : output_(std::move(output))
    , choice_(std::move(choice))
    , muxer_(output_, media::MuxPace::AtOnce, std::move(whileOpening))
{
    choice_.lowDelay = true;
}

void LiveWriter::addSide(media::SideUnit& unit, media::LiveProgram const& program)
{
    Side side;
    side.input = inputOf(program, unit.stream);
    side.unit = std::move(unit);
    side_.emplace(side.unit.seconds, std::move(side));
    if (side_.size() > kMaxWaiting) {
        side_.erase(side_.begin());
    }
}

void LiveWriter::addPicture(LiveFrame const& frame, LiveClip const& clip)
{
    if (frame.picture) {
        if (!encoder_) {
            begin_(frame, clip);
        }
        encoder_->encode(
            imaging::planesOf(*frame.picture), frame.ticks - zeroTicks_,
            [this](AVPacket& packet) { writeVideo_(packet); }, frame.picture);
    }
    if (encoder_) {
        noteCaptions_(clip);
        writeSideUpTo_(frame.seconds);
        if (clip.program().opening == opening_) {
            muxer_.keepServices(clip.program().tables.services);
        }
    }
}

void LiveWriter::begin_(LiveFrame const& first, LiveClip const& clip)
{
    // A transport stream keeps the input's times, everything else begins with its first picture.
    zeroTicks_ = muxer_.isTransportStream() ? 0 : first.ticks;
    media::EncoderSettings settings;
    settings.choice = choice_;
    settings.picture = clip.traits();
    settings.frameRate = clip.frameRate();
    settings.timeBase = media::kLiveTimeBase;
    encoder_ = std::make_unique<media::Encoder>(settings, muxer_.container());
    videoStream_ = muxer_.addVideo(encoder_->context(), media::kLiveTimeBase);
    remarks_ = describePictures(muxer_, videoStream_, *encoder_, settings.picture, output_);
    addOutputs_(clip.program());
    muxer_.begin();
}

void LiveWriter::noteCaptions_(LiveClip const& clip)
{
    if (clip.hasCaptions() && !captionsAreTold_) {
        remarks_.push_back(captionsAreLeftOut(output_));
        captionsAreTold_ = true;
    }
}

void LiveWriter::addOutputs_(media::LiveProgram const& program)
{
    opening_ = program.opening;
    OutputStreams streams = addOutputStreams(program, muxer_, output_, SidecarUse::Never);
    remarks_.insert(remarks_.end(), streams.remarks.begin(), streams.remarks.end());
    for (auto const& [stream, own] : streams.copied) {
        Input const input = inputOf(program, stream);
        bool const inCells =
            muxer_.isTransportStream() && input.kind == media::StreamKind::Klv && program.isInCells(stream);
        outputs_.push_back({input, own, inCells, 0});
    }
}

LiveWriter::Output* LiveWriter::outputFor_(Input const& input)
{
    auto const isIts = [&input](Output const& output) {
        Input const& first = output.first;
        if (input.opening == first.opening) {
            return input.stream == first.stream;
        }
        return input.kind == first.kind && input.numberAmongKind == first.numberAmongKind &&
               (input.kind == media::StreamKind::Klv || input.codec == first.codec);
    };
    auto const found = std::find_if(outputs_.begin(), outputs_.end(), isIts);
    return found == outputs_.end() ? nullptr : &*found;
}

/// Told once each time that the input comes back: the output keeps the codecs that it began with.
void LiveWriter::noteOtherCodec_(Input const& input)
{
    auto const first = std::find_if(outputs_.begin(), outputs_.end(), [&input](Output const& output) {
        return output.first.kind == input.kind && output.first.numberAmongKind == input.numberAmongKind;
    });
    if (input.opening == opening_ || input.opening == toldOpening_ || first == outputs_.end()) {
        return;
    }
    toldOpening_ = input.opening;
    remarks_.push_back(output_ + ": the input has come back with " + avcodec_get_name(input.codec) + " instead of " +
                       avcodec_get_name(first->first.codec) + "; it is left out");
}

void LiveWriter::writeSideUpTo_(double seconds)
{
    auto const end = side_.upper_bound(seconds);
    for (auto next = side_.begin(); next != end; ++next) {
        if (Output* const output = outputFor_(next->second.input)) {
            writeSide_(next->second, *output);
        } else {
            noteOtherCodec_(next->second.input);
        }
    }
    side_.erase(side_.begin(), end);
}

void LiveWriter::writeSide_(Side& side, Output& output)
{
    media::PacketPtr packet = std::move(side.unit.packet);
    if (side.input.kind == media::StreamKind::Klv) {
        packet = carried_(std::move(packet), output);
    }
    packet->pts = std::llround(side.unit.seconds / av_q2d(media::kLiveTimeBase)) - zeroTicks_;
    if (packet->pts < 0 && !muxer_.isTransportStream()) {
        if (packet->pts + packet->duration <= 0) {
            return;  // came before the first picture, which live input does not begin with
        }
        packet->pts = muxer_.takesNegativeTimes() ? packet->pts : 0;
    }
    packet->dts = packet->pts;
    muxer_.keepUnit(*packet, output.stream, side.unit.streamSeconds.has_value());
    muxer_.write(*packet, output.stream, media::kLiveTimeBase);
}

/// Telemetry as the output's tables say that it is carried, which is how it was at first.
media::PacketPtr LiveWriter::carried_(media::PacketPtr packet, Output& output)
{
    std::span<std::uint8_t const> const unit(packet->data, static_cast<std::size_t>(packet->size));
    bool const isBare = isBareKlv(unit);
    if (isBare != output.inCells) {
        return packet;
    }
    std::vector<std::uint8_t> const other = isBare ? inCell(unit, output.nextCell++) : withoutCells(unit);
    return other.empty() ? std::move(packet) : media::makePacket(other, packet->pts);
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
