// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tables and packets of transport streams for tests, and bytes from hexadecimal digits.
#pragma once

#include "media/program_tables.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace transport_test {

/// bytes("47 00 1f") are three; blanks may stand anywhere.
inline media::Bytes bytes(std::string_view digits)
{
    media::Bytes all;
    std::string pair;
    for (char const digit : digits) {
        if (digit == ' ' || digit == '\n') {
            continue;
        }
        pair += digit;
        if (pair.size() == 2) {
            all.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    return all;
}

/// Program 1 with its map on PID 0x1000.
inline media::Bytes associationBytes()
{
    return bytes("00 B0 0D 00 01 C1 00 00 00 01 F0 00 2A B1 04 B2");
}

/// A recorded map: H.264 on 0x100, synchronous KLV on 0x101; one reserved part holds other bits than usual.
inline media::Bytes synchronousMap()
{
    return bytes("02 B0 33 00 01 C1 00 00 E1 00 F0 00 1B 01 00 F0 00 15 E1 01 F0 1C 05 04 4B 4C 56 41 26 09 01 00 FF "
                 "4B 4C 56 41 00 0F 27 09 C0 01 02 C0 00 04 C0 01 20 C3 E9 6B 82");
}

/// Descriptors of its telemetry.
inline media::Bytes synchronousDescriptors()
{
    return bytes("05 04 4B 4C 56 41 26 09 01 00 FF 4B 4C 56 41 00 0F 27 09 C0 01 02 C0 00 04 C0 01 20");
}

/// A map as the muxer writes it: H.264 on 0x100, KLV of type 0x06 on 0x101.
inline media::Bytes plainMap()
{
    return bytes("02 B0 1D 00 01 C1 00 00 E1 00 F0 00 1B E1 00 F0 00 06 E1 01 F0 06 05 04 4B 4C 56 41 06 71 49 D4");
}

/// A packet with this payload, filled up in front of it; `starts`: a unit begins in it.
inline media::Bytes packet(int pid, media::Bytes const& payload, bool starts = true)
{
    media::Bytes all = {0x47, static_cast<std::uint8_t>((starts ? 0x40 : 0) | pid >> 8),
                        static_cast<std::uint8_t>(pid & 0xFF), 0x30};
    std::size_t const filling = media::kTransportPacket - 5 - payload.size();
    all.push_back(static_cast<std::uint8_t>(filling));
    if (filling > 0) {
        all.push_back(0);
        all.resize(5 + filling, 0xFF);
    }
    all.insert(all.end(), payload.begin(), payload.end());
    return all;
}

/// One after the other.
template <typename... Parts>
media::Bytes joined(Parts const&... parts)
{
    media::Bytes all;
    (all.insert(all.end(), parts.begin(), parts.end()), ...);
    return all;
}

}  // namespace transport_test
