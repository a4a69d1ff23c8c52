// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers in messages that people read. Internal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sw_text {

/// The number as people write it, with as few digits from 15 on as read back as the same double, in no locale: 1.5,
/// 600000, 0.1, 1e+22.
std::string numberText(double number);

/// Seconds to the millisecond: secondsText(9.8) is "9.800 s".
std::string secondsText(double seconds);

/// A count with its noun: counted(1, "packet", "packets") is "1 packet", of 0 "0 packets".
std::string counted(std::uint64_t count, std::string_view one, std::string_view many);

}  // namespace sw_text
