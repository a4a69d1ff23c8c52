// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tags, lengths and items of KLV as bytes; the counterpart of klv_reader.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace telemetry {

/// Appends a BER length in its shortest form: 15 is 0F, 144 is 81 90.
void appendLength(std::vector<std::uint8_t>& out, std::size_t length);

/// Appends a BER-OID tag: 65 is 41, 142 is 81 0E.
void appendTag(std::vector<std::uint8_t>& out, std::uint32_t tag);

/// Appends tag, length and data; nothing when there is no data.
void appendItem(std::vector<std::uint8_t>& out, std::uint32_t tag, std::vector<std::uint8_t> const& data);

}  // namespace telemetry
