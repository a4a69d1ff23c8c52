// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A value is its type in one byte, then eight bytes of a number or a text's length, then the text.
#include "clip/packed_payloads.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace clip {
namespace {

template <typename Number>
void append(std::string& bytes, Number number)
{
    static_assert(sizeof(Number) == 8);
    char raw[sizeof(Number)];
    std::memcpy(raw, &number, sizeof(Number));
    bytes.append(raw, sizeof(Number));
}

template <typename Number>
Number take(char const*& bytes)
{
    Number number;
    std::memcpy(&number, bytes, sizeof(Number));
    bytes += sizeof(Number);
    return number;
}

bool hasKeys(SwJsonObject const& payload, std::vector<std::string> const& keys)
{
    return std::equal(payload.begin(), payload.end(), keys.begin(), keys.end(),
                      [](auto const& member, std::string const& key) { return member.first == key; });
}

}  // namespace

std::size_t PackedPayloads::add(SwJsonObject const& payload)
{
    Packed packed;
    packed.keyList = keyListFor_(payload);
    for (auto const& [key, value] : payload) {
        pack_(value, packed.values);
    }
    packed.values.shrink_to_fit();
    payloads_.push_back(std::move(packed));
    return payloads_.size() - 1;
}

std::size_t PackedPayloads::keyListFor_(SwJsonObject const& payload)
{
    // A source sends the same keys again and again.
    if (!payloads_.empty() && hasKeys(payload, keyLists_[payloads_.back().keyList])) {
        return payloads_.back().keyList;
    }
    auto const [found, isNew] = numbers_.try_emplace(payload.keys(), keyLists_.size());
    if (isNew) {
        keyLists_.push_back(found->first);
    }
    return found->second;
}

void PackedPayloads::pack_(SwJsonValue const& value, std::string& bytes)
{
    bytes += static_cast<char>(value.type());
    switch (value.type()) {
    case SwJsonValue::Null:
        break;
    case SwJsonValue::Bool:
        append(bytes, std::int64_t{value.toBool()});
        break;
    case SwJsonValue::Int:
        append(bytes, value.toInt());
        break;
    case SwJsonValue::Double:
        append(bytes, value.toDouble());
        break;
    case SwJsonValue::String:
        append(bytes, std::uint64_t{value.stringRef().size()});
        bytes += value.stringRef();
        break;
    case SwJsonValue::Object:
    case SwJsonValue::Array:
        append(bytes, std::uint64_t{containers_.size()});
        containers_.push_back(value);
        break;
    }
}

SwJsonValue PackedPayloads::next_(char const*& bytes) const
{
    switch (static_cast<SwJsonValue::Type>(*bytes++)) {
    case SwJsonValue::Null:
        break;
    case SwJsonValue::Bool:
        return take<std::int64_t>(bytes) != 0;
    case SwJsonValue::Int:
        return take<std::int64_t>(bytes);
    case SwJsonValue::Double:
        return take<double>(bytes);
    case SwJsonValue::String: {
        auto const size = static_cast<std::size_t>(take<std::uint64_t>(bytes));
        bytes += size;
        return std::string_view(bytes - size, size);
    }
    case SwJsonValue::Object:
    case SwJsonValue::Array:
        return containers_[static_cast<std::size_t>(take<std::uint64_t>(bytes))];
    }
    return {};
}

SwJsonObject PackedPayloads::unpack(std::size_t payload, std::vector<bool> const& wanted) const
{
    Packed const& packed = payloads_[payload];
    char const* bytes = packed.values.data();
    SwJsonObject unpacked;
    auto isWanted = wanted.begin();
    for (std::string const& key : keyLists_[packed.keyList]) {
        SwJsonValue value = next_(bytes);
        if (*isWanted++) {
            unpacked.insertOrAssign(key, std::move(value));
        }
    }
    return unpacked;
}

}  // namespace clip
