// The members of a JSON object: slabs of nodes that never move, linked in key order, and a sorted index
// over them. The reader fills objects through operator[], frames copy and merge them.
#include "SwJsonObject.h"

#include "sw_json_memory.h"
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

/// Up to so many members are found by walking along them.
constexpr std::size_t kUnindexed = 8;

/// The largest leaf of the index. An insertion moves half of one on average.
constexpr std::size_t kLeafEntries = 128;

/// Four bytes as a number, the first on top; compilers make one load of it.
std::uint32_t bigEndian32(char const* bytes) noexcept
{
    auto const byte = [bytes](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(bytes[i])}; };
    return byte(0) << 24U | byte(1) << 16U | byte(2) << 8U | byte(3);
}

}  // namespace

// By way of the empty object, so that its destructor runs when memory is exhausted half-way.
SwJsonObject::SwJsonObject(std::initializer_list<value_type> members) : SwJsonObject()
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
        sw_detail::giveJsonMemory(std::exchange(slabs_, slabs_->next));
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
    Place const place = locate_(key);
    Node* const node = place.match != nullptr ? place.match : insert_(place, std::string(key));
    return node->member.second;
}

void SwJsonObject::insertOrAssign(std::string key, SwJsonValue value)
{
    Place const place = locate_(key);
    Node* const node = place.match != nullptr ? place.match : insert_(place, std::move(key));
    node->member.second = std::move(value);
}

std::size_t SwJsonObject::erase(std::string_view key)
{
    Place const place = locate_(key);
    if (place.match == nullptr) {
        return 0;
    }
    (place.before != nullptr ? place.before->next : first_) = place.match->next;
    if (isIndexed_()) {
        Leaf& leaf = leafAt_(place.leaf);
        leaf.erase(leaf.begin() + static_cast<std::ptrdiff_t>(place.at));
        if (leaf.empty() && leaves_) {
            leaves_->erase(leaves_->begin() + static_cast<std::ptrdiff_t>(place.leaf));
            if (leaves_->empty()) {
                leaves_.reset();
            }
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
    std::size_t const size = key.size();
    if (size >= 8) {
        return std::uint64_t{bigEndian32(key.data())} << 32U | bigEndian32(key.data() + 4);
    }
    if (size >= 4) {
        // The last four bytes overlap the first ones; shifted out to the left, those bytes are gone.
        std::uint32_t const last = size == 4 ? 0U : bigEndian32(key.data() + size - 4) << 8U * (8U - size);
        return std::uint64_t{bigEndian32(key.data())} << 32U | last;
    }
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < size; ++i) {
        prefix |= std::uint64_t{static_cast<unsigned char>(key[i])} << (56U - 8U * i);
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

SwJsonObject::Place SwJsonObject::locateByWalking_(std::string_view key) const noexcept
{
    Place place;
    for (Node* node = first_; node != nullptr; node = node->next) {
        int const order = node->member.first.compare(key);
        if (order >= 0) {
            place.match = order == 0 ? node : nullptr;
            break;
        }
        place.before = node;
    }
    return place;
}

SwJsonObject::Place SwJsonObject::locate_(std::string_view key) const noexcept
{
    if (!isIndexed_()) {
        return locateByWalking_(key);
    }
    Place place;
    std::uint64_t const prefix = prefixOf_(key);
    place.prefix = prefix;
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
    bool const atEnd = entryLess_(leaf.back(), prefix, key);
    place.at = atEnd ? leaf.size() : lowerBound_(leaf, prefix, key);
    if (!atEnd && leaf[place.at].prefix == prefix && leaf[place.at].node->member.first == key) {
        place.match = leaf[place.at].node;
    }
    if (place.at > 0) {
        place.before = leaf[place.at - 1].node;
    } else if (place.leaf > 0) {
        place.before = leafAt_(place.leaf - 1).back().node;
    }
    return place;
}

SwJsonObject::Node* SwJsonObject::insert_(Place const& place, std::string key)
{
    void* const memory = takeMemory_();
    Node* node = nullptr;
    try {
        node = new (memory) Node(std::move(key));
        if (isIndexed_()) {
            indexNode_(place, {place.prefix, node});
        } else if (size_ == kUnindexed) {
            flat_.reserve(4 * kUnindexed);
        }
    } catch (...) {
        if (node != nullptr) {
            node->~Node();
        }
        free_ = new (memory) FreeNode{free_};
        throw;
    }
    Node*& link = place.before != nullptr ? place.before->next : first_;
    node->next = link;
    link = node;
    ++size_;
    if (size_ > kUnindexed && !isIndexed_()) {
        indexAll_();
    }
    return node;
}

/// The index of the members that there are; its memory is reserved.
void SwJsonObject::indexAll_() noexcept
{
    for (Node* node = first_; node != nullptr; node = node->next) {
        flat_.push_back({prefixOf_(node->member.first), node});
    }
}

void SwJsonObject::reserveIndex_(std::size_t members)
{
    if (members > kUnindexed) {
        flat_.reserve(std::min(members, kLeafEntries));
    }
}

/// A node in a slab that has room, not linked yet.
SwJsonObject::Node* SwJsonObject::appendNode_(std::string_view key)
{
    Node* const node = new (slabs_->room(slabs_->used)) Node(key);
    ++slabs_->used;
    ++size_;
    return node;
}

/// Indexes the last member, which is linked already. An object that turns out to have few members keeps
/// none: equal names can make it smaller than what was reserved.
void SwJsonObject::indexLast_(Entry entry)
{
    if (flat_.capacity() == 0 && !leaves_) {
        return;
    }
    if (!leaves_ && flat_.size() < kLeafEntries) {
        flat_.push_back(entry);
        return;
    }
    Place place;
    place.leaf = leaves_ ? leaves_->size() - 1 : 0;
    place.at = leafAt_(place.leaf).size();
    indexNode_(place, entry);
}

void SwJsonObject::indexNode_(Place place, Entry entry)
{
    if (leafAt_(place.leaf).size() >= kLeafEntries) {
        place = splitLeaf_(place);
    }
    Leaf& leaf = leafAt_(place.leaf);
    if (leaf.size() == leaf.capacity()) {
        leaf.reserve(std::min(kLeafEntries, leaf.size() * 4));
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
    if (place.at >= cut) {
        ++place.leaf;
        place.at -= cut;
    }
    return place;
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

void SwJsonObject::addSlab_(std::size_t nodes, sw_detail::JsonArena* arena)
{
    void* const memory = sw_detail::takeJsonMemory(arena, sizeof(Slab) + nodes * sizeof(Node));
    slabs_ = new (memory) Slab{slabs_, nodes, 0};
}

void SwJsonObject::copyMembers_(SwJsonObject const& other, std::vector<SwJsonCopy>& pending)
{
    if (other.empty()) {
        return;
    }
    SwJsonTree::MemberFiller filler(*this, other.size_, nullptr);
    for (value_type const& member : other) {
        // Without an index nobody looks at the prefix.
        std::uint64_t const prefix = other.size_ > kUnindexed ? prefixOf_(member.first) : 0;
        SwJsonTree::copyFields(member.second, filler.append(prefix, member.first), pending);
    }
}

void SwJsonObject::dropFirst_() noexcept
{
    Node* const node = std::exchange(first_, first_->next);
    node->~Node();
}
