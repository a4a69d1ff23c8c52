// Memory of JSON containers: single blocks, and chunks shared by the containers of one large document.
// Internal.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

class SwJsonValue;

namespace sw_detail {

struct JsonChunk;

/// Every block of one document.
struct JsonBlocks {
    /// Gives them back without a look at what stands in them. None may have been given back by itself.
    void giveBack() noexcept;

    std::vector<std::pair<JsonChunk*, std::size_t>> chunks;  ///< and how many blocks of each
    std::vector<void*> large;                                ///< those that fit no chunk
};

/// Hands out blocks of large chunks while one document is read: its containers are born together and mostly
/// die together, so a chunk goes back as a whole when the last of its blocks is given back, from any thread.
class JsonArena {
public:
    JsonArena() = default;
    JsonArena(JsonArena const&) = delete;
    JsonArena& operator=(JsonArena const&) = delete;
    ~JsonArena() { retire_(); }

    void* take(std::size_t bytes);
    /// All that was taken, to be given back at once; nothing more can be taken then.
    JsonBlocks takeBlocks();

private:
    void retire_() noexcept;

    JsonChunk* chunk_ = nullptr;
    std::size_t used_ = 0;
    std::size_t taken_ = 0;
    JsonBlocks blocks_;
};

/// A block aligned for anything, from the arena when there is one.
void* takeJsonMemory(JsonArena* arena, std::size_t bytes);
/// Gives back a block that takeJsonMemory gave, whether or not its arena is still there.
void giveJsonMemory(void* block) noexcept;

/// What the tree of a large document owns: its blocks, and the values whose strings have memory of their own.
struct JsonDocumentMemory {
    JsonBlocks blocks;
    std::vector<SwJsonValue*> owners;
};

/// While one stands, the blocks that this thread gives back are counted and go back chunk by chunk: a tree has
/// thousands of them, and each by itself would cost an atomic operation. They nest.
class JsonReturn {
public:
    JsonReturn() noexcept { ++depth; }
    JsonReturn(JsonReturn const&) = delete;
    JsonReturn& operator=(JsonReturn const&) = delete;
    ~JsonReturn();

    /// How many stand one in the other on this thread.
    static constinit thread_local int depth;
};

/// Allocator over both for shared containers. Only allocation looks at the arena.
template <typename T>
struct JsonAllocator {
    using value_type = T;
    explicit JsonAllocator(JsonArena* from) : arena(from) {}
    template <typename U>
    JsonAllocator(JsonAllocator<U> const& other) : arena(other.arena)
    {
    }
    T* allocate(std::size_t count) { return static_cast<T*>(takeJsonMemory(arena, count * sizeof(T))); }
    void deallocate(T* block, std::size_t) noexcept { giveJsonMemory(block); }
    template <typename U>
    friend bool operator==(JsonAllocator const&, JsonAllocator<U> const&)
    {
        // Any of them gives back what another one took.
        return true;
    }

    JsonArena* arena = nullptr;
};

}  // namespace sw_detail
