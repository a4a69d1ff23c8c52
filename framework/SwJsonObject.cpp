// The members of a JSON object: nodes that never move, linked in key order, and a sorted vector to find them.
#include "SwJsonObject.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <functional>
#include <memory>

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
    for (Node* const node : order_) {
        destroyNode_(node);
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
    auto const place = place_(key);
    bool const isThere = place != order_.end() && (*place)->member.first == key;
    return (isThere ? *place : insert_(place, key))->member.second;
}

void SwJsonObject::addMissing(SwJsonObject&& other)
{
    std::vector<std::unique_ptr<Node>> missing;
    for (auto& [key, value] : other) {
        if (!contains(key)) {
            missing.push_back(std::make_unique<Node>(key, std::move(value)));
        }
    }
    if (missing.empty()) {
        return;
    }
    Order merged;
    merged.reserve(size() + missing.size());
    auto old = order_.begin();
    for (std::unique_ptr<Node>& node : missing) {
        for (; old != order_.end() && (*old)->member.first < node->member.first; ++old) {
            merged.push_back(*old);
        }
        merged.push_back(node.release());
    }
    merged.insert(merged.end(), old, order_.end());
    order_.swap(merged);
    linkInOrder_();
}

std::size_t SwJsonObject::erase(std::string_view key) noexcept
{
    auto const place = place_(key);
    if (place == order_.end() || (*place)->member.first != key) {
        return 0;
    }
    Node* const node = *place;
    if (place != order_.begin()) {
        (*std::prev(place))->next = node->next;
    }
    order_.erase(place);
    // Only now that nothing leads to the member: its value may hold anything.
    node->member.second = SwJsonValue();
    destroyNode_(node);
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

/// The first member that does not stand before the key.
SwJsonObject::Order::const_iterator SwJsonObject::place_(std::string_view key) const noexcept
{
    return std::partition_point(order_.begin(), order_.end(),
                                [key](Node const* node) { return node->member.first < key; });
}

SwJsonObject::Node* SwJsonObject::findNode_(std::string_view key) const noexcept
{
    auto const place = place_(key);
    return place != order_.end() && (*place)->member.first == key ? *place : nullptr;
}

SwJsonObject::Node* SwJsonObject::insert_(Order::const_iterator place, std::string_view key)
{
    auto made = std::make_unique<Node>(key);
    auto const here = order_.insert(place, made.get());
    Node* const node = made.release();
    if (here != order_.begin()) {
        (*std::prev(here))->next = node;
    }
    if (std::next(here) != order_.end()) {
        node->next = *std::next(here);
    }
    return node;
}

/// One of the block stays there until the object goes.
void SwJsonObject::destroyNode_(Node* node) noexcept
{
    if (std::less<>()(node, block_.data()) || !std::less<>()(node, block_.data() + block_.size())) {
        delete node;
    }
}

void SwJsonObject::linkInOrder_() noexcept
{
    for (std::size_t i = 0; i < order_.size(); ++i) {
        order_[i]->next = i + 1 < order_.size() ? order_[i + 1] : nullptr;
    }
}
