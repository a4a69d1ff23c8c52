// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The access unit cells in which synchronous telemetry stands (stream type 0x15 of a transport stream).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace clip {

/// Whether a unit begins with a key: then no cell is around it.
bool isBareKlv(std::span<std::uint8_t const> unit);

/// The KLV of a unit without the headers of the access unit cells around it; all of it when there are none.
std::vector<std::uint8_t> withoutCells(std::span<std::uint8_t const> unit);

/// The KLV as one cell of service 0, which is the `number`th modulo 256: {7, 8} as the first is {0, 0, 0xDF, 0, 2, 7,
/// 8}. Empty when a cell cannot hold that much.
std::vector<std::uint8_t> inCell(std::span<std::uint8_t const> klv, std::uint8_t number);

}  // namespace clip
