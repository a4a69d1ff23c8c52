// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How much memory a process holds, for tests that look for growth, and memory that runs out, for tests that
// look for leaks. Linking this unit replaces operator new and delete.
#pragma once

#include <cstddef>

namespace live_memory {

/// Bytes that operator new gave and operator delete has not taken back, shared libraries included. Exact, but
/// blind for what C libraries take from malloc.
std::size_t newBytes();

/// Calls of operator new so far.
std::size_t allocations();

/// Call number `number` of operator new from now on throws std::bad_alloc, the later ones do not; 0: none does.
void failAllocation(std::size_t number);

/// Bytes in use on the heap as the C library counts them, all libraries together; some slack included.
std::size_t heapBytes();

/// Bytes of the process that lie in real memory.
std::size_t residentBytes();

}  // namespace live_memory
