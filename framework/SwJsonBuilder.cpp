// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From the reader's steps to the value tree: records while a container is open, exact memory when it closes.
#include "sw_json_builder.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <utility>

namespace sw_detail {

namespace {

/// Room for one telemetry payload.
constexpr std::size_t kFirstMembers = 64;
constexpr std::size_t kFirstLevels = 8;

/// From so many members on their order is worth remembering.
constexpr std::size_t kFirstRemembered = 16;

/// How the members of an object last sorted by this thread had to be placed. A source of telemetry sends the same
/// names in the same order again and again: then there is nothing to sort.
struct LastOrder {
    std::size_t count = 0;
    std::array<std::uint8_t, 256> places{};  ///< the first `count` say which member comes where
};
constinit thread_local LastOrder lastOrder;

/// The first eight bytes of a name as a number, the first on top, so that numbers compare as the names do.
std::uint64_t prefixOf(std::string_view name)
{
    std::uint64_t prefix = 0;
    if (name.size() >= 8) {
        // Compilers make one load of it.
        for (std::size_t i = 0; i < 8; ++i) {
            prefix = prefix << 8U | static_cast<unsigned char>(name[i]);
        }
        return prefix;
    }
    for (char const byte : name) {
        prefix = prefix << 8U | static_cast<unsigned char>(byte);
    }
    return name.empty() ? 0 : prefix << (64U - 8U * name.size());
}

}  // namespace

JsonBuilder::JsonBuilder()
    : room_(firstRoom_.data(), firstRoom_.size())
    , waiting_(&room_)
    , open_(&room_)
    , ranks_(&room_)
    , made_(&room_)
{
    waiting_.reserve(kFirstMembers);
    open_.reserve(kFirstLevels);
    ranks_.reserve(kFirstMembers);
    made_.reserve(kFirstLevels);
}

/// Calls `make` with what the value is to be made from.
template <typename Make>
inline void JsonBuilder::makeValue_(Waiting const& waiting, Make const& make)
{
    switch (waiting.type) {
    case SwJsonValue::Null:
        return make(nullptr);
    case SwJsonValue::Bool:
        return make(waiting.whole != 0);
    case SwJsonValue::Int:
        return make(waiting.whole);
    case SwJsonValue::Double:
        return make(waiting.real);
    case SwJsonValue::String:
        return make(std::string_view(waiting.text, waiting.size));
    case SwJsonValue::Object:
        return make(std::move(made_[static_cast<std::size_t>(waiting.whole)].object));
    case SwJsonValue::Array:
        return make(std::move(made_[static_cast<std::size_t>(waiting.whole)].array));
    }
}

void JsonBuilder::takeRoot(SwJsonValue& root)
{
    makeValue_(waiting_.back(), [&root](auto&& value) { root = SwJsonValue(std::forward<decltype(value)>(value)); });
}

void JsonBuilder::closeObject()
{
    rankMembers_(waiting_.data() + open_.back().firstWaiting, waiting_.size() - open_.back().firstWaiting);
    auto object = std::allocate_shared<SwJsonObject>(JsonAllocator<SwJsonObject>());
    SwJsonTree::reserve(*object, ranks_.size());
    for (Rank const& rank : ranks_) {
        makeValue_(*rank.member, [&](auto&& value) {
            SwJsonTree::append(*object, rank.member->name, std::forward<decltype(value)>(value));
        });
    }
    close_(SwJsonValue::Object, {std::move(object), nullptr});
}

void JsonBuilder::closeArray()
{
    auto array = std::allocate_shared<SwJsonArray>(JsonAllocator<SwJsonArray>());
    array->reserve(waiting_.size() - open_.back().firstWaiting);
    for (std::size_t i = open_.back().firstWaiting; i < waiting_.size(); ++i) {
        makeValue_(waiting_[i],
                   [&](auto&& value) { SwJsonTree::append(*array, std::forward<decltype(value)>(value)); });
    }
    close_(SwJsonValue::Array, {nullptr, std::move(array)});
}

/// The container takes the place of what it holds.
void JsonBuilder::close_(SwJsonValue::Type type, Made made)
{
    Open const& open = open_.back();
    name_ = open.name;
    waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(open.firstWaiting), waiting_.end());
    // What is left of these are members that a later one of their name replaced.
    made_.erase(made_.begin() + static_cast<std::ptrdiff_t>(open.firstMade), made_.end());
    waiting_.emplace_back(name_, type).whole = static_cast<std::int64_t>(made_.size());
    made_.push_back(std::move(made));
    open_.pop_back();
}

/// Puts the members in order, of several with one name only the last.
void JsonBuilder::rankMembers_(Waiting const* first, std::size_t count)
{
    LastOrder const& last = lastOrder;
    std::uint8_t const* const places = last.count == count ? last.places.data() : nullptr;
    ranks_.clear();
    bool isInOrder = true;
    for (std::size_t i = 0; i < count; ++i) {
        Waiting const* const member = first + (places != nullptr ? places[i] : i);
        ranks_.push_back({prefixOf(member->name), member});
        isInOrder = isInOrder && (i == 0 || ranks_[i - 1].isBefore(ranks_[i]));
    }
    if (!isInOrder) {
        sortRanks_(first);
    }
}

void JsonBuilder::sortRanks_(Waiting const* first)
{
    std::sort(ranks_.begin(), ranks_.end(),
              [](Rank const& a, Rank const& b) { return a.isBefore(b) || (!b.isBefore(a) && a.member > b.member); });
    auto const isSame = [](Rank const& a, Rank const& b) { return !a.isBefore(b); };
    auto const firstRepeated = std::unique(ranks_.begin(), ranks_.end(), isSame);
    if (firstRepeated != ranks_.end()) {
        ranks_.erase(firstRepeated, ranks_.end());
        return;
    }
    LastOrder& last = lastOrder;
    if (ranks_.size() >= kFirstRemembered && ranks_.size() <= last.places.size()) {
        last.count = ranks_.size();
        std::transform(ranks_.begin(), ranks_.end(), last.places.begin(),
                       [first](Rank const& rank) { return static_cast<std::uint8_t>(rank.member - first); });
    }
}

}  // namespace sw_detail
