// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What goes through a whole JSON tree: deep copy, comparison, destruction, and how the reader lays objects down.
// Internal.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <string>
#include <utility>

class SwJsonTree {
public:
    /// Makes `target`, whose scalar fields are those of `source` already, a deep copy of it.
    static void copyContainers(SwJsonValue const& source, SwJsonValue& target);
    /// Lets go of the container of a value, with everything that only it holds.
    static void release(SwJsonValue& value) noexcept;

    /// Room in an empty object for so many members.
    static void reserve(SwJsonObject& object, std::size_t members) { object.block_.reserve(members); }
    /// Adds a member in the room that was reserved; its key is greater than all before. The value is made in its place.
    template <typename... Value>
    static SwJsonValue& append(SwJsonObject& object, std::string_view key, Value&&... value)
    {
        SwJsonObject::Node& node = object.block_.emplace_back(key, std::forward<Value>(value)...);
        (object.size_ == 0 ? object.first_ : (&node - 1)->next) = &node;
        ++object.size_;
        return node.member.second;
    }

    template <typename Value>
    static void append(SwJsonArray& array, Value&& value)
    {
        array.items_.emplace_back(std::forward<Value>(value));
    }

private:
    struct Containers;
    struct Copy;

    static void copyFields(SwJsonValue const& source, SwJsonValue& target);
    static SwJsonValue* nextValue(Containers& containers) noexcept;
    static SwJsonValue* nextHolder(Containers& containers) noexcept;
};
