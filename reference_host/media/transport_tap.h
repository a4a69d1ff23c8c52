// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looks into a transport stream on its way to the demuxer: keeps what its tables say, which FFmpeg tells in part only,
// and lets synchronous telemetry through whole. FFmpeg drops the first five bytes of every unit of stream type 0x15;
// the same stream as type 0x06 arrives with its access unit headers.
#pragma once

#include "media/program_tables.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

namespace media {

/// Bytes in, as many bytes out; whatever is not a transport stream comes out as it went in.
class TransportTap {
public:
    void push(std::span<std::uint8_t const> bytes);
    /// No bytes follow.
    void end();
    /// What follows stands elsewhere in the stream; bytes that were not taken are dropped.
    void jump();

    /// Moves bytes to `out` that are ready; returns how many.
    std::size_t take(std::span<std::uint8_t> out);
    /// Whether the bytes have turned out to be something else: nothing is looked for any more.
    bool isIdle() const { return idle_; }

    TransportTables const& tables() const { return tables_; }

private:
    void scan_();
    bool findPackets_();
    void see_(std::span<std::uint8_t const> packet, std::uint64_t place);
    void seeMap_(SectionCollector::Section const& section);
    std::uint64_t heldFrom_() const;
    std::uint8_t& at_(std::uint64_t place) { return bytes_[static_cast<std::size_t>(place - begin_)]; }
    std::uint64_t endPlace_() const { return begin_ + bytes_.size(); }

    Bytes bytes_;                 ///< not yet taken
    std::uint64_t begin_ = 0;     ///< place of the first of them
    std::uint64_t scanned_ = 0;   ///< place of the next packet
    std::size_t step_ = 0;        ///< bytes from one packet to the next; 0: to be found
    std::uint64_t searched_ = 0;  ///< bytes in which no packets were found
    bool ended_ = false;
    bool idle_ = false;
    TransportTables tables_;
    SectionCollector association_;
    SectionCollector services_;
    std::map<int, SectionCollector> maps_;  ///< by PID
};

}  // namespace media
