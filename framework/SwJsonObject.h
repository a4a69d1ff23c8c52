// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The ordered map of the JSON tree: an object, whose members stand in the order of their names.
#pragma once

#include "SwJsonMemory.h"
#include "SwJsonValue.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// Ordered map from byte-string keys to values, in plain byte order: "B" before "a" before "b".
///
/// Members never move: references and iterators stay valid until their own member is erased, through insertions and
/// when the object itself is moved. The nodes of the members are linked in their order. What the reader or a copy lays
/// down stands in one block; a member inserted later has memory of its own. A key is found by halving in both.
///
/// Looking up and iterating write nothing, so that any number of threads may do it at the same time.
class SwJsonObject {
public:
    using value_type = std::pair<std::string const, SwJsonValue>;

private:
    struct Node {
        template <typename... Value>
        explicit Node(std::string_view key, Value&&... value)
            : member(std::piecewise_construct, std::forward_as_tuple(key),
                     std::forward_as_tuple(std::forward<Value>(value)...))
        {
        }
        value_type member;
        Node* next = nullptr;  ///< itself when the member was erased but its node has to stay
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
    SwJsonObject(SwJsonObject&& other) noexcept : SwJsonObject() { swap(other); }
    SwJsonObject& operator=(SwJsonObject const& other) { return *this = SwJsonObject(other); }
    SwJsonObject& operator=(SwJsonObject&& other) noexcept
    {
        // Taken out first: `other` may stand inside a member that this object gives up.
        SwJsonObject taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~SwJsonObject();
    void swap(SwJsonObject& other) noexcept
    {
        std::swap(first_, other.first_);
        std::swap(size_, other.size_);
        block_.swap(other.block_);
        inserted_.swap(other.inserted_);
    }

    /// The value under `key`, or one shared Null value when it is absent; never inserts.
    SwJsonValue const& operator[](std::string_view key) const;
    /// The value under `key`, inserted as Null first when it is absent.
    SwJsonValue& operator[](std::string_view key);
    /// Moves the pointers to all members behind it: linear, however small its factor. Reading and copying are not.
    void insertOrAssign(std::string_view key, SwJsonValue value) { (*this)[key] = std::move(value); }
    /// Moves in the members of `other` whose keys are not there yet; linear in the size of both. When memory runs out
    /// this object is as it was, and `other` has lost values.
    void addMissing(SwJsonObject&& other);

    const_iterator find(std::string_view key) const noexcept { return const_iterator(findNode_(key)); }
    iterator find(std::string_view key) noexcept { return iterator(findNode_(key)); }
    bool contains(std::string_view key) const noexcept { return findNode_(key) != nullptr; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    bool isEmpty() const noexcept { return size_ == 0; }
    void clear() noexcept { *this = SwJsonObject(); }
    /// Removes the member of that name; returns how many there were, 0 or 1.
    std::size_t erase(std::string_view key) noexcept;

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

    /// In both the members stand in the order of their keys.
    using Block = std::vector<Node, sw_detail::JsonAllocator<Node>>;
    using Inserted = std::vector<Node*>;

    Block::const_iterator placeInBlock_(std::string_view key) const noexcept;
    Inserted::const_iterator placeInserted_(std::string_view key) const noexcept;
    Node* findNode_(std::string_view key) const noexcept;
    Node*& linkTo_(std::string_view key) noexcept;

    Node* first_ = nullptr;
    std::size_t size_ = 0;
    Block block_;  ///< what was laid down at once; never grows beyond its first room, and erased ones stay
    Inserted inserted_;
};
