// From the reader's steps to the value tree: records while a container is open, exact memory when it closes.
#include "sw_json_builder.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <utility>

namespace sw_detail {

namespace {

/// Room for the records of one telemetry payload.
constexpr std::size_t kFirstRecords = 64;
constexpr std::size_t kFirstLevels = 8;

/// From this size on a text is read into chunks of its own. Smaller ones take single blocks, so that what
/// outlives a frame does not hold on to a chunk.
constexpr std::size_t kLargeText = std::size_t{16} * 1024;

/// From so many members on their order is worth remembering.
constexpr std::size_t kFirstRemembered = 8;

/// How the members of an object last sorted by this thread had to be placed. A source of telemetry sends the same
/// names in the same order again and again: then there is nothing to sort.
struct LastOrder {
    std::size_t count = 0;
    std::array<std::uint8_t, 256> places{};  ///< the first `count` say which member comes where
};
constinit thread_local LastOrder lastOrder;

}  // namespace

JsonBuilder::JsonBuilder(std::size_t textBytes)
    : room_(firstRoom_.data(), firstRoom_.size())
    , isLarge_(textBytes >= kLargeText)
    , records_(room_, kFirstRecords)
    , levels_(room_, kFirstLevels)
    , ranks_(room_, kFirstRecords)
    , finished_(&room_)
{
    finished_.reserve(kFirstLevels);
}

std::string_view JsonBuilder::keep(std::string_view bytes)
{
    char* const kept = static_cast<char*>(room_.allocate(bytes.size(), 1));
    bytes.copy(kept, bytes.size());
    return {kept, bytes.size()};
}

void JsonBuilder::close()
{
    Level const level = levels_.top();
    levels_.shrink(levels_.size() - 1);
    Record const* const first = records_.begin() + level.firstRecord;
    std::shared_ptr<void> made =
        level.isObject ? makeObject_(first, records_.end()) : makeArray_(first, records_.end());
    records_.shrink(level.firstRecord);
    // What is left of these are members that a later one of their name replaced.
    finished_.resize(level.firstFinished);
    name_ = level.name;
    record_(level.isObject ? SwJsonValue::Object : SwJsonValue::Array).size = finished_.size();
    finished_.push_back(std::move(made));
}

SwJsonValue JsonBuilder::takeRoot()
{
    SwJsonValue root;
    fill_(root, records_.top());
    return root;
}

std::unique_ptr<JsonDocumentMemory> JsonBuilder::takeMemory()
{
    if (!isLarge_ || !isWhole_) {
        return nullptr;
    }
    return std::make_unique<JsonDocumentMemory>(JsonDocumentMemory{chunks_.takeBlocks(), std::move(owners_)});
}

/// Makes the waiting value in a Null slot; whether it owns memory.
inline bool JsonBuilder::fill_(SwJsonValue& slot, Record const& record)
{
    bool owns = false;
    switch (record.type) {
    case SwJsonValue::Null:
        return false;
    case SwJsonValue::Bool:
        SwJsonTree::setBool(slot, record.whole != 0);
        return false;
    case SwJsonValue::Int:
        SwJsonTree::setInt(slot, record.whole);
        return false;
    case SwJsonValue::Double:
        SwJsonTree::setDouble(slot, record.real);
        return false;
    case SwJsonValue::String:
        owns = record.size > std::string().capacity();
        if (owns && isLarge_) {
            owners_.push_back(&slot);
        }
        SwJsonTree::setString(slot, {record.text, record.size});
        return owns;
    case SwJsonValue::Object:
        SwJsonTree::setObject(slot, std::static_pointer_cast<SwJsonObject>(std::move(finished_[record.size])));
        return true;
    case SwJsonValue::Array:
        SwJsonTree::setArray(slot, std::static_pointer_cast<SwJsonArray>(std::move(finished_[record.size])));
        return true;
    }
    return false;
}

std::shared_ptr<void> JsonBuilder::makeArray_(Record const* first, Record const* end)
{
    auto array = std::allocate_shared<SwJsonArray>(JsonAllocator<SwJsonArray>(arena_()));
    SwJsonTree::resize(*array, static_cast<std::size_t>(end - first), arena_());
    for (SwJsonValue& item : *array) {
        fill_(item, *first++);
    }
    return array;
}

inline bool JsonBuilder::ranksBefore_(Rank const& a, Rank const& b)
{
    return a.prefix != b.prefix ? a.prefix < b.prefix : a.record->name < b.record->name;
}

/// Puts the members in order, of several with one name only the last.
void JsonBuilder::rankMembers_(Record const* first, Record const* end)
{
    LastOrder const& known = lastOrder;
    std::uint8_t const* const places =
        known.count == static_cast<std::size_t>(end - first) ? known.places.data() : nullptr;
    ranks_.shrink(0);
    bool inOrder = true;
    for (std::ptrdiff_t i = 0; i < end - first; ++i) {
        Record const* const record = first + (places != nullptr ? places[i] : i);
        Rank const& rank = ranks_.push(SwJsonTree::prefixOf(record->name), record);
        inOrder = inOrder && (i == 0 || ranksBefore_(*(&rank - 1), rank));
    }
    if (!inOrder) {
        sortRanks_(first);
    }
}

void JsonBuilder::sortRanks_(Record const* first)
{
    std::sort(ranks_.begin(), ranks_.end(), [](Rank const& a, Rank const& b) {
        return ranksBefore_(a, b) || (!ranksBefore_(b, a) && a.record > b.record);
    });
    auto const isSame = [](Rank const& a, Rank const& b) { return !ranksBefore_(a, b); };
    Rank const* const firstRepeated = std::unique(ranks_.begin(), ranks_.end(), isSame);
    if (firstRepeated != ranks_.end()) {
        isWhole_ = false;
        ranks_.shrink(static_cast<std::size_t>(firstRepeated - ranks_.begin()));
        return;
    }
    LastOrder& last = lastOrder;
    if (ranks_.size() >= kFirstRemembered && ranks_.size() <= last.places.size()) {
        last.count = ranks_.size();
        std::transform(ranks_.begin(), ranks_.end(), last.places.begin(),
                       [first](Rank const& rank) { return static_cast<std::uint8_t>(rank.record - first); });
    }
}

std::shared_ptr<void> JsonBuilder::makeObject_(Record const* first, Record const* end)
{
    rankMembers_(first, end);
    std::size_t nameBytes = 0;
    for (Rank const& rank : ranks_) {
        nameBytes += rank.record->name.size();
    }
    auto object = std::allocate_shared<SwJsonObject>(JsonAllocator<SwJsonObject>(arena_()));
    if (ranks_.empty()) {
        return object;
    }
    SwJsonTree::MemberFiller filler(*object, ranks_.size(), nameBytes, arena_());
    for (Rank const& rank : ranks_) {
        if (fill_(filler.append(rank.prefix, rank.record->name), *rank.record)) {
            filler.lastOwns();
        }
    }
    return object;
}

}  // namespace sw_detail
