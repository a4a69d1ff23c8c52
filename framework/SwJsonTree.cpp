// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What goes through a whole JSON tree: deep copy, comparison, destruction. None of it recurses with the
// depth of the tree, so that a million levels fit on the smallest thread.
#include "sw_json_tree.h"

#include <utility>
#include <vector>

/// A value whose container is still to be copied.
struct SwJsonTree::Copy {
    SwJsonValue const* source = nullptr;
    SwJsonValue* target = nullptr;
};

/// The container references of one value, taken out of it.
struct SwJsonTree::Containers {
    explicit Containers(SwJsonValue& value) noexcept : object(std::move(value.object_)), array(std::move(value.array_))
    {
    }
    Containers() = default;
    void giveTo(SwJsonValue& value) noexcept
    {
        value.object_ = std::move(object);
        value.array_ = std::move(array);
    }
    explicit operator bool() const { return object != nullptr || array != nullptr; }

    std::shared_ptr<SwJsonObject> object;
    std::shared_ptr<SwJsonArray> array;
};

/// Into a Null value, which is to have the same fields but its own container.
void SwJsonTree::copyFields(SwJsonValue const& source, SwJsonValue& target)
{
    target.type_ = source.type_;
    target.bool_ = source.bool_;
    target.int_ = source.int_;
    target.double_ = source.double_;
    target.string_ = source.string_;
}

void SwJsonTree::copyContainers(SwJsonValue const& source, SwJsonValue& target)
{
    std::vector<Copy> pending{{&source, &target}};
    auto const copyOne = [&pending](SwJsonValue const& from, SwJsonValue& to) {
        copyFields(from, to);
        if (from.hasContainer()) {
            pending.push_back({&from, &to});
        }
    };
    while (!pending.empty()) {
        Copy const copy = pending.back();
        pending.pop_back();
        if (copy.source->object_) {
            copy.target->object_ = std::make_shared<SwJsonObject>();
            reserve(*copy.target->object_, copy.source->object_->size());
            for (auto const& [key, value] : *copy.source->object_) {
                copyOne(value, append(*copy.target->object_, key));
            }
        }
        if (copy.source->array_) {
            copy.target->array_ = std::make_shared<SwJsonArray>();
            // The list points at items, which must not move.
            copy.target->array_->items_.reserve(copy.source->array_->size());
            for (SwJsonValue const& item : *copy.source->array_) {
                copyOne(item, copy.target->array_->items_.emplace_back());
            }
        }
    }
}

bool operator==(SwJsonValue const& a, SwJsonValue const& b)
{
    std::vector<std::pair<SwJsonValue const*, SwJsonValue const*>> pending{{&a, &b}};
    while (!pending.empty()) {
        auto const [x, y] = pending.back();
        pending.pop_back();
        // A null container has the contents of an empty one.
        SwJsonObject const& members = x->toObject();
        SwJsonArray const& items = x->toArray();
        if (x->type_ != y->type_ || x->bool_ != y->bool_ || x->int_ != y->int_ || x->double_ != y->double_ ||
            x->string_ != y->string_ || members.size() != y->toObject().size() || items.size() != y->toArray().size()) {
            return false;
        }
        auto other = y->toObject().begin();
        for (auto member = members.begin(); member != members.end(); ++member, ++other) {
            if (member->first != other->first) {
                return false;
            }
            pending.emplace_back(&member->second, &other->second);
        }
        for (std::size_t i = 0; i < items.size(); ++i) {
            pending.emplace_back(&items[i], &y->toArray()[i]);
        }
    }
    return true;
}

/// The value of the container that is next to be let go, null when there is none.
SwJsonValue* SwJsonTree::nextValue(Containers& containers) noexcept
{
    if (containers.object != nullptr) {
        return containers.object->first_ == nullptr ? nullptr : &containers.object->first_->member.second;
    }
    return containers.array->empty() ? nullptr : &containers.array->items_.back();
}

/// The next value that has a container itself, null when there is none; those before it are passed over. A container
/// that somebody else holds too is left as it is.
SwJsonValue* SwJsonTree::nextHolder(Containers& containers) noexcept
{
    if (containers.object.use_count() + containers.array.use_count() != 1) {
        return nullptr;
    }
    // The count alone does not order the other holder's last access before ours; taking and giving back a reference
    // does.
    static_cast<void>(Containers(containers));
    if (containers.array != nullptr) {
        SwJsonArray::Items& items = containers.array->items_;
        while (!items.empty() && !items.back().hasContainer()) {
            items.pop_back();
        }
    } else {
        // They go with the object.
        SwJsonObject::Node*& first = containers.object->first_;
        while (first != nullptr && !first->member.second.hasContainer()) {
            first = first->next;
        }
    }
    return nextValue(containers);
}

/// Goes down the tree without a stack: the way back up is kept in the very values whose containers were
/// taken out to go down. So it needs no memory, which a destructor could not ask for.
void SwJsonTree::release(SwJsonValue& value) noexcept
{
    // The containers' own destructors are quicker, and so many of them within each other fit on any stack.
    constexpr int kPlainLevels = 32;
    constinit static thread_local int level = 0;
    if (level < kPlainLevels) {
        ++level;
        value.object_.reset();
        value.array_.reset();
        --level;
        return;
    }
    Containers current(value);
    Containers parent;
    while (current) {
        if (SwJsonValue* const child = nextHolder(current)) {
            Containers below(*child);
            parent.giveTo(*child);
            parent = std::exchange(current, std::move(below));
            continue;
        }
        current = std::move(parent);
        if (current) {
            // The value that was the way down.
            parent = Containers(*nextValue(current));
        }
    }
}
