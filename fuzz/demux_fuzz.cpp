// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as a transport stream: through demuxer, frame reader and telemetry decoder, as the program
// takes a clip, and its tables into an output's. Beyond not crashing: pictures are numbered without gaps, every side
// unit has its place in time, no packet is used that was not counted, as many bytes reach the demuxer as come in, and
// whole packets go out.
#include "media/demuxer.h"
#include "media/ffmpeg_types.h"
#include "media/frame_reader.h"
#include "media/program_table_patch.h"
#include "media/transport_tap.h"
#include "telemetry/telemetry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <span>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavutil/cpu.h>
}

namespace {

/// Decoding many pictures tests the codec libraries, not this project.
constexpr std::uint64_t kMaxPictures = 16;

void require(bool held)
{
    if (!held) {
        std::abort();
    }
}

class SideUnits {
public:
    void take(std::vector<media::SideUnit> const& units)
    {
        for (media::SideUnit const& unit : units) {
            require(unit.packet != nullptr && unit.kind != media::StreamKind::Video);
            require(std::isfinite(unit.seconds));
            if (unit.kind == media::StreamKind::Klv && unit.packet->data != nullptr) {
                std::span const bytes(unit.packet->data, static_cast<std::size_t>(unit.packet->size));
                used_ += decoders_[unit.stream].decode(bytes, unit.seconds).size();
            }
        }
    }
    void check() const
    {
        std::uint64_t counted = 0;
        for (auto const& [stream, decoder] : decoders_) {
            counted += decoder.counts().packets;
            require(decoder.counts().badChecksums <= decoder.counts().packets);
        }
        require(used_ == counted);
    }

private:
    std::map<int, telemetry::KlvDecoder> decoders_;
    std::uint64_t used_ = 0;
};

void passTables(std::span<std::uint8_t const> clip)
{
    media::TransportTap tap;
    media::Bytes some(1000);
    media::Bytes shown;
    auto const take = [&] {
        while (std::size_t const got = tap.take(some)) {
            shown.insert(shown.end(), some.begin(), some.begin() + static_cast<std::ptrdiff_t>(got));
        }
    };
    constexpr std::size_t kPiece = 1316;
    for (std::size_t at = 0; at < clip.size(); at += kPiece) {
        tap.push(clip.subspan(at, std::min(kPiece, clip.size() - at)));
        take();
    }
    tap.end();
    take();
    require(shown.size() == clip.size());
    if (tap.tables().association) {
        media::ProgramTablePatch patch({tap.tables(), {1}, {0x101}, {}});
        require(patch.pass(shown).size() % media::kTransportPacket == 0);
    }
}

void readClip(std::uint8_t const* data, std::size_t size)
{
    std::size_t place = 0;
    media::Demuxer demuxer("clip", [&](std::uint8_t* to, std::size_t room) {
        std::size_t const count = std::min(room, size - place);
        std::memcpy(to, data + place, count);
        place += count;
        return count;
    });
    media::FrameReader reader(demuxer);
    SideUnits side;
    std::uint64_t number = 0;
    while (auto const picture = reader.next()) {
        require(picture->number == number++);
        require(picture->frame->width > 0 && picture->frame->height > 0);
        side.take(reader.takeSideUnits());
        if (number == kMaxPictures) {
            break;
        }
    }
    side.take(reader.takeSideUnits());
    side.check();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // One thread decodes: handing pictures to others and back takes longer than these few pictures do.
    static bool const prepared = (media::quietLibraries(), av_cpu_force_count(1), true);
    require(prepared);
    passTables({data, size});
    try {
        readClip(data, size);
    } catch (std::runtime_error const&) {
        // What is no clip is refused.
    }
    return 0;
}
