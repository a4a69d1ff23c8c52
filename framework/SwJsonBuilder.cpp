// From the reader's steps to the value tree: records while a container is open, exact memory when it closes.
#include "sw_json_builder.h"

#include "sw_json_tree.h"

#include <algorithm>
#include <utility>

namespace sw_detail {

namespace {

/// Room for the records of one telemetry payload.
constexpr std::size_t kFirstRecords = 64;
constexpr std::size_t kFirstLevels = 16;

/// From this size on a text is read into chunks of its own. Smaller ones take single blocks, so that what
/// outlives a frame does not hold on to a chunk.
constexpr std::size_t kLargeText = std::size_t{16} * 1024;

}  // namespace

JsonBuilder::JsonBuilder(std::size_t textBytes) : isLarge_(textBytes >= kLargeText)
{
    records_.reserve(kFirstRecords);
}

void JsonBuilder::open_(bool isObject)
{
    if (levels_.capacity() == 0) {
        levels_.reserve(kFirstLevels);
    }
    levels_.push_back({name_, records_.size(), finished_.size(), isObject});
}

void JsonBuilder::close()
{
    Level const level = levels_.back();
    levels_.pop_back();
    SwJsonValue made = level.isObject ? makeObject_(level.firstRecord) : makeArray_(level.firstRecord);
    records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(level.firstRecord), records_.end());
    // What is left of these are members that a later one of their name replaced.
    finished_.erase(finished_.begin() + static_cast<std::ptrdiff_t>(level.firstFinished), finished_.end());
    name_ = level.name;
    record_(made.type()).whole = static_cast<std::int64_t>(finished_.size());
    finished_.push_back(std::move(made));
}

SwJsonValue JsonBuilder::takeRoot()
{
    SwJsonValue root;
    fill_(root, records_.front());
    records_.clear();
    finished_.clear();
    return root;
}

void JsonBuilder::fill_(SwJsonValue& slot, Record const& record)
{
    switch (record.type) {
    case SwJsonValue::Null:
        break;
    case SwJsonValue::Bool:
        SwJsonTree::setBool(slot, record.whole != 0);
        break;
    case SwJsonValue::Int:
        SwJsonTree::setInt(slot, record.whole);
        break;
    case SwJsonValue::Double:
        SwJsonTree::setDouble(slot, record.real);
        break;
    case SwJsonValue::String:
        SwJsonTree::setString(slot, record.text);
        break;
    case SwJsonValue::Object:
    case SwJsonValue::Array:
        slot.swap(finished_[static_cast<std::size_t>(record.whole)]);
        break;
    }
}

SwJsonValue JsonBuilder::makeArray_(std::size_t firstRecord)
{
    SwJsonValue value;
    SwJsonArray& array = SwJsonTree::setArray(value, arena_());
    SwJsonTree::resize(array, records_.size() - firstRecord);
    for (std::size_t i = firstRecord; i < records_.size(); ++i) {
        fill_(array[i - firstRecord], records_[i]);
    }
    return value;
}

/// In the order of the names, and of the text where names are equal.
bool JsonBuilder::ranksBefore_(Rank const& a, Rank const& b) const
{
    if (a.prefix != b.prefix) {
        return a.prefix < b.prefix;
    }
    int const order = records_[a.record].name.compare(records_[b.record].name);
    return order != 0 ? order < 0 : a.record < b.record;
}

void JsonBuilder::rankMembers_(std::size_t firstRecord)
{
    ranks_.clear();
    bool inOrder = true;
    for (std::size_t i = firstRecord; i < records_.size(); ++i) {
        Rank const rank{SwJsonTree::prefixOf(records_[i].name), i};
        inOrder = inOrder && (ranks_.empty() || ranksBefore_(ranks_.back(), rank));
        ranks_.push_back(rank);
    }
    if (!inOrder) {
        std::sort(ranks_.begin(), ranks_.end(), [this](Rank const& a, Rank const& b) { return ranksBefore_(a, b); });
    }
}

SwJsonValue JsonBuilder::makeObject_(std::size_t firstRecord)
{
    rankMembers_(firstRecord);
    SwJsonValue value;
    SwJsonObject& object = SwJsonTree::setObject(value, arena_());
    SwJsonTree::MemberFiller filler(object, ranks_.size(), arena_());
    for (std::size_t i = 0; i < ranks_.size(); ++i) {
        Record const& record = records_[ranks_[i].record];
        // The last of equal names counts.
        if (i + 1 < ranks_.size() && ranks_[i].prefix == ranks_[i + 1].prefix &&
            record.name == records_[ranks_[i + 1].record].name) {
            continue;
        }
        fill_(filler.append(ranks_[i].prefix, record.name), record);
    }
    return value;
}

}  // namespace sw_detail
