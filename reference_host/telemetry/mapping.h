// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The items of one packet to payload keys.
#pragma once

#include "SwJson.h"
#include "telemetry/key_selection.h"
#include "telemetry/klv_reader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace telemetry {

enum class Checksum { Ok, Bad, Absent };

struct MappedPacket {
    SwJsonObject payload;
    Checksum checksum = Checksum::Absent;
};

/// Maps packets one after the other. What it keeps from one to the next only saves time.
class PacketMapper {
public:
    explicit PacketMapper(KeySelection const& wanted);

    /// The wanted keys of a packet of kind St0601, by the table; a packet that holds only others gives one of them.
    /// Tags that the table lacks and items without value give no key; of an item that occurs twice the last usable
    /// value counts. Empty when an item runs past the packet's end.
    std::optional<MappedPacket> map(KlvPacket const& packet);

private:
    /// Where a key stands among all keys in their order.
    using Place = std::uint8_t;

    void readItem_(KlvItem const& item);
    void put_(Place place, SwJsonValue value);
    void preferFull_(Place key, Place shortKey);
    void addSecondKeys_();
    void findKeys_();
    SwJsonObject takePayload_();
    void clear_();

    std::vector<bool> wantedRows_;      ///< of the table: those that contribute to a wanted key
    std::vector<Place> wantedPlaces_;   ///< in their order
    std::vector<SwJsonValue> values_;   ///< of the packet that is being read, by place; Null where there is none
    std::vector<Place> filled_;         ///< those that have got a value
    std::vector<Place> payloadPlaces_;  ///< the keys that the packet gives
    std::vector<Place> mouldPlaces_;    ///< the keys of mould_
    SwJsonObject mould_;                ///< an earlier packet's keys, without values
};

}  // namespace telemetry
