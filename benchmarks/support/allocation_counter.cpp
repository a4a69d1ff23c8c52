// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Replaces the global operator new and delete: the dynamic linker gives these to every library.
#include "allocation_counter.h"

#include <cstdlib>
#include <new>

namespace {

std::uint64_t g_allocations = 0;  // benchmarks run on one thread

}  // namespace

std::uint64_t allocationCount()
{
    return g_allocations;
}

void* operator new(std::size_t size)
{
    ++g_allocations;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
