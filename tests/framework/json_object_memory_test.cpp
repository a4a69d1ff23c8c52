// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How an object keeps its members: laid down at once by the reader and by copies, one by one when they are
// inserted, and changed in between. What leaks or is used too late shows under the sanitizers.
#include "SwJson.h"

#include "tree_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using framework_test::treeText;

namespace {

constexpr std::size_t kLengths[] = {0, 1, 3, 4, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 100000};

/// Names of every length that differ in their last byte only, a zero byte among them.
std::vector<std::string> namesOfAllLengths()
{
    std::vector<std::string> names;
    for (std::size_t const length : kLengths) {
        for (char const last : {'\0', 'a', 'b'}) {
            std::string name(length, 'n');
            if (!name.empty()) {
                name.back() = last;
            }
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::string quoted(std::string const& text)
{
    return "\"" + SwJsonValue::escapeString(text) + "\"";
}

SwJsonObject readObject(std::string const& text)
{
    SwString error;
    SwJsonValue root = SwJsonDocument::fromJson(text, SwString(), error).takeRoot();
    EXPECT_EQ(error.toStdString(), "");
    return root.editObject() == nullptr ? SwJsonObject() : std::move(*root.editObject());
}

/// As many members as asked for; every seventh holds memory of its own: a long text, an array or an object.
std::string mixedText(std::size_t members)
{
    std::string const owners[] = {"\"a text beyond the short form of strings\"", "[1,\"x\"]", "{\"y\":[2]}"};
    std::string text;
    for (std::size_t i = 0; i < members; ++i) {
        text += (i == 0 ? "{\"" : ",\"") + std::to_string(1000 + i) + "\":";
        text += i % 7 == 3 ? owners[i / 7 % 3] : std::to_string(i);
    }
    return text + "}";
}

constexpr std::size_t kSizes[] = {1, 8, 9, 46, 63, 64, 65, 127, 128, 129, 1000};

}  // namespace

TEST(SwJsonObjectMemory, NamesOfAllLengthsAreFoundHoweverTheyCame)
{
    std::vector<std::string> const names = namesOfAllLengths();
    std::string text = "{";
    SwJsonObject inserted;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        text += (text.size() == 1 ? "" : ",") + quoted(*name) + ":" + std::to_string(name->size());
        inserted[*name] = name->size();
    }
    SwJsonObject const read = readObject(text + "}");
    SwJsonObject const copied = inserted;
    for (SwJsonObject const* const object : {&std::as_const(inserted), &read, &copied}) {
        EXPECT_EQ(object->keys(), names);
        for (std::string const& name : names) {
            auto const found = object->find(name);
            ASSERT_TRUE(found != object->end());
            EXPECT_EQ(std::string(found->first), name);
            EXPECT_EQ(found->second.toInt(), static_cast<std::int64_t>(name.size()));
            EXPECT_FALSE(object->contains(name + "c"));
            EXPECT_FALSE(object->contains(name + '\0' + '\0'));
        }
        EXPECT_TRUE(*object == read);
    }
}

TEST(SwJsonObjectMemory, ANameBecomesAString)
{
    SwJsonObject const object{{"name", 1}};
    auto const& [key, value] = *object.begin();
    std::string const copy = key;
    EXPECT_EQ(copy, "name");
    EXPECT_EQ("<" + key + ">", "<name>");
    EXPECT_EQ((std::map<std::string, int>{{"name", 2}}.at(key)), 2);
}

TEST(SwJsonObjectMemory, LaidDownMembersCanBeErasedAndInserted)
{
    for (std::size_t const size : kSizes) {
        SCOPED_TRACE(size);
        SwJsonObject object = readObject(mixedText(size));
        std::map<std::string, std::string> model;
        for (auto const& [key, value] : std::as_const(object)) {
            model[key] = treeText(value);
        }
        ASSERT_EQ(model.size(), size);
        for (std::size_t i = 0; i < 2 * size; i += 3) {
            std::string const gone = std::to_string(1000 + i);
            ASSERT_EQ(object.erase(gone), model.erase(gone));
            std::string const added = gone + " a name of its own memory";
            object[added] = "also a text beyond the short form";
            model[added] = "'also a text beyond the short form'";
            object.insertOrAssign(std::to_string(1001 + i), SwJsonArray{1});
            model[std::to_string(1001 + i)] = "[i1]";
        }
        SwJsonObject const copy = object;
        for (SwJsonObject const* const checked : {&std::as_const(object), &copy}) {
            ASSERT_EQ(checked->size(), model.size());
            auto expected = model.begin();
            for (auto const& [key, value] : *checked) {
                ASSERT_EQ(key, expected->first);
                ASSERT_EQ(treeText(value), expected->second);
                ASSERT_TRUE(checked->find(key)->second == value);
                ++expected;
            }
        }
    }
}

TEST(SwJsonObjectMemory, ErasedLaidDownMembersStayAwayUntilTheyComeBack)
{
    for (std::size_t const size : kSizes) {
        SCOPED_TRACE(size);
        SwJsonObject object = readObject(mixedText(size));
        std::vector<std::string> keys = object.keys();
        std::set<std::string> model(keys.begin(), keys.end());
        std::shuffle(keys.begin(), keys.end(), std::mt19937(static_cast<unsigned>(size)));
        auto const expectModel = [&object, &model] {
            EXPECT_EQ(object.keys(), std::vector<std::string>(model.begin(), model.end()));
            EXPECT_EQ(object.size(), model.size());
        };
        for (std::string const& key : keys) {
            ASSERT_EQ(object.erase(key), model.erase(key));
            ASSERT_EQ(object.erase(key), 0U);
            ASSERT_FALSE(object.contains(key));
            // Every other one comes back at once, among erased ones and such that are still to go.
            if ((key.back() - '0') % 2 == 0) {
                object[key] = 7;
                model.insert(key);
                ASSERT_EQ(object.find(key)->second.toInt(), 7);
            }
        }
        expectModel();
        for (std::string const& key : keys) {
            object.insertOrAssign(key, 8);
            model.insert(key);
            ASSERT_EQ(object.erase(key), model.erase(key));
            object[key + "a"] = 9;
            model.insert(key + "a");
        }
        expectModel();
    }
}

TEST(SwJsonObjectMemory, PlacesOfLaidDownMembersStay)
{
    SwJsonObject object = readObject(mixedText(46));
    auto const first = object.begin();
    auto const kept = object.find("1020");
    SwJsonValue const* const value = &kept->second;
    for (int i = 0; i < 500; ++i) {
        object[std::to_string(i)] = i;
    }
    object.erase("1019");
    object.erase("1021");
    SwJsonObject moved = std::move(object);
    EXPECT_EQ(&moved["1020"], value);
    EXPECT_EQ(kept->first, "1020");
    EXPECT_EQ(value->toInt(), 20);
    EXPECT_EQ(first->first, "1000");
    moved = std::move(moved);          // NOLINT: a move onto itself is what is tested
    EXPECT_EQ(&moved["1020"], value);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved.size(), 46U + 500U - 2U);
}

TEST(SwJsonObjectMemory, EveryWayOfChangingAMemberIsSeenAtTheEnd)
{
    // Members that were numbers get memory of their own before the object goes.
    SwJsonValue const owner(SwJsonArray{"a text beyond the short form of strings", SwJsonArray{1}});
    for (std::size_t const size : kSizes) {
        SCOPED_TRACE(size);
        SwJsonObject subscript = readObject(mixedText(size));
        subscript["1000"] = owner;
        SwJsonObject assigned = readObject(mixedText(size));
        assigned.insertOrAssign("1000", owner);
        SwJsonObject found = readObject(mixedText(size));
        found.find("1000")->second = owner;
        SwJsonObject walked = readObject(mixedText(size));
        walked.begin()->second = owner;
        SwJsonObject copied = SwJsonObject(readObject(mixedText(size)));
        (*copied.begin()).second = owner;
        SwJsonObject swapped;
        swapped.swap(walked);
        for (SwJsonObject const* const object : {&subscript, &assigned, &found, &copied, &swapped}) {
            EXPECT_TRUE((*object)["1000"] == owner);
            EXPECT_EQ(object->size(), size);
        }
        EXPECT_TRUE(walked.empty());
        swapped.clear();
        EXPECT_TRUE(swapped.empty());
    }
}

TEST(SwJsonObjectMemory, AnyNumberOfThreadsMayRead)
{
    // Not const: looking up and iterating write nothing all the same.
    SwJsonObject object = readObject(mixedText(300));
    for (int i = 0; i < 50; ++i) {
        object[std::to_string(i)] = i;
    }
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&object] {
            for (int round = 0; round < 20; ++round) {
                std::size_t members = 0;
                for (auto& [key, value] : object) {
                    members += object.find(key)->second == value ? 1U : 0U;
                }
                EXPECT_EQ(members, 350U);
                EXPECT_TRUE(object.contains("1299"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(SwJsonObjectMemory, CopiesMayEndOnOtherThreads)
{
    SwJsonObject const object = readObject(mixedText(300));
    SwString error;
    // Large enough for memory that is shared by its containers.
    std::string text = "[";
    for (int i = 0; i < 100; ++i) {
        text += mixedText(50) + ",";
    }
    SwJsonValue large = SwJsonDocument::fromJson(text + "]", SwString(), error).takeRoot();
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 4; ++i) {
        SwJsonValue part = std::move((*large.editArray())[i]);
        threads.emplace_back([copy = object, part = std::move(part)]() mutable {
            EXPECT_EQ(copy.size(), 300U);
            EXPECT_EQ(part.toObject().size(), 50U);
            part = SwJsonValue();
            SwJsonObject const gone = std::move(copy);
        });
    }
    large = SwJsonValue();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(object.size(), 300U);
}

TEST(SwJsonObjectMemory, LargeDocumentsGoInEveryWay)
{
    std::string const members = mixedText(60);
    struct Row {
        char const* name;
        std::string text;
    };
    std::string many = "[";
    std::string repeated = "{";
    for (int i = 0; i < 60; ++i) {
        many += members + ",";
        repeated += "\"name " + std::to_string(i % 7) + "\":" + members + ",";
    }
    Row const rows[] = {
        {"many containers", many + "]"},
        {"containers replaced by later ones", repeated + "}"},
        {"one replaced deep inside", "[" + many + "],{\"a\":[[1]],\"a\":[\"a text beyond the short form\"]}]"},
        {"containers larger than a chunk takes", "{\"a\":" + mixedText(5000) + ",\"b\":[" + mixedText(900) + "]}"},
        {"one long string", quoted(std::string(100000, 's'))},
        {"long strings in an array",
         "[" + quoted(std::string(20000, 's')) + ",[" + quoted(std::string(20000, 't')) + "]]"},
        {"blanks around a little", std::string(20000, ' ') + members},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        SwString error;
        std::string const expected = framework_test::readText(row.text);
        for (int round = 0; round < 3; ++round) {
            SwJsonDocument document = SwJsonDocument::fromJson(row.text, SwString(), error);
            SwJsonDocument const copy = document;
            SwJsonDocument moved = std::move(document);
            EXPECT_TRUE(document.isNull());  // NOLINT: what a move leaves is part of the contract
            EXPECT_EQ(treeText(copy.root()), expected);
            SwJsonDocument assigned = SwJsonDocument::fromJson(row.text, SwString(), error);
            assigned = std::move(moved);
            EXPECT_EQ(treeText(assigned.root()), expected);
            moved = copy;
            EXPECT_TRUE(moved.root() == copy.root());
            SwJsonDocument given = SwJsonDocument::fromJson(row.text, SwString(), error);
            SwJsonValue const root = given.takeRoot();
            EXPECT_TRUE(given.isNull());
            EXPECT_TRUE(root == copy.root());
            std::thread([elsewhere = std::move(assigned)]() mutable { elsewhere = SwJsonDocument(); }).join();
        }
        EXPECT_TRUE(SwJsonDocument::fromJson(row.text + "x", SwString(), error).isNull());
        EXPECT_EQ(error.toStdString(), "Unexpected characters at the end of JSON.");
    }
}

TEST(SwJsonObjectMemory, SameNamesInSameOrderAgainAndAgain)
{
    // The reader remembers the order of the last object; none of these may be taken for another.
    std::string const texts[] = {
        R"({"i":1,"h":2,"g":3,"f":4,"e":5,"d":6,"c":7,"b":8,"a":9})",
        R"({"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9})",
        R"({"i":1,"h":2,"g":3,"f":4,"e":5,"d":6,"c":7,"b":8,"a":9})",
        R"({"i":1,"h":2,"g":3,"f":4,"e":5,"d":6,"c":7,"b":8,"b":9})",
        R"({"i":1,"h":2,"g":3,"f":4,"e":5,"d":6,"c":7,"b":8})",
        R"({"i":1,"h":2,"g":3,"f":4,"e":5,"d":6,"c":7,"bb":8,"b":9})",
    };
    std::string const expected[] = {
        "{a:i9,b:i8,c:i7,d:i6,e:i5,f:i4,g:i3,h:i2,i:i1}", "{a:i1,b:i2,c:i3,d:i4,e:i5,f:i6,g:i7,h:i8,i:i9}",
        "{a:i9,b:i8,c:i7,d:i6,e:i5,f:i4,g:i3,h:i2,i:i1}", "{b:i9,c:i7,d:i6,e:i5,f:i4,g:i3,h:i2,i:i1}",
        "{b:i8,c:i7,d:i6,e:i5,f:i4,g:i3,h:i2,i:i1}",      "{b:i9,bb:i8,c:i7,d:i6,e:i5,f:i4,g:i3,h:i2,i:i1}",
    };
    for (std::size_t before = 0; before < std::size(texts); ++before) {
        for (std::size_t i = 0; i < std::size(texts); ++i) {
            EXPECT_EQ(framework_test::readText(texts[before]), expected[before]);
            EXPECT_EQ(framework_test::readText(texts[i]), expected[i]) << "after " << texts[before];
        }
    }
    // More members than are remembered, many of them repeated.
    std::string many = "{\"i\":0";
    for (int i = 0; i < 600; ++i) {
        many += ",\"" + std::to_string(i * 7 % 100) + "\":" + std::to_string(i);
    }
    EXPECT_EQ(readObject(many + "}").size(), 101U);
    EXPECT_EQ(readObject(mixedText(101)).keys(), readObject(mixedText(101)).keys());
}
