// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One time for each thread, kept in this library: whoever links it, host or plugin, by whatever way it was loaded,
// reads what the other has set.
#pragma once

#include <cstdint>

class SwThreadTime {
public:
    /// The calling thread's time in nanoseconds; 0 when none has been set.
    static std::uint64_t get() noexcept;
    /// Sets the calling thread's time and gives the one before: exchange(5) gives 0 at first, then exchange(0) gives 5.
    static std::uint64_t exchange(std::uint64_t nanoseconds) noexcept;
};
