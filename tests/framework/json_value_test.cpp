// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwJson.h"

#include "test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string_view>
#include <type_traits>
#include <utility>

namespace {

constexpr std::size_t kLevels = 1000000;

/// kLevels containers within each other, objects and arrays in turn, around one integer.
SwJsonValue deepTree()
{
    SwJsonValue tree(7);
    for (std::size_t i = 0; i < kLevels; ++i) {
        if (i % 2 == 0) {
            SwJsonArray array;
            array.append("beside");
            array.append(std::move(tree));
            tree = SwJsonValue(std::move(array));
        } else {
            SwJsonObject object;
            object["a"] = 1;
            object["b"] = std::move(tree);
            tree = SwJsonValue(std::move(object));
        }
    }
    return tree;
}

std::vector<std::string> keysInOrder(SwJsonObject const& object)
{
    std::vector<std::string> keys;
    keys.reserve(object.size());
    for (auto const& [key, value] : object) {
        keys.push_back(key);
    }
    return keys;
}

}  // namespace

// Only what is a JSON value becomes one by itself; a pointer once became true.
static_assert(std::is_constructible_v<SwJsonValue, std::string_view>);
static_assert(!std::is_constructible_v<SwJsonValue, void*>);
static_assert(!std::is_constructible_v<SwJsonValue, int*>);
static_assert(!std::is_constructible_v<SwJsonValue, SwJsonValue::Type>);
static_assert(noexcept(std::declval<SwJsonObject&>().erase("")));
static_assert(noexcept(std::declval<SwJsonObject&>().find("")));
static_assert(std::is_same_v<SwJsonObject::value_type, std::pair<std::string const, SwJsonValue>>);

TEST(SwJsonValue, KindsHaveTheirNumbers)
{
    EXPECT_EQ(SwJsonValue::Null, 0);
    EXPECT_EQ(SwJsonValue::Bool, 1);
    EXPECT_EQ(SwJsonValue::Int, 2);
    EXPECT_EQ(SwJsonValue::Double, 3);
    EXPECT_EQ(SwJsonValue::String, 4);
    EXPECT_EQ(SwJsonValue::Object, 5);
    EXPECT_EQ(SwJsonValue::Array, 6);
    EXPECT_EQ(sizeof(SwJsonValue::Type), 4U);
    // Kind and boolean share a word; integer, double, string and the two references follow.
    EXPECT_EQ(sizeof(SwJsonValue),
              24U + sizeof(std::string) + sizeof(std::shared_ptr<SwJsonObject>) + sizeof(std::shared_ptr<SwJsonArray>));
}

TEST(SwJsonValue, EachKindFillsItsFieldOnly)
{
    // In the order of the columns.
    struct Row {  // NOLINT(clang-analyzer-optin.performance.Padding)
        char const* name;
        SwJsonValue value;
        SwJsonValue::Type type;
        bool boolean;
        std::int64_t integer;
        double real;
        std::string text;
        bool container;
    };
    Row const rows[] = {
        {"default", SwJsonValue(), SwJsonValue::Null, false, 0, 0.0, "", false},
        {"null", nullptr, SwJsonValue::Null, false, 0, 0.0, "", false},
        {"true", true, SwJsonValue::Bool, true, 0, 0.0, "", false},
        {"int", -5, SwJsonValue::Int, false, -5, 0.0, "", false},
        {"wrapping unsigned", std::numeric_limits<std::uint64_t>::max(), SwJsonValue::Int, false, -1, 0.0, "", false},
        {"double", 2.5, SwJsonValue::Double, false, 0, 2.5, "", false},
        {"c string", "12", SwJsonValue::String, false, 0, 0.0, "12", false},
        {"null c string", static_cast<char const*>(nullptr), SwJsonValue::String, false, 0, 0.0, "", false},
        {"framework string", SwString("x"), SwJsonValue::String, false, 0, 0.0, "x", false},
        {"string view", std::string_view("xyz", 2), SwJsonValue::String, false, 0, 0.0, "xy", false},
        {"float", 0.5F, SwJsonValue::Double, false, 0, 0.5, "", false},
        {"object", SwJsonObject(), SwJsonValue::Object, false, 0, 0.0, "", true},
        {"array", SwJsonArray(), SwJsonValue::Array, false, 0, 0.0, "", true},
        {"null object", std::shared_ptr<SwJsonObject>(), SwJsonValue::Object, false, 0, 0.0, "", false},
        {"null array", std::shared_ptr<SwJsonArray>(), SwJsonValue::Array, false, 0, 0.0, "", false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.value.type(), row.type);
        EXPECT_EQ(row.value.isNull(), row.type == SwJsonValue::Null);
        EXPECT_EQ(row.value.isBool(), row.type == SwJsonValue::Bool);
        EXPECT_EQ(row.value.isInt(), row.type == SwJsonValue::Int);
        EXPECT_EQ(row.value.isDouble(), row.type == SwJsonValue::Double);
        EXPECT_EQ(row.value.isString(), row.type == SwJsonValue::String);
        EXPECT_EQ(row.value.isObject(), row.type == SwJsonValue::Object);
        EXPECT_EQ(row.value.isArray(), row.type == SwJsonValue::Array);
        EXPECT_EQ(row.value.toBool(), row.boolean);
        EXPECT_EQ(row.value.toInt(), row.integer);
        EXPECT_EQ(row.value.toDouble(), row.real);
        EXPECT_EQ(row.value.stringRef(), row.text);
        EXPECT_EQ(row.value.hasContainer(), row.container);
        EXPECT_TRUE(row.value.toObject().empty());
        EXPECT_TRUE(row.value.toArray().empty());
    }
}

TEST(SwJsonValue, ToStringIsTheShortForm)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        std::string expected;
    };
    Row const rows[] = {
        {"string", "a \"b\"\n", "a \"b\"\n"},
        {"true", true, "true"},
        {"false", false, "false"},
        {"zero", 0, "0"},
        {"lowest integer", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {"largest integer", std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
        {"double", 2.5, "2.500000"},
        {"whole double", 3.0, "3.000000"},
        {"negative zero", -0.0, "-0.000000"},
        {"small double", 1e-9, "0.000000"},
        {"rounded half to even", 0.5e-6, "0.000000"},
        {"1e20", 1e20, "100000000000000000000.000000"},
        {"infinity", std::numeric_limits<double>::infinity(), "inf"},
        {"not a number", std::numeric_limits<double>::quiet_NaN(), "nan"},
        {"null", nullptr, "null"},
        {"object", SwJsonObject{{"a", 1}}, "{}"},
        {"array", SwJsonArray{1, 2}, "{}"},
        {"null object", std::shared_ptr<SwJsonObject>(), "{}"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.value.toString(), row.expected);
    }
    EXPECT_EQ(SwJsonValue(std::numeric_limits<double>::max()).toString().size(), 309U + 7U);
}

TEST(SwJsonValue, ToStringAgreesWithPrintf)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        double const number = std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())),
                                         static_cast<int>(random() % 160) - 130);
        char expected[400];
        std::snprintf(expected, sizeof expected, "%f", number);
        ASSERT_EQ(SwJsonValue(number).toString(), expected);
    }
}

TEST(SwJsonValue, ToStringIgnoresTheGlobalLocale)
{
    framework_test::CommaLocale const comma;
    EXPECT_EQ(SwJsonValue(1234567.5).toString(), "1234567.500000");
    EXPECT_EQ(SwJsonValue(1234567).toString(), "1234567");
}

TEST(SwJsonValue, ACopyIsDeep)
{
    SwJsonValue source(
        SwJsonObject{{"a", SwJsonArray{1, SwJsonObject{{"b", 2}}}}, {"s", "a text beyond the short form"}});
    SwJsonValue copy = source;
    EXPECT_TRUE(copy == source);
    (*copy.editObject())["a"].editArray()->append(3);
    (*(*copy.editObject())["a"].editArray())[1].editObject()->insertOrAssign("b", "changed");
    EXPECT_EQ(source.toObject()["a"].toArray().size(), 2U);
    EXPECT_EQ(source.toObject()["a"].toArray()[1].toObject()["b"].toInt(), 2);
    SwJsonValue assigned(5);
    assigned = source;
    assigned.editObject()->clear();
    EXPECT_EQ(source.toObject().size(), 2U);
    EXPECT_EQ(assigned.toInt(), 0);
}

TEST(SwJsonValue, ANullContainerIsCopiedAsNull)
{
    SwJsonValue const source{std::shared_ptr<SwJsonObject>()};
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is tested
    SwJsonValue const copy = source;
    EXPECT_TRUE(copy.isObject());
    EXPECT_FALSE(copy.hasContainer());
    EXPECT_TRUE(copy == SwJsonValue(SwJsonObject()));
}

TEST(SwJsonValue, AMoveTransfersAndLeavesNull)
{
    SwJsonValue const rows[] = {true,          -3, 2.5, "short", "a text beyond the short form", SwJsonObject{{"a", 1}},
                                SwJsonArray{1}};
    for (SwJsonValue const& row : rows) {
        SCOPED_TRACE(row.type());
        SwJsonValue source = row;
        SwJsonObject const* const object = source.editObject();
        SwJsonValue moved = std::move(source);
        EXPECT_TRUE(moved == row);
        EXPECT_EQ(moved.editObject(), object);
        EXPECT_TRUE(source == SwJsonValue());  // NOLINT: what a move leaves is part of the contract
        SwJsonValue assigned(SwJsonArray{1, 2});
        assigned = std::move(moved);
        EXPECT_TRUE(assigned == row);
        EXPECT_TRUE(moved == SwJsonValue());  // NOLINT
    }
}

TEST(SwJsonValue, AValueTakesOneOfItsOwnChildren)
{
    SwJsonValue moved(SwJsonArray{SwJsonObject{{"a", "kept"}}});
    moved = std::move((*moved.editArray())[0]);
    EXPECT_TRUE(moved == SwJsonValue(SwJsonObject{{"a", "kept"}}));
    SwJsonValue copied(SwJsonArray{SwJsonObject{{"a", "kept"}}});
    copied = copied.toArray()[0];
    EXPECT_TRUE(copied == moved);
    SwJsonObject object{{"inner", SwJsonObject{{"a", 1}}}};
    object = std::move(*object["inner"].editObject());
    EXPECT_TRUE(object == (SwJsonObject{{"a", 1}}));
    SwJsonArray array{SwJsonValue(SwJsonArray{1, 2})};
    array = std::move(*array[0].editArray());
    EXPECT_TRUE(array == (SwJsonArray{1, 2}));
    SwJsonValue const& self = copied;
    copied = self;
    EXPECT_TRUE(copied == moved);
}

TEST(SwJsonValue, SelfAssignmentChangesNothing)
{
    SwJsonValue value(SwJsonArray{1, "a text beyond the short form"});
    SwJsonValue const expected = value;
    SwJsonValue& self = value;
    value = std::move(self);
    EXPECT_TRUE(value == expected);
    SwJsonObject object{{"a", 1}};
    SwJsonObject& sameObject = object;
    object = sameObject;
    object = std::move(sameObject);
    EXPECT_TRUE(object == (SwJsonObject{{"a", 1}}));
    SwJsonArray array{1, 2};
    SwJsonArray& sameArray = array;
    array = sameArray;
    array = std::move(sameArray);
    EXPECT_TRUE(array == (SwJsonArray{1, 2}));
}

TEST(SwJsonDocument, GivesItsRootAway)
{
    SwJsonDocument document(SwJsonObject{{"a", 1}});
    EXPECT_TRUE(document.isObject());
    EXPECT_FALSE(document.isArray());
    EXPECT_EQ(document.object()["a"].toInt(), 1);
    EXPECT_TRUE(document.array().empty());
    EXPECT_TRUE(document.takeRoot() == SwJsonValue(SwJsonObject{{"a", 1}}));
    EXPECT_TRUE(document.isNull());
    EXPECT_TRUE(document.root().isNull());
}

TEST(SwJsonValue, ValuesOverOneContainerShareItUntilACopy)
{
    auto const shared = std::make_shared<SwJsonObject>();
    SwJsonValue const one(shared);
    SwJsonValue const two(shared);
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is tested
    SwJsonValue const copy = one;
    (*shared)["a"] = 1;
    EXPECT_EQ(one.toObject().size(), 1U);
    EXPECT_EQ(two.toObject().size(), 1U);
    EXPECT_TRUE(copy.toObject().empty());
}

TEST(SwJsonValue, EqualityLooksAtKindFieldAndContents)
{
    EXPECT_TRUE(SwJsonValue(1) == SwJsonValue(1));
    EXPECT_TRUE(SwJsonValue(1) != SwJsonValue(1.0));
    EXPECT_TRUE(SwJsonValue(false) != SwJsonValue());
    EXPECT_TRUE(SwJsonValue("") != SwJsonValue());
    EXPECT_TRUE(SwJsonValue(SwJsonObject()) != SwJsonValue(SwJsonArray()));
    EXPECT_TRUE(SwJsonValue(SwJsonArray{1, 2}) != SwJsonValue(SwJsonArray{2, 1}));
    EXPECT_TRUE(SwJsonValue(SwJsonArray{1}) != SwJsonValue(SwJsonArray{1, 1}));
    EXPECT_TRUE(SwJsonValue(SwJsonObject{{"a", 1}}) != SwJsonValue(SwJsonObject{{"b", 1}}));
    EXPECT_TRUE(SwJsonValue(SwJsonObject{{"b", 1}}) != SwJsonValue(SwJsonObject{{"a", 1}}));
    EXPECT_TRUE(SwJsonValue(SwJsonObject{{"a", 1}}) != SwJsonValue(SwJsonObject{{"a", 1}, {"b", 1}}));
    EXPECT_TRUE(SwJsonValue(SwJsonObject{{"a", SwJsonArray{SwJsonObject{{"x", 1}}}}}) !=
                SwJsonValue(SwJsonObject{{"a", SwJsonArray{SwJsonObject{{"x", 2}}}}}));
    double const notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(SwJsonValue(notANumber) != SwJsonValue(notANumber));
}

TEST(SwJsonValue, NestingBesideNestingIsDestroyedWithoutTheStack)
{
    constexpr int kLevels = 200000;
    std::string text(kLevels, '[');
    text += "0";
    for (int i = 0; i < kLevels; ++i) {
        text += ",[[[]]]]";
    }
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
    EXPECT_EQ(error.toStdString(), "");
    EXPECT_EQ(document.array().size(), 2U);
}

TEST(SwJsonObject, AMissingKeyReadsAsOneSharedNull)
{
    SwJsonObject const object{{"a", 1}};
    SwJsonObject const other;
    EXPECT_TRUE(object["b"].isNull());
    EXPECT_EQ(&object["b"], &object["c"]);
    EXPECT_EQ(&object["b"], &other["a"]);
    EXPECT_EQ(object.size(), 1U);
}

TEST(SwJsonObject, TheChangingLookUpInsertsNull)
{
    SwJsonObject object;
    EXPECT_TRUE(object["a"].isNull());
    EXPECT_EQ(object.size(), 1U);
    object["a"] = 1;
    object["a"] = 2;
    EXPECT_EQ(object.size(), 1U);
    EXPECT_EQ(object["a"].toInt(), 2);
}

TEST(SwJsonObject, TakesAndGivesFrameworkStrings)
{
    SwJsonObject object;
    SwString const key = "key";
    object[key] = 1;
    object.insertOrAssign(SwString("a\"b"), 2);
    SwJsonObject const& constant = object;
    EXPECT_EQ(constant[key].toInt(), 1);
    EXPECT_TRUE(object.contains(key));
    EXPECT_TRUE(object.find(key) != object.end());
    SwString const name = object.begin()->first;
    EXPECT_EQ(name.toStdString(), "a\"b");
    EXPECT_EQ(SwJsonValue::escapeString(name), "a\\\"b");
    EXPECT_EQ(SwJsonValue::escapeString(std::string_view()), "");
    EXPECT_EQ(object.erase(key), 1U);
}

TEST(SwJsonObject, ACopiedMemberOutlivesTheObject)
{
    auto object = std::make_unique<SwJsonObject>(SwJsonObject{{"a name beyond the short form", "value"}});
    SwJsonObject::value_type const member = *object->begin();
    object.reset();
    EXPECT_EQ(member.first, "a name beyond the short form");
    EXPECT_EQ(member.second.stringRef(), "value");
}

TEST(SwJsonObject, IteratesInByteOrder)
{
    struct Row {
        char const* name;
        std::vector<std::string> inserted;
        std::vector<std::string> expected;
    };
    std::string const zero("a\0", 2);
    Row const rows[] = {
        {"cases", {"b", "a", "B"}, {"B", "a", "b"}},
        {"shorter first", {"ab", "a", "abc", ""}, {"", "a", "ab", "abc"}},
        {"high bytes last", {"\xC3\xA9", "z", "~"}, {"z", "~", "\xC3\xA9"}},
        {"zero byte", {"aa", zero, "a"}, {"a", zero, "aa"}},
        {"equal first eight bytes",
         {"sensor_lon_deg", "sensor_lat_deg", "sensor_l", "sensor_", "sensor_alt_m"},
         {"sensor_", "sensor_alt_m", "sensor_l", "sensor_lat_deg", "sensor_lon_deg"}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        SwJsonObject object;
        for (std::string const& key : row.inserted) {
            object[key] = 1;
        }
        EXPECT_EQ(keysInOrder(object), row.expected);
        EXPECT_EQ(object.keys(), row.expected);
        EXPECT_EQ(keysInOrder(SwJsonObject(object)), row.expected);
    }
}

TEST(SwJsonObject, OffersTheMapOperations)
{
    SwJsonObject object{{"a", 1}, {"b", 2}, {"a", 3}};
    EXPECT_EQ(object.size(), 2U);
    EXPECT_EQ(object["a"].toInt(), 3);
    object.insertOrAssign("c", "x");
    object.insertOrAssign("b", SwJsonArray{1});
    EXPECT_EQ(object.find("c")->second.stringRef(), "x");
    EXPECT_TRUE(object.find("b")->second.isArray());
    EXPECT_TRUE(object.find("d") == object.end());
    EXPECT_TRUE(object.contains("a"));
    EXPECT_FALSE(object.contains("A"));
    object.find("a")->second = 9;
    SwJsonObject const& constant = object;
    SwJsonObject::const_iterator const found = object.find("a");
    EXPECT_TRUE(found == constant.find("a"));
    EXPECT_EQ(found->second.toInt(), 9);
    EXPECT_EQ(object.erase("a"), 1U);
    EXPECT_EQ(object.erase("a"), 0U);
    EXPECT_EQ(object.keys(), (std::vector<std::string>{"b", "c"}));
    object.clear();
    EXPECT_TRUE(object.empty());
    EXPECT_TRUE(object.isEmpty());
    object["again"] = 1;
    EXPECT_EQ(object.size(), 1U);
}

TEST(SwJsonObject, ReferencesStayThroughInsertionsErasuresAndMoves)
{
    SwJsonObject object;
    SwJsonValue& kept = object["m"];
    kept = "kept";
    auto const place = object.find("m");
    for (int i = 0; i < 2000; ++i) {
        object[std::to_string(i * 7919 % 2000)] = i;
    }
    for (int i = 0; i < 2000; i += 2) {
        object.erase(std::to_string(i));
    }
    SwJsonObject moved = std::move(object);
    EXPECT_EQ(&moved["m"], &kept);
    EXPECT_EQ(&place->second, &kept);
    EXPECT_EQ(kept.stringRef(), "kept");
    EXPECT_TRUE(object.empty());  // NOLINT: what a move leaves is part of the contract
    object["usable"] = 1;
    EXPECT_EQ(object.size(), 1U);
}

TEST(SwJsonObject, BehavesLikeAMapUnderRandomChanges)
{
    struct Row {
        char const* name;
        unsigned keys;
        unsigned steps;
    };
    for (Row const& row : {Row{"few keys", 12, 3000}, Row{"one leaf", 150, 5000}, Row{"many leaves", 3000, 30000}}) {
        SCOPED_TRACE(row.name);
        std::mt19937 random(row.keys);
        SwJsonObject object;
        std::map<std::string, int> model;
        for (unsigned step = 0; step < row.steps; ++step) {
            // The common beginning makes the numeric prefixes equal.
            std::string const key = "member_" + std::to_string(random() % row.keys);
            if (random() % 3 == 0) {
                ASSERT_EQ(object.erase(key), model.erase(key));
            } else {
                int const value = static_cast<int>(random() % 1000);
                object[key] = value;
                model[key] = value;
            }
        }
        SwJsonObject const copy = object;
        for (SwJsonObject const* const checked : {&std::as_const(object), &copy}) {
            ASSERT_EQ(checked->size(), model.size());
            auto expected = model.begin();
            for (auto const& [key, value] : *checked) {
                ASSERT_EQ(key, expected->first);
                ASSERT_EQ(value.toInt(), expected->second);
                ASSERT_EQ(&checked->find(key)->second, &value);
                ++expected;
            }
        }
    }
}

TEST(SwJsonObject, KeysOfAllLengthsAndBytesAreOrderedLikeStrings)
{
    std::mt19937 random(17);
    for (unsigned round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        SwJsonObject object;
        std::map<std::string, bool> model;
        for (unsigned i = round; i > 0; --i) {
            std::string key;
            for (auto length = random() % 13; length > 0; --length) {
                key.push_back("\0\1a\xFF"[random() % 4]);
            }
            object[key] = true;
            model[key] = true;
        }
        std::vector<std::string> expected;
        expected.reserve(model.size());
        for (auto const& [key, value] : model) {
            expected.push_back(key);
        }
        ASSERT_EQ(object.keys(), expected);
        ASSERT_EQ(SwJsonObject(object).keys(), expected);
    }
}

TEST(SwJsonObject, AHundredThousandKeysInRandomOrder)
{
    std::vector<std::string> keys;
    keys.reserve(100000);
    for (int i = 0; i < 100000; ++i) {
        keys.push_back("key" + std::to_string(i));
    }
    std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
    SwJsonObject object;
    for (std::string const& key : keys) {
        object[key] = static_cast<int>(key.size());
    }
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(object.keys(), keys);
    for (std::string const& key : keys) {
        ASSERT_TRUE(object.contains(key));
        ASSERT_EQ(object.erase(key), 1U);
    }
    EXPECT_TRUE(object.empty());
    EXPECT_TRUE(object.begin() == object.end());
}

TEST(SwJsonObject, AddMissingLeavesWhatIsThere)
{
    SwJsonObject object{{"b", 1}, {"d", 2}, {"f", 3}};
    SwJsonValue const& held = object["d"];
    object.addMissing(SwJsonObject{{"a", 10}, {"b", 11}, {"c", SwJsonArray{7}}, {"f", 12}, {"g", "last"}});
    SwJsonObject const expected{{"a", 10}, {"b", 1}, {"c", SwJsonArray{7}}, {"d", 2}, {"f", 3}, {"g", "last"}};
    EXPECT_TRUE(object == expected);
    EXPECT_EQ(object.keys(), (std::vector<std::string>{"a", "b", "c", "d", "f", "g"}));
    EXPECT_EQ(&held, &object["d"]) << "members do not move";
    object.addMissing(SwJsonObject());
    object.addMissing(SwJsonObject{{"a", 0}});
    EXPECT_TRUE(object == expected);
    object.erase("c");
    EXPECT_EQ(object.keys(), (std::vector<std::string>{"a", "b", "d", "f", "g"}));

    SwJsonObject last{{"y", 1}, {"z", 2}};
    last.addMissing(SwJsonObject{{"a", 3}});
    EXPECT_EQ(last.keys(), (std::vector<std::string>{"a", "y", "z"}));
    EXPECT_EQ(last["z"].toInt(), 2);

    SwJsonObject empty;
    empty.addMissing(SwJsonObject{{"", 1}, {"x", 2}});
    EXPECT_EQ(empty.keys(), (std::vector<std::string>{"", "x"}));
}

TEST(SwJsonObject, AddMissingOfTwoHundredThousandKeysToAsMany)
{
    SwJsonObject even;
    SwJsonObject all;
    std::vector<std::string> keys;
    for (int i = 100000; i < 300000; ++i) {
        keys.push_back("key" + std::to_string(i));
        all[keys.back()] = i;
        if (i % 2 == 0) {
            even[keys.back()] = -i;
        }
    }
    even.addMissing(std::move(all));
    EXPECT_EQ(even.keys(), keys);
    EXPECT_EQ(even["key100001"].toInt(), 100001);
    EXPECT_EQ(even["key299998"].toInt(), -299998);
}

TEST(SwJsonArray, KeepsTheOrderOfInsertion)
{
    SwJsonArray array;
    array.append("b");
    array.append(1);
    array.append(SwJsonArray{2});
    EXPECT_EQ(array.size(), 3U);
    EXPECT_EQ(array[0].stringRef(), "b");
    EXPECT_EQ(array[1].toInt(), 1);
    EXPECT_EQ(array[2].toArray()[0].toInt(), 2);
    array[1] = 5;
    std::vector<std::string> texts;
    texts.reserve(array.size());
    for (SwJsonValue const& item : array) {
        texts.push_back(item.toString());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"b", "5", "{}"}));
    array.append(array[0]);
    EXPECT_EQ(array[3].stringRef(), "b");
    SwJsonArray const copy = array;
    array.clear();
    EXPECT_TRUE(array.isEmpty());
    EXPECT_EQ(copy.size(), 4U);
}

TEST(SwJsonValue, AMillionLevelsAreHandledOnASmallStack)
{
    framework_test::runOnSmallStack([] {
        SwJsonValue const tree = deepTree();
        SwJsonValue copy = tree;
        EXPECT_TRUE(copy == tree);
        SwJsonValue assigned(1);
        assigned = copy;
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is tested
        SwJsonArray const array = tree.toArray();
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is tested
        SwJsonObject const object = tree.toObject();
        EXPECT_TRUE(array == tree.toArray());
        EXPECT_TRUE(object == tree.toObject());
        SwJsonValue* innermost = &copy;
        while (innermost->hasContainer()) {
            innermost = innermost->isObject() ? &(*innermost->editObject())["b"] : &(*innermost->editArray())[1];
        }
        EXPECT_EQ(innermost->toInt(), 7);
        *innermost = 8;
        EXPECT_FALSE(copy == tree);
        copy = std::move(assigned);
        EXPECT_TRUE(copy == tree);
        copy = SwJsonValue();
    });
}

TEST(SwJsonValue, ADeepTreeOverASharedContainerLeavesThatOneAlone)
{
    auto const shared = std::make_shared<SwJsonObject>(SwJsonObject{{"a", SwJsonArray{1, 2}}});
    SwJsonValue tree(shared);
    for (int i = 0; i < 1000; ++i) {
        SwJsonArray array;
        array.append(std::move(tree));
        tree = SwJsonValue(std::move(array));
    }
    tree = SwJsonValue();
    EXPECT_EQ(shared.use_count(), 1);
    EXPECT_EQ((*shared)["a"].toArray().size(), 2U);
}
