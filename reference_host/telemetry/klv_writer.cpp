// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Payload keys to an ST 0601 packet: the mapping of mapping.cpp in the other direction. Used by the sample
// command and by tests.
#include "telemetry/klv_bytes_writer.h"
#include "telemetry/klv_reader.h"
#include "telemetry/second_keys.h"
#include "telemetry/security_set.h"
#include "telemetry/st0601_table.h"
#include "telemetry/st0601_value.h"
#include "telemetry/telemetry.h"

#include <string_view>

namespace telemetry {
namespace {

using Bytes = std::vector<std::uint8_t>;

bool isNumber(SwJsonValue const& value)
{
    return value.isInt() || value.isDouble();
}

double toNumber(SwJsonValue const& value)
{
    return value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
}

/// Whether pitch or roll goes out by its short tag: when that one holds the value to the last bit and is not
/// taken by a value of its own.
bool fitsShortTag(TableRow const& shortRow, SwJsonObject const& payload, std::string_view shortKey)
{
    SwJsonValue const& value = payload[shortRow.key];
    if (payload.contains(shortKey) || !isNumber(value)) {
        return false;
    }
    SwJsonValue const held = decodeValue(shortRow, encodeValue(shortRow, value));
    return held.isDouble() && held.toDouble() == toNumber(value);
}

/// The value of tag 6 or 7.
SwJsonValue shortForm(TableRow const& shortRow, SwJsonObject const& payload, std::string_view shortKey)
{
    return fitsShortTag(shortRow, payload, shortKey) ? payload[shortRow.key] : payload[shortKey];
}

/// The value of tag 90 or 91.
SwJsonValue fullForm(std::uint32_t shortTag, SwJsonObject const& payload, std::string_view shortKey)
{
    TableRow const& shortRow = *findRow(shortTag);
    return fitsShortTag(shortRow, payload, shortKey) ? SwJsonValue() : payload[shortRow.key];
}

/// The flags as a number, single ones as their own keys say.
SwJsonValue flagsOf(TableRow const& row, SwJsonObject const& payload)
{
    SwJsonValue flags = payload[row.key];
    for (FlagRow const& flag : genericFlagRows()) {
        SwJsonValue const& single = payload[flag.key];
        if (single.isBool()) {
            std::int64_t const others = (flags.isInt() ? flags.toInt() & 0xFF : 0) & ~(std::int64_t{1} << flag.bit);
            flags = others | (std::int64_t{single.toBool()} << flag.bit);
        }
    }
    return flags;
}

SwJsonValue valueFor(TableRow const& row, SwJsonObject const& payload)
{
    switch (row.tag) {
    case tag::kHeading:
        return isNumber(payload[row.key]) ? payload[row.key] : payload[kYawKey];
    case tag::kPitch:
        return shortForm(row, payload, kShortPitchKey);
    case tag::kRoll:
        return shortForm(row, payload, kShortRollKey);
    case tag::kFullPitch:
        return fullForm(tag::kPitch, payload, kShortPitchKey);
    case tag::kFullRoll:
        return fullForm(tag::kRoll, payload, kShortRollKey);
    case tag::kGenericFlags:
        return flagsOf(row, payload);
    default:
        return payload[row.key];
    }
}

}  // namespace

std::vector<std::uint8_t> encodeKlv(SwJsonObject const& payload)
{
    Bytes items;
    for (TableRow const& row : st0601Table()) {
        appendItem(items, row.tag, encodeValue(row, valueFor(row, payload)));
    }
    appendItem(items, tag::kSecuritySet, writeSecuritySet(payload));
    constexpr std::size_t kChecksumItemSize = 4;
    Bytes packet(kSt0601Key.begin(), kSt0601Key.end());
    appendLength(packet, items.size() + kChecksumItemSize);
    packet.insert(packet.end(), items.begin(), items.end());
    packet.insert(packet.end(), {static_cast<std::uint8_t>(tag::kChecksum), 2});
    std::uint16_t const sum = klvChecksum(packet);
    packet.push_back(static_cast<std::uint8_t>(sum >> 8U));
    packet.push_back(static_cast<std::uint8_t>(sum & 0xFFU));
    return packet;
}

}  // namespace telemetry
