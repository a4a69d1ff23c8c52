// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The security metadata set of MISB ST 0102: how the video and its metadata are marked. It comes inside of ST 0601
// packets (tag 48) or under a universal key of its own.
#pragma once

#include "SwJson.h"
#include "telemetry/code_names.h"
#include "telemetry/st0601_table.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

/// The items that become keys, in the order of their tags.
std::span<TableRow const> securityTable();
/// Their codes that have names.
std::span<CodeRow const> securityCodes();

/// The names of the ways in which object countries are coded, by code.
std::span<std::string_view const> objectCountryMethods();

/// All in one text, as pages are marked.
inline constexpr std::string_view kSecurityLineKey = "security_line";

/// The keys of a set, given by its items: one per item of the table that has a value, the names of the codes and
/// the marking line. A classification that is no level of the standard is named "UNKNOWN". Without any item of the
/// table there is no key. Empty when an item runs past the set's end.
/// 01 01 01 06 03 55 53 41 gives security_line "UNCLASSIFIED//REL TO USA", and five keys more.
std::optional<SwJsonObject> readSecuritySet(std::span<std::uint8_t const> set);

/// The keys of a set that cannot be read: nobody knows the level, and the line says so.
SwJsonObject unreadableMarking();

/// The items of a set from values by key; names and the line are not needed, they come back from the codes. Empty
/// when the payload has none of the keys. readSecuritySet(writeSecuritySet(p)) gives the security keys of p.
std::vector<std::uint8_t> writeSecuritySet(SwJsonObject const& payload);

/// The marking line of the keys of a set: level, control systems, caveats, and to whom it may be released, parted by
/// "//". A country other than the United States stands in front, as those countries do it:
/// "SECRET//REL TO USA, GBR", "//CAN UNCLASSIFIED". A level that is missing or unknown is "UNKNOWN".
std::string markingLine(SwJsonObject const& keys);

}  // namespace telemetry
