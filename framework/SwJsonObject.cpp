// The members of a JSON object: slabs of nodes that never move, linked in key order, and a sorted index
// over them. The reader fills objects through operator[], frames copy and merge them.
#include "SwJsonObject.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <new>
#include <tuple>

/// Room for `capacity` nodes, which follow directly.
struct alignas(std::max_align_t) SwJsonObject::Slab {
    Slab* next = nullptr;
    std::size_t capacity = 0;
    std::size_t used = 0;

    void* room(std::size_t index) noexcept { return reinterpret_cast<char*>(this + 1) + index * sizeof(Node); }
};

/// Memory of an erased member.
struct SwJsonObject::FreeNode {
    FreeNode* next = nullptr;
};

namespace {

/// Slabs grow from the first to the last of these numbers of members.
constexpr std::size_t kFirstSlab = 2;
constexpr std::size_t kLargestSlab = 128;

/// The largest leaf of the index. An insertion moves half of one on average.
constexpr std::size_t kLeafEntries = 128;

}  // namespace

SwJsonObject::SwJsonObject(std::initializer_list<value_type> members)
{
    for (value_type const& member : members) {
        (*this)[member.first] = member.second;
    }
}

SwJsonObject::SwJsonObject(SwJsonObject const& other) : SwJsonObject()
{
    std::vector<SwJsonCopy> pending;
    copyMembers_(other, pending);
    SwJsonTree::copyPending(pending);
}

SwJsonObject::SwJsonObject(SwJsonObject&& other) noexcept
    : first_(std::exchange(other.first_, nullptr))
    , slabs_(std::exchange(other.slabs_, nullptr))
    , free_(std::exchange(other.free_, nullptr))
    , size_(std::exchange(other.size_, 0))
    , flat_(std::move(other.flat_))
    , leaves_(std::move(other.leaves_))
{
}

SwJsonObject& SwJsonObject::operator=(SwJsonObject const& other)
{
    return *this = SwJsonObject(other);
}

SwJsonObject& SwJsonObject::operator=(SwJsonObject&& other) noexcept
{
    // Taken out first: `other` may stand inside a member that this object gives up.
    SwJsonObject taken(std::move(other));
    swap(taken);
    return *this;
}

SwJsonObject::~SwJsonObject()
{
    while (first_ != nullptr) {
        dropFirst_();
    }
    while (slabs_ != nullptr) {
        ::operator delete(std::exchange(slabs_, slabs_->next));
    }
}

void SwJsonObject::swap(SwJsonObject& other) noexcept
{
    std::swap(first_, other.first_);
    std::swap(slabs_, other.slabs_);
    std::swap(free_, other.free_);
    std::swap(size_, other.size_);
    flat_.swap(other.flat_);
    leaves_.swap(other.leaves_);
}

void SwJsonObject::clear() noexcept
{
    SwJsonObject gone;
    swap(gone);
}

SwJsonValue const& SwJsonObject::operator[](std::string_view key) const
{
    static SwJsonValue const nullValue;
    Node const* const node = findNode_(key);
    return node == nullptr ? nullValue : node->member.second;
}

SwJsonValue& SwJsonObject::operator[](std::string_view key)
{
    std::uint64_t const prefix = prefixOf_(key);
    Place const place = locate_(prefix, key);
    Node* const node = place.match != nullptr ? place.match : insert_(place, prefix, key);
    return node->member.second;
}

void SwJsonObject::insertOrAssign(std::string key, SwJsonValue value)
{
    std::uint64_t const prefix = prefixOf_(key);
    Place const place = locate_(prefix, key);
    Node* const node = place.match != nullptr ? place.match : insert_(place, prefix, std::move(key));
    node->member.second = std::move(value);
}

std::size_t SwJsonObject::erase(std::string_view key)
{
    Place const place = locate_(prefixOf_(key), key);
    if (place.match == nullptr) {
        return 0;
    }
    Node* const before = nodeBefore_(place);
    (before != nullptr ? before->next : first_) = place.match->next;
    Leaf& leaf = leafAt_(place.leaf);
    leaf.erase(leaf.begin() + static_cast<std::ptrdiff_t>(place.at));
    if (leaf.empty() && leaves_) {
        leaves_->erase(leaves_->begin() + static_cast<std::ptrdiff_t>(place.leaf));
        if (leaves_->empty()) {
            leaves_.reset();
        }
    }
    --size_;
    // The memory goes to the free list only after the member is gone: its value may hold anything.
    place.match->~Node();
    free_ = new (place.match) FreeNode{free_};
    return 1;
}

std::vector<std::string> SwJsonObject::keys() const
{
    std::vector<std::string> names;
    names.reserve(size_);
    for (value_type const& member : *this) {
        names.push_back(member.first);
    }
    return names;
}

std::uint64_t SwJsonObject::prefixOf_(std::string_view key) noexcept
{
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        prefix = prefix << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    }
    return prefix;
}

bool SwJsonObject::entryLess_(Entry const& entry, std::uint64_t prefix, std::string_view key) noexcept
{
    return entry.prefix != prefix ? entry.prefix < prefix : entry.node->member.first < key;
}

std::size_t SwJsonObject::lowerBound_(Leaf const& leaf, std::uint64_t prefix, std::string_view key) noexcept
{
    auto const found =
        std::lower_bound(leaf.begin(), leaf.end(), key,
                         [prefix](Entry const& entry, std::string_view k) { return entryLess_(entry, prefix, k); });
    return static_cast<std::size_t>(found - leaf.begin());
}

SwJsonObject::Place SwJsonObject::locate_(std::uint64_t prefix, std::string_view key) const noexcept
{
    Place place;
    if (leaves_) {
        // The last leaf that begins at or before the key.
        auto const after = std::partition_point(leaves_->begin() + 1, leaves_->end(), [&](Leaf const& leaf) {
            Entry const& front = leaf.front();
            return front.prefix != prefix ? front.prefix < prefix : front.node->member.first <= key;
        });
        place.leaf = static_cast<std::size_t>(after - leaves_->begin()) - 1;
    }
    Leaf const& leaf = leafAt_(place.leaf);
    // Members often arrive in order: look behind the last one first.
    bool const atEnd = leaf.empty() || entryLess_(leaf.back(), prefix, key);
    place.at = atEnd ? leaf.size() : lowerBound_(leaf, prefix, key);
    if (!atEnd && leaf[place.at].prefix == prefix && leaf[place.at].node->member.first == key) {
        place.match = leaf[place.at].node;
    }
    return place;
}

SwJsonObject::Node* SwJsonObject::findNode_(std::string_view key) const noexcept
{
    return locate_(prefixOf_(key), key).match;
}

SwJsonObject::Node* SwJsonObject::nodeBefore_(Place const& place) const noexcept
{
    if (place.at > 0) {
        return leafAt_(place.leaf)[place.at - 1].node;
    }
    return place.leaf > 0 ? leafAt_(place.leaf - 1).back().node : nullptr;
}

template <typename Key>
SwJsonObject::Node* SwJsonObject::insert_(Place const& place, std::uint64_t prefix, Key&& key)
{
    void* const memory = takeMemory_();
    Node* const before = nodeBefore_(place);
    Node* node = nullptr;
    try {
        node = new (memory) Node(std::forward<Key>(key));
        indexNode_(place, {prefix, node});
    } catch (...) {
        if (node != nullptr) {
            node->~Node();
        }
        free_ = new (memory) FreeNode{free_};
        throw;
    }
    Node*& link = before != nullptr ? before->next : first_;
    node->next = link;
    link = node;
    ++size_;
    return node;
}

void SwJsonObject::indexNode_(Place place, Entry entry)
{
    if (leafAt_(place.leaf).size() >= kLeafEntries) {
        place = splitLeaf_(place);
    }
    Leaf& leaf = leafAt_(place.leaf);
    if (leaf.size() == leaf.capacity()) {
        leaf.reserve(std::min(kLeafEntries, std::max<std::size_t>(4, leaf.size() * 4)));
    }
    leaf.insert(leaf.begin() + static_cast<std::ptrdiff_t>(place.at), entry);
}

SwJsonObject::Place SwJsonObject::splitLeaf_(Place place)
{
    if (!leaves_) {
        auto leaves = std::make_unique<std::vector<Leaf>>();
        leaves->push_back(std::move(flat_));
        leaves_ = std::move(leaves);
        flat_ = Leaf();
    }
    Leaf const& full = (*leaves_)[place.leaf];
    // Behind the last entry nothing moves over, so that members arriving in order fill every leaf.
    std::size_t const cut = place.at == full.size() ? full.size() : full.size() / 2;
    Leaf upper;
    upper.reserve(kLeafEntries);
    upper.assign(full.begin() + static_cast<std::ptrdiff_t>(cut), full.end());
    leaves_->insert(leaves_->begin() + static_cast<std::ptrdiff_t>(place.leaf) + 1, std::move(upper));
    (*leaves_)[place.leaf].resize(cut);
    return place.at < cut ? place : Place{place.leaf + 1, place.at - cut, nullptr};
}

void* SwJsonObject::takeMemory_()
{
    if (free_ != nullptr) {
        return std::exchange(free_, free_->next);
    }
    if (slabs_ == nullptr || slabs_->used == slabs_->capacity) {
        addSlab_(slabs_ == nullptr ? kFirstSlab : std::min(slabs_->capacity * 2, kLargestSlab));
    }
    return slabs_->room(slabs_->used++);
}

void SwJsonObject::addSlab_(std::size_t nodes)
{
    void* const memory = ::operator new(sizeof(Slab) + nodes * sizeof(Node));
    slabs_ = new (memory) Slab{slabs_, nodes, 0};
}

void SwJsonObject::copyMembers_(SwJsonObject const& other, std::vector<SwJsonCopy>& pending)
{
    if (other.empty()) {
        return;
    }
    addSlab_(other.size_);
    flat_ = other.flat_;
    if (other.leaves_) {
        leaves_ = std::make_unique<std::vector<Leaf>>(*other.leaves_);
    }
    Node** link = &first_;
    for (std::size_t i = 0; i < (leaves_ ? leaves_->size() : 1); ++i) {
        for (Entry& entry : leafAt_(i)) {
            value_type const& source = entry.node->member;
            entry.node = new (slabs_->room(slabs_->used)) Node(source.first);
            ++slabs_->used;
            ++size_;
            *link = entry.node;
            link = &entry.node->next;
            SwJsonTree::copyFields(source.second, entry.node->member.second, pending);
        }
    }
}

void SwJsonObject::dropFirst_() noexcept
{
    Node* const node = std::exchange(first_, first_->next);
    node->~Node();
}
