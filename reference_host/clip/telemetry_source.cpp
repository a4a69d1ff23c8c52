// Telemetry without pictures; used by the commands that list keys.
#include "clip/telemetry_source.h"

#include "media/demuxer.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <vector>

namespace clip {
namespace {

/// How far into a file a first key is looked for: a packet header may stand before it.
constexpr std::size_t kHeadBytes = 64;

/// Raw KLV: by its ending, or because a key stands at its very beginning. A transport stream begins with
/// a sync byte and holds its keys further on.
bool isRawKlv(std::string const& path)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) {
        return false;
    }
    if (std::filesystem::path(path).extension() == ".klv") {
        return true;
    }
    std::ifstream file(path, std::ios::binary);
    std::array<char, kHeadBytes> head{};
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    std::span const read(head.data(), static_cast<std::size_t>(file.gcount()));
    return media::holdsKlvKey({reinterpret_cast<std::uint8_t const*>(read.data()), read.size()});
}

void take(std::vector<telemetry::Packet> const& packets, TelemetrySummary& summary,
          std::function<void(telemetry::Packet const&)> const& onPacket)
{
    for (telemetry::Packet const& packet : packets) {
        summary.usable += packet.payload.empty() ? 0U : 1U;
        onPacket(packet);
    }
}

}  // namespace

TelemetrySummary forEachPacket(std::string const& input, std::string const& telemetryFile,
                               std::function<void(telemetry::Packet const&)> const& onPacket)
{
    TelemetrySummary summary;
    if (!telemetryFile.empty() || isRawKlv(input)) {
        summary.anyStream = true;
        summary.fromFile = true;
        std::vector<telemetry::Packet> const packets =
            telemetryFile.empty() ? telemetry::readKlvFile(input, summary.counts)
                                  : telemetry::readTelemetryFile(telemetryFile, summary.counts);
        take(packets, summary, onPacket);
        return summary;
    }
    media::Demuxer demuxer(input);
    KlvStreams streams;
    media::PacketPtr const unit = media::makePacket();
    summary.anyStream = !demuxer.streamsOf(media::StreamKind::Klv).empty();
    while (demuxer.read(*unit)) {
        int const stream = unit->stream_index;
        if (demuxer.kindOf(stream) == media::StreamKind::Klv) {
            summary.anyStream = true;
            std::optional<double> seconds;
            if (unit->pts != AV_NOPTS_VALUE) {
                seconds = media::secondsOf(unit->pts, demuxer.stream(stream).time_base);
            }
            take(streams.decode(stream, *unit, seconds), summary, onPacket);
        }
        av_packet_unref(unit.get());
    }
    summary.counts = streams.counts();
    summary.readError = demuxer.readError();
    return summary;
}

}  // namespace clip
