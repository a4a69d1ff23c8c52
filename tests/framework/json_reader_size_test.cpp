// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reading documents of every size and depth.
#include "SwJson.h"

#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <thread>

using framework_test::readText;
using framework_test::treeText;

namespace {

constexpr std::size_t kLevels = 1000000;

}  // namespace

TEST(SwJsonReader, ObjectsOfEverySizeReadLikeAMap)
{
    std::mt19937 random(23);
    for (unsigned const members : {0U, 1U, 7U, 8U, 9U, 20U, 127U, 128U, 129U, 300U, 5000U}) {
        for (unsigned const names : {1U, members / 2 + 1, members * 3 + 1}) {
            SCOPED_TRACE(testing::Message() << members << " members of " << names << " names");
            std::map<std::string, std::string> model;
            std::string text = "{";
            for (unsigned i = 0; i < members; ++i) {
                std::string const name = "member" + std::to_string(random() % names);
                std::string const value =
                    i % 3 == 0 ? "[i" + std::to_string(i) + "]" : "'value " + std::to_string(i) + "'";
                text += (i == 0 ? "\"" : ",\"") + name + "\":";
                text += i % 3 == 0 ? "[" + std::to_string(i) + "]" : "\"value " + std::to_string(i) + "\"";
                model[name] = value;
            }
            std::string expected;
            for (auto const& [name, value] : model) {
                expected.append(expected.empty() ? "" : ",").append(name).append(":").append(value);
            }
            ASSERT_EQ(readText(text + "}"), "{" + expected + "}");
            SwString error;
            SwJsonObject object = SwJsonDocument::fromJson(text + "}", SwString(), error).object();
            for (unsigned i = 0; i < names && i < 1000; ++i) {
                std::string const name = "member" + std::to_string(i);
                ASSERT_EQ(object.contains(name), model.count(name) == 1);
                object[name + "x"] = 1;
                ASSERT_EQ(object.erase(name), model.count(name));
            }
        }
    }
}

TEST(SwJsonReader, PartsOfALargeDocumentOutliveIt)
{
    std::string text = "[";
    for (int i = 0; i < 20000; ++i) {
        text += "{\"a\":[" + std::to_string(i) + "],\"a name beyond the short form\":{\"b\":\"x\"}},";
    }
    text += "]";
    SwJsonValue kept;
    std::thread([&] {
        SwString error;
        SwJsonValue root = SwJsonDocument::fromJson(text, SwString(), error).takeRoot();
        ASSERT_EQ(root.toArray().size(), 20000U);
        kept = std::move((*root.editArray())[12345]);
    }).join();
    EXPECT_EQ(treeText(kept), "{a:[i12345],a name beyond the short form:{b:'x'}}");
    (*kept.editObject())["c"] = 1;
    EXPECT_EQ(kept.editObject()->erase("a"), 1U);
    EXPECT_EQ(treeText(kept), "{a name beyond the short form:{b:'x'},c:i1}");
    // Chunks that went back are used again.
    for (int round = 0; round < 5; ++round) {
        SwString error;
        EXPECT_EQ(SwJsonDocument::fromJson(text, SwString(), error).array().size(), 20000U);
        EXPECT_TRUE(SwJsonDocument::fromJson(text + "x", SwString(), error).isNull());
    }
}

TEST(SwJsonReader, AMillionLevelsAreReadOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        std::string arrays(kLevels, '[');
        arrays.append("7").append(std::string(kLevels, ']'));
        std::string objects;
        for (std::size_t i = 0; i < kLevels; ++i) {
            objects.append("{\"a\":");
        }
        SwString error;
        std::size_t depth = 0;
        SwJsonDocument const document = SwJsonDocument::fromJson(arrays, SwString(), error);
        EXPECT_EQ(error.toStdString(), "");
        SwJsonValue const* value = &document.root();
        for (; value->isArray(); ++depth) {
            value = &value->toArray()[0];
        }
        EXPECT_EQ(depth, kLevels);
        EXPECT_EQ(value->toInt(), 7);
        EXPECT_EQ(readText(objects).substr(0, 48), "error: Unexpected end of JSON input (index 50000");
        EXPECT_EQ(readText(std::string(kLevels, '[')).substr(0, 50),
                  "error: Unterminated JSON array (index 1000000) nea");
    });
}

TEST(SwJsonReader, AMillionLevelsAreReadWithAKeyOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        SwString const key = "key";
        std::string text;
        for (std::size_t i = 0; i < kLevels; ++i) {
            text.append(i % 2 == 0 ? "[" : "{\"a\":");
        }
        text.append(SwString("7").encryptAES(key).toStdString());
        for (std::size_t i = kLevels; i > 0; --i) {
            text.append(i % 2 == 1 ? "]" : "}");
        }
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, key, error);
        EXPECT_EQ(error.toStdString(), "");
        SwJsonValue const* value = &document.root();
        while (value->hasContainer()) {
            value = value->isArray() ? &value->toArray()[0] : &value->toObject()["a"];
        }
        EXPECT_EQ(value->toInt(), 7);
    });
}
