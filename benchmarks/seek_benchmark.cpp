// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What `frame --at` cannot do without: reading the clip up to a time, and decoding from the key picture before it.
// Prints both in seconds of processor time.
//   seek_benchmark CLIP SECONDS
#include "media/decoder.h"
#include "media/demuxer.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// Processor time of all threads.
double now()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + 1e-9 * static_cast<double>(used.tv_nsec);
}

/// Reads up to `seconds` after the first picture and keeps the video packets from the last key picture on.
std::vector<media::PacketPtr> readUpTo(media::Demuxer& demuxer, double seconds)
{
    std::vector<media::PacketPtr> kept;
    std::optional<double> first;
    media::PacketPtr packet = media::makePacket();
    while (demuxer.read(*packet)) {
        if (demuxer.kindOf(packet->stream_index) != media::StreamKind::Video) {
            av_packet_unref(packet.get());
            continue;
        }
        double const time = media::secondsOf(packet->pts, demuxer.stream(packet->stream_index).time_base);
        first = first.value_or(time);
        if (time - *first > seconds) {
            break;
        }
        if ((packet->flags & AV_PKT_FLAG_KEY) != 0) {
            kept.clear();
        }
        kept.push_back(std::exchange(packet, media::makePacket()));
    }
    return kept;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: seek_benchmark CLIP SECONDS\n";
        return 2;
    }
    try {
        media::quietLibraries();
        double const begin = now();
        media::Demuxer demuxer(argv[1]);
        std::vector<media::PacketPtr> const packets = readUpTo(demuxer, std::strtod(argv[2], nullptr));
        double const read = now();
        media::Decoder decoder(*demuxer.video(), demuxer.name());
        media::FramePtr const frame = media::makeFrame();
        for (media::PacketPtr const& packet : packets) {
            decoder.send(packet.get());
            while (decoder.receive(*frame)) {
            }
        }
        decoder.send(nullptr);
        while (decoder.receive(*frame)) {
        }
        std::printf("%.3f %.3f\n", read - begin, now() - read);
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
    return 0;
}
