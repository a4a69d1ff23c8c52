// The inside of the value tree for the units that build and walk it: reader, writer, copies. Internal.
#pragma once

#include "SwJson.h"
#include "sw_json_memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>
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
    static void setObject(SwJsonValue& slot, std::shared_ptr<SwJsonObject>&& object) noexcept
    {
        slot.object_ = std::move(object);
        slot.type_ = SwJsonValue::Object;
    }
    static void setArray(SwJsonValue& slot, std::shared_ptr<SwJsonArray>&& array) noexcept
    {
        slot.array_ = std::move(array);
        slot.type_ = SwJsonValue::Array;
    }

    /// Gives an empty array its items, all Null, in memory taken at once.
    static void resize(SwJsonArray& array, std::size_t size, sw_detail::JsonArena* arena);

    /// The first eight bytes of a key as a number, the first on top, so that numbers compare as the keys do.
    static std::uint64_t prefixOf(std::string_view key) noexcept
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

    /// How many nodes of the block of an object share a bit of what may own memory.
    static std::size_t nodesPerBit(SwJsonObject const& object) noexcept
    {
        return static_cast<std::size_t>(object.blockEnd_ - object.block_) / kBits + 1;
    }

    /// Lays the members of an empty object down in order, in memory taken at once.
    class MemberFiller {
    public:
        /// Room for so many members, at least one, whose names have so many bytes together.
        MemberFiller(SwJsonObject& object, std::size_t members, std::size_t nameBytes, sw_detail::JsonArena* arena)
            : object_(object)
            , link_(&object.first_)
            , node_(static_cast<SwJsonObject::Node*>(
                  sw_detail::takeJsonMemory(arena, members * sizeof(SwJsonObject::Node) + nameBytes)))
        {
            object.block_ = node_;
            object.blockEnd_ = node_ + members;
            name_ = reinterpret_cast<char*>(object.blockEnd_);
        }
        MemberFiller(MemberFiller const&) = delete;
        MemberFiller& operator=(MemberFiller const&) = delete;
        ~MemberFiller()
        {
            object_.size_ = static_cast<std::size_t>(node_ - object_.block_);
            object_.nameBytes_ = static_cast<std::size_t>(name_ - reinterpret_cast<char*>(object_.blockEnd_));
            object_.mayOwn_ = mayOwn_;
        }
        /// The value appended last is one that owns memory.
        void lastOwns()
        {
            auto const index = static_cast<std::size_t>(node_ - object_.block_) - 1;
            mayOwn_ |= std::uint64_t{1} << index / nodesPerBit(object_);
        }
        /// A new Null value under `key`, which is greater than all before; `prefix` holds its first bytes.
        SwJsonValue& append(std::uint64_t prefix, std::string_view key)
        {
            copyShort(name_, key.data(), key.size());
            SwJsonObject::Node* const node = new (node_) SwJsonObject::Node(prefix, {name_, key.size()});
            ++node_;
            name_ += key.size();
            *link_ = node;
            link_ = &node->next;
            return node->member.second;
        }

    private:
        SwJsonObject& object_;
        SwJsonObject::Node** link_;
        SwJsonObject::Node* node_;  ///< where the next one will stand
        char* name_ = nullptr;      ///< and its name
        std::uint64_t mayOwn_ = 0;
    };

    /// Makes `target`, whose scalar fields are those of `source` already, a deep copy of it.
    static void copyTree(SwJsonValue const& source, SwJsonValue& target);
    /// Copies kind and scalar fields into a Null value; a container goes onto the list. Whether the copy owns memory.
    static bool copyFields(SwJsonValue const& source, SwJsonValue& target, std::vector<SwJsonCopy>& pending)
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
        return source.hasContainer() || target.string_.capacity() > std::string().capacity();
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
    /// The same for the root of a document that nobody could change, without a walk through its tree.
    static void releaseAll(SwJsonValue& root, sw_detail::JsonDocumentMemory& memory) noexcept;

private:
    static constexpr std::size_t kBits = 64;

    /// As memcpy; without a call for a few bytes, as names are: from both ends, where the pieces may overlap.
    static void copyShort(char* to, char const* from, std::size_t size) noexcept
    {
        auto const copyEnds = [&](auto piece) {
            std::memcpy(to, from, piece);
            std::memcpy(to + size - piece, from + size - piece, piece);
        };
        if (size > 32) {
            std::memcpy(to, from, size);
        } else if (size >= 16) {
            copyEnds(std::integral_constant<std::size_t, 16>());
        } else if (size >= 8) {
            copyEnds(std::integral_constant<std::size_t, 8>());
        } else if (size >= 4) {
            copyEnds(std::integral_constant<std::size_t, 4>());
        } else {
            std::copy_n(from, size, to);
        }
    }
    /// Four bytes as a number, the first on top; compilers make one load of it.
    static std::uint32_t bigEndian32(char const* bytes) noexcept
    {
        auto const byte = [bytes](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(bytes[i])}; };
        return byte(0) << 24U | byte(1) << 16U | byte(2) << 8U | byte(3);
    }

    struct Containers;
    static bool equalFields(SwJsonValue const& a, SwJsonValue const& b, std::vector<Pair>& pending);
    static SwJsonValue* nextToRelease(Containers& containers) noexcept;
    static SwJsonValue& slotOf(Containers& containers) noexcept;
    static void releaseDeep(SwJsonValue& value) noexcept;
};
