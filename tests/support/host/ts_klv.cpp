// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// As little of ISO/IEC 13818-1 as it takes: a private stream is one whose PES packets start with id BD or FC.
#include "ts_klv.h"

#include <fstream>
#include <iterator>
#include <map>
#include <span>

namespace telemetry {
namespace {

constexpr std::size_t kPacketSize = 188;

struct OpenUnit {
    bool wanted = false;
    std::vector<std::uint8_t> bytes;
};

void closeUnit(OpenUnit& unit, std::vector<std::vector<std::uint8_t>>& units)
{
    constexpr std::size_t kPesHeader = 9;
    if (unit.wanted && unit.bytes.size() >= kPesHeader && unit.bytes.size() >= kPesHeader + unit.bytes[8]) {
        units.emplace_back(unit.bytes.begin() + static_cast<std::ptrdiff_t>(kPesHeader + unit.bytes[8]),
                           unit.bytes.end());
    }
    unit = {};
}

bool startsPrivatePes(std::span<std::uint8_t const> payload)
{
    return payload.size() >= 4 && payload[0] == 0 && payload[1] == 0 && payload[2] == 1 &&
           (payload[3] == 0xBD || payload[3] == 0xFC);
}

}  // namespace

std::vector<std::uint8_t> fileBytes(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::vector<std::uint8_t>> klvUnitsOfTransportStream(std::string const& path)
{
    auto const bytes = fileBytes(path);
    std::vector<std::vector<std::uint8_t>> units;
    std::map<unsigned, OpenUnit> open;
    for (std::size_t at = 0; at + kPacketSize <= bytes.size(); at += kPacketSize) {
        auto const packet = std::span(bytes).subspan(at, kPacketSize);
        unsigned const pid = (packet[1] & 0x1FU) << 8U | packet[2];
        bool const hasAdaptation = (packet[3] & 0x20U) != 0;
        std::size_t const start = hasAdaptation ? 5U + packet[4] : 4U;
        if ((packet[3] & 0x10U) == 0 || start >= kPacketSize) {
            continue;
        }
        auto const payload = packet.subspan(start);
        OpenUnit& unit = open[pid];
        if ((packet[1] & 0x40U) != 0) {
            closeUnit(unit, units);
            unit.wanted = startsPrivatePes(payload);
        }
        if (unit.wanted) {
            unit.bytes.insert(unit.bytes.end(), payload.begin(), payload.end());
        }
    }
    for (auto& [pid, unit] : open) {
        closeUnit(unit, units);
    }
    return units;
}

}  // namespace telemetry
