// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry decoding per stream and the remarks about it; used by every command that reads a clip.
#include "clip/clip_telemetry.h"

#include "sw_number_text.h"

#include <span>

namespace clip {
namespace {

using sw_text::counted;

std::string whyNothing(TelemetrySummary const& summary)
{
    if (!summary.anyStream) {
        return "there is no KLV stream";
    }
    if (summary.counts.foreignKeys > 0) {
        return counted(summary.counts.foreignKeys, "KLV packet is", "KLV packets are") + " not MISB ST 0601";
    }
    return summary.fromFile ? "the file holds no packet" : "the KLV stream holds no MISB ST 0601 packet";
}

}  // namespace

std::vector<telemetry::Packet> KlvStreams::decode(int stream, AVPacket const& unit, std::optional<double> seconds)
{
    if (unit.data == nullptr) {
        return {};
    }
    telemetry::KlvDecoder& decoder = decoders_.try_emplace(stream, keys_).first->second;
    return decoder.decode(std::span(unit.data, static_cast<std::size_t>(unit.size)), seconds);
}

telemetry::KlvCounts KlvStreams::counts() const
{
    telemetry::KlvCounts sum;
    for (auto const& [stream, decoder] : decoders_) {
        telemetry::KlvCounts const& counts = decoder.counts();
        sum.packets += counts.packets;
        sum.badChecksums += counts.badChecksums;
        sum.foreignKeys += counts.foreignKeys;
        sum.truncated += counts.truncated;
        sum.damagedSets += counts.damagedSets;
    }
    return sum;
}

std::vector<std::string> telemetryRemarks(std::string const& source, TelemetrySummary const& summary)
{
    std::vector<std::string> remarks;
    if (!summary.readError.empty()) {
        remarks.push_back(source + ": reading ended early: " + summary.readError);
    }
    if (summary.usable == 0) {
        remarks.push_back(source + ": no usable telemetry was found: " + whyNothing(summary));
    }
    telemetry::KlvCounts const& counts = summary.counts;
    if (counts.badChecksums > 0) {
        bool const one = counts.badChecksums == 1;
        remarks.push_back(source + ": " + std::to_string(counts.badChecksums) + " of " +
                          counted(counts.packets, "telemetry packet", "telemetry packets") +
                          (one ? " has a wrong checksum and was" : " have a wrong checksum and were") +
                          " used all the same");
    }
    if (counts.truncated > 0) {
        bool const one = counts.truncated == 1;
        remarks.push_back(source + ": " + counted(counts.truncated, "telemetry packet", "telemetry packets") +
                          (one ? " runs past the end and was dropped" : " run past the end and were dropped"));
    }
    if (counts.damagedSets > 0) {
        bool const one = counts.damagedSets == 1;
        remarks.push_back(source + ": " + counted(counts.damagedSets, "nested set", "nested sets") +
                          " of telemetry packets" +
                          (one ? " runs past its end and was left out" : " run past their ends and were left out"));
    }
    return remarks;
}

}  // namespace clip
