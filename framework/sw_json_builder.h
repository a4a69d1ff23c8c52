// Builds a value tree from the reader's steps. Internal.
#pragma once

#include "SwJson.h"
#include "sw_json_memory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <string_view>
#include <type_traits>
#include <vector>

namespace sw_detail {

/// A stack of plain records in memory of a resource that takes nothing back.
template <typename T>
class JsonStack {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    JsonStack(std::pmr::monotonic_buffer_resource& room, std::size_t capacity) : room_(room) { grow_(capacity); }

    /// Made in place: a record put together elsewhere and copied costs more than all else here.
    template <typename... Fields>
    T& push(Fields const&... fields)
    {
        if (end_ == limit_) {
            grow_(2 * size());
        }
        return *new (end_++) T{fields...};
    }
    T const& top() const { return end_[-1]; }
    void shrink(std::size_t size) { end_ = begin_ + size; }
    std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
    bool empty() const { return begin_ == end_; }
    T* begin() { return begin_; }
    T* end() { return end_; }

private:
    void grow_(std::size_t capacity)
    {
        T* const begin = static_cast<T*>(room_.allocate(capacity * sizeof(T), alignof(T)));
        end_ = std::uninitialized_copy(begin_, end_, begin);
        begin_ = begin;
        limit_ = begin + capacity;
    }

    std::pmr::monotonic_buffer_resource& room_;
    T* begin_ = nullptr;
    T* end_ = nullptr;
    T* limit_ = nullptr;
};

/// Takes values in the order of the text. What stands in an open container is kept as small records, and
/// the container is made when it closes: then its size is known, its memory is taken at once and its
/// members are laid down in their order.
class JsonBuilder {
public:
    /// `textBytes` is how much text there is at most.
    explicit JsonBuilder(std::size_t textBytes);

    /// The name of the next value, which goes into an object. The bytes have to stay until it closes.
    void name(std::string_view name) { name_ = name; }
    /// A copy of bytes that would not stay, for `name` and `addString`.
    std::string_view keep(std::string_view bytes);

    void addNull() { record_(SwJsonValue::Null); }
    void addBool(bool value) { record_(SwJsonValue::Bool).whole = value ? 1 : 0; }
    void addInt(std::int64_t value) { record_(SwJsonValue::Int).whole = value; }
    void addDouble(double value) { record_(SwJsonValue::Double).real = value; }
    /// The bytes have to stay like those of a name.
    void addString(std::string_view text)
    {
        Record& record = record_(SwJsonValue::String);
        record.text = text.data();
        record.size = text.size();
    }

    void open(bool isObject) { levels_.push(name_, records_.size(), finished_.size(), isObject); }
    void close();
    bool isOpen() const { return !levels_.empty(); }
    bool isInObject() const { return levels_.top().isObject; }

    /// The one value that was added; everything that was opened has to be closed.
    SwJsonValue takeRoot();
    /// Then also what its tree owns, as long as nobody can have changed the tree; null for small texts and
    /// for trees of which a part is gone already.
    std::unique_ptr<JsonDocumentMemory> takeMemory();

private:
    /// A value in waiting. A String is `size` bytes of text; a container is one of the finished ones and
    /// `size` its place there.
    struct Record {
        Record(std::string_view valueName, SwJsonValue::Type valueType) : name(valueName), type(valueType) {}
        std::string_view name;
        union {
            std::int64_t whole = 0;
            double real;
            char const* text;
        };
        std::size_t size = 0;
        SwJsonValue::Type type;
    };
    /// An open container: its own name and where its values begin.
    struct Level {
        std::string_view name;
        std::size_t firstRecord = 0;
        std::size_t firstFinished = 0;
        bool isObject = false;
    };
    /// A member to be sorted: the first bytes of its name as a number, and which record it is.
    struct Rank {
        std::uint64_t prefix = 0;
        Record const* record = nullptr;
    };

    Record& record_(SwJsonValue::Type type) { return records_.push(name_, type); }
    std::shared_ptr<void> makeObject_(Record const* first, Record const* end);
    std::shared_ptr<void> makeArray_(Record const* first, Record const* end);
    void rankMembers_(Record const* first, Record const* end);
    static bool ranksBefore_(Rank const& a, Rank const& b);
    void sortRanks_(Record const* first);
    bool fill_(SwJsonValue& slot, Record const& record);

    JsonArena* arena_() { return isLarge_ ? &chunks_ : nullptr; }

    /// Room for what is in waiting while one telemetry payload is read; longer texts take more behind it.
    std::array<std::byte, 6144> firstRoom_;
    std::pmr::monotonic_buffer_resource room_;
    bool isLarge_;
    bool isWhole_ = true;  ///< no container was replaced by a later member of its name
    JsonArena chunks_;
    std::vector<SwJsonValue*> owners_;  ///< in a large text: values whose strings have memory of their own
    std::string_view name_;
    JsonStack<Record> records_;
    JsonStack<Level> levels_;
    JsonStack<Rank> ranks_;
    std::pmr::vector<std::shared_ptr<void>> finished_;  ///< containers whose parent is open, in the order of the text
};

}  // namespace sw_detail
