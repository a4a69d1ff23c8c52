// The items of a JSON array, in one block that grows by doubling. The reader lays whole arrays down.
#include "SwJsonArray.h"

#include "sw_json_memory.h"
#include "sw_json_tree.h"

#include <algorithm>
#include <memory>
#include <new>

namespace {

constexpr std::size_t kFirstCapacity = 4;

SwJsonValue* takeItems(std::size_t count, sw_detail::JsonArena* arena)
{
    return static_cast<SwJsonValue*>(sw_detail::takeJsonMemory(arena, count * sizeof(SwJsonValue)));
}

}  // namespace

SwJsonArray::SwJsonArray(std::initializer_list<SwJsonValue> items) : SwJsonArray()
{
    if (items.size() > 0) {
        moveTo_(items.size());
        for (SwJsonValue const& item : items) {
            append(item);
        }
    }
}

SwJsonArray::SwJsonArray(SwJsonArray const& other) : SwJsonArray()
{
    std::vector<SwJsonCopy> pending;
    SwJsonTree::copyItems(other, *this, pending);
    SwJsonTree::copyPending(pending);
}

SwJsonArray::~SwJsonArray()
{
    clear();
    if (items_ != nullptr) {
        sw_detail::giveJsonMemory(items_);
    }
}

void SwJsonArray::append(SwJsonValue value)
{
    if (size_ == capacity_) {
        moveTo_(std::max(kFirstCapacity, 2 * capacity_));
    }
    new (items_ + size_) SwJsonValue(std::move(value));
    ++size_;
}

void SwJsonArray::clear() noexcept
{
    // From the end: what was read last is most likely still near the processor.
    while (size_ > 0) {
        items_[--size_].~SwJsonValue();
    }
}

/// Into new memory for so many items, at least those that there are.
void SwJsonArray::moveTo_(std::size_t capacity)
{
    SwJsonValue* const items = takeItems(capacity, nullptr);
    std::uninitialized_move_n(items_, size_, items);
    std::destroy_n(items_, size_);
    if (items_ != nullptr) {
        sw_detail::giveJsonMemory(items_);
    }
    items_ = items;
    capacity_ = capacity;
}

void SwJsonTree::resize(SwJsonArray& array, std::size_t size, sw_detail::JsonArena* arena)
{
    if (size > 0) {
        array.items_ = takeItems(size, arena);
        array.capacity_ = size;
        array.size_ = size;
        std::uninitialized_default_construct_n(array.items_, size);
    }
}
