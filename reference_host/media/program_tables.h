// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The tables of a transport stream that say what it holds (ISO/IEC 13818-1, 2.4.4): read from sections, written as
// sections. Used on the way in by TransportTap, on the way out by ProgramTablePatch.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace media {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kTransportPacket = 188;
inline constexpr std::uint8_t kTransportSync = 0x47;
inline constexpr int kAssociationPid = 0x00;                ///< of the program association table
inline constexpr int kServicesPid = 0x11;                   ///< of the service description table
inline constexpr std::uint8_t kSynchronousMetadata = 0x15;  ///< stream type of KLV in access unit cells
inline constexpr std::uint8_t kPrivateData = 0x06;

/// Which program maps there are.
struct ProgramAssociation {
    int transportStream = 0;
    int version = 0;
    std::map<int, int> mapPids;  ///< by program number; 0 is the network's
};

struct MappedStream {
    std::uint8_t type = 0;
    int pid = 0;
    Bytes descriptors;
};

/// What a program consists of.
struct ProgramMap {
    int program = 0;
    int version = 0;
    int clockPid = 0;
    Bytes descriptors;
    std::vector<MappedStream> streams;
};

/// All that a transport stream has said of itself; of a table that was sent in several versions the first one.
struct TransportTables {
    std::optional<ProgramAssociation> association;
    std::map<int, ProgramMap> maps;  ///< by program number
    Bytes services;                  ///< the whole section about this stream's own services; empty: none was sent
};

/// The check sum at a section's end; over a whole section it is 0.
std::uint32_t sectionSum(std::span<std::uint8_t const> bytes);

/// Replaces the sum at the section's end by the right one.
void setSectionSum(Bytes& section);

inline constexpr std::size_t kMapHeaderBytes = 12;  ///< of a program map, before its own descriptors
inline constexpr std::size_t kMapStreamBytes = 5;   ///< of a stream in it, before the stream's descriptors

/// Empty for sections of another table, with a wrong check sum, that are not valid yet or whose parts do not fit.
std::optional<ProgramAssociation> readAssociation(std::span<std::uint8_t const> section);
std::optional<ProgramMap> readProgramMap(std::span<std::uint8_t const> section);

Bytes writeAssociation(ProgramAssociation const& association);
/// Empty when it is longer than a section may be.
Bytes writeProgramMap(ProgramMap const& map);

/// Whether it is a section about this stream's own services.
bool isServices(std::span<std::uint8_t const> section);
/// The section about services without those of other programs; empty when none is left or it cannot be read.
Bytes keepServices(std::span<std::uint8_t const> section, std::set<int> const& programs);

/// The descriptors with these tags, in their order.
Bytes descriptorsTagged(std::span<std::uint8_t const> descriptors, std::span<std::uint8_t const> tags);

/// Whether a registration (0x05) or metadata descriptor (0x26) among these names this identifier, such as "KLVA".
bool namesFormat(std::span<std::uint8_t const> descriptors, std::array<char, 4> identifier);

/// The parts of a transport packet.
struct PacketView {
    int pid = 0;
    bool starts = false;          ///< a section or unit begins in it
    std::size_t payloadAt = 188;  ///< behind the packet when it has none
};
PacketView viewOf(std::span<std::uint8_t const> packet);

/// Puts a table's sections together from the packets of its PID.
class SectionCollector {
public:
    struct Section {
        Bytes bytes;
        std::vector<std::uint64_t> places;  ///< of each byte, as told to add()
    };

    /// Takes the next packet, whose first byte stands at `place`; gives the sections that it completes.
    std::vector<Section> add(std::span<std::uint8_t const> packet, std::uint64_t place);
    /// The place of the packet in which the section that is not whole yet began.
    std::optional<std::uint64_t> openSince() const { return open_ ? std::optional(openSince_) : std::nullopt; }
    void forget();

private:
    void append_(std::span<std::uint8_t const> bytes, std::uint64_t place, std::vector<Section>& whole);

    Section section_;
    bool open_ = false;
    std::uint64_t openSince_ = 0;
};

/// Cuts a section into packets of the PID, the last one filled up; `counter` is the PID's continuity counter.
Bytes packetsOf(std::span<std::uint8_t const> section, int pid, std::uint8_t& counter);

}  // namespace media
