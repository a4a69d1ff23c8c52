// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Items to payload: the table's rules, and the few keys that two tags share or one tag doubles.
#include "telemetry/mapping.h"

#include "telemetry/st0601_table.h"
#include "telemetry/st0601_value.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

namespace telemetry {
namespace {

Checksum checkSum(KlvPacket const& packet, KlvItem const& item)
{
    if (item.data.size() != 2) {
        return Checksum::Absent;
    }
    auto const stored = static_cast<std::uint16_t>((item.data[0] << 8U) | item.data[1]);
    return stored == klvChecksum(packet.bytes.first(item.dataOffset)) ? Checksum::Ok : Checksum::Bad;
}

/// All keys that packets can give, in their order.
std::vector<std::string_view> const& allKeys()
{
    static std::vector<std::string_view> const keys = [] {
        std::vector<std::string_view> all = {kYawKey, kLaserKey, kShortPitchKey, kShortRollKey};
        for (TableRow const& row : st0601Table()) {
            all.push_back(row.key);
        }
        std::sort(all.begin(), all.end());
        all.erase(std::unique(all.begin(), all.end()), all.end());
        return all;
    }();
    return keys;
}

std::uint8_t placeOf(std::string_view key)
{
    auto const found = std::lower_bound(allKeys().begin(), allKeys().end(), key);
    return static_cast<std::uint8_t>(found - allKeys().begin());
}

/// Where the mapping's own keys stand, and the values of the rows.
struct Places {
    std::uint8_t heading = placeOf(kHeadingKey);
    std::uint8_t yaw = placeOf(kYawKey);
    std::uint8_t flags = placeOf(kFlagsKey);
    std::uint8_t laser = placeOf(kLaserKey);
    std::uint8_t pitch = placeOf(kPitchKey);
    std::uint8_t shortPitch = placeOf(kShortPitchKey);
    std::uint8_t roll = placeOf(kRollKey);
    std::uint8_t shortRoll = placeOf(kShortRollKey);
    std::vector<std::uint8_t> ofRows;

    Places()
    {
        for (TableRow const& row : st0601Table()) {
            ofRows.push_back(row.tag == tag::kPitch  ? shortPitch
                             : row.tag == tag::kRoll ? shortRoll
                                                     : placeOf(row.key));
        }
    }
};

Places const& places()
{
    static Places const found;
    return found;
}

std::size_t indexOf(TableRow const& row)
{
    return static_cast<std::size_t>(&row - st0601Table().data());
}

/// The second key to which the row's item contributes; its own when there is none.
std::string_view secondKey(TableRow const& row)
{
    switch (row.tag) {
    case tag::kHeading:
        return kYawKey;
    case tag::kPitch:
    case tag::kFullPitch:
        return kShortPitchKey;
    case tag::kRoll:
    case tag::kFullRoll:
        return kShortRollKey;
    case tag::kGenericFlags:
        return kLaserKey;
    default:
        return row.key;
    }
}

}  // namespace

PacketMapper::PacketMapper(KeySelection const& wanted) : values_(allKeys().size())
{
    for (TableRow const& row : st0601Table()) {
        wantedRows_.push_back(wanted.wants(row.key) || wanted.wants(secondKey(row)));
    }
    for (std::string_view const key : allKeys()) {
        if (wanted.wants(key)) {
            wantedPlaces_.push_back(placeOf(key));
        }
    }
}

std::optional<MappedPacket> PacketMapper::map(KlvPacket const& packet)
{
    MappedPacket mapped;
    KlvItemReader items(packet);
    while (auto const item = items.next()) {
        if (item->tag == tag::kChecksum) {
            mapped.checksum = checkSum(packet, *item);
        } else {
            readItem_(*item);
        }
    }
    if (items.damaged()) {
        clear_();
        return std::nullopt;
    }
    addSecondKeys_();
    findKeys_();
    mapped.payload = takePayload_();
    clear_();
    return mapped;
}

void PacketMapper::readItem_(KlvItem const& item)
{
    TableRow const* const row = findRow(item.tag);
    if (row == nullptr || (!wantedRows_[indexOf(*row)] && !filled_.empty())) {
        return;
    }
    SwJsonValue value = decodeValue(*row, item.data);
    if (!value.isNull()) {
        put_(places().ofRows[indexOf(*row)], std::move(value));
    }
}

void PacketMapper::put_(Place place, SwJsonValue value)
{
    values_[place] = std::move(value);
    filled_.push_back(place);
}

/// Tags 6 and 7 end at 20 and 50 degrees, so 90 and 91 are preferred; what the short ones say is kept
/// under a key of its own.
void PacketMapper::preferFull_(Place key, Place shortKey)
{
    if (values_[key].isNull()) {
        put_(key, std::move(values_[shortKey]));
    }
}

void PacketMapper::addSecondKeys_()
{
    preferFull_(places().pitch, places().shortPitch);
    preferFull_(places().roll, places().shortRoll);
    SwJsonValue const& heading = values_[places().heading];
    if (!heading.isNull()) {
        put_(places().yaw, heading);
    }
    SwJsonValue const& flags = values_[places().flags];
    if (!flags.isNull()) {
        put_(places().laser, (flags.toInt() & 1) != 0);
    }
}

/// A packet that says something must not look like one that says nothing, wanted or not.
void PacketMapper::findKeys_()
{
    auto const hasValue = [this](Place place) { return !values_[place].isNull(); };
    payloadPlaces_.clear();
    std::copy_if(wantedPlaces_.begin(), wantedPlaces_.end(), std::back_inserter(payloadPlaces_), hasValue);
    auto const any = std::find_if(filled_.begin(), filled_.end(), hasValue);
    if (payloadPlaces_.empty() && any != filled_.end()) {
        payloadPlaces_.push_back(*any);
    }
}

/// A source sends the same keys again and again: a copy of the last object is made at once, without looking for
/// places.
SwJsonObject PacketMapper::takePayload_()
{
    if (payloadPlaces_ != mouldPlaces_) {
        mould_.clear();
        for (Place const place : payloadPlaces_) {
            mould_.insertOrAssign(allKeys()[place], {});
        }
        mouldPlaces_ = payloadPlaces_;
    }
    SwJsonObject payload = mould_;
    auto place = payloadPlaces_.begin();
    for (auto& [key, value] : payload) {
        value = std::move(values_[*place++]);
    }
    return payload;
}

void PacketMapper::clear_()
{
    for (Place const place : filled_) {
        values_[place] = SwJsonValue();
    }
    filled_.clear();
}

}  // namespace telemetry
