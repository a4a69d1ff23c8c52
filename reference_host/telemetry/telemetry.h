// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry as the reference host sees it: packets of keys and values with a time, from KLV (MISB
// ST 0601) or from JSON Lines.
#pragma once

#include "SwJson.h"
#include "telemetry/key_selection.h"
#include "telemetry/mapping.h"
#include "telemetry/nested_items.h"
#include "telemetry/second_keys.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

/// "ok", "bad", "absent".
char const* toText(Checksum checksum);

struct Packet {
    std::optional<double> timeSeconds;  ///< presentation time; empty when the stream gives none
    Checksum checksum = Checksum::Absent;
    SwJsonObject payload;
    std::string stream{};  ///< by what name its stream is told from others; empty when there is only one
    bool lasting = false;  ///< what it says holds for later packets of its source that do not say otherwise
};

/// What a KLV stream held, for the summary that people read.
struct KlvCounts {
    std::uint64_t packets = 0;       ///< handed out, bad checksums included
    std::uint64_t badChecksums = 0;  ///< used all the same
    std::uint64_t foreignKeys = 0;   ///< other universal keys, skipped
    std::uint64_t truncated = 0;     ///< packets, or items in one, that run past their end: dropped
    std::uint64_t damagedSets = 0;   ///< nested sets in which an item runs past the end: dropped, the packet is used
};

/// Decodes the KLV bytes of one stream unit (a PES payload, an access unit, a file); one unit may hold
/// several packets and foreign keys; bytes before a key (a PES header, damage) are passed over. All packets
/// of the unit get its time. Any bytes are safe.
///
/// A security set, in a packet or under a key of its own, marks every packet from its place on until the next set:
/// senders need not repeat it in each. One that stands before the first ST 0601 packet is handed out as a packet too.
class KlvDecoder {
public:
    /// Makes the wanted keys; a packet that holds only others gives one of them.
    explicit KlvDecoder(KeySelection const& wanted = {}) : mapper_(wanted), nested_(wanted), secondKeys_(wanted) {}

    std::vector<Packet> decode(std::span<std::uint8_t const> bytes, std::optional<double> timeSeconds);
    KlvCounts const& counts() const { return counts_; }

private:
    std::optional<Packet> takePacket_(KlvPacket const& found);
    std::optional<Packet> takeSecurity_(KlvPacket const& found);

    PacketMapper mapper_;
    NestedItems nested_;
    SecondKeyMaker secondKeys_;
    KlvCounts counts_;
    bool hasPackets_ = false;  ///< whether an ST 0601 packet has been seen
};

/// Reads a raw .klv file; its packets have no time. `counts` is set to what the file held. Throws
/// std::runtime_error with one line that names the file and the cure, also when no packet is usable.
std::vector<Packet> readKlvFile(std::string const& path, KlvCounts& counts);

/// Reads JSON Lines: one object a line, "t" in seconds and any further keys, which become the payload.
/// Without "t", or with null, the packet has no time. Values are taken as they are written: "012" is a text, 1.0 a
/// double, 1 an integer. Blank lines and a byte order mark are skipped. A line with "pts" and the object "payload",
/// as the program lists packets, gives that object's keys, with "pts" for the time where there is no "t", and
/// "checksum" and "stream" if they are there. The first packet is lasting, unless it was listed so. Throws
/// std::runtime_error "NAME:LINE: what is wrong".
/// `{"t":1.5,"heading_deg":90}` gives a packet at 1.5 s with the one key heading_deg.
std::vector<Packet> parseJsonLines(std::string_view text, std::string const& name);

/// parseJsonLines on a file. Throws std::runtime_error that names file, line and what is wrong.
std::vector<Packet> readJsonLinesFile(std::string const& path);

/// An ST 0601 packet, checksum included, from values by key (the keys that KlvDecoder gives). Keys that
/// the table does not know are left out, and so are values of a kind that the tag cannot hold; numbers out
/// of a tag's range are limited to it. decode(encodeKlv(p)) is within half a code step of p.
std::vector<std::uint8_t> encodeKlv(SwJsonObject const& payload);

}  // namespace telemetry
