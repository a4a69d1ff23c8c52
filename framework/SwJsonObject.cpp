// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The members of a JSON object: nodes that never move, linked in key order; a block of them and single ones.
#include "SwJsonObject.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

SwJsonObject::SwJsonObject(std::initializer_list<std::pair<std::string_view, SwJsonValue>> members) : SwJsonObject()
{
    // By way of the empty object, so that its destructor runs when memory is exhausted half-way.
    for (auto const& [key, value] : members) {
        (*this)[key] = value;
    }
}

SwJsonObject::SwJsonObject(SwJsonObject const& other) : SwJsonObject()
{
    SwJsonTree::reserve(*this, other.size());
    for (auto const& [key, value] : other) {
        SwJsonTree::append(*this, key, value);
    }
}

SwJsonObject::~SwJsonObject()
{
    for (Node* const node : inserted_) {
        delete node;
    }
}

SwJsonValue const& SwJsonObject::operator[](std::string_view key) const
{
    static SwJsonValue const nullValue;
    Node const* const node = findNode_(key);
    return node == nullptr ? nullValue : node->member.second;
}

SwJsonValue& SwJsonObject::operator[](std::string_view key)
{
    if (Node* const node = findNode_(key)) {
        return node->member.second;
    }
    auto made = std::make_unique<Node>(key);
    inserted_.insert(placeInserted_(key), made.get());
    Node* const node = made.release();
    node->next = std::exchange(linkTo_(key), node);
    ++size_;
    return node->member.second;
}

void SwJsonObject::addMissing(SwJsonObject&& other)
{
    std::vector<std::unique_ptr<Node>> missing;
    for (auto& [key, value] : other) {
        if (!contains(key)) {
            missing.push_back(std::make_unique<Node>(key, std::move(value)));
        }
    }
    auto const middle = static_cast<std::ptrdiff_t>(inserted_.size());
    inserted_.reserve(inserted_.size() + missing.size());
    Node** link = &first_;
    for (std::unique_ptr<Node>& node : missing) {
        while (*link != nullptr && (*link)->member.first < node->member.first) {
            link = &(*link)->next;
        }
        node->next = std::exchange(*link, node.get());
        inserted_.push_back(node.release());
    }
    std::inplace_merge(inserted_.begin(), inserted_.begin() + middle, inserted_.end(),
                       [](Node const* a, Node const* b) { return a->member.first < b->member.first; });
    size_ += missing.size();
}

std::size_t SwJsonObject::erase(std::string_view key) noexcept
{
    Node* const node = findNode_(key);
    if (node == nullptr) {
        return 0;
    }
    linkTo_(key) = std::exchange(node->next, node);
    --size_;
    // Goes only now that nothing leads to the member: its value may hold anything.
    SwJsonValue const value = std::move(node->member.second);
    auto const place = placeInserted_(key);
    if (place != inserted_.end() && *place == node) {
        inserted_.erase(place);
        delete node;
    }
    return 1;
}

std::vector<std::string> SwJsonObject::keys() const
{
    std::vector<std::string> names;
    names.reserve(size());
    for (value_type const& member : *this) {
        names.push_back(member.first);
    }
    return names;
}

bool operator==(SwJsonObject const& a, SwJsonObject const& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

/// The first node that does not stand before the key.
SwJsonObject::Block::const_iterator SwJsonObject::placeInBlock_(std::string_view key) const noexcept
{
    return std::partition_point(block_.begin(), block_.end(),
                                [key](Node const& node) { return node.member.first < key; });
}

SwJsonObject::Inserted::const_iterator SwJsonObject::placeInserted_(std::string_view key) const noexcept
{
    return std::partition_point(inserted_.begin(), inserted_.end(),
                                [key](Node const* node) { return node->member.first < key; });
}

SwJsonObject::Node* SwJsonObject::findNode_(std::string_view key) const noexcept
{
    auto const laid = placeInBlock_(key);
    if (laid != block_.end() && laid->member.first == key && laid->next != &*laid) {
        // As const as the object is to the callers.
        return const_cast<Node*>(&*laid);
    }
    auto const single = placeInserted_(key);
    return single != inserted_.end() && (*single)->member.first == key ? *single : nullptr;
}

/// What leads to the first member that does not stand before the key.
SwJsonObject::Node*& SwJsonObject::linkTo_(std::string_view key) noexcept
{
    if (first_ == nullptr || first_->member.first >= key) {
        return first_;
    }
    Node* laid = block_.data() + (placeInBlock_(key) - block_.begin());
    while (laid != block_.data() && std::prev(laid)->next == std::prev(laid)) {
        --laid;
    }
    auto const single = placeInserted_(key);
    if (laid == block_.data() ||
        (single != inserted_.begin() && std::prev(laid)->member.first < (*std::prev(single))->member.first)) {
        return (*std::prev(single))->next;
    }
    return std::prev(laid)->next;
}
