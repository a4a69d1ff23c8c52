// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwAny.h"

#include "any_text.h"
#include "test_support.h"

#include <gtest/gtest.h>

using framework_test::listOf;
using framework_test::standardErrorOf;
using framework_test::textOf;

namespace {

/// Counts its living copies.
struct Tracked {
    static int alive;
    int value = 0;
    explicit Tracked(int v) : value(v) { ++alive; }
    Tracked(Tracked const& other) : value(other.value) { ++alive; }
    Tracked& operator=(Tracked const&) = default;
    ~Tracked() { --alive; }
};
int Tracked::alive = 0;

std::string messageOf(std::function<void()> const& action)
{
    try {
        action();
    } catch (std::runtime_error const& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

// Templates, so that what does not compile is false and no error.
template <typename Any>
constexpr bool kAddsToConverters = requires
{
    Any::getConverters()[{"a", "b"}] = nullptr;
};
template <typename Any>
constexpr bool kAddsToRules = requires
{
    Any::getConversionRules()["a"].push_back("b");
};

}  // namespace

TEST(SwAny, HoldsAValueUnderItsRunTimeTypeName)
{
    SwAny const any(42);
    EXPECT_FALSE(any.isEmpty());
    EXPECT_EQ(any.typeName(), typeid(int).name());
    EXPECT_TRUE(any.holds<int>());
    EXPECT_FALSE(any.holds<long>());
    EXPECT_EQ(any.get<int>(), 42);
    EXPECT_EQ(*static_cast<int const*>(any.data()), 42);
    SwAny const literal("text");
    EXPECT_EQ(literal.typeName(), typeid(char const*).name());
    EXPECT_STREQ(literal.get<char const*>(), "text");
    EXPECT_EQ(SwAny::plainName("*4Name"), "4Name");
    EXPECT_EQ(SwAny::plainName("4Name"), "4Name");
}

TEST(SwAny, EmptyHasNeitherValueNorName)
{
    SwAny any;
    EXPECT_TRUE(any.isEmpty());
    EXPECT_EQ(any.typeName(), "");
    EXPECT_EQ(any.data(), nullptr);
    any = SwAny(1);
    any.clear();
    EXPECT_TRUE(any.isEmpty());
    EXPECT_EQ(any.typeName(), "");
    EXPECT_EQ(any.data(), nullptr);
}

TEST(SwAny, CopiesMovesAndClearsThroughTheTypesOperations)
{
    {
        SwAny const one{Tracked(7)};
        EXPECT_EQ(Tracked::alive, 1);
        SwAny two = one;
        EXPECT_EQ(Tracked::alive, 2);
        two.get<Tracked>().value = 8;
        EXPECT_EQ(one.get<Tracked>().value, 7);
        SwAny three = std::move(two);
        EXPECT_EQ(Tracked::alive, 2);
        EXPECT_TRUE(two.isEmpty());  // NOLINT: what a move leaves is part of the contract
        EXPECT_EQ(two.typeName(), "");
        EXPECT_EQ(three.get<Tracked>().value, 8);
        two.copyFrom(three);
        EXPECT_EQ(Tracked::alive, 3);
        SwAny const& self = two;
        two = self;
        EXPECT_EQ(two.get<Tracked>().value, 8);
        two = one;
        EXPECT_EQ(two.get<Tracked>().value, 7);
        three = std::move(two);
        EXPECT_EQ(Tracked::alive, 2);
        three.clear();
        EXPECT_EQ(Tracked::alive, 1);
        two.copyFrom(SwAny());  // NOLINT: what a move leaves takes a new value
        EXPECT_TRUE(two.isEmpty());
    }
    EXPECT_EQ(Tracked::alive, 0);
}

TEST(SwAny, AValueTakesOneOfItsOwnElements)
{
    using Values = std::vector<SwAny>;
    SwAny const values(Values{SwString("a text beyond the short form"), 1});
    SwAny copied = values;
    copied = copied.get<Values>()[0];
    EXPECT_EQ(copied.toString().toStdString(), "a text beyond the short form");
    SwAny moved = values;
    moved = std::move(moved.get<Values>()[0]);
    EXPECT_EQ(moved.toString().toStdString(), "a text beyond the short form");
    SwAny& self = moved;
    moved = std::move(self);
    EXPECT_EQ(moved.toString().toStdString(), "a text beyond the short form");
}

TEST(SwAny, GetThrowsOnAnotherTypeAndOnNullStorage)
{
    EXPECT_EQ(messageOf([] { SwAny(1).get<SwString>(); }), "Type mismatch in SwAny::get");
    EXPECT_EQ(messageOf([] { SwAny().get<SwString>(); }), "Type mismatch in SwAny::get");
    SwAny const named = SwAny::fromRawPointer(SwAny::nameOf<SwString>(), nullptr);
    EXPECT_TRUE(named.isEmpty());
    EXPECT_EQ(named.typeName(), SwAny::nameOf<SwString>());
    EXPECT_EQ(messageOf([&] { named.get<SwString>(); }), "Null storage in SwAny::get");
    SwAny copy = named;
    EXPECT_EQ(messageOf([&] { copy.get<SwString>(); }), "Null storage in SwAny::get");
}

TEST(SwAny, FromRawPointerCopiesARegisteredType)
{
    SwString const text = "text";
    SwAny const any = SwAny::fromRawPointer(SwAny::nameOf<SwString>(), &text);
    EXPECT_EQ(any.get<SwString>().toStdString(), "text");
    EXPECT_NE(any.data(), &text);
    int const number = 1;
    SwAny const unknown = SwAny::fromRawPointer("no such type", &number);
    EXPECT_TRUE(unknown.isEmpty());
    EXPECT_EQ(unknown.typeName(), "no such type");
}

TEST(SwAny, TheMetaTypesAreRegistered)
{
    std::string const names[] = {
        SwAny::nameOf<SwString>(),
        SwAny::nameOf<SwList<unsigned char>>(),
        SwAny::nameOf<SwJsonValue>(),
        SwAny::nameOf<SwJsonObject>(),
        SwAny::nameOf<SwJsonArray>(),
        SwAny::nameOf<SwJsonDocument>(),
        SwAny::nameOf<std::vector<std::string>>(),
        SwAny::nameOf<SwFlagSet<WindowFlag>>(),
        SwAny::nameOf<SwFlagSet<EntryType>>(),
        SwAny::nameOf<SwFlagSet<DrawTextFormat>>(),
    };
    for (std::string const& name : names) {
        SCOPED_TRACE(name);
        SwAny::TypeOps const* const ops = SwAny::findOps(name);
        ASSERT_NE(ops, nullptr);
        EXPECT_NE(ops->construct, nullptr);
        EXPECT_NE(ops->copy, nullptr);
        EXPECT_NE(ops->move, nullptr);
        EXPECT_NE(ops->clear, nullptr);
        EXPECT_NE(ops->data, nullptr);
    }
    EXPECT_EQ(SwAny::findOps("no such type"), nullptr);
}

TEST(SwAny, TheTypeOperationsDoWhatTheySay)
{
    SwAny::TypeOps const& ops = *SwAny::findOps(SwAny::nameOf<SwString>());
    SwString const source = "text";
    void* const one = ops.construct(&source);
    void* two = nullptr;
    ops.copy(two, one);
    EXPECT_NE(one, two);
    void* three = nullptr;
    ops.move(three, two);
    EXPECT_EQ(two, nullptr);
    EXPECT_EQ(static_cast<SwString*>(ops.data(three))->toStdString(), "text");
    ops.clear(one);
    ops.clear(three);
}

TEST(SwAny, FlagSetsTravelAsValues)
{
    SwFlagSet<WindowFlag> flags(WindowFlag::Frameless);
    flags.set(WindowFlag::Resizable);
    SwAny const any(flags);
    EXPECT_TRUE(any.get<SwFlagSet<WindowFlag>>() == flags);
    EXPECT_TRUE(any.get<SwFlagSet<WindowFlag>>().test(WindowFlag::Resizable));
    flags.clear();
    EXPECT_FALSE(flags.test(WindowFlag::Frameless));
}

template <typename T>
class SwAnyBuiltIn : public testing::Test {
};
using BuiltInTypes =
    testing::Types<SwString, SwList<unsigned char>, SwJsonValue, SwJsonObject, SwJsonArray, SwJsonDocument,
                   std::vector<std::string>, SwFlagSet<WindowFlag>, SwFlagSet<EntryType>, SwFlagSet<DrawTextFormat>,
                   char const*, std::string, std::vector<unsigned char>, int, unsigned int, long, unsigned long, float,
                   double, bool>;
TYPED_TEST_SUITE(SwAnyBuiltIn, BuiltInTypes);

TYPED_TEST(SwAnyBuiltIn, IsKnownCopiedMovedAndCleared)
{
    std::string const& name = SwAny::nameOf<TypeParam>();
    EXPECT_NE(SwAny::findOps(name), nullptr);
    SwAny one{TypeParam()};
    EXPECT_EQ(one.typeName(), name);
    SwAny const copy = one;
    EXPECT_NE(copy.data(), one.data());
    EXPECT_EQ(copy.convert(name).typeName(), name);
    void* const address = one.data();
    SwAny moved = std::move(one);
    EXPECT_EQ(&moved.get<TypeParam>(), address);
    EXPECT_EQ(one.typeName(), "");  // NOLINT: what a move leaves is part of the contract
    EXPECT_EQ(SwAny::fromRawPointer(name, moved.data()).typeName(), name);
    moved.clear();
    EXPECT_EQ(moved.data(), nullptr);
    EXPECT_TRUE(SwAny(TypeParam()).canConvert(name));
}

TEST(SwAny, AnyCopyableTypeRegistersItselfWhenStored)
{
    struct Local {
        int number = 5;
    };
    SwAny const any{Local()};
    ASSERT_NE(SwAny::findOps(SwAny::nameOf<Local>()), nullptr);
    Local const other{9};
    EXPECT_EQ(SwAny::fromRawPointer(any.typeName(), &other).get<Local>().number, 9);
}

TEST(SwAny, TheFrameworksOwnTypesKeepItsOperations)
{
    SwAny::TypeOps const* const own = SwAny::findOps(SwAny::nameOf<SwJsonObject>());
    // What a module loaded later would bring.
    SwAny::TypeOps foreign = SwAny::opsOf<SwJsonObject>();
    foreign.clear = [](void*) { FAIL() << "the operations of a module were called"; };
    EXPECT_EQ(SwAny::storeOps(SwAny::nameOf<SwJsonObject>(), foreign), own);
    EXPECT_EQ(SwAny::findOps(SwAny::nameOf<SwJsonObject>()), own);
    EXPECT_NE(own->clear, foreign.clear);
    // Other types take the newer operations, and values made before keep theirs.
    SwAny::TypeOps const* const first = SwAny::storeOps("a module's type", SwAny::opsOf<int>());
    EXPECT_EQ(SwAny::storeOps("a module's type", SwAny::opsOf<int>()), first);
    SwAny::TypeOps const* const second = SwAny::storeOps("a module's type", SwAny::opsOf<long>());
    EXPECT_NE(second, first);
    EXPECT_EQ(SwAny::findOps("a module's type"), second);
    EXPECT_NE(first->clear, second->clear);
}

TEST(SwFlagSet, FlagsAreSetAndTakenAwayOneByOne)
{
    SwFlagSet<DrawTextFormat> flags(DrawTextFormat::Left);
    flags.set(DrawTextFormat::Center).set(DrawTextFormat::Right).set(DrawTextFormat::Center, false);
    EXPECT_TRUE(flags.test(DrawTextFormat::Left));
    EXPECT_FALSE(flags.test(DrawTextFormat::Center));
    EXPECT_TRUE(flags.test(DrawTextFormat::Right));
    SwFlagSet<WindowFlag> window(WindowFlag::Resizable);
    EXPECT_FALSE(window.test(WindowFlag::Frameless));
}

TEST(SwAny, OneOtherOperationMakesOtherOperations)
{
    SwAny::TypeOps const usual = SwAny::opsOf<int>();
    SwAny::TypeOps const other = SwAny::opsOf<double>();
    std::vector<SwAny::TypeOps> variants(5, usual);
    variants[0].construct = other.construct;
    variants[1].copy = other.copy;
    variants[2].move = [](void*&, void*&) {};
    variants[3].clear = other.clear;
    variants[4].data = [](void*) -> void* { return nullptr; };
    for (std::size_t i = 0; i < variants.size(); ++i) {
        std::string const name = "a type with operation " + std::to_string(i) + " exchanged";
        SwAny::TypeOps const* const first = SwAny::storeOps(name, usual);
        EXPECT_NE(SwAny::storeOps(name, variants[i]), first) << i;
    }
}

TEST(SwAny, ConvertToTheSameTypeIsACopy)
{
    SwAny const any(SwString("x"));
    SwAny copy = any.convert<SwString>();
    copy.get<SwString>() = "y";
    EXPECT_EQ(any.get<SwString>().toStdString(), "x");
    EXPECT_TRUE(any.canConvert(SwAny::nameOf<SwString>()));
    EXPECT_TRUE(any.canConvert(SwAny::nameOf<int>()));
    EXPECT_FALSE(any.canConvert(SwAny::nameOf<SwJsonObject>()));
}

TEST(SwAny, ConvertingANameWithoutAValueThrowsAsGetDoes)
{
    SwAny const named = SwAny::fromRawPointer(SwAny::nameOf<int>(), nullptr);
    EXPECT_EQ(messageOf([&] { named.convert<SwString>(); }), "Null storage in SwAny::get");
    SwAny const same = named.convert<int>();
    EXPECT_TRUE(same.isEmpty());
    EXPECT_EQ(same.typeName(), SwAny::nameOf<int>());
    EXPECT_EQ(standardErrorOf([&] { EXPECT_TRUE(named.convert<SwJsonObject>().isEmpty()); }),
              "No conversion rule registered from i to 12SwJsonObject\n");
}

TEST(SwAny, AMissingRuleGivesOneLineAndAnEmptyValue)
{
    EXPECT_EQ(standardErrorOf([] { EXPECT_TRUE(SwAny(1).convert<SwJsonObject>().isEmpty()); }),
              "No conversion rule registered from i to 12SwJsonObject\n");
    EXPECT_EQ(standardErrorOf([] { EXPECT_TRUE(SwAny().convert("X").isEmpty()); }),
              "No conversion rule registered from  to X\n");
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(SwAny(Tracked(1)).toString().toStdString(), ""); }),
              "No conversion rule registered from " + SwAny::nameOf<Tracked>() + " to " + SwAny::nameOf<SwString>() +
                  "\n");
}

// A rule added to what these give would be lost: it would be a copy's.
TEST(SwAny, TheListsOfConversionsCannotBeChanged)
{
    EXPECT_TRUE(std::is_const_v<decltype(SwAny::getConverters())>);
    EXPECT_TRUE(std::is_const_v<decltype(SwAny::getConversionRules())>);
    EXPECT_FALSE(kAddsToConverters<SwAny>);
    EXPECT_FALSE(kAddsToRules<SwAny>);
}

TEST(SwAny, TheConversionsAreListedInOrder)
{
    using Names = std::vector<std::string>;
    SwAny::ConversionRules const rules = SwAny::getConversionRules();
    EXPECT_EQ(
        rules.at(SwAny::nameOf<SwString>()),
        (Names{SwAny::nameOf<std::string>(), SwAny::nameOf<char const*>(), SwAny::nameOf<std::vector<unsigned char>>(),
               SwAny::nameOf<SwList<unsigned char>>(), SwAny::nameOf<int>(), SwAny::nameOf<unsigned int>(),
               SwAny::nameOf<long>(), SwAny::nameOf<unsigned long>(), SwAny::nameOf<float>(), SwAny::nameOf<double>(),
               SwAny::nameOf<bool>(), SwAny::nameOf<std::vector<std::string>>()}));
    for (std::string const& source :
         {SwAny::nameOf<char const*>(), SwAny::nameOf<std::string>(), SwAny::nameOf<SwJsonObject>(),
          SwAny::nameOf<SwJsonArray>(), SwAny::nameOf<SwJsonValue>(), SwAny::nameOf<SwList<unsigned char>>(),
          SwAny::nameOf<int>(), SwAny::nameOf<unsigned int>(), SwAny::nameOf<long>(), SwAny::nameOf<unsigned long>(),
          SwAny::nameOf<float>(), SwAny::nameOf<double>(), SwAny::nameOf<bool>(),
          SwAny::nameOf<std::vector<std::string>>()}) {
        SCOPED_TRACE(source);
        EXPECT_EQ(rules.at(source), Names{SwAny::nameOf<SwString>()});
        EXPECT_EQ(SwAny::getConverters().count({source, SwAny::nameOf<SwString>()}), 1U);
    }
}

TEST(SwAny, ARegisteredConversionIsUsedAndReplaced)
{
    struct Metres {
        double value = 0.0;
    };
    SwAny::registerConversion<Metres, SwString>(
        [](Metres const& metres) { return SwString(std::to_string(static_cast<int>(metres.value)) + " m"); });
    EXPECT_EQ(textOf(Metres{3.0}), "3 m");
    EXPECT_EQ(SwAny(Metres{4.0}).toString().toStdString(), "4 m");
    SwAny::registerConversion<Metres, SwString>([](Metres const&) { return SwString("far"); });
    EXPECT_EQ(textOf(Metres{3.0}), "far");
    EXPECT_EQ(SwAny::getConversionRules().at(SwAny::nameOf<Metres>()).size(), 1U);
}

TEST(SwAny, ToStringOfEachKindOfValue)
{
    struct Row {
        char const* name;
        SwAny value;
        char const* expected;
    };
    Row const rows[] = {
        {"empty", SwAny(), ""},
        {"string", SwString(" text "), " text "},
        {"double", 0.1, "0.1"},
        {"double with 15 digits", 1.0 / 3.0, "0.333333333333333"},
        {"float with 10 digits", 0.1F, "0.1000000015"},
        {"int", 5, "5"},
        {"unsigned int", 5U, "5"},
        {"long", -5L, "-5"},
        {"unsigned long", 5UL, "5"},
        {"standard string", std::string("s"), "s"},
        {"json value", SwJsonValue(0.5), "0.500000"},
        {"array", SwJsonArray{1}, "[1]"},
        {"bytes", listOf({0xAB}), "AB"},
        {"string list", std::vector<std::string>{"a", "b"}, "a,b"},
        {"null c string", static_cast<char const*>(nullptr), ""},
        {"bool", true, "true"},
        {"object", SwJsonObject{{"a", 1}}, "{\"a\": 1}"},
        {"c string", "abc", "abc"},
        {"null of a name", SwAny::fromRawPointer(SwAny::nameOf<SwString>(), nullptr), ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(row.value.toString().toStdString(), row.expected); }), "");
        EXPECT_EQ(row.value.toString(7).toStdString(), row.expected);
    }
}
