// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Items of ST 0601 that hold several values: sets with tags of their own, and packs without.
#pragma once

#include "SwJson.h"
#include "telemetry/code_names.h"
#include "telemetry/st0601_table.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace telemetry {

struct NestedRow {
    std::uint32_t item = 0;  ///< the tag of ST 0601
    std::string_view part;   ///< where inside, for people; empty: in the set itself
    TableRow row;            ///< its tag is that in the set; 0 in a pack
};

/// Every key that nested items give, in the order of their tags; the names of codes, and positions that are put
/// together of several keys, are not among them.
std::span<NestedRow const> nestedTable();
/// The codes in it that have names.
CodeRow const& countryCodingMethods();

/// Adds the keys of a nested item; a part without value gives none, and neither does a tag that is no nested item.
/// Returns false, and adds nothing, when a part runs past the item's end.
bool readNested(std::uint32_t tag, std::span<std::uint8_t const> data, SwJsonObject& payload);

}  // namespace telemetry
