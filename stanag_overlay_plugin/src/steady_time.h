// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The clock of frames to which the host gives no time; tests replace it at link time.
#pragma once

#include <cstdint>

namespace stanag_overlay {

/// The steady clock's current count in nanoseconds.
std::uint64_t steadyNowNs();

}  // namespace stanag_overlay
