// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Framing of KLV (SMPTE ST 336, MISB ST 0601): universal keys, BER lengths, BER-OID tags, checksum.
// Feeds mapping.cpp; every access is bounded by the unit's span.
#include "telemetry/klv_reader.h"

#include <algorithm>
#include <limits>

namespace telemetry {
namespace {

constexpr std::size_t kKeySize = kSt0601Key.size();

/// The place of `pattern` at or after `from`, the unit's size when there is none.
std::size_t find(std::span<std::uint8_t const> unit, std::size_t from, std::span<std::uint8_t const> pattern)
{
    auto const begin = unit.begin() + static_cast<std::ptrdiff_t>(std::min(from, unit.size()));
    auto const at = std::search(begin, unit.end(), pattern.begin(), pattern.end());
    return static_cast<std::size_t>(at - unit.begin());
}

KlvKind kindOf(std::span<std::uint8_t const, kKeySize> key)
{
    if (std::equal(key.begin(), key.end(), kSt0601Key.begin())) {
        return KlvKind::St0601;
    }
    return std::equal(key.begin(), key.end(), kSt0102Key.begin()) ? KlvKind::Security : KlvKind::Foreign;
}

}  // namespace

std::optional<std::uint64_t> readBerLength(std::span<std::uint8_t const> bytes, std::size_t& position)
{
    if (position >= bytes.size()) {
        return std::nullopt;
    }
    std::uint8_t const first = bytes[position++];
    if (first < 0x80) {
        return first;
    }
    std::size_t const count = first & 0x7FU;
    if (count == 0 || count > bytes.size() - position) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if ((length >> 56U) != 0) {
            return std::nullopt;
        }
        length = (length << 8U) | bytes[position++];
    }
    return length;
}

std::optional<std::uint32_t> readBerOid(std::span<std::uint8_t const> bytes, std::size_t& position)
{
    constexpr std::uint32_t kTooLarge = std::numeric_limits<std::uint32_t>::max();
    std::uint32_t tag = 0;
    while (position < bytes.size()) {
        std::uint8_t const byte = bytes[position++];
        bool const full = tag == kTooLarge || (tag >> 25U) != 0;
        tag = full ? kTooLarge : (tag << 7U) | (byte & 0x7FU);
        if (byte < 0x80) {
            return tag;
        }
    }
    return std::nullopt;
}

std::uint16_t klvChecksum(std::span<std::uint8_t const> bytes)
{
    // Upper and lower bytes of the words apart: compilers make that a loop over vectors.
    std::uint32_t upper = 0;
    std::uint32_t lower = 0;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        upper += bytes[i];
        lower += bytes[i + 1];
    }
    upper += bytes.size() % 2 != 0 ? bytes.back() : 0U;
    return static_cast<std::uint16_t>(((upper << 8U) + lower) & 0xFFFFU);
}

std::optional<KlvPacket> KlvReader::next()
{
    std::size_t const key = find(unit_, position_, std::span(kSt0601Key).first(4));
    if (unit_.size() - key < kKeySize) {
        position_ = unit_.size();
        return std::nullopt;
    }
    auto const rest = unit_.subspan(key);
    KlvKind const kind = kindOf(rest.first<kKeySize>());
    bool const ours = kind != KlvKind::Foreign;
    std::size_t valueOffset = kKeySize;
    auto const length = readBerLength(rest, valueOffset);
    bool const whole = length.has_value() && *length <= rest.size() - valueOffset;
    if (whole) {
        std::size_t const end = valueOffset + static_cast<std::size_t>(*length);
        position_ = key + end;
        return ours ? KlvPacket{kind, rest.first(end), valueOffset} : KlvPacket{};
    }
    if (ours) {
        // Its length cannot be trusted, so the search goes on right behind the key.
        position_ = key + kKeySize;
        return KlvPacket{KlvKind::Truncated, {}, 0};
    }
    // Universal sets hold universal keys: only an ST 0601 key ends what is left of a foreign packet.
    position_ = find(unit_, key + kKeySize, kSt0601Key);
    return KlvPacket{};
}

std::optional<KlvItem> KlvItemReader::next()
{
    if (position_ >= packet_.bytes.size() || damaged_) {
        return std::nullopt;
    }
    std::optional<std::uint32_t> tag;
    std::optional<std::uint64_t> length;
    auto const head = packet_.bytes.subspan(position_);
    if (head.size() >= 2 && head[0] < 0x80 && head[1] < 0x80) {
        // Nearly all are this short.
        tag = head[0];
        length = head[1];
        position_ += 2;
    } else if ((tag = readBerOid(packet_.bytes, position_))) {
        length = readBerLength(packet_.bytes, position_);
    }
    if (!length.has_value() || *length > packet_.bytes.size() - position_) {
        damaged_ = true;
        return std::nullopt;
    }
    KlvItem const item{*tag, position_, packet_.bytes.subspan(position_, static_cast<std::size_t>(*length))};
    position_ += item.data.size();
    return item;
}

}  // namespace telemetry
