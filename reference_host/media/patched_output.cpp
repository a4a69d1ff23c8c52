// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writing through the patch; between muxer and protocol.
#include "media/patched_output.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <algorithm>
#include <new>
#include <utility>

namespace media {

PatchedOutput::PatchedOutput(AVIOContext& inner, KeptTables kept) : inner_(inner), patch_(std::move(kept))
{
    constexpr int kBufferBytes = 7 * 25 * static_cast<int>(kTransportPacket);
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    context_ = avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, &PatchedOutput::onWrite, nullptr);
    if (context_ == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    context_->seekable = 0;
    // How long bytes may wait to be sent together: addresses want them at once.
    context_->min_packet_size = inner.min_packet_size;
}

PatchedOutput::~PatchedOutput()
{
    av_freep(static_cast<void*>(&context_->buffer));
    avio_context_free(&context_);
}

int PatchedOutput::onWrite(void* self, std::uint8_t* bytes, int size)
{
    PatchedOutput& output = *static_cast<PatchedOutput*>(self);
    output.write_(output.patch_.pass({bytes, static_cast<std::size_t>(size)}));
    return output.inner_.error < 0 ? output.inner_.error : size;
}

void PatchedOutput::write_(std::span<std::uint8_t const> bytes)
{
    auto const room = static_cast<std::size_t>(std::max(0, inner_.max_packet_size)) / kTransportPacket;
    if (room == 0) {
        avio_write(&inner_, bytes.data(), static_cast<int>(bytes.size()));
        avio_write_marker(&inner_, AV_NOPTS_VALUE, AVIO_DATA_MARKER_FLUSH_POINT);
        return;
    }
    // A datagram that is lost takes no halves of packets with it.
    while (!bytes.empty()) {
        auto const datagram = bytes.first(std::min(bytes.size(), room * kTransportPacket));
        avio_write(&inner_, datagram.data(), static_cast<int>(datagram.size()));
        avio_flush(&inner_);
        bytes = bytes.subspan(datagram.size());
    }
}

}  // namespace media
