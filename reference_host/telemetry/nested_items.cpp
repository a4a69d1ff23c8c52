// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Walks a packet's items for those that hold several values.
#include "telemetry/nested_items.h"

#include "telemetry/nested_sets.h"
#include "telemetry/security_set.h"
#include "telemetry/st0601_table.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace telemetry {

namespace {

bool wantsSecurity(KeySelection const& wanted)
{
    return wanted.wants(kSecurityLineKey) ||
           std::any_of(securityTable().begin(), securityTable().end(),
                       [&wanted](TableRow const& row) { return wanted.wants(row.key); }) ||
           std::any_of(securityCodes().begin(), securityCodes().end(),
                       [&wanted](CodeRow const& row) { return wanted.wants(row.textKey); });
}

bool wantsOthers(KeySelection const& wanted)
{
    return wanted.wants(countryCodingMethods().textKey) ||
           std::any_of(nestedTable().begin(), nestedTable().end(),
                       [&wanted](NestedRow const& nested) { return wanted.wants(nested.row.key); });
}

}  // namespace

NestedItems::NestedItems(KeySelection const& wanted)
    : wantsSecurity_(wantsSecurity(wanted))
    , wantsOthers_(wantsOthers(wanted))
{
}

bool NestedItems::takeSecurity(KlvPacket const& set)
{
    bool marked = false;
    return takeMarking_(set.bytes.subspan(set.valueOffset), marked);
}

/// False for a set that cannot be read. It may have raised the level: what was marked before holds no longer.
bool NestedItems::takeMarking_(std::span<std::uint8_t const> set, bool& marked)
{
    std::optional<SwJsonObject> keys = readSecuritySet(set);
    if (!keys.has_value()) {
        security_ = unreadableMarking();
    } else if (!keys->empty()) {
        security_ = std::move(*keys);
    } else {
        return true;
    }
    marked = true;
    return keys.has_value();
}

void NestedItems::addKeys(KlvPacket const& packet, SwJsonObject& payload)
{
    if (!wantsSecurity_ && !wantsOthers_ && !payload.empty()) {
        return;
    }
    bool marked = false;
    KlvItemReader items(packet);
    while (auto const item = items.next()) {
        if (item->tag == tag::kSecuritySet) {
            damaged_ += takeMarking_(item->data, marked) ? 0U : 1U;
        } else {
            damaged_ += readNested(item->tag, item->data, payload) ? 0U : 1U;
        }
    }
    // The marking of others says nothing in a packet that says nothing itself.
    if (marked || !payload.empty()) {
        for (auto const& [key, value] : security_) {
            payload.insertOrAssign(key, value);
        }
    }
}

}  // namespace telemetry
