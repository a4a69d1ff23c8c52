// Items to payload: the table's rules, and the few keys that two tags share or one tag doubles.
#include "telemetry/mapping.h"

#include "telemetry/st0601_table.h"
#include "telemetry/st0601_value.h"

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

/// Tags 6 and 7 end at 20 and 50 degrees, so 90 and 91 are preferred; what the short ones said is kept
/// under a key of its own.
void preferFull(SwJsonObject& payload, std::string_view key, SwJsonValue const& full, std::string_view shortKey)
{
    if (full.isNull()) {
        return;
    }
    auto const shortForm = payload.find(key);
    if (shortForm != payload.end()) {
        payload.insertOrAssign(shortKey, shortForm->second);
    }
    payload.insertOrAssign(key, full);
}

}  // namespace

std::optional<MappedPacket> mapPacket(KlvPacket const& packet, WantedRows const& wanted)
{
    MappedPacket mapped;
    SwJsonValue fullPitch;
    SwJsonValue fullRoll;
    KlvItemReader items(packet);
    while (auto const item = items.next()) {
        if (item->tag == tag::kChecksum) {
            mapped.checksum = checkSum(packet, *item);
            continue;
        }
        TableRow const* const row = findRow(item->tag);
        if (row == nullptr || (!wanted.has(*row) && !mapped.payload.empty())) {
            continue;
        }
        SwJsonValue value = decodeValue(*row, item->data);
        if (value.isNull()) {
            continue;
        }
        if (item->tag == tag::kFullPitch) {
            fullPitch = std::move(value);
        } else if (item->tag == tag::kFullRoll) {
            fullRoll = std::move(value);
        } else {
            mapped.payload.insertOrAssign(row->key, std::move(value));
        }
    }
    if (items.damaged()) {
        return std::nullopt;
    }
    SwJsonObject& payload = mapped.payload;
    preferFull(payload, kPitchKey, fullPitch, kShortPitchKey);
    preferFull(payload, kRollKey, fullRoll, kShortRollKey);
    auto const heading = payload.find(kHeadingKey);
    if (heading != payload.end()) {
        payload.insertOrAssign(kYawKey, heading->second);
    }
    auto const flags = payload.find(kFlagsKey);
    if (flags != payload.end()) {
        payload.insertOrAssign(kLaserKey, (flags->second.toInt() & 1) != 0);
    }
    return mapped;
}

}  // namespace telemetry
