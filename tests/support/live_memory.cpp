// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Replaces the global operator new and delete: the dynamic linker gives these to every library. The size that was
// asked for stands before each block: what the heap sets aside for it varies with its neighbours.
#include "live_memory.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <new>
#include <unistd.h>

namespace {

std::atomic<std::size_t> g_newBytes{0};
std::atomic<std::size_t> g_allocations{0};
/// The allocation that fails, counted like g_allocations; 0: none.
std::atomic<std::size_t> g_failing{0};

/// Neither this nor `give` is inlined: seen together with its callers, the pair looks mismatched to the compiler.
[[gnu::noinline]] void* take(std::size_t size, std::size_t alignment)
{
    if (++g_allocations == g_failing) {
        throw std::bad_alloc();
    }
    std::size_t const rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, alignment + rounded);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(memory) = size;
    g_newBytes += size;
    return static_cast<char*>(memory) + alignment;
}

[[gnu::noinline]] void give(void* block, std::size_t alignment) noexcept
{
    if (block != nullptr) {
        void* const memory = static_cast<char*>(block) - alignment;
        g_newBytes -= *static_cast<std::size_t*>(memory);
        std::free(memory);
    }
}

constexpr std::size_t kOrdinary = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t size)
{
    return take(size, kOrdinary);
}
void* operator new[](std::size_t size)
{
    return take(size, kOrdinary);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return take(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return take(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    give(memory, kOrdinary);
}
void operator delete[](void* memory) noexcept
{
    give(memory, kOrdinary);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    give(memory, kOrdinary);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    give(memory, kOrdinary);
}
void operator delete(void* memory, std::align_val_t alignment) noexcept
{
    give(memory, static_cast<std::size_t>(alignment));
}
void operator delete[](void* memory, std::align_val_t alignment) noexcept
{
    give(memory, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t alignment) noexcept
{
    give(memory, static_cast<std::size_t>(alignment));
}
void operator delete[](void* memory, std::size_t /*size*/, std::align_val_t alignment) noexcept
{
    give(memory, static_cast<std::size_t>(alignment));
}

namespace live_memory {

std::size_t newBytes()
{
    return g_newBytes;
}

std::size_t allocations()
{
    return g_allocations;
}

void failAllocation(std::size_t number)
{
    g_failing = number == 0 ? 0 : g_allocations + number;
}

std::size_t heapBytes()
{
    struct mallinfo2 const heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

std::size_t residentBytes()
{
    std::ifstream pages("/proc/self/statm");
    std::size_t whole = 0;
    std::size_t resident = 0;
    pages >> whole >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace live_memory
