#include "SwAny.h"

#include "test_support.h"
#include "tree_text.h"

#include <gtest/gtest.h>

#include <limits>

using framework_test::standardErrorOf;
using framework_test::treeText;

namespace {

template <typename To, typename From>
To converted(From const& value)
{
    return SwAny(value).convert<To>().template get<To>();
}

template <typename From>
std::string textOf(From const& value)
{
    return converted<SwString>(value);
}

SwList<unsigned char> listOf(std::vector<unsigned char> const& bytes)
{
    SwList<unsigned char> list;
    list.assign(bytes.begin(), bytes.end());
    return list;
}

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
        two.copyFrom(SwAny());
        EXPECT_TRUE(two.isEmpty());
    }
    EXPECT_EQ(Tracked::alive, 0);
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

// The 26 conversions, by their number.

TEST(SwAnyConversion, Row01CStringToString)
{
    EXPECT_EQ(textOf<char const*>("a b"), "a b");
    EXPECT_EQ(textOf<char const*>(nullptr), "");
}

TEST(SwAnyConversion, Row02And03StandardString)
{
    std::string const bytes("a\0b", 3);
    EXPECT_EQ(textOf(bytes), bytes);
    EXPECT_EQ(converted<std::string>(SwString(bytes)), bytes);
}

TEST(SwAnyConversion, Row04StringToCStringPointsToTheStoredBytes)
{
    SwAny const source(SwString("stored"));
    SwAny const target = source.convert<char const*>();
    EXPECT_EQ(target.get<char const*>(), source.get<SwString>().c_str());
}

TEST(SwAnyConversion, Row05StringToBytes)
{
    using Bytes = std::vector<unsigned char>;
    EXPECT_EQ(converted<Bytes>(SwString(std::string("a\0\xFF", 3))), (Bytes{'a', 0, 255}));
    EXPECT_EQ(converted<Bytes>(SwString()), Bytes());
}

TEST(SwAnyConversion, Row06And07ContainersToCompactText)
{
    EXPECT_EQ(textOf(SwJsonObject{{"b", 2.5}, {"a", SwJsonArray{1}}}), "{\"a\": [1],\"b\": 2.500000}");
    EXPECT_EQ(textOf(SwJsonObject()), "{}");
    EXPECT_EQ(textOf(SwJsonArray{1, "x"}), "[1,\"x\"]");
    EXPECT_EQ(textOf(SwJsonArray()), "[]");
}

TEST(SwAnyConversion, Row08JsonValueToText)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        char const* expected;
    };
    Row const rows[] = {
        {"null", nullptr, "null"},
        {"true", true, "true"},
        {"false", false, "false"},
        {"integer", -12, "-12"},
        {"double", 2.5, "2.500000"},
        {"whole double", 3.0, "3.000000"},
        {"string", "a\"b", "a\"b"},
        {"empty object", SwJsonObject(), "{}"},
        {"empty array", SwJsonArray(), "[]"},
        {"object", SwJsonObject{{"a", 1.0}}, "{\"a\": 1}"},
        {"array", SwJsonArray{"x", 0.5}, "[\"x\",0.500000]"},
        {"null object", std::shared_ptr<SwJsonObject>(), "SwJsonValue(Object)"},
        {"null array", std::shared_ptr<SwJsonArray>(), "SwJsonValue(Array)"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(textOf(row.value), row.expected);
    }
    framework_test::CommaLocale const comma;
    EXPECT_EQ(textOf(SwJsonValue(1234.5)), "1234.500000");
    EXPECT_EQ(textOf(SwJsonValue(SwJsonArray{1234.5})), "[1.234,500000]");
}

TEST(SwAnyConversion, Row09HexToBytesStopsAtTheFirstBadPair)
{
    struct Row {
        char const* input;
        std::vector<unsigned char> expected;
    };
    Row const rows[] = {
        {"00fFA5", {0, 255, 165}},
        {" \t0102\r\n", {1, 2}},
        {"", {}},
        {"1", {}},
        {"123", {0x12}},
        {"12x4", {0x12}},
        {"12 34", {0x12}},
        {"1g34", {}},
        {"0x12", {}},
        {"+112", {}},
        {"-1", {}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(converted<SwList<unsigned char>>(SwString(row.input)), listOf(row.expected));
    }
}

TEST(SwAnyConversion, Row10BytesToHex)
{
    EXPECT_EQ(textOf(listOf({0, 1, 0x0A, 0xAB, 255})), "00010AABFF");
    EXPECT_EQ(textOf(SwList<unsigned char>()), "");
}

TEST(SwAnyConversion, Row11And12Int)
{
    EXPECT_EQ(converted<int>(SwString(" 0x10 ")), 16);
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<int>(SwString("x")), 0); }),
              "Invalid int conversion in SwString: x\n");
    EXPECT_EQ(textOf(-2147483647 - 1), "-2147483648");
}

TEST(SwAnyConversion, Row13And14UnsignedInt)
{
    struct Row {
        char const* input;
        unsigned int expected;
    };
    Row const rows[] = {{" 42 ", 42},      {"42abc", 42},
                        {"0x10", 16},      {"010", 8},
                        {"-1", 0},         {"x", 0},
                        {"", 0},           {"4294967295", 4294967295U},
                        {"4294967296", 0}, {"99999999999999999999", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<unsigned int>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(4294967295U), "4294967295");
}

TEST(SwAnyConversion, Row15And16Long)
{
    struct Row {
        char const* input;
        long expected;
    };
    Row const rows[] = {{" 42", 42},
                        {"42abc", 42},
                        {"0x10", 16},
                        {"010", 8},
                        {"-1", -1},
                        {"x", 0},
                        {"", 0},
                        {"9223372036854775807", 9223372036854775807L},
                        {"9223372036854775808", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<long>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(std::numeric_limits<long>::min()), "-9223372036854775808");
}

TEST(SwAnyConversion, Row17And18UnsignedLong)
{
    struct Row {
        char const* input;
        unsigned long expected;
    };
    Row const rows[] = {{" 42 ", 42},
                        {"42abc", 42},
                        {"0x10", 16},
                        {"-1", 0},
                        {" -1", 0},
                        {"x", 0},
                        {"", 0},
                        {"18446744073709551615", 18446744073709551615UL},
                        {"18446744073709551616", 0}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(converted<unsigned long>(SwString(row.input)), row.expected); }), "");
    }
    EXPECT_EQ(textOf(18446744073709551615UL), "18446744073709551615");
}

TEST(SwAnyConversion, Row19And20Float)
{
    EXPECT_EQ(converted<float>(SwString("0.1")), 0.1F);
    EXPECT_EQ(converted<float>(SwString("1e39")), std::numeric_limits<float>::infinity());
    EXPECT_EQ(converted<float>(SwString("3.4028235677973366e38")), std::numeric_limits<float>::infinity());
    EXPECT_EQ(converted<float>(SwString("3.4028235677973362e38")), std::numeric_limits<float>::max());
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<float>(SwString(" x ")), 0.0F); }),
              "Invalid float conversion in SwString:  x \n");
    EXPECT_EQ(textOf(0.1F), "0.1000000015");
    EXPECT_EQ(textOf(2.5F), "2.5");
    EXPECT_EQ(textOf(1e20F), "1.00000002e+20");
    EXPECT_EQ(textOf(100000.0F), "100000");
}

TEST(SwAnyConversion, Row21And22Double)
{
    EXPECT_EQ(converted<double>(SwString("1e3")), 1000.0);
    EXPECT_EQ(converted<double>(SwString("0x10")), 16.0);
    EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(converted<double>(SwString("1e999")), 0.0); }),
              "Invalid double conversion in SwString: 1e999\n");
    EXPECT_EQ(textOf(0.1), "0.1");
    EXPECT_EQ(textOf(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(textOf(123456789.0), "123456789");
    EXPECT_EQ(textOf(1e300), "1e+300");
    EXPECT_EQ(textOf(-2.5), "-2.5");
}

TEST(SwAnyConversion, Row20And22FollowTheGlobalLocale)
{
    framework_test::CommaLocale const comma;
    EXPECT_EQ(textOf(1234.5), "1.234,5");
    EXPECT_EQ(textOf(0.5F), "0,5");
    EXPECT_EQ(SwAny(1234.5).toString().toStdString(), "1.234,5");
    EXPECT_EQ(textOf(1234), "1234");
    EXPECT_EQ(textOf(1234UL), "1234");
    EXPECT_EQ(converted<double>(SwString("1.5")), 1.5);
    EXPECT_EQ(converted<float>(SwString("1.5")), 1.5F);
}

TEST(SwAnyConversion, Row23And24Bool)
{
    EXPECT_TRUE(converted<bool>(SwString("true")));
    for (char const* const text : {"True", " true", "true ", "1", "false", "", "truer"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(converted<bool>(SwString(text)));
    }
    EXPECT_EQ(textOf(true), "true");
    EXPECT_EQ(textOf(false), "false");
}

TEST(SwAnyConversion, Row25And26StringList)
{
    using List = std::vector<std::string>;
    EXPECT_EQ(converted<List>(SwString(" a , b\t,,c d,\n")), (List{"a", "b", "", "c d", ""}));
    EXPECT_EQ(converted<List>(SwString("a,b,")), (List{"a", "b"}));
    EXPECT_EQ(converted<List>(SwString("")), List());
    EXPECT_EQ(textOf(List{"a", " b", ""}), "a, b,");
    EXPECT_EQ(textOf(List()), "");
    EXPECT_EQ(textOf(List{"one"}), "one");
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
