// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bytes for the telemetry tests, written as people read them.
#pragma once

#include "sw_text.h"
#include "telemetry/klv_reader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

using Bytes = std::vector<std::uint8_t>;

/// "0A FF" to its bytes; everything that is no hexadecimal digit only separates.
inline Bytes fromHex(std::string_view text)
{
    Bytes bytes;
    int high = -1;
    for (char const c : text) {
        int const digit = sw_detail::hexDigitValue(c);
        if (digit < 0) {
            continue;
        }
        if (high < 0) {
            high = digit;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + digit));
            high = -1;
        }
    }
    return bytes;
}

inline Bytes join(Bytes first, Bytes const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline Bytes key()
{
    return {kSt0601Key.begin(), kSt0601Key.end()};
}

/// An ST 0601 packet around `items` (fewer than 120 bytes) without a checksum item.
inline Bytes packetOf(Bytes const& items)
{
    return join(join(key(), {static_cast<std::uint8_t>(items.size())}), items);
}

/// The same with a right checksum at its end.
inline Bytes packetWithSum(Bytes const& items)
{
    Bytes packet = packetOf(join(items, {1, 2, 0, 0}));
    std::uint16_t const sum = klvChecksum(std::span(packet).first(packet.size() - 2));
    packet[packet.size() - 2] = static_cast<std::uint8_t>(sum >> 8U);
    packet[packet.size() - 1] = static_cast<std::uint8_t>(sum & 0xFFU);
    return packet;
}

}  // namespace telemetry
