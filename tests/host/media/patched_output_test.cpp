// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bytes on their way out: all of them, and whole packets where they go out as datagrams.
#include "media/patched_output.h"

#include "transport_bytes.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <gtest/gtest.h>

#include <vector>

namespace {

using media::Bytes;

/// Keeps what is written, piece by piece, as a protocol gets it.
class Sink {
public:
    explicit Sink(int datagram)
    {
        int const size = datagram == 0 ? 4096 : datagram;
        auto* const buffer = static_cast<unsigned char*>(av_malloc(static_cast<std::size_t>(size)));
        context_ = avio_alloc_context(buffer, size, 1, this, nullptr, &Sink::onWrite, nullptr);
        context_->max_packet_size = datagram;
    }
    ~Sink()
    {
        av_freep(static_cast<void*>(&context_->buffer));
        avio_context_free(&context_);
    }
    Sink(Sink const&) = delete;
    Sink& operator=(Sink const&) = delete;

    AVIOContext& context() { return *context_; }
    std::vector<std::size_t> sizes;
    Bytes bytes;

private:
    static int onWrite(void* self, std::uint8_t* data, int size)
    {
        auto& sink = *static_cast<Sink*>(self);
        sink.sizes.push_back(static_cast<std::size_t>(size));
        sink.bytes.insert(sink.bytes.end(), data, data + size);
        return size;
    }

    AVIOContext* context_;
};

Bytes packets(int count)
{
    Bytes all;
    for (int number = 0; number < count; ++number) {
        all = transport_test::joined(all, transport_test::packet(0x100, Bytes(50, static_cast<std::uint8_t>(number))));
    }
    return all;
}

Bytes sent(Sink& sink, Bytes const& in)
{
    media::TransportTables tables;
    tables.association = media::ProgramAssociation{};
    media::PatchedOutput output(sink.context(), {tables, {}, {}, {}});
    avio_write(output.context(), in.data(), static_cast<int>(in.size()));
    avio_flush(output.context());
    avio_flush(&sink.context());
    return sink.bytes;
}

TEST(PatchedOutput, WritesAllBytes)
{
    Sink sink(0);
    EXPECT_EQ(sent(sink, packets(400)), packets(400));
}

TEST(PatchedOutput, PutsWholePacketsIntoDatagrams)
{
    Sink sink(1472);
    EXPECT_EQ(sent(sink, packets(20)), packets(20));
    EXPECT_EQ(sink.sizes, (std::vector<std::size_t>{1316, 1316, 6 * 188}));
}

}  // namespace
