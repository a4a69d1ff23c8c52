// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Payloads come out of their packing as they went in.
#include "clip/packed_payloads.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

TEST(PackedPayloads, GiveEveryKindOfValueBack)
{
    SwJsonObject const payload{
        {"array", SwJsonValue(SwJsonArray{SwJsonValue(1), SwJsonValue("two")})},
        {"bool", SwJsonValue(true)},
        {"double", SwJsonValue(-0.1)},
        {"empty", SwJsonValue("")},
        {"int", SwJsonValue(std::numeric_limits<std::int64_t>::min())},
        {"null", SwJsonValue()},
        {"object", SwJsonValue(SwJsonObject{{"a", SwJsonValue(1)}})},
        {"text", SwJsonValue(std::string("a\0b", 3))},
    };
    clip::PackedPayloads packed;
    packed.add({{"other", SwJsonValue(1)}});
    std::size_t const number = packed.add(payload);
    EXPECT_EQ(number, 1U);
    EXPECT_EQ(packed.unpack(number, std::vector<bool>(8, true)), payload);
    EXPECT_EQ(packed.unpack(number, {false, false, true, false, false, false, false, true}),
              (SwJsonObject{{"double", SwJsonValue(-0.1)}, {"text", SwJsonValue(std::string("a\0b", 3))}}));
    EXPECT_EQ(packed.unpack(number, std::vector<bool>(8, false)), SwJsonObject());
}

TEST(PackedPayloads, ShareTheirListsOfKeys)
{
    clip::PackedPayloads packed;
    packed.add({{"a", SwJsonValue(1)}});
    packed.add({{"a", SwJsonValue(1)}, {"b", SwJsonValue(2)}});
    packed.add({{"a", SwJsonValue("x")}});
    EXPECT_EQ(packed.keyListOf(0), packed.keyListOf(2));
    EXPECT_EQ(packed.keyLists(), (std::vector<std::vector<std::string>>{{"a"}, {"a", "b"}}));
}

}  // namespace
