// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// UTF-16 and back, for the one item of ST 0102 that has it.
#include "telemetry/wide_text.h"

#include "sw_utf8.h"

#include <algorithm>
#include <cstddef>

namespace telemetry {
namespace {

constexpr char32_t kByteOrderMark = 0xFEFF;
constexpr char32_t kTurnedMark = 0xFFFE;
constexpr char32_t kFirstHigh = 0xD800;
constexpr char32_t kFirstLow = 0xDC00;
constexpr char32_t kEndOfHalves = 0xE000;
constexpr char32_t kFirstPaired = 0x10000;

bool isPlainAscii(std::span<std::uint8_t const> bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; });
}

/// Units of 16 bits in the order of bytes that a mark at the beginning says.
std::vector<char32_t> unitsOf(std::span<std::uint8_t const> bytes)
{
    std::vector<char32_t> units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        units.push_back(static_cast<char32_t>(bytes[at] << 8U) | bytes[at + 1]);
    }
    bool const turned = !units.empty() && units.front() == kTurnedMark;
    if (turned) {
        for (char32_t& unit : units) {
            unit = ((unit & 0xFFU) << 8U) | (unit >> 8U);
        }
    }
    if (!units.empty() && units.front() == kByteOrderMark) {
        units.erase(units.begin());
    }
    return units;
}

void appendUnit(std::vector<std::uint8_t>& bytes, char32_t unit)
{
    bytes.push_back(static_cast<std::uint8_t>((unit >> 8U) & 0xFFU));
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
}

}  // namespace

std::string readWideText(std::span<std::uint8_t const> bytes)
{
    if (bytes.size() % 2 != 0 || isPlainAscii(bytes)) {
        return sw_utf8::valid({reinterpret_cast<char const*>(bytes.data()), bytes.size()});
    }
    std::vector<char32_t> const units = unitsOf(bytes);
    std::string text;
    for (std::size_t at = 0; at < units.size(); ++at) {
        char32_t const unit = units[at];
        bool const isHigh = unit >= kFirstHigh && unit < kFirstLow;
        char32_t const next = at + 1 < units.size() ? units[at + 1] : 0;
        if (isHigh && next >= kFirstLow && next < kEndOfHalves) {
            sw_utf8::append(text, kFirstPaired + ((unit - kFirstHigh) << 10U) + (next - kFirstLow));
            ++at;
        } else {
            bool const isHalf = unit >= kFirstHigh && unit < kEndOfHalves;
            sw_utf8::append(text, isHalf ? sw_utf8::kReplacementCharacter : unit);
        }
    }
    return text;
}

std::vector<std::uint8_t> writeWideText(std::string_view text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < text.size();) {
        sw_utf8::CodePoint const point = sw_utf8::codePointAt(text, at);
        at += point.bytes;
        if (point.value < kFirstPaired) {
            appendUnit(bytes, point.value);
        } else {
            char32_t const rest = point.value - kFirstPaired;
            appendUnit(bytes, kFirstHigh + (rest >> 10U));
            appendUnit(bytes, kFirstLow + (rest & 0x3FFU));
        }
    }
    if (readWideText(bytes) != text) {
        bytes.insert(bytes.begin(), {0xFE, 0xFF});
    }
    return bytes;
}

}  // namespace telemetry
