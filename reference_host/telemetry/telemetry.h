// Telemetry as the reference host sees it: packets of keys and values with a time, from KLV (MISB
// ST 0601) or from JSON Lines.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace telemetry {

enum class Checksum { Ok, Bad, Absent };
/// "ok", "bad", "absent".
char const* toText(Checksum checksum);

struct Packet {
    std::optional<double> timeSeconds;  ///< presentation time; empty when the stream gives none
    Checksum checksum = Checksum::Absent;
    SwJsonObject payload;
};

/// What a KLV stream held, for the summary that people read.
struct KlvCounts {
    std::uint64_t packets = 0;       ///< ST 0601 packets used, bad checksums included
    std::uint64_t badChecksums = 0;  ///< used all the same
    std::uint64_t foreignKeys = 0;   ///< other universal keys, skipped
    std::uint64_t truncated = 0;     ///< packets that run past their end, dropped
};

/// Decodes the KLV bytes of one stream unit (a PES payload, an access unit, a file); one unit may hold
/// several packets and foreign keys. Stateless between units but for the counts.
class KlvDecoder {
public:
    std::vector<Packet> decode(std::span<std::uint8_t const> bytes, std::optional<double> timeSeconds);
    KlvCounts const& counts() const { return counts_; }

private:
    KlvCounts counts_;
};

/// Reads a raw .klv file. Throws std::runtime_error with one line that names the file and the cure.
std::vector<Packet> readKlvFile(std::string const& path, KlvCounts& counts);

/// Reads JSON Lines: one object a line, "t" in seconds and any further keys, which become the payload.
/// Empty lines are skipped. Throws std::runtime_error that names file, line and what is wrong.
std::vector<Packet> readJsonLinesFile(std::string const& path);

/// A telemetry file by its ending: .jsonl or .klv (anything else is refused with a clear message).
std::vector<Packet> readTelemetryFile(std::string const& path, KlvCounts& counts);

/// An ST 0601 packet, checksum included, from values by key (the keys that KlvDecoder gives). Keys that
/// the table does not know are left out; values out of a tag's range are limited to it.
std::vector<std::uint8_t> encodeKlv(SwJsonObject const& payload);

}  // namespace telemetry
