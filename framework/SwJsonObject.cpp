// The members of a JSON object: nodes that never move, linked in key order, and how a key is found among them.
// The reader lays whole objects down, frames copy and merge them.
#include "SwJsonObject.h"

#include "sw_json_memory.h"
#include "sw_json_tree.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <memory>
#include <new>

namespace {

/// Up to so many members are found by walking along them.
constexpr std::size_t kUnindexed = 8;

/// The largest leaf of the index. An insertion moves half of one on average.
constexpr std::size_t kLeafEntries = 128;

/// Whether a node or entry of that prefix stands before the key; `nameOf` gives its name, seldom needed.
template <typename NameOf>
bool standsBefore(std::uint64_t prefix, NameOf const& nameOf, std::uint64_t keyPrefix, std::string_view key)
{
    return prefix != keyPrefix ? prefix < keyPrefix : nameOf() < key;
}

}  // namespace

// By way of the empty object, so that its destructor runs when memory is exhausted half-way.
SwJsonObject::SwJsonObject(std::initializer_list<std::pair<std::string_view, SwJsonValue>> members) : SwJsonObject()
{
    for (auto const& [key, value] : members) {
        (*this)[key] = value;
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
    , size_(std::exchange(other.size_, 0))
    , nameBytes_(std::exchange(other.nameBytes_, 0))
    , block_(std::exchange(other.block_, nullptr))
    , blockEnd_(std::exchange(other.blockEnd_, nullptr))
    , mayOwn_(std::exchange(other.mayOwn_, kAll))
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
    destroyMembers_();
    if (block_ != nullptr) {
        sw_detail::giveJsonMemory(block_);
    }
}

void SwJsonObject::swap(SwJsonObject& other) noexcept
{
    std::swap(first_, other.first_);
    std::swap(size_, other.size_);
    std::swap(nameBytes_, other.nameBytes_);
    std::swap(block_, other.block_);
    std::swap(blockEnd_, other.blockEnd_);
    std::swap(mayOwn_, other.mayOwn_);
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
    return findOrInsert_(key)->member.second;
}

void SwJsonObject::insertOrAssign(std::string_view key, SwJsonValue value)
{
    findOrInsert_(key)->member.second = std::move(value);
}

std::size_t SwJsonObject::erase(std::string_view key)
{
    std::uint64_t const prefix = SwJsonTree::prefixOf(key);
    if (isPacked_()) {
        if (findPacked_(prefix, key) == nullptr) {
            return 0;
        }
        indexAll_();
    }
    Place const place = locate_(prefix, key);
    if (place.match == nullptr) {
        return 0;
    }
    mayOwn_ = kAll;
    (place.before != nullptr ? place.before->next : first_) = place.match->next;
    if (isIndexed_()) {
        Leaf& leaf = leaves_[place.leaf];
        leaf.erase(leaf.begin() + static_cast<std::ptrdiff_t>(place.at));
        if (leaf.empty()) {
            leaves_.erase(leaves_.begin() + static_cast<std::ptrdiff_t>(place.leaf));
        }
    }
    --size_;
    nameBytes_ -= place.match->member.first.size();
    // Only now that nothing leads to the member: its value may hold anything.
    destroyNode_(place.match);
    return 1;
}

std::vector<std::string> SwJsonObject::keys() const
{
    std::vector<std::string> names;
    names.reserve(size_);
    for (value_type const& member : *this) {
        names.emplace_back(member.first);
    }
    return names;
}

/// Whether the members are exactly the first nodes of the block, in their order, and too many to walk along.
bool SwJsonObject::isPacked_() const noexcept
{
    return size_ > kUnindexed && !isIndexed_();
}

SwJsonObject::Node* SwJsonObject::findPacked_(std::uint64_t prefix, std::string_view key) const noexcept
{
    Node* const end = block_ + size_;
    Node* const found = std::partition_point(block_, end, [&](Node const& node) {
        return standsBefore(
            node.prefix, [&] { return node.member.first; }, prefix, key);
    });
    return found != end && found->prefix == prefix && found->member.first == key ? found : nullptr;
}

SwJsonObject::Node* SwJsonObject::findNode_(std::string_view key) const noexcept
{
    std::uint64_t const prefix = SwJsonTree::prefixOf(key);
    return isPacked_() ? findPacked_(prefix, key) : locate_(prefix, key).match;
}

SwJsonObject::Place SwJsonObject::locateByWalking_(std::uint64_t prefix, std::string_view key) const noexcept
{
    Place place;
    for (Node* node = first_; node != nullptr; node = node->next) {
        if (node->prefix >= prefix) {
            int const order = node->prefix > prefix ? 1 : node->member.first.compare(key);
            if (order >= 0) {
                place.match = order == 0 ? node : nullptr;
                break;
            }
        }
        place.before = node;
    }
    return place;
}

/// Not for packed members.
SwJsonObject::Place SwJsonObject::locate_(std::uint64_t prefix, std::string_view key) const noexcept
{
    if (!isIndexed_()) {
        return locateByWalking_(prefix, key);
    }
    auto const isBefore = [&](Entry const& entry) {
        return standsBefore(
            entry.prefix, [&] { return entry.node->member.first; }, prefix, key);
    };
    auto const isAt = [&](Entry const& entry) { return entry.prefix == prefix && entry.node->member.first == key; };
    Place place;
    // The last leaf that begins at or before the key.
    auto const after = std::partition_point(leaves_.begin() + 1, leaves_.end(), [&](Leaf const& leaf) {
        return isBefore(leaf.front()) || isAt(leaf.front());
    });
    place.leaf = static_cast<std::size_t>(after - leaves_.begin()) - 1;
    Leaf const& leaf = leaves_[place.leaf];
    // Members often arrive in order: look behind the last one first.
    auto const found = isBefore(leaf.back()) ? leaf.end() : std::partition_point(leaf.begin(), leaf.end(), isBefore);
    place.at = static_cast<std::size_t>(found - leaf.begin());
    if (found != leaf.end() && isAt(*found)) {
        place.match = found->node;
    }
    if (place.at > 0) {
        place.before = leaf[place.at - 1].node;
    } else if (place.leaf > 0) {
        place.before = leaves_[place.leaf - 1].back().node;
    }
    return place;
}

SwJsonObject::Node* SwJsonObject::findOrInsert_(std::string_view key)
{
    std::uint64_t const prefix = SwJsonTree::prefixOf(key);
    mayOwn_ = kAll;
    if (isPacked_()) {
        if (Node* const node = findPacked_(prefix, key)) {
            return node;
        }
        indexAll_();
    }
    Place const place = locate_(prefix, key);
    return place.match != nullptr ? place.match : insert_(prefix, key, place);
}

SwJsonObject::Node* SwJsonObject::insert_(std::uint64_t prefix, std::string_view key, Place place)
{
    struct Free {
        void operator()(void* memory) const { ::operator delete(memory); }
    };
    std::unique_ptr<void, Free> memory(::operator new(sizeof(Node) + key.size()));
    char* const name = static_cast<char*>(memory.get()) + sizeof(Node);
    key.copy(name, key.size());
    Node* const node = new (memory.get()) Node(prefix, {name, key.size()});
    if (size_ == kUnindexed && !isIndexed_()) {
        indexAll_();
        place = locate_(prefix, key);
    }
    if (isIndexed_()) {
        indexNode_(place, {prefix, node});
    }
    Node*& link = place.before != nullptr ? place.before->next : first_;
    node->next = link;
    link = node;
    ++size_;
    nameBytes_ += key.size();
    static_cast<void>(memory.release());
    return node;
}

/// The index of the members that there are.
void SwJsonObject::indexAll_()
{
    std::vector<Leaf> leaves;
    leaves.reserve((size_ + kLeafEntries - 1) / kLeafEntries);
    for (Node* node = first_; node != nullptr; node = node->next) {
        if (leaves.empty() || leaves.back().size() == kLeafEntries) {
            std::size_t const left = size_ - leaves.size() * kLeafEntries;
            leaves.emplace_back().reserve(std::min(kLeafEntries, 2 * left));
        }
        leaves.back().push_back({node->prefix, node});
    }
    leaves_.swap(leaves);
}

void SwJsonObject::indexNode_(Place place, Entry entry)
{
    if (leaves_[place.leaf].size() >= kLeafEntries) {
        place = splitLeaf_(place);
    }
    Leaf& leaf = leaves_[place.leaf];
    leaf.insert(leaf.begin() + static_cast<std::ptrdiff_t>(place.at), entry);
}

SwJsonObject::Place SwJsonObject::splitLeaf_(Place place)
{
    Leaf const& full = leaves_[place.leaf];
    // Behind the last entry nothing moves over, so that members arriving in order fill every leaf.
    std::size_t const cut = place.at == full.size() ? full.size() : full.size() / 2;
    Leaf upper;
    upper.reserve(kLeafEntries);
    upper.assign(full.begin() + static_cast<std::ptrdiff_t>(cut), full.end());
    leaves_.insert(leaves_.begin() + static_cast<std::ptrdiff_t>(place.leaf) + 1, std::move(upper));
    leaves_[place.leaf].resize(cut);
    if (place.at >= cut) {
        ++place.leaf;
        place.at -= cut;
    }
    return place;
}

void SwJsonObject::copyMembers_(SwJsonObject const& other, std::vector<SwJsonCopy>& pending)
{
    if (other.empty()) {
        return;
    }
    SwJsonTree::MemberFiller filler(*this, other.size_, other.nameBytes_, nullptr);
    for (Node const* node = other.first_; node != nullptr; node = node->next) {
        if (SwJsonTree::copyFields(node->member.second, filler.append(node->prefix, node->member.first), pending)) {
            filler.lastOwns();
        }
    }
}

void SwJsonObject::destroyMembers_() noexcept
{
    if (mayOwn_ == kAll) {
        while (first_ != nullptr) {
            dropFirst_();
        }
        return;
    }
    std::size_t const group = SwJsonTree::nodesPerBit(*this);
    for (std::uint64_t bits = mayOwn_; bits != 0; bits &= bits - 1) {
        std::size_t const begin = static_cast<std::size_t>(std::countr_zero(bits)) * group;
        std::destroy(block_ + begin, block_ + std::min(begin + group, size_));
    }
}

void SwJsonObject::destroyNode_(Node* node) noexcept
{
    bool const isInBlock = !std::less<>()(node, block_) && std::less<>()(node, blockEnd_);
    node->~Node();
    if (!isInBlock) {
        ::operator delete(node);
    }
}

void SwJsonObject::dropFirst_() noexcept
{
    mayOwn_ = kAll;
    destroyNode_(std::exchange(first_, first_->next));
}
