// The inside of the value tree for the units that build and walk it: reader, writer, copies. Internal.
#pragma once

#include "SwJson.h"
#include "sw_json_memory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

class SwJsonTree {
public:
    // Each setter expects a Null value, as a fresh slot is.
    static void setBool(SwJsonValue& slot, bool value) noexcept
    {
        slot.type_ = SwJsonValue::Bool;
        slot.bool_ = value;
    }
    static void setInt(SwJsonValue& slot, std::int64_t value) noexcept
    {
        slot.type_ = SwJsonValue::Int;
        slot.int_ = value;
    }
    static void setDouble(SwJsonValue& slot, double value) noexcept
    {
        slot.type_ = SwJsonValue::Double;
        slot.double_ = value;
    }
    static void setString(SwJsonValue& slot, std::string_view text)
    {
        slot.string_.assign(text);
        slot.type_ = SwJsonValue::String;
    }
    static SwJsonObject& setObject(SwJsonValue& slot, sw_detail::JsonArena* arena)
    {
        slot.object_ = std::allocate_shared<SwJsonObject>(sw_detail::JsonAllocator<SwJsonObject>(arena));
        slot.type_ = SwJsonValue::Object;
        return *slot.object_;
    }
    static SwJsonArray& setArray(SwJsonValue& slot, sw_detail::JsonArena* arena)
    {
        slot.array_ = std::allocate_shared<SwJsonArray>(sw_detail::JsonAllocator<SwJsonArray>(arena));
        slot.type_ = SwJsonValue::Array;
        return *slot.array_;
    }

    static void resize(SwJsonArray& array, std::size_t size) { array.items_.resize(size); }
    static std::uint64_t prefixOf(std::string_view key) noexcept { return SwJsonObject::prefixOf_(key); }

    /// Lays the members of an empty object down in order, in memory taken at once.
    class MemberFiller {
    public:
        MemberFiller(SwJsonObject& object, std::size_t members, sw_detail::JsonArena* arena)
            : object_(object)
            , link_(&object.first_)
        {
            if (members > 0) {
                object.addSlab_(members, arena);
                object.reserveIndex_(members);
            }
        }
        /// A new Null value under `key`, which is greater than all before; `prefix` holds its first bytes.
        SwJsonValue& append(std::uint64_t prefix, std::string_view key)
        {
            SwJsonObject::Node* const node = object_.appendNode_(key);
            *link_ = node;
            link_ = &node->next;
            object_.indexLast_({prefix, node});
            return node->member.second;
        }

    private:
        SwJsonObject& object_;
        SwJsonObject::Node** link_;
    };

    /// Makes `target`, whose scalar fields are those of `source` already, a deep copy of it.
    static void copyTree(SwJsonValue const& source, SwJsonValue& target);
    /// Copies kind and scalar fields into a Null value; a container goes onto the list.
    static void copyFields(SwJsonValue const& source, SwJsonValue& target, std::vector<SwJsonCopy>& pending)
    {
        target.type_ = source.type_;
        target.bool_ = source.bool_;
        target.int_ = source.int_;
        target.double_ = source.double_;
        if (!source.string_.empty()) {
            target.string_ = source.string_;
        }
        if (source.hasContainer()) {
            pending.push_back({&source, &target});
        }
    }
    static void copyItems(SwJsonArray const& source, SwJsonArray& target, std::vector<SwJsonCopy>& pending);
    /// Fills every container on the list and those found within.
    static void copyPending(std::vector<SwJsonCopy>& pending);

    /// Two values that are still to be compared.
    using Pair = std::pair<SwJsonValue const*, SwJsonValue const*>;
    static bool equal(SwJsonValue const& a, SwJsonValue const& b);
    static bool equalMembers(SwJsonObject const& a, SwJsonObject const& b, std::vector<Pair>& pending);
    static bool equalItems(SwJsonArray const& a, SwJsonArray const& b, std::vector<Pair>& pending);
    /// Compares every pair of containers on the list and those found within.
    static bool equalPending(std::vector<Pair>& pending);

    /// Lets go of the container of a value, with everything that only it holds.
    static void release(SwJsonValue& value) noexcept;

private:
    struct Containers;
    static bool equalFields(SwJsonValue const& a, SwJsonValue const& b, std::vector<Pair>& pending);
    static SwJsonValue* nextToRelease(Containers& containers) noexcept;
    static SwJsonValue& slotOf(Containers& containers) noexcept;
    static void releaseDeep(SwJsonValue& value) noexcept;
};
