// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Headers of access unit cells taken away and put on.
#include "clip/klv_cells.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace clip {
namespace {

/// Service, number and flags of a cell, then the length of what it holds (ISO/IEC 13818-1, 2.12.4).
constexpr std::size_t kHeader = 5;

/// What the length can say.
constexpr std::size_t kMostInCell = 0xFFFF;

}  // namespace

bool isBareKlv(std::span<std::uint8_t const> unit)
{
    constexpr std::array<std::uint8_t, 4> kKey = {0x06, 0x0E, 0x2B, 0x34};
    return unit.size() >= kKey.size() && std::equal(kKey.begin(), kKey.end(), unit.begin());
}

std::vector<std::uint8_t> withoutCells(std::span<std::uint8_t const> unit)
{
    std::vector<std::uint8_t> contents;
    std::vector<std::uint8_t> const all(unit.begin(), unit.end());
    if (isBareKlv(unit)) {
        return all;
    }
    while (unit.size() >= kHeader) {
        std::size_t const length = static_cast<std::size_t>(unit[3]) << 8U | unit[4];
        if (kHeader + length > unit.size()) {
            return all;
        }
        auto const cell = unit.subspan(kHeader, length);
        contents.insert(contents.end(), cell.begin(), cell.end());
        unit = unit.subspan(kHeader + length);
    }
    return unit.empty() ? contents : all;
}

std::vector<std::uint8_t> inCell(std::span<std::uint8_t const> klv, std::uint8_t number)
{
    // A whole unit at which reading can begin; reserved bits are 1.
    constexpr std::uint8_t kWhole = 0xDF;
    if (klv.size() > kMostInCell) {
        return {};
    }
    std::vector<std::uint8_t> cell = {0, number, kWhole, static_cast<std::uint8_t>(klv.size() >> 8U),
                                      static_cast<std::uint8_t>(klv.size() & 0xFFU)};
    cell.insert(cell.end(), klv.begin(), klv.end());
    return cell;
}

}  // namespace clip
