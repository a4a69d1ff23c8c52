// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Made with the host's own muxer, and once more through the libraries for other PIDs.
#include "live_clips.h"

#include "clips.h"
#include "file_bytes.h"
#include "media/ffmpeg_types.h"

#include <deque>
#include <stdexcept>
#include <utility>
#include <vector>

namespace live_test {

void makeLiveClip(LiveClipSpec const& spec)
{
    std::vector<SwJsonObject> telemetry;
    for (int number = 0; number < spec.frames; ++number) {
        telemetry.push_back({{"heading_deg", SwJsonValue(number % 360)}});
    }
    clip_test::ClipSpec clip{spec.path, spec.width, spec.height, spec.frames, "mpeg2video", spec.firstTicks};
    clip.klvStreams = {telemetry};
    clip.klvCells = spec.klvCells;
    clip.sound = spec.sound;
    clip_test::makeClip(clip);
}

void makeOtherProgram(std::string const& from, std::string const& to)
{
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, from.c_str(), nullptr, nullptr) < 0) {
        throw std::runtime_error(from);
    }
    media::InputPtr const input(opened);
    avformat_find_stream_info(opened, nullptr);
    AVFormatContext* output = nullptr;
    avformat_alloc_output_context2(&output, nullptr, "mpegts", to.c_str());
    for (unsigned index = 0; index < opened->nb_streams; ++index) {
        AVStream* const stream = avformat_new_stream(output, nullptr);
        avcodec_parameters_copy(stream->codecpar, opened->streams[index]->codecpar);
        stream->codecpar->codec_tag = 0;
    }
    AVDictionary* options = nullptr;
    av_dict_set(&options, "mpegts_start_pid", "768", 0);
    av_dict_set(&options, "mpegts_pmt_start_pid", "4608", 0);
    av_dict_set(&options, "mpegts_service_id", "7", 0);
    if (avio_open(&output->pb, to.c_str(), AVIO_FLAG_WRITE) < 0 || avformat_write_header(output, &options) < 0) {
        throw std::runtime_error(to);
    }
    media::PacketPtr const packet = media::makePacket();
    while (av_read_frame(opened, packet.get()) >= 0) {
        AVRational const timeBase = opened->streams[packet->stream_index]->time_base;
        av_packet_rescale_ts(packet.get(), timeBase, output->streams[packet->stream_index]->time_base);
        av_interleaved_write_frame(output, packet.get());
    }
    av_write_trailer(output);
    avio_closep(&output->pb);
    avformat_free_context(output);
    av_dict_free(&options);
}

void makeTelemetryLate(std::string const& from, std::string const& to, int pictures)
{
    constexpr std::size_t kPacket = 188;
    constexpr int kVideoPid = 0x100;
    constexpr int kTelemetryPid = 0x101;
    std::string const bytes = file_test::readFile(from);
    std::string out;
    std::deque<std::pair<int, std::string>> held;  // the picture before which each stands
    int picture = 0;
    for (std::size_t at = 0; at + kPacket <= bytes.size(); at += kPacket) {
        auto const byte = [&bytes, at](std::size_t number) { return static_cast<unsigned char>(bytes[at + number]); };
        int const pid = (byte(1) & 0x1F) << 8 | byte(2);
        if (pid == kTelemetryPid) {
            held.emplace_back(picture + pictures, bytes.substr(at, kPacket));
            continue;
        }
        picture += pid == kVideoPid && (byte(1) & 0x40) != 0 ? 1 : 0;
        for (; !held.empty() && held.front().first < picture; held.pop_front()) {
            out += held.front().second;
        }
        out += bytes.substr(at, kPacket);
    }
    for (auto const& [place, packet] : held) {
        out += packet;
    }
    file_test::writeFile(to, out);
}

}  // namespace live_test
