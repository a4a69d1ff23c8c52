// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Cuts the bytes of one stream unit into ST 0601 packets and a packet into its items. First step of the
// telemetry: no meaning is given to an item's bytes here. Nothing is copied; spans point into the input.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace telemetry {

/// The universal key of an ST 0601 packet.
inline constexpr std::array<std::uint8_t, 16> kSt0601Key{0x06, 0x0E, 0x2B, 0x34, 0x02, 0x0B, 0x01, 0x01,
                                                         0x0E, 0x01, 0x03, 0x01, 0x01, 0x00, 0x00, 0x00};

/// The universal key of an ST 0102 security set that stands alone.
inline constexpr std::array<std::uint8_t, 16> kSt0102Key{0x06, 0x0E, 0x2B, 0x34, 0x02, 0x03, 0x01, 0x01,
                                                         0x0E, 0x01, 0x03, 0x03, 0x02, 0x00, 0x00, 0x00};

/// One item of a packet.
struct KlvItem {
    std::uint32_t tag = 0;               ///< tags too large for 32 bits come as 0xFFFFFFFF
    std::size_t dataOffset = 0;          ///< of the data, counted from the first byte of the packet's key
    std::span<std::uint8_t const> data;  ///< empty for an item without value
};

/// What stands at one universal key.
enum class KlvKind {
    St0601,    ///< a whole packet
    Security,  ///< a whole security set
    Foreign,   ///< another universal key; skipped by its length
    Truncated  ///< a key of ours whose packet does not fit into the unit; dropped
};

struct KlvPacket {
    KlvKind kind = KlvKind::Foreign;
    std::span<std::uint8_t const> bytes;  ///< of a packet or a security set: key, length and value; else empty
    std::size_t valueOffset = 0;          ///< of the value within `bytes`
};

/// Walks over the universal keys of a unit. Bytes that belong to no packet are passed over by searching
/// the next 06 0E 2B 34.
class KlvReader {
public:
    explicit KlvReader(std::span<std::uint8_t const> unit) : unit_(unit) {}

    /// The next key's packet; empty at the end of the unit.
    std::optional<KlvPacket> next();

private:
    std::span<std::uint8_t const> unit_;
    std::size_t position_ = 0;
};

/// Walks over the items of an ST 0601 packet or of a set with the same framing.
class KlvItemReader {
public:
    explicit KlvItemReader(KlvPacket const& packet) : packet_(packet), position_(packet.valueOffset) {}

    /// The next item; empty at the end of the packet or at an item that runs past it (see `damaged`).
    std::optional<KlvItem> next();
    /// Whether the walk ended at an item that does not fit into the packet.
    bool damaged() const { return damaged_; }

private:
    KlvPacket packet_;
    std::size_t position_ = 0;
    bool damaged_ = false;
};

/// Reads a BER length at `position` and moves behind it. Long forms may have leading zeros: 0F, 81 0F and
/// 82 00 0F are all 15. Empty when the bytes end too early, for the indefinite form (80) and for lengths
/// beyond 64 bits.
std::optional<std::uint64_t> readBerLength(std::span<std::uint8_t const> bytes, std::size_t& position);

/// Reads a BER-OID tag at `position` and moves behind it: 41 is 65, 81 0E is 142. Empty when the bytes end
/// too early.
std::optional<std::uint32_t> readBerOid(std::span<std::uint8_t const> bytes, std::size_t& position);

/// The running 16-bit sum of MISB ST 0601 over `bytes`: bytes at even places count in the high half.
std::uint16_t klvChecksum(std::span<std::uint8_t const> bytes);

}  // namespace telemetry
