// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts of two bytes a character, as the object country codes of a security set are sent.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

/// UTF-16 to UTF-8: big-endian unless a byte order mark says otherwise, the mark itself dropped. Senders that write
/// plain ASCII by mistake are understood: bytes of odd number, and those that are all printable ASCII, are taken as
/// one byte a character. 00 55 00 53 and 55 53 are both "US". Halves of a pair become U+FFFD.
std::string readWideText(std::span<std::uint8_t const> bytes);

/// The bytes that readWideText() takes for the text: big-endian, with a byte order mark only where they would be
/// misunderstood without it.
std::vector<std::uint8_t> writeWideText(std::string_view text);

}  // namespace telemetry
