// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Memory of the JSON containers, which declare their vectors with it; no concern of their users. While a document is
// read, its containers share chunks: one by one, those of a configuration of 1 MB would take and give back tens of
// thousands of blocks.
#pragma once

#include <cstddef>

namespace sw_detail {

/// A block aligned for anything: of the reading that goes on on this thread, else by itself.
void* takeJsonMemory(std::size_t bytes);
/// Gives it back, on any thread.
void giveJsonMemory(void* block) noexcept;

template <typename T>
struct JsonAllocator {
    using value_type = T;
    JsonAllocator() noexcept = default;
    template <typename U>
    JsonAllocator(JsonAllocator<U> const& /*other*/) noexcept
    {
    }
    T* allocate(std::size_t count) { return static_cast<T*>(takeJsonMemory(count * sizeof(T))); }
    void deallocate(T* block, std::size_t /*count*/) noexcept { giveJsonMemory(block); }
    template <typename U>
    friend bool operator==(JsonAllocator const& /*a*/, JsonAllocator<U> const& /*b*/) noexcept
    {
        return true;
    }
    template <typename U>
    friend bool operator!=(JsonAllocator const& /*a*/, JsonAllocator<U> const& /*b*/) noexcept
    {
        return false;
    }
};

struct JsonChunk;

/// While one lives, the containers made on its thread stand in its chunks. A chunk goes back with the last container in
/// it, so that a member that is kept holds its neighbours' memory at most.
class JsonChunks {
public:
    JsonChunks() noexcept;
    JsonChunks(JsonChunks const&) = delete;
    JsonChunks& operator=(JsonChunks const&) = delete;
    ~JsonChunks();

private:
    friend void* takeJsonMemory(std::size_t bytes);
    void* take_(std::size_t bytes);
    void retire_() noexcept;

    JsonChunks* outer_;
    JsonChunk* chunk_ = nullptr;
    std::size_t used_ = 0;   ///< of its bytes
    std::size_t taken_ = 0;  ///< blocks
};

}  // namespace sw_detail
