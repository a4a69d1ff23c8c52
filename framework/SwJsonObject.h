// The ordered map of the JSON tree. See SwJson.h.
#pragma once

#include "SwJsonValue.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
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

/// The name of a member: a view of bytes that stay as long as the member does. Becomes a std::string of its
/// own where one is asked for.
class SwJsonKey : public std::string_view {
public:
    explicit SwJsonKey(std::string_view bytes) noexcept : std::string_view(bytes) {}
    operator std::string() const { return std::string(data(), size()); }
    friend std::string operator+(std::string left, SwJsonKey right) { return std::move(left.append(right)); }
    friend std::string operator+(SwJsonKey left, std::string_view right) { return std::string(left).append(right); }
};

/// Ordered map from byte-string keys to values, in plain byte order: "B" before "a" before "b".
///
/// Members never move, so that references and iterators stay valid until their own member is erased, through
/// insertions and when the object itself is moved. What the reader or a copy lays down stands in one block,
/// nodes in their order and the bytes of the names behind them, and is searched there; a member inserted later
/// has memory of its own, and more than a few members are then found by a sorted index. Nodes and index
/// hold the first bytes of each key as a number, which settles most comparisons without reading the key.
///
/// Several threads may call the const operations of one object at the same time. find() and begin() of an object
/// that is not const note that a value may change: they need the object for one thread, like every change.
class SwJsonObject {
public:
    using value_type = std::pair<SwJsonKey const, SwJsonValue>;

private:
    struct Node {
        Node(std::uint64_t keyPrefix, std::string_view key)
            : prefix(keyPrefix)
            , member(std::piecewise_construct, std::forward_as_tuple(key), std::tuple<>())
        {
        }
        Node* next = nullptr;
        std::uint64_t prefix;  ///< the first eight bytes of the key, the first on top
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
    SwJsonObject(std::initializer_list<std::pair<std::string_view, SwJsonValue>> members);
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
    void insertOrAssign(std::string_view key, SwJsonValue value);

    const_iterator find(std::string_view key) const { return const_iterator(findNode_(key)); }
    iterator find(std::string_view key)
    {
        mayOwn_ = kAll;
        return iterator(findNode_(key));
    }
    bool contains(std::string_view key) const { return findNode_(key) != nullptr; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    bool isEmpty() const noexcept { return size_ == 0; }
    void clear() noexcept;
    /// Removes the member of that name; returns how many there were, 0 or 1.
    std::size_t erase(std::string_view key);

    const_iterator begin() const noexcept { return const_iterator(first_); }
    const_iterator end() const noexcept { return {}; }
    iterator begin() noexcept
    {
        mayOwn_ = kAll;
        return iterator(first_);
    }
    iterator end() noexcept { return {}; }

    /// The member names in order.
    std::vector<std::string> keys() const;

    friend bool operator==(SwJsonObject const& a, SwJsonObject const& b);
    friend bool operator!=(SwJsonObject const& a, SwJsonObject const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    /// A member as the index sees it.
    struct Entry {
        std::uint64_t prefix = 0;
        Node* node = nullptr;
    };
    using Leaf = std::vector<Entry>;
    static constexpr std::uint64_t kAll = ~std::uint64_t{0};
    /// Where a key stands or would stand: among the members and, when there is one, in the index.
    struct Place {
        Node* match = nullptr;
        Node* before = nullptr;
        std::size_t leaf = 0;
        std::size_t at = 0;
    };

    bool isIndexed_() const noexcept { return !leaves_.empty(); }
    bool isPacked_() const noexcept;
    Node* findNode_(std::string_view key) const noexcept;
    Node* findPacked_(std::uint64_t prefix, std::string_view key) const noexcept;
    Node* findOrInsert_(std::string_view key);
    Node* insert_(std::uint64_t prefix, std::string_view key, Place place);
    Place locate_(std::uint64_t prefix, std::string_view key) const noexcept;
    Place locateByWalking_(std::uint64_t prefix, std::string_view key) const noexcept;
    void indexNode_(Place place, Entry entry);
    void indexAll_();
    Place splitLeaf_(Place place);
    void copyMembers_(SwJsonObject const& other, std::vector<SwJsonCopy>& pending);
    void destroyMembers_() noexcept;
    void destroyNode_(Node* node) noexcept;
    void dropFirst_() noexcept;

    Node* first_ = nullptr;      ///< the members, linked in the order of their keys
    std::size_t size_ = 0;       ///< number of members
    std::size_t nameBytes_ = 0;  ///< the length of all names together
    Node* block_ = nullptr;      ///< the nodes that were laid down at once, null without such
    Node* blockEnd_ = nullptr;
    /// Which members may own memory: bit by bit the nodes of the block, each bit for an equal number of them. All
    /// as soon as somebody might have changed a value. The others need no destruction, and nobody looks at
    /// them again.
    std::uint64_t mayOwn_ = kAll;
    std::vector<Leaf> leaves_;  ///< the sorted index, in leaves of bounded size; empty without one
};
