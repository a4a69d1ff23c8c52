// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Builds a value tree from the reader's steps. Internal.
#pragma once

#include "SwJson.h"
#include "SwJsonMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

namespace sw_detail {

/// Takes values in the order of the text. What an open container holds waits as small records; the container is made
/// when it closes: then its size is known, and its values are made where they stay.
class JsonBuilder {
public:
    JsonBuilder();

    /// A string whose bytes stay until the tree is built: names and texts that are not in the text itself.
    std::string& keep() { return kept_.emplace_front(); }

    /// The name of the next value, which goes into an object. The bytes have to stay.
    void name(std::string_view name) { name_ = name; }
    void addNull() { waiting_.emplace_back(name_, SwJsonValue::Null); }
    void addBool(bool value) { waiting_.emplace_back(name_, SwJsonValue::Bool).whole = value ? 1 : 0; }
    void addInt(std::int64_t value) { waiting_.emplace_back(name_, SwJsonValue::Int).whole = value; }
    void addDouble(double value) { waiting_.emplace_back(name_, SwJsonValue::Double).real = value; }
    /// The bytes have to stay.
    void addString(std::string_view text)
    {
        Waiting& waiting = waiting_.emplace_back(name_, SwJsonValue::String);
        waiting.text = text.data();
        waiting.size = text.size();
    }

    void open(bool isObject) { open_.push_back({isObject, name_, waiting_.size(), made_.size()}); }
    void closeObject();
    void closeArray();
    bool isOpen() const { return !open_.empty(); }
    bool isInObject() const { return open_.back().isObject; }
    /// Whether the open container has no value yet.
    bool isFirst() const { return waiting_.size() == open_.back().firstWaiting; }

    /// Gives the one value that was added; everything that was opened has to be closed.
    void takeRoot(SwJsonValue& root);

private:
    /// A value of an open container. A String is `size` bytes of text; of a container `whole` is its place among those
    /// made.
    struct Waiting {
        Waiting(std::string_view valueName, SwJsonValue::Type valueType) : name(valueName), type(valueType) {}
        std::string_view name;
        union {
            std::int64_t whole = 0;
            double real;
            char const* text;
        };
        std::size_t size = 0;
        SwJsonValue::Type type;
    };
    /// An open container: its own name and where what it holds begins.
    struct Open {
        bool isObject = false;
        std::string_view name;
        std::size_t firstWaiting = 0;
        std::size_t firstMade = 0;
    };
    /// A member to be sorted: the first bytes of its name as a number.
    struct Rank {
        bool isBefore(Rank const& other) const
        {
            return prefix != other.prefix ? prefix < other.prefix : member->name < other.member->name;
        }
        std::uint64_t prefix = 0;
        Waiting const* member = nullptr;
    };

    /// A container whose parent is open: one of them.
    struct Made {
        std::shared_ptr<SwJsonObject> object;
        std::shared_ptr<SwJsonArray> array;
    };

    void close_(SwJsonValue::Type type, Made made);
    void rankMembers_(Waiting const* first, std::size_t count);
    void sortRanks_(Waiting const* first);
    template <typename Make>
    void makeValue_(Waiting const& waiting, Make const& make);

    JsonChunks chunks_;
    /// Room for what waits while one telemetry payload is read; longer texts take more behind it.
    alignas(std::max_align_t) std::array<std::byte, 6144> firstRoom_;
    std::pmr::monotonic_buffer_resource room_;
    std::string_view name_;
    std::pmr::vector<Waiting> waiting_;
    std::pmr::vector<Open> open_;
    std::pmr::vector<Rank> ranks_;
    std::pmr::vector<Made> made_;
    std::forward_list<std::string> kept_;
};

}  // namespace sw_detail
