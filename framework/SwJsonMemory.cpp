// Memory of JSON containers. Large documents are read into chunks, of which some are kept for the next
// document: fresh memory from the system costs as much as the reading.
#include "sw_json_memory.h"

#include <atomic>
#include <mutex>
#include <new>
#include <utility>

namespace sw_detail {

/// A chunk counts its blocks that are in use. While an arena hands them out it holds a large number of them
/// itself, so that taking one needs no atomic operation.
struct alignas(64) JsonChunk {
    std::atomic<std::size_t> inUse{0};
    JsonChunk* next = nullptr;
};

namespace {

constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;
constexpr std::size_t kLargestBlock = kChunkBytes / 4;
constexpr std::size_t kHeldByArena = std::size_t{1} << 62U;
/// At most 8 MB wait for the next document.
constexpr std::size_t kKeptChunks = 128;

/// What stands before each block: where it goes back to, null when it is one by itself.
struct alignas(std::max_align_t) Header {
    JsonChunk* chunk = nullptr;
};

/// The chunks waiting for the next document.
class ChunkStore {
public:
    static ChunkStore& instance()
    {
        // Never destroyed: trees in other static objects may go later.
        static ChunkStore& store = *new ChunkStore();
        return store;
    }
    JsonChunk* take()
    {
        {
            std::lock_guard const lock(mutex_);
            if (first_ != nullptr) {
                --count_;
                return std::exchange(first_, first_->next);
            }
        }
        return new (::operator new(kChunkBytes, std::align_val_t(alignof(JsonChunk)))) JsonChunk;
    }
    void give(JsonChunk* chunk) noexcept
    {
        {
            std::lock_guard const lock(mutex_);
            if (count_ < kKeptChunks) {
                ++count_;
                chunk->next = std::exchange(first_, chunk);
                return;
            }
        }
        chunk->~JsonChunk();
        ::operator delete(chunk, std::align_val_t(alignof(JsonChunk)));
    }

private:
    std::mutex mutex_;
    JsonChunk* first_ = nullptr;
    std::size_t count_ = 0;
};

/// Takes `blocks` off the count; the chunk goes back with the last.
void release(JsonChunk* chunk, std::size_t blocks) noexcept
{
    if (chunk->inUse.fetch_sub(blocks, std::memory_order_acq_rel) == blocks) {
        ChunkStore::instance().give(chunk);
    }
}

/// Blocks of one chunk that this thread gives back together.
struct Returned {
    JsonChunk* chunk = nullptr;
    std::size_t blocks = 0;
};
constinit thread_local Returned returned;

void* withHeader(void* memory, JsonChunk* chunk)
{
    return new (memory) Header{chunk} + 1;
}

}  // namespace

constinit thread_local int JsonReturn::depth = 0;

void* JsonArena::take(std::size_t bytes)
{
    constexpr std::size_t kAlign = alignof(std::max_align_t);
    std::size_t const whole = (bytes + sizeof(Header) + kAlign - 1) / kAlign * kAlign;
    if (whole > kLargestBlock) {
        void*& block = blocks_.large.emplace_back();
        block = withHeader(::operator new(whole), nullptr);
        return block;
    }
    if (chunk_ == nullptr || whole > kChunkBytes - used_) {
        retire_();
        blocks_.chunks.emplace_back();
        chunk_ = ChunkStore::instance().take();
        chunk_->inUse.store(kHeldByArena, std::memory_order_relaxed);
        used_ = sizeof(JsonChunk);
        taken_ = 0;
    }
    void* const memory = reinterpret_cast<char*>(chunk_) + used_;
    used_ += whole;
    ++taken_;
    return withHeader(memory, chunk_);
}

void JsonArena::retire_() noexcept
{
    if (chunk_ != nullptr) {
        blocks_.chunks.back() = {chunk_, taken_};
        release(std::exchange(chunk_, nullptr), kHeldByArena - taken_);
    }
}

JsonBlocks JsonArena::takeBlocks()
{
    retire_();
    return std::move(blocks_);
}

void JsonBlocks::giveBack() noexcept
{
    for (auto const& [chunk, blocks] : std::exchange(chunks, {})) {
        release(chunk, blocks);
    }
    for (void* const block : std::exchange(large, {})) {
        giveJsonMemory(block);
    }
}

void* takeJsonMemory(JsonArena* arena, std::size_t bytes)
{
    return arena != nullptr ? arena->take(bytes) : withHeader(::operator new(bytes + sizeof(Header)), nullptr);
}

JsonReturn::~JsonReturn()
{
    if (--depth == 0 && returned.chunk != nullptr) {
        release(std::exchange(returned.chunk, nullptr), std::exchange(returned.blocks, 0));
    }
}

void giveJsonMemory(void* block) noexcept
{
    JsonChunk* const chunk = (static_cast<Header*>(block) - 1)->chunk;
    if (chunk == nullptr) {
        ::operator delete(static_cast<Header*>(block) - 1);
    } else if (JsonReturn::depth == 0) {
        release(chunk, 1);
    } else {
        if (returned.chunk != chunk && returned.chunk != nullptr) {
            release(returned.chunk, std::exchange(returned.blocks, 0));
        }
        returned.chunk = chunk;
        ++returned.blocks;
    }
}

}  // namespace sw_detail
