// The items of one packet to payload keys.
#pragma once

#include "SwJson.h"
#include "telemetry/klv_reader.h"
#include "telemetry/telemetry.h"
#include "telemetry/wanted_rows.h"

#include <optional>

namespace telemetry {

struct MappedPacket {
    SwJsonObject payload;
    Checksum checksum = Checksum::Absent;
};

/// The keys of a packet of kind St0601, by the table. Tags that the table lacks and items without value give
/// no key; of an item that occurs twice the last usable value counts. Of rows that are not wanted at most the packet's
/// first key is made: a packet that holds any key gives one. Empty when an item runs past the packet's end.
std::optional<MappedPacket> mapPacket(KlvPacket const& packet, WantedRows const& wanted);

}  // namespace telemetry
