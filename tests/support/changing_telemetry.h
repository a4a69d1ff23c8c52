// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A configuration with every kind of state and telemetry whose keys are new in every frame: what a plugin that
// remembers too much would choke on. Texts have the same length in every frame, so that memory can be compared
// exactly.
#pragma once

#include <cstdint>
#include <string>

namespace changing_telemetry {

/// Held and rate-limited values, dates, conditions with keep times, and a block that lists every key.
std::string config();

/// Frames after which the telemetry has the same shape again.
inline constexpr std::uint64_t kPeriod = 1000;

/// JSON text of one of two producers in frame `frame`: three keys that no other frame has, some that the
/// configuration names and that come and go, deep nesting now and then, and cut text.
std::string payload(int producer, std::uint64_t frame);

}  // namespace changing_telemetry
