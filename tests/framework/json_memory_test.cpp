// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What JSON trees cost in memory, and what is left when there is none.
#include "SwJson.h"

#include "live_memory.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

using framework_test::treeText;

namespace {

constexpr char const* kLong = "a text that is longer than short strings";

SwJsonValue readValue(SwString const& text, std::size_t& cursor)
{
    SwString error;
    SwJsonValue value = SwJsonDocument::parseJson(text, cursor, SwString(), error);
    EXPECT_EQ(error.toStdString(), "");
    return value;
}

}  // namespace

// Each of them once held 64 KiB, because the text around it is large.
TEST(SwJsonMemory, SmallValuesOfALargeTextStaySmall)
{
    constexpr std::size_t kValues = 20000;
    std::string text;
    for (std::size_t i = 0; i < kValues; ++i) {
        text += "{\"a\":1} ";
    }
    SwString const shared = text;
    std::vector<SwJsonValue> kept;
    kept.reserve(kValues);
    std::size_t const before = live_memory::newBytes();
    for (std::size_t cursor = 0; kept.size() < kValues;) {
        kept.push_back(readValue(shared, cursor));
    }
    EXPECT_LT(live_memory::newBytes() - before, kValues * 640);
    EXPECT_EQ(treeText(kept.back()), "{a:i1}");
}

// A large document read in between must not make them larger.
TEST(SwJsonMemory, SmallValuesStaySmallBetweenLargeOnes)
{
    constexpr std::size_t kValues = 500;
    std::string large = "[";
    for (int i = 0; i < 300; ++i) {
        large += "{\"a\":[1,2,3]},";
    }
    large += "]";
    std::vector<SwJsonValue> kept;
    kept.reserve(kValues);
    std::size_t const before = live_memory::newBytes();
    for (std::size_t i = 0; i < kValues; ++i) {
        std::size_t cursor = 0;
        EXPECT_EQ(readValue(large, cursor).toArray().size(), 300U);
        cursor = 0;
        kept.push_back(readValue("{\"a\":1}", cursor));
    }
    EXPECT_LT(live_memory::newBytes() - before, kValues * 640 + 32768);
}

TEST(SwJsonMemory, AKeptMemberLetsItsDocumentGo)
{
    std::string text = "{";
    for (int i = 0; i < 5000; ++i) {
        text += "\"member " + std::to_string(i) + "\":{\"a\":[1,2,{\"b\":null}]},";
    }
    SwString const document = text + "}";
    std::size_t const before = live_memory::newBytes();
    std::size_t cursor = 0;
    SwJsonValue root = readValue(document, cursor);
    ASSERT_GT(live_memory::newBytes() - before, 1000000U);
    SwJsonValue const kept = std::move((*root.editObject())["member 2500"]);
    root = SwJsonValue();
    // The neighbours that were made together with it, and what waits for the next document.
    EXPECT_LT(live_memory::newBytes() - before, 80000U);
    EXPECT_EQ(treeText(kept), "{a:[i1,i2,{b:null}]}");
}

TEST(SwJsonMemory, NothingIsLeftBehindButOneChunk)
{
    std::string text = "[";
    for (int i = 0; i < 1000; ++i) {
        text += "{\"a\":[1,\"" + std::string(kLong) + "\"]},";
    }
    SwString const document = text + "]";
    std::size_t const before = live_memory::newBytes();
    for (int round = 0; round < 3; ++round) {
        std::size_t cursor = 0;
        readValue(document, cursor);
        EXPECT_LE(live_memory::newBytes() - before, 16384U);
    }
}

TEST(SwJsonMemory, LookingAndErasingTakeNone)
{
    SwString error;
    SwJsonObject object = SwJsonDocument::fromJson(R"({"a":1,"b":[2],"c":{"d":3},"e":4})", SwString(), error).object();
    object["inserted"] = 5;
    std::size_t const before = live_memory::allocations();
    std::int64_t sum = 0;
    for (auto& [key, value] : object) {
        sum += value.toInt() + (object.find(key) != object.end() ? 10 : 0);
    }
    EXPECT_EQ(sum, 60);
    EXPECT_TRUE(std::as_const(object)["absent"].isNull());
    EXPECT_EQ(object.erase("absent"), 0U);
    for (char const* const key : {"b", "inserted", "a", "e", "c"}) {
        EXPECT_EQ(object.erase(key), 1U);
    }
    EXPECT_EQ(live_memory::allocations(), before);
    EXPECT_TRUE(object.empty());
}

TEST(SwJsonMemory, AnObjectGivesItsInsertedMembersBack)
{
    std::size_t const before = live_memory::newBytes();
    {
        SwJsonObject object;
        object["b"] = 1;
        object["a"] = kLong;
        object["c"] = SwJsonValue(SwJsonObject{{"nested", kLong}});
    }
    EXPECT_EQ(live_memory::newBytes(), before);
}

TEST(SwJsonMemory, MembersThatComeAndGoDoNotPileUp)
{
    SwJsonObject object{{"a", 1}, {"b", 2}};
    auto const comeAndGo = [&object] {
        for (int i = 0; i < 100; ++i) {
            object[kLong] = kLong;
            object.erase(kLong);
        }
    };
    comeAndGo();
    std::size_t const before = live_memory::newBytes();
    comeAndGo();
    EXPECT_EQ(live_memory::newBytes(), before);
}

// The text that was there was lost.
TEST(SwJsonMemory, RunningOutWhileWritingLeavesTheText)
{
    SwJsonValue const value(SwJsonObject{{kLong, SwJsonArray{kLong, 1.5, true}}});
    SwString const before = kLong;
    SwString text = before;
    bool failed = true;
    for (std::size_t allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(allocation);
        ASSERT_LT(allocation, 100U);
        text = before;
        failed = false;
        live_memory::failAllocation(allocation);
        try {
            SwJsonDocument::generateJson(value, text, true, 0, SwString());
        } catch (std::bad_alloc const&) {
            failed = true;
        }
        live_memory::failAllocation(0);
        if (failed) {
            EXPECT_EQ(text.toStdString(), before.toStdString());
        }
    }
    EXPECT_EQ(text.toStdString(), std::string(kLong) + "{\n  \"" + kLong + "\": [\n    \"" + kLong +
                                      "\",\n    1.500000,\n    true\n  ]\n}");
}

TEST(SwJsonMemory, RunningOutWhileReadingIsNoErrorOfTheText)
{
    std::string members;
    for (int i = 0; i < 100; ++i) {
        members += "\"member " + std::to_string(100 - i) + "\":[{},\"" + std::string(kLong) + "\"],";
    }
    SwString const text = "{" + members + "\"x\":\"\\n" + kLong + "\"}";
    SwString error;
    bool failed = true;
    for (std::size_t allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(allocation);
        ASSERT_LT(allocation, 1000U);
        std::size_t bytes = 0;
        // The second run finds in place what waits for the next document.
        for (int round = 0; round < 2; ++round) {
            bytes = live_memory::newBytes();
            failed = false;
            live_memory::failAllocation(allocation);
            try {
                EXPECT_EQ(SwJsonDocument::fromJson(text, SwString(), error).object().size(), 101U);
            } catch (std::bad_alloc const&) {
                failed = true;
            }
            live_memory::failAllocation(0);
        }
        EXPECT_EQ(live_memory::newBytes(), bytes);
        EXPECT_EQ(error.toStdString(), "");
    }
}

TEST(SwJsonMemory, RunningOutWhileInsertingLeavesTheObject)
{
    SwString error;
    SwJsonObject const source = SwJsonDocument::fromJson(R"({"a":1,"c":2,"e":3})", SwString(), error).object();
    for (char const* const key : {"0", "b", "d is a name beyond the short form", "f"}) {
        bool failed = true;
        for (std::size_t allocation = 1; failed; ++allocation) {
            SwJsonObject object = source;
            failed = false;
            live_memory::failAllocation(allocation);
            try {
                object[key] = 9;
            } catch (std::bad_alloc const&) {
                failed = true;
            }
            live_memory::failAllocation(0);
            EXPECT_EQ(object.size(), failed ? 3U : 4U);
            EXPECT_EQ(object == source, failed);
            EXPECT_EQ(object.contains(key), !failed);
        }
    }
}

TEST(SwJsonMemory, RunningOutWhileMergingLeavesTheObject)
{
    SwString error;
    SwJsonObject const source = SwJsonDocument::fromJson(R"({"b":1,"d":2})", SwString(), error).object();
    bool failed = true;
    for (std::size_t allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(allocation);
        std::size_t const before = live_memory::newBytes();
        {
            SwJsonObject object = source;
            SwJsonObject addition{{"a", 3}, {"b", 4}, {kLong, 5}, {"z", 6}};
            failed = false;
            live_memory::failAllocation(allocation);
            try {
                object.addMissing(std::move(addition));
            } catch (std::bad_alloc const&) {
                failed = true;
            }
            live_memory::failAllocation(0);
            EXPECT_EQ(object.size(), failed ? 2U : 5U);
            EXPECT_EQ(object == source, failed);
        }
        EXPECT_EQ(live_memory::newBytes(), before);
    }
}
