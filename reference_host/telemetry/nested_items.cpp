// Walks a packet's items for those that hold several values.
#include "telemetry/nested_items.h"

#include "telemetry/security_set.h"
#include "telemetry/st0601_table.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace telemetry {

NestedItems::NestedItems(KeySelection const& wanted)
{
    auto const isWanted = [&wanted](auto const& row) { return wanted.wants(row.key); };
    auto const hasWantedName = [&wanted](CodeRow const& row) { return wanted.wants(row.textKey); };
    wantsSecurity_ = wanted.wants(kSecurityLineKey) ||
                     std::any_of(securityTable().begin(), securityTable().end(), isWanted) ||
                     std::any_of(securityCodes().begin(), securityCodes().end(), hasWantedName);
}

bool NestedItems::takeSecurity(KlvPacket const& set)
{
    std::optional<SwJsonObject> keys = readSecuritySet(set.bytes.subspan(set.valueOffset));
    if (keys.has_value() && !keys->empty()) {
        security_ = std::move(*keys);
    }
    return keys.has_value();
}

void NestedItems::addKeys(KlvPacket const& packet, SwJsonObject& payload)
{
    if (!wantsSecurity_ && !payload.empty()) {
        return;
    }
    bool hasKeys = !payload.empty();
    KlvItemReader items(packet);
    while (auto const item = items.next()) {
        if (item->tag == tag::kSecuritySet) {
            std::optional<SwJsonObject> keys = readSecuritySet(item->data);
            damaged_ += keys.has_value() ? 0U : 1U;
            if (keys.has_value() && !keys->empty()) {
                security_ = std::move(*keys);
                hasKeys = true;
            }
        }
    }
    // The marking of others says nothing in a packet that says nothing itself.
    if (hasKeys) {
        for (auto const& [key, value] : security_) {
            payload.insertOrAssign(key, value);
        }
    }
}

}  // namespace telemetry
