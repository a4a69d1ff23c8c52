// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The variable stays behind functions: one that a header declared would be another one in every library whose symbols
// are bound locally.
#include "SwThreadTime.h"

#include <utility>

namespace {

thread_local std::uint64_t t_nanoseconds = 0;

}  // namespace

std::uint64_t SwThreadTime::get() noexcept
{
    return t_nanoseconds;
}

std::uint64_t SwThreadTime::exchange(std::uint64_t nanoseconds) noexcept
{
    return std::exchange(t_nanoseconds, nanoseconds);
}
