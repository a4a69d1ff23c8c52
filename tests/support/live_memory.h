// How much memory a process holds, for tests that look for growth.
#pragma once

#include <cstddef>

namespace live_memory {

/// Bytes that operator new gave and operator delete has not taken back, shared libraries included. Exact, but
/// blind for what C libraries take from malloc. Linking this unit replaces both operators.
std::size_t newBytes();

/// Bytes in use on the heap as the C library counts them, all libraries together; some slack included.
std::size_t heapBytes();

/// Bytes of the process that lie in real memory.
std::size_t residentBytes();

}  // namespace live_memory
