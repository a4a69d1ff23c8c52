// What goes through a whole JSON tree: deep copy, comparison, destruction. None of it recurses with the
// depth of the tree, so that a million levels fit on the smallest thread.
#include "sw_json_tree.h"

#include <cstddef>
#include <new>

namespace {

/// How many levels are destroyed the plain way, by the destructors of containers calling each other. It
/// is the fastest, and so many frames fit anywhere.
constexpr int kPlainLevels = 32;

}  // namespace

/// The container references of one value, taken out of it.
struct SwJsonTree::Containers {
    std::shared_ptr<SwJsonObject> object;
    std::shared_ptr<SwJsonArray> array;

    explicit operator bool() const { return object != nullptr || array != nullptr; }
};

void SwJsonTree::copyTree(SwJsonValue const& source, SwJsonValue& target)
{
    std::vector<SwJsonCopy> pending{{&source, &target}};
    copyPending(pending);
}

void SwJsonTree::copyItems(SwJsonArray const& source, SwJsonArray& target, std::vector<SwJsonCopy>& pending)
{
    // Sized at once: the list points at elements of the target.
    resize(target, source.size(), nullptr);
    for (std::size_t i = 0; i < source.size(); ++i) {
        copyFields(source[i], target[i], pending);
    }
}

void SwJsonTree::copyPending(std::vector<SwJsonCopy>& pending)
{
    while (!pending.empty()) {
        SwJsonCopy const copy = pending.back();
        pending.pop_back();
        if (copy.source->object_) {
            copy.target->object_ = std::make_shared<SwJsonObject>();
            copy.target->object_->copyMembers_(*copy.source->object_, pending);
        }
        if (copy.source->array_) {
            copy.target->array_ = std::make_shared<SwJsonArray>();
            copyItems(*copy.source->array_, *copy.target->array_, pending);
        }
    }
}

bool SwJsonTree::equal(SwJsonValue const& a, SwJsonValue const& b)
{
    std::vector<Pair> pending;
    return equalFields(a, b, pending) && equalPending(pending);
}

bool SwJsonTree::equalFields(SwJsonValue const& a, SwJsonValue const& b, std::vector<Pair>& pending)
{
    if (a.type_ != b.type_ || a.bool_ != b.bool_ || a.int_ != b.int_ || a.double_ != b.double_ ||
        a.string_ != b.string_) {
        return false;
    }
    if (a.hasContainer() || b.hasContainer()) {
        pending.emplace_back(&a, &b);
    }
    return true;
}

bool SwJsonTree::equalMembers(SwJsonObject const& a, SwJsonObject const& b, std::vector<Pair>& pending)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (auto first = a.begin(), second = b.begin(); first != a.end(); ++first, ++second) {
        if (first->first != second->first || !equalFields(first->second, second->second, pending)) {
            return false;
        }
    }
    return true;
}

bool SwJsonTree::equalItems(SwJsonArray const& a, SwJsonArray const& b, std::vector<Pair>& pending)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!equalFields(a[i], b[i], pending)) {
            return false;
        }
    }
    return true;
}

bool SwJsonTree::equalPending(std::vector<Pair>& pending)
{
    while (!pending.empty()) {
        auto const [a, b] = pending.back();
        pending.pop_back();
        // A null container counts as an empty one.
        if (!equalMembers(a->toObject(), b->toObject(), pending) || !equalItems(a->toArray(), b->toArray(), pending)) {
            return false;
        }
    }
    return true;
}

void SwJsonTree::release(SwJsonValue& value) noexcept
{
    if (sw_detail::JsonReturn::depth >= kPlainLevels) {
        releaseDeep(value);
        return;
    }
    sw_detail::JsonReturn const level;
    value.object_.reset();
    value.array_.reset();
}

void SwJsonTree::releaseAll(SwJsonValue& root, sw_detail::JsonDocumentMemory& memory) noexcept
{
    // Nobody counts the references any more: what they count stands in the blocks.
    alignas(Containers) std::byte forgotten[sizeof(Containers)];
    new (forgotten) Containers{std::move(root.object_), std::move(root.array_)};
    for (SwJsonValue* const owner : memory.owners) {
        std::string().swap(owner->string_);
    }
    memory.blocks.giveBack();
}

/// The value whose container is to be released before the container it stands in; null when there is
/// none left. Values without one are dropped on the way. A container that somebody else holds too is
/// left as it is.
SwJsonValue* SwJsonTree::nextToRelease(Containers& containers) noexcept
{
    if (containers.object.use_count() == 1) {
        // The count alone does not order the other holder's last access before ours; taking and giving
        // back a reference does.
        std::shared_ptr<SwJsonObject>(containers.object).reset();
        SwJsonObject& object = *containers.object;
        while (object.first_ != nullptr && !object.first_->member.second.hasContainer()) {
            object.dropFirst_();
        }
        return object.first_ != nullptr ? &object.first_->member.second : nullptr;
    }
    if (containers.array.use_count() == 1) {
        std::shared_ptr<SwJsonArray>(containers.array).reset();
        SwJsonArray& array = *containers.array;
        while (!array.empty() && !array.items_[array.size_ - 1].hasContainer()) {
            array.items_[--array.size_].~SwJsonValue();
        }
        return !array.empty() ? &array.items_[array.size_ - 1] : nullptr;
    }
    return nullptr;
}

/// The value that nextToRelease gave.
SwJsonValue& SwJsonTree::slotOf(Containers& containers) noexcept
{
    return containers.object ? containers.object->first_->member.second
                             : containers.array->items_[containers.array->size_ - 1];
}

/// Goes down the tree without a stack: the way back up is kept in the very values whose containers were
/// taken out to go down.
void SwJsonTree::releaseDeep(SwJsonValue& value) noexcept
{
    Containers current{std::move(value.object_), std::move(value.array_)};
    Containers parent;
    for (;;) {
        if (SwJsonValue* const child = nextToRelease(current)) {
            Containers below{std::move(child->object_), std::move(child->array_)};
            child->object_ = std::move(parent.object);
            child->array_ = std::move(parent.array);
            parent = std::move(current);
            current = std::move(below);
            continue;
        }
        if (!parent) {
            return;
        }
        current = std::move(parent);
        SwJsonValue& slot = slotOf(current);
        parent = Containers{std::move(slot.object_), std::move(slot.array_)};
    }
}
