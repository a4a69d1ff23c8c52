// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A transport stream read from its bytes alone, for comparing streams field by field (ISO/IEC 13818-1, 2.4). It shares
// nothing with the program that it is to judge.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ts_test {

using Bytes = std::vector<std::uint8_t>;

/// One unit (PES packet) of a stream.
struct Unit {
    int id = 0;
    std::optional<std::int64_t> ticks;  ///< presentation time at 90 kHz
    Bytes payload;
};

struct Stream {
    int type = 0;
    Bytes descriptors;
    std::vector<Unit> units;
};

struct Program {
    int mapPid = 0;
    int version = 0;
    Bytes descriptors;
    std::map<int, Stream> streams;  ///< by PID
};

struct TransportStream {
    int id = 0;
    int version = 0;
    std::map<int, Program> programs;  ///< by number
    Bytes services;                   ///< section of the service description table; empty: none
    std::vector<std::string> faults;  ///< packets without sync byte, wrong sums, gaps in continuity counters
};

/// Of tables sent in several versions the last one.
TransportStream readTransportStream(std::string const& path);

/// Writes a copy with other PIDs, and with these sections in place of those of their (old) PIDs; an empty section
/// leaves a PID out. `unitIds` sets the ids of units, by old PID.
struct Changes {
    std::map<int, int> pids;
    std::map<int, Bytes> sections;
    std::map<int, int> unitIds;
};
void rewriteTransportStream(std::string const& from, std::string const& to, Changes const& changes);

/// The section with its length and check sum set; `body` has room for neither sum nor length yet.
Bytes closedSection(Bytes body);

/// A program association section.
Bytes associationSection(int streamId, std::map<int, int> const& mapPids, int version = 0);

struct MapEntry {
    int type;
    int pid;
    Bytes descriptors;
};
Bytes mapSection(int program, int clockPid, Bytes const& descriptors, std::vector<MapEntry> const& entries,
                 int version = 0);

/// Section of the service description table with one service.
Bytes servicesSection(int streamId, int program, std::string const& provider, std::string const& name);

}  // namespace ts_test
