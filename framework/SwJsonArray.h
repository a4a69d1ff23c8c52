// The sequence of the JSON tree. See SwJson.h.
#pragma once

#include "SwJsonValue.h"

#include <cstddef>
#include <initializer_list>
#include <utility>

/// Growable sequence of values.
class SwJsonArray {
public:
    using value_type = SwJsonValue;
    using const_iterator = SwJsonValue const*;
    using iterator = SwJsonValue*;

    SwJsonArray() noexcept = default;
    SwJsonArray(std::initializer_list<SwJsonValue> items);
    SwJsonArray(SwJsonArray const& other);
    SwJsonArray(SwJsonArray&& other) noexcept
        : items_(std::exchange(other.items_, nullptr))
        , size_(std::exchange(other.size_, 0))
        , capacity_(std::exchange(other.capacity_, 0))
    {
    }
    SwJsonArray& operator=(SwJsonArray const& other) { return *this = SwJsonArray(other); }
    SwJsonArray& operator=(SwJsonArray&& other) noexcept
    {
        // Taken out first: `other` may stand inside an element that this array gives up.
        SwJsonArray taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~SwJsonArray();
    void swap(SwJsonArray& other) noexcept
    {
        std::swap(items_, other.items_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    void append(SwJsonValue value);
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    bool isEmpty() const noexcept { return size_ == 0; }
    /// The item at `index`, which must be below size().
    SwJsonValue const& operator[](std::size_t index) const { return items_[index]; }
    SwJsonValue& operator[](std::size_t index) { return items_[index]; }
    void clear() noexcept;

    const_iterator begin() const noexcept { return items_; }
    const_iterator end() const noexcept { return items_ + size_; }
    iterator begin() noexcept { return items_; }
    iterator end() noexcept { return items_ + size_; }

    friend bool operator==(SwJsonArray const& a, SwJsonArray const& b);
    friend bool operator!=(SwJsonArray const& a, SwJsonArray const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    void moveTo_(std::size_t capacity);

    SwJsonValue* items_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};
