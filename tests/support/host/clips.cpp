// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Clips made with the host's own media library, and what is in clips read back.
#include "clips.h"

#include "imaging/imaging_access.h"
#include "media/demuxer.h"
#include "media/encoder.h"
#include "media/frame_converter.h"
#include "media/frame_reader.h"
#include "media/muxer.h"
#include "media/png_writer.h"
#include "telemetry/telemetry.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace clip_test {
namespace {

constexpr AVRational kClock{1, 90000};
constexpr std::int64_t kTicksPerFrame = 3600;
constexpr int kSampleRate = 48000;

void paint(MappedNV12 const& planes, int number)
{
    for (int row = 0; row < planes.height; ++row) {
        std::memset(planes.y + static_cast<std::ptrdiff_t>(row) * planes.yStride, 60 + (row + number * 3) % 100,
                    static_cast<std::size_t>(planes.width));
    }
    int const chromaBytes = (planes.width + 1) / 2 * 2;
    for (int row = 0; row < (planes.height + 1) / 2; ++row) {
        std::memset(planes.uv + static_cast<std::ptrdiff_t>(row) * planes.uvStride, 128,
                    static_cast<std::size_t>(chromaBytes));
    }
}

/// A whole unit in one cell, with the cell's number (ISO/IEC 13818-1, 2.12.4).
std::vector<std::uint8_t> cellOf(std::vector<std::uint8_t> const& unit, int number)
{
    constexpr std::size_t kHeader = 5;
    std::vector<std::uint8_t> cell(kHeader + unit.size());
    cell[1] = static_cast<std::uint8_t>(number);
    cell[2] = 0xDF;
    cell[3] = static_cast<std::uint8_t>(unit.size() >> 8U);
    cell[4] = static_cast<std::uint8_t>(unit.size() & 0xFFU);
    std::copy(unit.begin(), unit.end(), cell.begin() + kHeader);
    return cell;
}

/// Silence as MPEG layer 2, which every container of interest carries.
class Silence {
public:
    explicit Silence(std::int64_t firstTicks) : next_(av_rescale_q(firstTicks, kClock, {1, kSampleRate}))
    {
        AVCodec const* const codec = avcodec_find_encoder(AV_CODEC_ID_MP2);
        context_.reset(avcodec_alloc_context3(codec));
        context_->sample_rate = kSampleRate;
        context_->sample_fmt = AV_SAMPLE_FMT_S16;
        context_->time_base = {1, kSampleRate};
        av_channel_layout_default(&context_->ch_layout, 1);
        if (avcodec_open2(context_.get(), codec, nullptr) < 0) {
            throw std::runtime_error("no sound encoder");
        }
    }

    /// A stream to copy from, as a demuxer would give it.
    int addTo(media::Muxer& muxer)
    {
        holder_.reset(avformat_alloc_context());
        AVStream* const stream = avformat_new_stream(holder_.get(), nullptr);
        avcodec_parameters_from_context(stream->codecpar, context_.get());
        stream->time_base = context_->time_base;
        return muxer.addCopy(*stream).value();
    }

    void writeUpTo(std::int64_t ticks, media::Muxer& muxer, int stream)
    {
        while (av_compare_ts(next_, context_->time_base, ticks, kClock) < 0) {
            media::FramePtr const frame = media::makeFrame();
            frame->format = context_->sample_fmt;
            frame->nb_samples = context_->frame_size;
            frame->pts = next_;
            av_channel_layout_copy(&frame->ch_layout, &context_->ch_layout);
            av_frame_get_buffer(frame.get(), 0);
            std::memset(frame->data[0], 0, static_cast<std::size_t>(frame->linesize[0]));
            next_ += context_->frame_size;
            avcodec_send_frame(context_.get(), frame.get());
            media::PacketPtr const packet = media::makePacket();
            while (avcodec_receive_packet(context_.get(), packet.get()) == 0) {
                muxer.write(*packet, stream, context_->time_base);
                av_packet_unref(packet.get());
            }
        }
    }

private:
    struct FreeContext {
        void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    };

    media::CodecPtr context_;
    std::unique_ptr<AVFormatContext, FreeContext> holder_;
    std::int64_t next_;
};

}  // namespace

void makeClip(ClipSpec const& spec)
{
    media::quietLibraries();
    media::Muxer muxer(spec.path);
    media::EncoderSettings settings;
    settings.choice.codecName = spec.codec;
    settings.picture.width = spec.width;
    settings.picture.height = spec.height;
    media::Encoder encoder(settings, muxer.container());
    int const video = muxer.addVideo(encoder.context(), kClock);
    std::vector<int> klv;
    for (std::size_t stream = 0; stream < spec.klvStreams.size(); ++stream) {
        klv.push_back(muxer.addKlv().value());
    }
    std::optional<Silence> silence;
    int sound = 0;
    if (spec.sound) {
        silence.emplace(spec.firstTicks - spec.soundLead);
        sound = silence->addTo(muxer);
    }
    muxer.begin();
    auto const sink = [&](AVPacket& packet) { muxer.write(packet, video, kClock); };
    zelvo::ZelvoPicture picture(static_cast<unsigned>(spec.width), static_cast<unsigned>(spec.height));
    for (int number = 0; number < spec.frames; ++number) {
        std::int64_t const offset =
            spec.times.empty() ? number * kTicksPerFrame : spec.times.at(static_cast<std::size_t>(number));
        std::int64_t const ticks = spec.firstTicks + offset;
        for (std::size_t stream = 0; stream < klv.size(); ++stream) {
            SwJsonObject const& payload = spec.klvStreams[stream].at(static_cast<std::size_t>(number));
            if (!payload.empty()) {
                auto unit = telemetry::encodeKlv(payload);
                if (spec.klvCells && stream == 0) {
                    unit = cellOf(unit, number);
                }
                muxer.write(*media::makePacket(unit, ticks), klv[stream], kClock);
            }
        }
        if (spec.paint) {
            spec.paint(imaging::planesOf(picture));
        } else {
            paint(imaging::planesOf(picture), number);
        }
        encoder.encode(imaging::planesOf(picture), ticks, sink);
        if (silence) {
            silence->writeUpTo(ticks + kTicksPerFrame, muxer, sound);
        }
    }
    encoder.flush(sink);
    muxer.finish();
}

std::vector<std::shared_ptr<zelvo::ZelvoPicture>> picturesOf(std::string const& path)
{
    media::quietLibraries();
    media::Demuxer demuxer(path);
    media::FrameReader reader(demuxer);
    media::FrameConverter converter;
    std::vector<std::shared_ptr<zelvo::ZelvoPicture>> pictures;
    while (auto const unit = reader.next()) {
        AVFrame const& frame = *unit->frame;
        pictures.push_back(std::make_shared<zelvo::ZelvoPicture>(static_cast<unsigned>(frame.width),
                                                                 static_cast<unsigned>(frame.height)));
        converter.toNv12(frame, imaging::planesOf(*pictures.back()), media::nv12ColorOf(frame));
    }
    return pictures;
}

void writePngOf(std::string const& path, zelvo::ZelvoPicture& picture)
{
    constexpr unsigned kBt709FromLines = 720;
    media::writePng(path, imaging::planesOf(picture), {false, picture.height() >= kBt709FromLines});
}

bool samePicture(zelvo::ZelvoPicture& a, zelvo::ZelvoPicture& b)
{
    if (a.width() != b.width() || a.height() != b.height()) {
        return false;
    }
    MappedNV12 const one = imaging::planesOf(a);
    MappedNV12 const other = imaging::planesOf(b);
    auto const sameRows = [](std::uint8_t const* p, int pStride, std::uint8_t const* q, int qStride, int rows,
                             int bytes) {
        for (int row = 0; row < rows; ++row) {
            if (std::memcmp(p + static_cast<std::ptrdiff_t>(row) * pStride,
                            q + static_cast<std::ptrdiff_t>(row) * qStride, static_cast<std::size_t>(bytes)) != 0) {
                return false;
            }
        }
        return true;
    };
    return sameRows(one.y, one.yStride, other.y, other.yStride, one.height, one.width) &&
           sameRows(one.uv, one.uvStride, other.uv, other.uvStride, (one.height + 1) / 2, (one.width + 1) / 2 * 2);
}

StreamCounts packetsOf(std::string const& path)
{
    media::quietLibraries();
    StreamCounts counts;
    try {
        media::Demuxer demuxer(path);
        media::PacketPtr const packet = media::makePacket();
        while (demuxer.read(*packet)) {
            switch (demuxer.kindOf(packet->stream_index)) {
            case media::StreamKind::Video:
                ++counts.video;
                break;
            case media::StreamKind::Klv:
                ++counts.klv;
                break;
            case media::StreamKind::Audio:
                ++counts.sound;
                break;
            default:
                break;
            }
            av_packet_unref(packet.get());
        }
    } catch (std::runtime_error const&) {
        return {};
    }
    return counts;
}

StreamTimes timesOf(std::string const& path)
{
    media::quietLibraries();
    StreamTimes times;
    media::Demuxer demuxer(path);
    media::PacketPtr const packet = media::makePacket();
    while (demuxer.read(*packet)) {
        media::StreamKind const kind = demuxer.kindOf(packet->stream_index);
        double const seconds =
            static_cast<double>(packet->pts) * av_q2d(demuxer.stream(packet->stream_index).time_base);
        if (kind == media::StreamKind::Video) {
            times.video.push_back(seconds);
        } else if (kind == media::StreamKind::Klv) {
            times.klv.push_back(seconds);
        } else if (kind == media::StreamKind::Audio) {
            times.sound.push_back(seconds);
        }
        av_packet_unref(packet.get());
    }
    return times;
}

SwJsonObject parseLine(std::string const& line)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(line, "", error);
    if (!error.isEmpty()) {
        throw std::runtime_error(error.toStdString() + " in " + line);
    }
    return document.object();
}

}  // namespace clip_test
