// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Chunks of memory that the containers of one document share.
#include "SwJsonMemory.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace sw_detail {

/// Counts its blocks that are in use. While blocks are handed out, their hander holds a large number of them itself, so
/// that taking one needs no atomic operation.
struct alignas(std::max_align_t) JsonChunk {
    std::atomic<std::size_t> inUse{0};
    std::size_t bytes = 0;
};

namespace {

// The first is small: a small value that is kept shall not hold much. Each further one is twice as large.
constexpr std::size_t kFirstChunk = 512;
constexpr std::size_t kLargestChunk = std::size_t{16} * 1024;
constexpr std::size_t kHeld = std::size_t{1} << 62U;

/// What stands before each block: where it goes back to, null when it is one by itself.
struct alignas(std::max_align_t) Header {
    JsonChunk* chunk = nullptr;
};

constinit thread_local JsonChunks* current = nullptr;

/// The largest chunk that this thread gave back waits for its next document.
struct SpareChunk {
    ~SpareChunk()
    {
        ::operator delete(std::exchange(chunk, nullptr));
        // Trees in static objects may go later.
        isGone = true;
    }
    JsonChunk* chunk = nullptr;
    bool isGone = false;
};
constinit thread_local SpareChunk spare;

JsonChunk* takeChunk(std::size_t bytes)
{
    // Not one that is much too large: what is made in it may be kept.
    if (spare.chunk != nullptr && spare.chunk->bytes >= bytes && spare.chunk->bytes <= 4 * bytes) {
        return std::exchange(spare.chunk, nullptr);
    }
    auto* const chunk = new (::operator new(bytes)) JsonChunk;
    chunk->bytes = bytes;
    return chunk;
}

/// Takes `blocks` off the count; the chunk goes back with the last.
void release(JsonChunk* chunk, std::size_t blocks) noexcept
{
    if (chunk->inUse.fetch_sub(blocks, std::memory_order_acq_rel) != blocks) {
        return;
    }
    if (!spare.isGone && (spare.chunk == nullptr || spare.chunk->bytes < chunk->bytes)) {
        std::swap(spare.chunk, chunk);
    }
    ::operator delete(chunk);
}

}  // namespace

JsonChunks::JsonChunks() noexcept : outer_(std::exchange(current, this)) {}

JsonChunks::~JsonChunks()
{
    retire_();
    current = outer_;
}

void JsonChunks::retire_() noexcept
{
    if (chunk_ != nullptr) {
        release(std::exchange(chunk_, nullptr), kHeld - taken_);
    }
}

void* JsonChunks::take_(std::size_t bytes)
{
    if (chunk_ == nullptr || bytes > chunk_->bytes - used_) {
        std::size_t const doubled = chunk_ == nullptr ? 0 : 2 * chunk_->bytes;
        retire_();
        chunk_ = takeChunk(std::clamp(std::max(doubled, bytes + sizeof(JsonChunk)), kFirstChunk, kLargestChunk));
        chunk_->inUse.store(kHeld, std::memory_order_relaxed);
        used_ = sizeof(JsonChunk);
        taken_ = 0;
    }
    void* const memory = reinterpret_cast<char*>(chunk_) + used_;
    used_ += bytes;
    ++taken_;
    return new (memory) Header{chunk_} + 1;
}

void* takeJsonMemory(std::size_t bytes)
{
    constexpr std::size_t kAlign = alignof(std::max_align_t);
    std::size_t const whole = (bytes + sizeof(Header) + kAlign - 1) / kAlign * kAlign;
    if (current != nullptr && whole <= kLargestChunk / 2) {
        return current->take_(whole);
    }
    return new (::operator new(whole)) Header + 1;
}

void giveJsonMemory(void* block) noexcept
{
    Header* const header = static_cast<Header*>(block) - 1;
    if (header->chunk != nullptr) {
        release(header->chunk, 1);
    } else {
        ::operator delete(header);
    }
}

}  // namespace sw_detail
