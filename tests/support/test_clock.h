// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's clock in tests: it stands still until a test moves it. Linked in place of steady_time.cpp.
#pragma once

#include "overlay_numbers.h"

#include <cstdint>

namespace test_clock {

using stanag_overlay::kNsPerMs;

void setNowNs(std::uint64_t nowNs);
void advanceNs(std::uint64_t byNs);
std::uint64_t nowNs();
/// How often the plugin has asked since the last setNowNs.
int readings();

}  // namespace test_clock
