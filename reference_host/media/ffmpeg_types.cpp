// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Small helpers around the FFmpeg libraries' handles; used by every unit of this folder.
#include "media/ffmpeg_types.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <new>

namespace media {

FramePtr makeFrame()
{
    FramePtr frame(av_frame_alloc());
    if (!frame) {
        throw std::bad_alloc();
    }
    return frame;
}

PacketPtr makePacket()
{
    PacketPtr packet(av_packet_alloc());
    if (!packet) {
        throw std::bad_alloc();
    }
    return packet;
}

PacketPtr makePacket(std::span<std::uint8_t const> bytes, std::int64_t ticks)
{
    PacketPtr packet = makePacket();
    if (av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) {
        throw std::bad_alloc();
    }
    std::copy(bytes.begin(), bytes.end(), packet->data);
    packet->pts = ticks;
    packet->dts = ticks;
    return packet;
}

std::string sizeText(int width, int height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string errorText(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

void quietLibraries()
{
    av_log_set_level(AV_LOG_QUIET);
}

}  // namespace media
