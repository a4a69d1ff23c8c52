// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Value rules of MISB ST 0601 and ST 1201, both ways. Stands between the table and the mapping.
#include "telemetry/st0601_value.h"

#include "sw_extended.h"
#include "sw_utf8.h"
#include "telemetry/wide_text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace telemetry {
namespace {

constexpr std::size_t kMaxWidth = 8;

std::size_t widthOf(TableRow const& row)
{
    return row.width == 0 ? kMaxWidth : row.width;
}

/// The big-endian integer of the last `count` bytes on top of the bits of `fill`.
std::uint64_t joinBytes(std::span<std::uint8_t const> data, std::size_t count, std::uint64_t fill)
{
    std::uint64_t value = fill;
    for (std::uint8_t const byte : data.last(count)) {
        value = (value << 8U) | byte;
    }
    return value;
}

/// The unsigned integer in any number of bytes, if it fits into `width` bytes.
std::optional<std::uint64_t> readUnsigned(std::span<std::uint8_t const> data, std::size_t width)
{
    std::size_t const used = std::min(width, data.size());
    auto const extra = data.first(data.size() - used);
    if (data.empty() || std::any_of(extra.begin(), extra.end(), [](std::uint8_t byte) { return byte != 0; })) {
        return std::nullopt;
    }
    return joinBytes(data, used, 0);
}

/// The two's complement integer in any number of bytes, if it fits into `width` bytes.
std::optional<std::int64_t> readSigned(std::span<std::uint8_t const> data, std::size_t width)
{
    if (data.empty()) {
        return std::nullopt;
    }
    std::size_t const used = std::min(width, data.size());
    std::uint8_t const fill = data.front() >= 0x80 ? 0xFF : 0x00;
    auto const extra = data.first(data.size() - used);
    bool const sameSign = ((data[data.size() - used] ^ fill) & 0x80U) == 0;
    if (!sameSign || std::any_of(extra.begin(), extra.end(), [fill](std::uint8_t byte) { return byte != fill; })) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(joinBytes(data, used, fill == 0 ? 0 : ~std::uint64_t{0}));
}

std::vector<std::uint8_t> writeInteger(std::uint64_t bits, std::size_t width)
{
    std::vector<std::uint8_t> data(width);
    for (std::size_t i = 0; i < width; ++i) {
        data[width - 1 - i] = static_cast<std::uint8_t>(bits & 0xFFU);
        bits >>= 8U;
    }
    return data;
}

/// The largest code of the row's own width: all bits for unsigned codes, all but the sign for signed ones.
std::int64_t maxCode(TableRow const& row, bool isSigned)
{
    std::size_t const bits = std::min<std::size_t>(8 * widthOf(row) - (isSigned ? 1U : 0U), 63);
    return static_cast<std::int64_t>((std::uint64_t{1} << bits) - 1);
}

/// Rounds to the nearest integer, halves away from zero, limited to [low, high].
std::int64_t roundToCode(double value, std::int64_t low, std::int64_t high)
{
    double const rounded = std::round(value);
    if (rounded <= static_cast<double>(low)) {
        return low;
    }
    return rounded >= static_cast<double>(high) ? high : static_cast<std::int64_t>(rounded);
}

/// The scale of an Imapb item of `length` bytes (MISB ST 1201): codes per unit, and the fraction that makes
/// zero an exact code. Held in extended precision, since eight bytes are more than a double's 53 bits; the scale is a
/// power of two, so that scaling rounds nothing.
struct ImapbScale {
    long double codesPerUnit = 1.0L;
    long double zeroOffset = 0.0L;
};

ImapbScale imapbScale(TableRow const& row, std::size_t length)
{
    int const rangeBits = static_cast<int>(std::ceil(std::log2(row.high - row.low)));
    ImapbScale scale;
    scale.codesPerUnit = std::ldexp(1.0L, static_cast<int>(8 * length) - 1 - rangeBits);
    if (row.low < 0.0 && row.high > 0.0) {
        long double const start = scale.codesPerUnit * static_cast<long double>(row.low);
        scale.zeroOffset = start - std::floor(start);
    }
    return scale;
}

SwJsonValue decodeImapb(TableRow const& row, std::span<std::uint8_t const> data)
{
    if (data.empty() || data.size() > kMaxWidth) {
        return {};
    }
    std::uint64_t const code = joinBytes(data, data.size(), 0);
    std::uint64_t const top = std::uint64_t{1} << (8 * data.size() - 1);
    if (code > top) {
        return {};  // infinities, not-a-number and what the sender marked as out of range
    }
    ImapbScale const scale = imapbScale(row, data.size());
    long double const units =
        sw_detail::extended(static_cast<long double>(code) - scale.zeroOffset) / scale.codesPerUnit;
    auto const value = static_cast<double>(sw_detail::extended(units + static_cast<long double>(row.low)));
    // The codes reach to the next power of two; above the item's range they mean nothing.
    return value < row.low || value > row.high ? SwJsonValue() : SwJsonValue(value + 0.0);
}

std::vector<std::uint8_t> encodeImapb(TableRow const& row, double wanted, std::size_t length)
{
    ImapbScale const scale = imapbScale(row, length);
    auto const value = static_cast<long double>(std::clamp(wanted, row.low, row.high));
    long double const above = sw_detail::extended(value - static_cast<long double>(row.low));
    long double const code = sw_detail::extended(above * scale.codesPerUnit + scale.zeroOffset);
    return writeInteger(static_cast<std::uint64_t>(std::max(std::round(code), 0.0L)), length);
}

std::vector<std::uint8_t> encodeImapbExactly(TableRow const& row, double value)
{
    for (std::size_t length = row.width; length <= kMaxWidth; ++length) {
        auto data = encodeImapb(row, value, length);
        SwJsonValue const held = decodeImapb(row, data);
        if (held.isDouble() && held.toDouble() == value) {
            return data;
        }
    }
    return encodeImapb(row, value, row.width);
}

/// An integer in the row's width, or in the fewest bytes when the row has none.
std::vector<std::uint8_t> writeCount(TableRow const& row, std::int64_t value)
{
    std::size_t width = row.width == 0 ? 1 : row.width;
    auto data = writeInteger(static_cast<std::uint64_t>(value), width);
    bool const isSigned = row.rule == Rule::SignedCount;
    while (row.width == 0 && width < kMaxWidth &&
           (isSigned ? readSigned(data, kMaxWidth) != value
                     : readUnsigned(data, kMaxWidth) != static_cast<std::uint64_t>(value))) {
        data = writeInteger(static_cast<std::uint64_t>(value), ++width);
    }
    return data;
}

std::vector<std::uint8_t> encodeCount(TableRow const& row, SwJsonValue const& value)
{
    bool const isSigned = row.rule == Rule::SignedCount;
    std::int64_t const high = maxCode(row, isSigned);
    std::int64_t const low = isSigned ? -high - 1 : 0;
    std::int64_t const scale = row.rule == Rule::TwiceCount ? 2 : 1;
    std::int64_t const code = value.isInt() ? std::clamp(value.toInt() / scale, low, high)
                                            : roundToCode(value.toDouble() / static_cast<double>(scale), low, high);
    return writeCount(row, code);
}

std::vector<std::uint8_t> encodeScaled(TableRow const& row, double value)
{
    std::int64_t code = 0;
    switch (row.rule) {
    case Rule::Whole:
        code = roundToCode(value, 0, maxCode(row, false));
        break;
    case Rule::SignedWhole:
        code = roundToCode(value, -maxCode(row, true) - 1, maxCode(row, true));
        break;
    case Rule::Range: {
        std::int64_t const high = maxCode(row, false);
        code = roundToCode((value - row.low) / (row.high - row.low) * static_cast<double>(high), 0, high);
        break;
    }
    default: {
        std::int64_t const high = maxCode(row, true);
        code = roundToCode(value / row.high * static_cast<double>(high), -high, high);
        break;
    }
    }
    return writeInteger(static_cast<std::uint64_t>(code), row.width);
}

SwJsonValue decodeFloat(std::span<std::uint8_t const> data)
{
    double value = std::numeric_limits<double>::quiet_NaN();
    if (data.size() == sizeof(float)) {
        value =
            static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(joinBytes(data, sizeof(float), 0))));
    } else if (data.size() == sizeof(double)) {
        value = std::bit_cast<double>(joinBytes(data, sizeof(double), 0));
    }
    return std::isfinite(value) ? SwJsonValue(value + 0.0) : SwJsonValue();
}

SwJsonValue decodeUnsigned(TableRow const& row, std::span<std::uint8_t const> data)
{
    auto const code = readUnsigned(data, widthOf(row));
    if (!code.has_value() || *code > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return {};
    }
    switch (row.rule) {
    case Rule::Whole:
        return static_cast<double>(*code);
    case Rule::Range:
        return row.low + (row.high - row.low) * static_cast<double>(*code) / static_cast<double>(maxCode(row, false));
    default:
        return static_cast<std::int64_t>(*code) * (row.rule == Rule::TwiceCount ? 2 : 1);
    }
}

SwJsonValue decodeSigned(TableRow const& row, std::span<std::uint8_t const> data)
{
    auto const code = readSigned(data, widthOf(row));
    if (!code.has_value()) {
        return {};
    }
    switch (row.rule) {
    case Rule::SignedCount:
        return *code;
    case Rule::SignedWhole:
        return static_cast<double>(*code);
    default: {
        std::int64_t const high = maxCode(row, true);
        // The sum turns the negative zero of a negated item into zero.
        return *code < -high ? SwJsonValue()
                             : SwJsonValue(row.high * static_cast<double>(*code) / static_cast<double>(high) + 0.0);
    }
    }
}

}  // namespace

SwJsonValue decodeValue(TableRow const& row, std::span<std::uint8_t const> data)
{
    if (data.empty()) {
        return {};
    }
    switch (row.rule) {
    case Rule::Text:
        return sw_utf8::valid({reinterpret_cast<char const*>(data.data()), data.size()});
    case Rule::WideText: {
        std::string text = readWideText(data);
        return text.empty() ? SwJsonValue() : SwJsonValue(std::move(text));
    }
    case Rule::Imapb:
        return decodeImapb(row, data);
    case Rule::Float:
        return decodeFloat(data);
    case Rule::SignedCount:
    case Rule::SignedWhole:
    case Rule::Symmetric:
        return decodeSigned(row, data);
    default:
        return decodeUnsigned(row, data);
    }
}

std::vector<std::uint8_t> encodeValue(TableRow const& row, SwJsonValue const& value)
{
    if (row.rule == Rule::Text || row.rule == Rule::WideText) {
        if (value.isNull() || value.isObject() || value.isArray()) {
            return {};
        }
        std::string const text = value.toString();
        if (row.rule == Rule::WideText) {
            return writeWideText(text);
        }
        return {text.begin(), text.end()};
    }
    if (!value.isInt() && (!value.isDouble() || std::isnan(value.toDouble()))) {
        return {};
    }
    if (row.rule == Rule::Count || row.rule == Rule::SignedCount || row.rule == Rule::TwiceCount) {
        return encodeCount(row, value);
    }
    double const number = value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
    return row.rule == Rule::Imapb ? encodeImapbExactly(row, number) : encodeScaled(row, number);
}

}  // namespace telemetry
