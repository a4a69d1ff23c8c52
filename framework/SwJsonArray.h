// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The sequence of the JSON tree: an array, whose items keep their order.
#pragma once

#include "SwJsonMemory.h"
#include "SwJsonValue.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

/// Growable sequence of values.
class SwJsonArray {
public:
    using value_type = SwJsonValue;
    using const_iterator = SwJsonValue const*;
    using iterator = SwJsonValue*;

    SwJsonArray() noexcept = default;
    SwJsonArray(std::initializer_list<SwJsonValue> items) : items_(items) {}
    SwJsonArray(SwJsonArray const& other) = default;
    SwJsonArray(SwJsonArray&& other) noexcept = default;
    SwJsonArray& operator=(SwJsonArray const& other) { return *this = SwJsonArray(other); }
    SwJsonArray& operator=(SwJsonArray&& other) noexcept
    {
        // Taken out first: `other` may stand inside an element that this array gives up.
        SwJsonArray taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~SwJsonArray() = default;
    void swap(SwJsonArray& other) noexcept { items_.swap(other.items_); }

    void append(SwJsonValue value) { items_.push_back(std::move(value)); }
    void reserve(std::size_t size) { items_.reserve(size); }
    std::size_t size() const noexcept { return items_.size(); }
    bool empty() const noexcept { return items_.empty(); }
    bool isEmpty() const noexcept { return items_.empty(); }
    /// The item at `index`, which must be below size().
    SwJsonValue const& operator[](std::size_t index) const { return items_[index]; }
    SwJsonValue& operator[](std::size_t index) { return items_[index]; }
    void clear() noexcept { items_.clear(); }

    const_iterator begin() const noexcept { return items_.data(); }
    const_iterator end() const noexcept { return items_.data() + items_.size(); }
    iterator begin() noexcept { return items_.data(); }
    iterator end() noexcept { return items_.data() + items_.size(); }

    friend bool operator==(SwJsonArray const& a, SwJsonArray const& b) { return a.items_ == b.items_; }
    friend bool operator!=(SwJsonArray const& a, SwJsonArray const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    using Items = std::vector<SwJsonValue, sw_detail::JsonAllocator<SwJsonValue>>;

    Items items_;
};
