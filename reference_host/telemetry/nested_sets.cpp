// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Nested items to keys: sets by their table, packs by one function each.
#include "telemetry/nested_sets.h"

#include "telemetry/klv_reader.h"
#include "telemetry/pack_reader.h"
#include "telemetry/security_set.h"
#include "telemetry/st0601_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <string>
#include <utility>

namespace telemetry {
namespace {

using Span = std::span<std::uint8_t const>;

constexpr std::uint32_t kTargetSeries = 101;
constexpr std::uint32_t kTargetLocation = 17;

void addValue(SwJsonObject& keys, TableRow const& row, Span data)
{
    SwJsonValue value = decodeValue(row, data);
    if (!value.isNull()) {
        keys.insertOrAssign(row.key, std::move(value));
    }
}

/// How floating-point items are coded: standards changed to Imapb in the course of time.
enum class Coding { Unknown, Linear, Imapb };

void addCoded(SwJsonObject& keys, TableRow row, Span data, Coding coding)
{
    if (row.rule == Rule::Imapb && coding == Coding::Unknown) {
        return;
    }
    if (row.rule == Rule::Imapb && coding == Coding::Linear) {
        constexpr std::uint32_t kOffsetWidth = 3;
        row.rule = row.width == kOffsetWidth ? Rule::Symmetric : Rule::Range;
    }
    addValue(keys, row, data);
}

/// Adds the value of a part that has no tag, by its key.
void addPart(SwJsonObject& keys, std::string_view key, Span data, Coding coding = Coding::Imapb)
{
    for (NestedRow const& each : nestedTable()) {
        if (each.row.key == key) {
            addCoded(keys, each.row, data, coding);
        }
    }
}

void addText(SwJsonObject& keys, std::string_view key, std::string text)
{
    if (!text.empty()) {
        keys.insertOrAssign(key, SwJsonValue(std::move(text)));
    }
}

void appendPart(std::string& list, std::string_view text)
{
    list += (list.empty() ? "" : ", ");
    list += text;
}

std::string numberText(double number)
{
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string textOf(Span data)
{
    static constexpr TableRow kText{0, "", "", Rule::Text};
    return decodeValue(kText, data).stringRef();
}

/// The items of a set that the table knows in `part`; what is not there is skipped. False when one does not fit.
template <typename OnOther>
bool readSet(std::uint32_t item, std::string_view part, Span data, Coding coding, SwJsonObject& keys, OnOther onOther)
{
    KlvItemReader items({KlvKind::Foreign, data, 0});
    bool whole = true;
    while (auto const each = items.next()) {
        whole = onOther(*each) && whole;
        for (NestedRow const& row : nestedTable()) {
            if (row.item == item && row.part == part && row.row.tag == each->tag) {
                addCoded(keys, row.row, each->data, coding);
            }
        }
    }
    return whole && !items.damaged();
}

/// A set of which every item stands for itself.
template <std::uint32_t Item>
bool readPlainSet(Span data, SwJsonObject& keys)
{
    return readSet(Item, "", data, Coding::Imapb, keys, [](KlvItem const&) { return true; });
}

/// Version 4 of ST 0903 brought Imapb. Of a set that does not tell its version, no such value can be trusted.
Coding codingOfTargets(Span set)
{
    constexpr std::uint32_t kVersion = 4;
    constexpr std::uint8_t kFirstImapb = 4;
    Coding coding = Coding::Unknown;
    KlvItemReader items({KlvKind::Foreign, set, 0});
    while (auto const item = items.next()) {
        if (item->tag == kVersion && !item->data.empty()) {
            coding = item->data.back() < kFirstImapb ? Coding::Linear : Coding::Imapb;
        }
    }
    return coding;
}

bool readTargetLocation(Span data, Coding coding, SwJsonObject& keys)
{
    PackReader pack(data);
    addPart(keys, "vmti_target_lat_deg", pack.bytes(4), coding);
    addPart(keys, "vmti_target_lon_deg", pack.bytes(4), coding);
    addPart(keys, "vmti_target_hae_m", pack.bytes(2), coding);
    return !pack.failed();  // its accuracy may follow
}

bool readFirstTarget(Span series, Coding coding, SwJsonObject& keys)
{
    PackReader targets(series);
    Span const first = targets.sized();
    if (targets.failed() || first.empty()) {
        return !targets.failed();
    }
    PackReader target(first);
    keys.insertOrAssign("vmti_target_id", SwJsonValue(target.number()));
    bool const whole =
        readSet(tag::kMovingTargets, "first target", target.rest(), coding, keys, [&keys, coding](KlvItem const& item) {
            return item.tag != kTargetLocation || item.data.empty() || readTargetLocation(item.data, coding, keys);
        });
    return whole && !target.failed();
}

bool readMovingTargets(Span data, SwJsonObject& keys)
{
    Coding const coding = codingOfTargets(data);
    return readSet(tag::kMovingTargets, "", data, coding, keys, [&keys, coding](KlvItem const& item) {
        return item.tag != kTargetSeries || item.data.empty() || readFirstTarget(item.data, coding, keys);
    });
}

bool readHorizon(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    for (char const* const key :
         {"horizon_start_x_percent", "horizon_start_y_percent", "horizon_end_x_percent", "horizon_end_y_percent"}) {
        addPart(keys, key, pack.bytes(1));
    }
    for (char const* const key :
         {"horizon_start_lat_deg", "horizon_start_lon_deg", "horizon_end_lat_deg", "horizon_end_lon_deg"}) {
        if (!pack.atEnd()) {
            addPart(keys, key, pack.bytes(4));
        }
    }
    return !pack.failed();
}

/// Version and usage, then identifiers of 16 bytes: "0170:F592-F023-.../16B7-4341-...".
bool readCoreIdentifier(Span data, SwJsonObject& keys)
{
    constexpr std::size_t kHead = 2;
    constexpr std::size_t kIdentifier = 16;
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    if (data.size() < kHead || (data.size() - kHead) % kIdentifier != 0) {
        return data.empty();
    }
    std::string text;
    for (std::size_t at = 0; at < data.size(); ++at) {
        std::size_t const place = at < kHead ? 1 : (at - kHead) % kIdentifier;
        if (at == kHead) {
            text += ':';
        } else if (place == 0) {
            text += '/';
        } else if (place % 2 == 0) {
            text += '-';
        }
        text += kDigits[data[at] >> 4U];
        text += kDigits[data[at] & 0x0FU];
    }
    addText(keys, "core_identifier", std::move(text));
    return true;
}

bool readCommand(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    keys.insertOrAssign("command_id", SwJsonValue(pack.number()));
    addPart(keys, "command_text", pack.sized());
    addPart(keys, "command_time_us", pack.rest());
    return !pack.failed();
}

/// A list of BER-OID numbers, as text.
bool readNumbers(std::string_view key, Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    std::string list;
    while (!pack.atEnd()) {
        appendPart(list, std::to_string(pack.number()));
    }
    addText(keys, key, std::move(list));
    return !pack.failed();
}

bool readCommandsVerified(Span data, SwJsonObject& keys)
{
    return readNumbers("commands_verified", data, keys);
}

bool readActiveWavelengths(Span data, SwJsonObject& keys)
{
    return readNumbers("active_wavelengths", data, keys);
}

bool readCountries(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    addPart(keys, "country_coding_method", pack.sized());
    CodeRow const& methods = countryCodingMethods();
    addText(keys, methods.textKey, std::string(nameOf(methods, std::as_const(keys)[methods.codeKey].toInt())));
    for (char const* const key : {"overflight_country", "operator_country", "manufacture_country"}) {
        if (!pack.atEnd()) {
            addPart(keys, key, pack.sized());
        }
    }
    return !pack.failed();
}

bool readFrameRate(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    std::uint32_t const numerator = pack.number();
    std::uint32_t const denominator = pack.atEnd() ? 1 : pack.number();
    if (denominator != 0) {
        keys.insertOrAssign("sensor_frame_rate_hz",
                            SwJsonValue(static_cast<double>(numerator) / static_cast<double>(denominator)));
    }
    return !pack.failed();
}

bool readWavelengths(Span data, SwJsonObject& keys)
{
    static constexpr TableRow kNanometres{0, "", "", Rule::Imapb, 4, 0, 1e9};
    PackReader list(data);
    std::string names;
    bool whole = true;
    while (!list.atEnd()) {
        PackReader entry(list.sized());
        entry.number();
        SwJsonValue const low = decodeValue(kNanometres, entry.bytes(4));
        SwJsonValue const high = decodeValue(kNanometres, entry.bytes(4));
        std::string name = textOf(entry.rest());
        whole = whole && !entry.failed();
        if (!low.isNull() && !high.isNull()) {
            name +=
                (name.empty() ? "" : " ") + numberText(low.toDouble()) + " to " + numberText(high.toDouble()) + " nm";
        }
        appendPart(names, name);
    }
    addText(keys, "wavelengths", std::move(names));
    return whole && !list.failed();
}

/// Latitude, longitude and height; the height may be missing.
bool readLocation(std::string const& name, Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    addPart(keys, name + "_lat_deg", pack.bytes(4));
    addPart(keys, name + "_lon_deg", pack.bytes(4));
    addPart(keys, name + "_hae_m", pack.rest());
    return !pack.failed();
}

bool readAirbases(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    bool whole = true;
    for (char const* const name : {"takeoff", "recovery"}) {
        Span const place = pack.atEnd() ? Span() : pack.sized();
        whole = (place.empty() || readLocation(name, place, keys)) && whole;
    }
    return whole && !pack.failed();
}

bool readPayloads(Span data, SwJsonObject& keys)
{
    PackReader list(data);
    keys.insertOrAssign("payload_count", SwJsonValue(list.number()));
    std::string names;
    bool whole = true;
    while (!list.atEnd()) {
        PackReader entry(list.sized());
        entry.number();
        entry.number();
        appendPart(names, textOf(entry.sized()));
        whole = whole && !entry.failed();
    }
    addText(keys, "payloads", std::move(names));
    return whole && !list.failed();
}

/// Bit n of the last byte but n / 8 is payload n.
bool readActivePayloads(Span data, SwJsonObject& keys)
{
    std::string list;
    for (std::size_t number = 0; number < data.size() * 8; ++number) {
        unsigned const byte = data[data.size() - 1 - number / 8];
        if (((byte >> (number % 8)) & 1U) != 0) {
            appendPart(list, std::to_string(number));
        }
    }
    addText(keys, "active_payloads", std::move(list));
    return true;
}

bool readWeapons(Span data, SwJsonObject& keys)
{
    constexpr int kNumbersBeforeType = 5;  // station, hardpoint, carriage, store, status
    PackReader list(data);
    std::int64_t count = 0;
    std::string types;
    bool whole = true;
    for (; !list.atEnd(); ++count) {
        PackReader entry(list.sized());
        for (int i = 0; i < kNumbersBeforeType; ++i) {
            entry.number();
        }
        appendPart(types, textOf(entry.sized()));
        whole = whole && !entry.failed();
    }
    keys.insertOrAssign("weapon_count", SwJsonValue(count));
    addText(keys, "weapons", std::move(types));
    return whole && !list.failed();
}

bool readWaypoints(Span data, SwJsonObject& keys)
{
    constexpr std::size_t kOrderAndInfo = 3;
    PackReader list(data);
    std::int64_t count = 0;
    std::string numbers;
    bool whole = true;
    for (; !list.atEnd(); ++count) {
        PackReader entry(list.sized());
        appendPart(numbers, std::to_string(entry.number()));
        entry.bytes(kOrderAndInfo);
        Span const place = entry.rest();
        whole = whole && !entry.failed();
        if (count == 0 && !place.empty()) {
            whole = readLocation("waypoint", place, keys) && whole;
        }
    }
    keys.insertOrAssign("waypoint_count", SwJsonValue(count));
    addText(keys, "waypoints", std::move(numbers));
    return whole && !list.failed();
}

/// Two values of one length each: where it begins, and how far it reaches.
bool readViewDomain(Span data, SwJsonObject& keys)
{
    PackReader pack(data);
    for (std::string const name : {"view_azimuth", "view_elevation", "view_roll"}) {
        if (!pack.atEnd()) {
            Span const both = pack.sized();
            addPart(keys, name + "_start_deg", both.first(both.size() / 2));
            addPart(keys, name + "_range_deg", both.last(both.size() - both.size() / 2));
        }
    }
    return !pack.failed();
}

struct Nested {
    std::uint32_t tag;
    bool (*read)(Span data, SwJsonObject& keys);
};

constexpr Nested kNested[] = {
    {73, readPlainSet<73>},
    {tag::kMovingTargets, readMovingTargets},
    {81, readHorizon},
    {94, readCoreIdentifier},
    {95, readPlainSet<95>},
    {97, readPlainSet<97>},
    {98, readPlainSet<98>},
    {99, readPlainSet<99>},
    {115, readCommand},
    {116, readCommandsVerified},
    {121, readActiveWavelengths},
    {122, readCountries},
    {127, readFrameRate},
    {128, readWavelengths},
    {130, readAirbases},
    {138, readPayloads},
    {139, readActivePayloads},
    {140, readWeapons},
    {141, readWaypoints},
    {142, readViewDomain},
};

}  // namespace

CodeRow const& countryCodingMethods()
{
    static CodeRow const kMethods{"country_coding_method", "country_coding_method_text", objectCountryMethods()};
    return kMethods;
}

bool readNested(std::uint32_t tag, std::span<std::uint8_t const> data, SwJsonObject& payload)
{
    auto const* const nested =
        std::find_if(std::begin(kNested), std::end(kNested), [tag](Nested const& each) { return each.tag == tag; });
    if (data.empty() || nested == std::end(kNested)) {
        return true;
    }
    SwJsonObject keys;
    if (!nested->read(data, keys)) {
        return false;
    }
    for (auto const& [key, value] : keys) {
        payload.insertOrAssign(key, value);
    }
    return true;
}

}  // namespace telemetry
