// Small helpers around the FFmpeg libraries' handles; used by every unit of this folder.
#include "media/ffmpeg_types.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

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
