// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "steady_time.h"

#include <chrono>

namespace stanag_overlay {

std::uint64_t steadyNowNs()
{
    auto const sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

}  // namespace stanag_overlay
