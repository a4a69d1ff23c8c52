// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Gives a written transport stream the identity of the one that it was made from: the muxer knows neither the
// descriptors of its streams nor their types, and has its own numbers and names.
#pragma once

#include "media/program_tables.h"

#include <cstdint>
#include <map>
#include <set>
#include <span>

namespace media {

/// What is kept.
struct KeptTables {
    TransportTables source;
    std::set<int> programs;               ///< those that the output has
    std::set<int> copiedPids;             ///< streams that stand in the output as they were in the input
    std::map<int, std::uint8_t> unitIds;  ///< by PID: the stream id that each unit gets
};

class ProgramTablePatch {
public:
    explicit ProgramTablePatch(KeptTables kept) : kept_(std::move(kept)) {}

    /// The input describes its services so; the first description stays.
    void learnServices(std::span<std::uint8_t const> section);
    /// Units of this PID get this id; the first one told stays.
    void learnUnitId(int pid, std::uint8_t id) { kept_.unitIds.emplace(pid, id); }

    /// Takes the next bytes of the muxer and gives those that are to be written: whole packets of 188 bytes.
    Bytes pass(std::span<std::uint8_t const> bytes);

private:
    void passPacket_(std::span<std::uint8_t> packet, Bytes& out);
    Bytes associationOf_(std::span<std::uint8_t const> section);
    Bytes mapOf_(std::span<std::uint8_t const> section) const;
    void write_(std::span<std::uint8_t const> section, int pid, Bytes& out);

    KeptTables kept_;
    Bytes waiting_;  ///< an unfinished packet
    SectionCollector association_;
    SectionCollector services_;
    std::map<int, SectionCollector> maps_;  ///< by the muxer's PID
    std::map<int, int> mapPids_;            ///< the input's PID by the muxer's
    std::map<int, std::uint8_t> counters_;  ///< continuity counters of tables, by PID
};

}  // namespace media
