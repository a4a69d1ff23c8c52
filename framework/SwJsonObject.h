// The two containers of the JSON tree: an ordered map of members and a sequence of elements. See SwJson.h.
#pragma once

#include "SwJsonValue.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace sw_detail {
class JsonArena;
}  // namespace sw_detail

/// A container that a deep copy has still to fill.
struct SwJsonCopy {
    SwJsonValue const* source = nullptr;
    SwJsonValue* target = nullptr;
};

/// Ordered map from byte-string keys to values, in plain byte order: "B" before "a" before "b".
///
/// Members stand in blocks and never move, so that references and iterators stay valid until their own
/// member is erased, through insertions and when the object itself is moved. From a few members on a sorted
/// index over them holds the first bytes of each key as a number, which settles most comparisons without
/// reading the key.
class SwJsonObject {
public:
    using value_type = std::pair<std::string const, SwJsonValue>;

private:
    struct Node {
        explicit Node(std::string_view key)
            : member(std::piecewise_construct, std::forward_as_tuple(key), std::tuple<>())
        {
        }
        explicit Node(std::string&& key)
            : member(std::piecewise_construct, std::forward_as_tuple(std::move(key)), std::tuple<>())
        {
        }
        Node* next = nullptr;
        value_type member;
    };

    template <bool IsConst>
    class Walk {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = SwJsonObject::value_type;
        using difference_type = std::ptrdiff_t;
        using reference = std::conditional_t<IsConst, value_type const&, value_type&>;
        using pointer = std::conditional_t<IsConst, value_type const*, value_type*>;

        Walk() = default;
        /// An iterator is also a const_iterator.
        template <bool Other, std::enable_if_t<IsConst && !Other, int> = 0>
        Walk(Walk<Other> const& other) noexcept : node_(other.node_)
        {
        }
        reference operator*() const noexcept { return node_->member; }
        pointer operator->() const noexcept { return &node_->member; }
        Walk& operator++() noexcept
        {
            node_ = node_->next;
            return *this;
        }
        Walk operator++(int) noexcept { return Walk(std::exchange(node_, node_->next)); }
        friend bool operator==(Walk a, Walk b) noexcept { return a.node_ == b.node_; }
        friend bool operator!=(Walk a, Walk b) noexcept { return a.node_ != b.node_; }

    private:
        friend class SwJsonObject;
        template <bool>
        friend class Walk;
        explicit Walk(Node* node) noexcept : node_(node) {}
        Node* node_ = nullptr;
    };

public:
    using iterator = Walk<false>;
    using const_iterator = Walk<true>;

    SwJsonObject() noexcept = default;
    /// Of several members with one name the last counts.
    SwJsonObject(std::initializer_list<value_type> members);
    SwJsonObject(SwJsonObject const& other);
    SwJsonObject(SwJsonObject&& other) noexcept;
    SwJsonObject& operator=(SwJsonObject const& other);
    SwJsonObject& operator=(SwJsonObject&& other) noexcept;
    ~SwJsonObject();
    void swap(SwJsonObject& other) noexcept;

    /// The value under `key`, or one shared Null value when it is absent; never inserts.
    SwJsonValue const& operator[](std::string_view key) const;
    /// The value under `key`, inserted as Null first when it is absent.
    SwJsonValue& operator[](std::string_view key);
    void insertOrAssign(std::string key, SwJsonValue value);

    const_iterator find(std::string_view key) const { return const_iterator(findNode_(key)); }
    iterator find(std::string_view key) { return iterator(findNode_(key)); }
    bool contains(std::string_view key) const { return findNode_(key) != nullptr; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    bool isEmpty() const noexcept { return size_ == 0; }
    void clear() noexcept;
    /// Removes the member of that name; returns how many there were, 0 or 1.
    std::size_t erase(std::string_view key);

    const_iterator begin() const noexcept { return const_iterator(first_); }
    const_iterator end() const noexcept { return {}; }
    iterator begin() noexcept { return iterator(first_); }
    iterator end() noexcept { return {}; }

    /// The member names in order.
    std::vector<std::string> keys() const;

    friend bool operator==(SwJsonObject const& a, SwJsonObject const& b);
    friend bool operator!=(SwJsonObject const& a, SwJsonObject const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    struct Slab;
    struct FreeNode;
    /// A member as the index sees it; `prefix` holds the first eight bytes of the key, the first on top.
    struct Entry {
        std::uint64_t prefix = 0;
        Node* node = nullptr;
    };
    using Leaf = std::vector<Entry>;
    /// Where a key stands or would stand: among the members and, when there is one, in the index.
    struct Place {
        Node* match = nullptr;
        Node* before = nullptr;
        std::uint64_t prefix = 0;
        std::size_t leaf = 0;
        std::size_t at = 0;
    };

    static std::uint64_t prefixOf_(std::string_view key) noexcept;
    static bool entryLess_(Entry const& entry, std::uint64_t prefix, std::string_view key) noexcept;
    static std::size_t lowerBound_(Leaf const& leaf, std::uint64_t prefix, std::string_view key) noexcept;
    Place locate_(std::string_view key) const noexcept;
    Place locateByWalking_(std::string_view key) const noexcept;
    bool isIndexed_() const noexcept { return !flat_.empty() || leaves_ != nullptr; }
    Node* findNode_(std::string_view key) const noexcept { return locate_(key).match; }
    Leaf& leafAt_(std::size_t leaf) noexcept { return leaves_ ? (*leaves_)[leaf] : flat_; }
    Leaf const& leafAt_(std::size_t leaf) const noexcept { return leaves_ ? (*leaves_)[leaf] : flat_; }
    void indexNode_(Place place, Entry entry);
    void indexLast_(Entry entry);
    void indexAll_() noexcept;
    void reserveIndex_(std::size_t members);
    Place splitLeaf_(Place place);
    Node* insert_(Place const& place, std::string key);
    Node* appendNode_(std::string_view key);
    void* takeMemory_();
    void addSlab_(std::size_t nodes, sw_detail::JsonArena* arena = nullptr);
    void copyMembers_(SwJsonObject const& other, std::vector<SwJsonCopy>& pending);
    void dropFirst_() noexcept;

    Node* first_ = nullptr;     ///< the members, linked in the order of their keys
    Slab* slabs_ = nullptr;     ///< their memory, the slab with room first
    FreeNode* free_ = nullptr;  ///< memory of erased members
    std::size_t size_ = 0;
    Leaf flat_;                                  ///< the index while it is small; none for a few members
    std::unique_ptr<std::vector<Leaf>> leaves_;  ///< the index of a large object, in leaves of bounded size
};

/// Growable sequence of values.
class SwJsonArray {
public:
    using const_iterator = std::vector<SwJsonValue>::const_iterator;
    using iterator = std::vector<SwJsonValue>::iterator;

    SwJsonArray() noexcept = default;
    SwJsonArray(std::initializer_list<SwJsonValue> items) : items_(items) {}
    SwJsonArray(SwJsonArray const& other);
    SwJsonArray(SwJsonArray&& other) noexcept = default;
    SwJsonArray& operator=(SwJsonArray const& other);
    SwJsonArray& operator=(SwJsonArray&& other) noexcept;
    ~SwJsonArray() = default;

    void append(SwJsonValue value) { items_.push_back(std::move(value)); }
    std::size_t size() const noexcept { return items_.size(); }
    bool empty() const noexcept { return items_.empty(); }
    bool isEmpty() const noexcept { return items_.empty(); }
    /// The item at `index`, which must be below size().
    SwJsonValue const& operator[](std::size_t index) const { return items_[index]; }
    SwJsonValue& operator[](std::size_t index) { return items_[index]; }
    void clear() { items_.clear(); }

    const_iterator begin() const noexcept { return items_.begin(); }
    const_iterator end() const noexcept { return items_.end(); }
    iterator begin() noexcept { return items_.begin(); }
    iterator end() noexcept { return items_.end(); }

    friend bool operator==(SwJsonArray const& a, SwJsonArray const& b);
    friend bool operator!=(SwJsonArray const& a, SwJsonArray const& b) { return !(a == b); }

private:
    friend class SwJsonTree;
    std::vector<SwJsonValue> items_;
};
