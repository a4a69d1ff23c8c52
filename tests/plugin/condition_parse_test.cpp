// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reading of a block's "condition". A row gives the condition member and the fields that must differ from
// a default record afterwards.
#include "stanag_overlay_condition.h"

#include "config_changes.h"

#include <gtest/gtest.h>

#include <string>

namespace stanag_overlay {
namespace {

struct Row {
    char const* name;
    std::string condition;
    std::string expected;
};

std::string parsed(std::string const& conditionText)
{
    SwString error;
    SwJsonDocument const document =
        SwJsonDocument::fromJson(SwString("{\"condition\":" + conditionText + "}"), SwString(), error);
    EXPECT_EQ(error, SwString()) << conditionText;
    OverlayCfg record;
    OverlayConditionEvaluator().parse(document.object(), record.condition);
    return changes(record);
}

void check(std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parsed(row.condition), row.expected) << row.condition;
    }
}

TEST(ConditionParse, NoConditionLeavesEverything)
{
    OverlayCfg record;
    OverlayConditionEvaluator().parse(SwJsonObject{{"Condition", 1}}, record.condition);
    EXPECT_EQ(changes(record), "");
}

TEST(ConditionParse, UnusableConditionsStayDisabled)
{
    check({
        {"text", R"("k")", ""},
        {"null", "null", ""},
        {"array", R"([{"key":"k"}])", ""},
        {"number", "1", ""},
        {"empty object", "{}", ""},
        {"no key", R"({"value":1,"bitmask":1,"showAfterMs":5})", ""},
        {"number as key", R"({"key":5,"value":1})", ""},
        {"text that is a number as key", R"({"key":"5"})", ""},
        {"null key", R"({"key":null})", ""},
        {"empty key", R"({"key":"","value":1,"showAfterMs":5})", ""},
        {"key in another letter case", R"({"Key":"k"})", ""},
    });
}

TEST(ConditionParse, Operands)
{
    check({
        {"key only", R"({"key":"k"})", R"(condition{enabled=true key="k"})"},
        {"key as it is written", R"({"key":" K y "})", R"(condition{enabled=true key=" K y "})"},
        {"integer", R"({"key":"k","value":3})", R"(condition{enabled=true key="k" op=1 value="3"})"},
        {"negative integer", R"({"key":"k","value":-9223372036854775808})",
         R"(condition{enabled=true key="k" op=1 value="-9223372036854775808"})"},
        {"double", R"({"key":"k","value":3.25})", R"(condition{enabled=true key="k" op=1 value="3.250000"})"},
        {"true", R"({"key":"k","value":true})", R"(condition{enabled=true key="k" op=1 value="true"})"},
        {"false", R"({"key":"k","value":false})", R"(condition{enabled=true key="k" op=1 value="false"})"},
        {"null", R"({"key":"k","value":null})", R"(condition{enabled=true key="k" op=1 value="null"})"},
        {"array", R"({"key":"k","value":[1]})", R"(condition{enabled=true key="k" op=1 value="{}"})"},
        {"object", R"({"key":"k","value":{"a":1}})", R"(condition{enabled=true key="k" op=1 value="{}"})"},
        {"text", R"({"key":"k","value":" On "})", R"(condition{enabled=true key="k" op=1 value=" On "})"},
        {"empty text", R"({"key":"k","value":""})", R"(condition{enabled=true key="k" op=1})"},
        {"text that is a number", R"({"key":"k","value":"1.5"})",
         R"(condition{enabled=true key="k" op=1 value="1.500000"})"},
        {"equals", R"({"key":"k","equals":"a"})", R"(condition{enabled=true key="k" op=1 value="a"})"},
        {"equals null", R"({"key":"k","equals":null})", R"(condition{enabled=true key="k" op=1 value="null"})"},
        {"notEquals", R"({"key":"k","notEquals":2.5})", R"(condition{enabled=true key="k" op=2 value="2.500000"})"},
        {"notEquals null", R"({"key":"k","notEquals":null})", R"(condition{enabled=true key="k" op=2 value="null"})"},
        {"a shortcut overrides the operator", R"({"key":"k","operator":"lt","equals":1})",
         R"(condition{enabled=true key="k" op=1 value="1"})"},
        {"the other shortcut too", R"({"key":"k","operator":"lt","notEquals":1})",
         R"(condition{enabled=true key="k" op=2 value="1"})"},
        {"equals wins over notEquals and value", R"({"key":"k","value":3,"notEquals":2,"equals":1})",
         R"(condition{enabled=true key="k" op=1 value="1"})"},
        {"notEquals wins over value", R"({"key":"k","operator":"gt","value":3,"notEquals":2})",
         R"(condition{enabled=true key="k" op=2 value="2"})"},
        {"shortcuts in another letter case are unknown", R"({"key":"k","NotEquals":1,"Equals":2,"Value":3})",
         R"(condition{enabled=true key="k"})"},
    });
}

TEST(ConditionParse, OperatorWords)
{
    struct WordRow {
        std::vector<char const*> words;
        int op;
    };
    std::vector<WordRow> const rows = {
        {{"equals", "Equals", "EQUALS", "eQuAlS", "eq", "EQ", "Eq", "=="}, 1},
        {{"notequals", "notEquals", "NotEquals", "NOTEQUALS", "ne", "NE", "Ne", "!="}, 2},
        {{"greaterthan", "greaterThan", "GreaterThan", "GREATERTHAN", "gt", "GT", "Gt", ">"}, 3},
        {{"greaterorequal", "greaterOrEqual", "GREATEROREQUAL", "gte", "GTE", "Gte", ">="}, 4},
        {{"lessthan", "lessThan", "LESSTHAN", "lt", "LT", "lT", "<"}, 5},
        {{"lessorequal", "lessOrEqual", "LESSOREQUAL", "lte", "LTE", "lTe", "<="}, 6},
    };
    for (WordRow const& row : rows) {
        for (char const* word : row.words) {
            SCOPED_TRACE(word);
            std::string const op = std::to_string(row.op);
            EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":")") + word + R"(","value":5})"),
                      R"(condition{enabled=true key="k" op=)" + op + R"( value="5"})");
            // Without an operand a known word counts all the same.
            EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":")") + word + R"("})"),
                      R"(condition{enabled=true key="k" op=)" + op + "}");
        }
    }
    for (char const* word : {"exists", "Exists", "EXISTS"}) {
        SCOPED_TRACE(word);
        // The operand is stored although presence alone is tested.
        EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":")") + word + R"(","value":1})"),
                  R"(condition{enabled=true key="k" value="1"})");
        EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":")") + word + R"("})"),
                  R"(condition{enabled=true key="k"})");
    }
}

TEST(ConditionParse, UnknownOperatorWords)
{
    for (char const* word :
         {"\"\"",     "\"=\"",    "\"<>\"",      "\"=>\"",         "\"=<\"",     "\"===\"", "\"\xE2\x89\xA5\"",
          "\" gte\"", "\"gte \"", "\"greater\"", "\"not equals\"", "\"exist\"",  "\"in\"",  "5",
          "1.5",      "true",     "null",        "[\"gt\"]",       "{\"gt\":1}", "\"1\""}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":)") + word + R"(,"value":5})"),
                  R"(condition{enabled=true key="k" op=1 value="5"})");
        EXPECT_EQ(parsed(std::string(R"({"key":"k","operator":)") + word + "}"), R"(condition{enabled=true key="k"})");
    }
}

TEST(ConditionParse, Bitmask)
{
    auto const row = [](char const* name, std::string const& value, std::string const& mask) {
        std::string const fields = mask.empty() ? "" : " hasBitmask=true bitmask=" + mask;
        return Row{name, R"({"key":"k","bitmask":)" + value + "}", R"(condition{enabled=true key="k")" + fields + "}"};
    };
    check({
        {"absent", R"({"key":"k"})", R"(condition{enabled=true key="k"})"},
        row("integer", "16", "16"),
        {"zero is a mask, the record's usual number", R"({"key":"k","bitmask":0})",
         R"(condition{enabled=true key="k" hasBitmask=true})"},
        row("negative integer", "-1", ""),
        row("low 32 bits", "4294967312", "16"),
        row("bit 31 is the sign", "2147483648", ""),
        row("largest", "2147483647", "2147483647"),
        row("whole double", "12.0", "12"),
        row("low 32 bits of a whole double", "4294967312.0", "16"),
        row("negative whole double", "-2.0", ""),
        row("whole double with bit 31 set", "2147483648.0", ""),
        row("huge whole double saturates to low bits of -1", "1e300", ""),
        row("fraction is cut", "2.9", "2"),
        row("fraction beyond 32 bits is not narrowed", "4294967312.5", "4294967312"),
        row("negative fraction", "-0.5", ""),
        row("hexadecimal text", "\"0x80\"", "128"),
        row("hexadecimal text beyond 32 bits", "\"0xFFFFFFFFFFFFFFFF\"", "18446744073709551615"),
        row("octal text arrives as the integer 8", "\"010\"", "8"),
        row("text that is a number", "\"16\"", "16"),
        row("text abc", "\"abc\"", ""),
        row("bad hexadecimal text", "\"0x1G\"", ""),
        row("empty text", "\"\"", ""),
        row("text with a blank after it", "\"0x10 \"", ""),
        row("text with a blank before it", "\" 0x10\"", "16"),
        row("signed text wraps", "\"-0x1\"", "18446744073709551615"),
        row("exponent is refused", "\"1e3\"", ""),
        row("exponent without leading digits", "\".1e3\"", "100"),
        row("not-a-number text", "\"nan\"", ""),
        row("infinite text", "\"inf\"", ""),
        row("true", "true", ""),
        row("null", "null", ""),
        row("array", "[16]", ""),
        row("object", "{}", ""),
    });
    // ".5" reaches the condition as the double 0.5, whose whole part is a mask of 0.
    EXPECT_EQ(parsed(R"({"key":"k","bitmask":".5"})"), R"(condition{enabled=true key="k" hasBitmask=true})");
}

TEST(ConditionParse, Delays)
{
    check({
        {"both", R"({"key":"k","showAfterMs":2,"keepAfterMs":3})",
         R"(condition{enabled=true key="k" showAfterNs=2000000 keepAfterNs=3000000})"},
        {"too long", R"({"key":"k","showAfterMs":700000})",
         R"(condition{enabled=true key="k" showAfterNs=600000000000})"},
        {"negative", R"({"key":"k","keepAfterMs":-1})", R"(condition{enabled=true key="k"})"},
        {"fraction", R"({"key":"k","keepAfterMs":1.9})", R"(condition{enabled=true key="k" keepAfterNs=1000000})"},
        {"true", R"({"key":"k","showAfterMs":true})", R"(condition{enabled=true key="k" showAfterNs=1000000})"},
        {"false, null, text, array", R"({"key":"k","showAfterMs":false,"keepAfterMs":"soon"})",
         R"(condition{enabled=true key="k"})"},
        {"low 32 bits of an integer", R"({"key":"k","showAfterMs":4294967297})",
         R"(condition{enabled=true key="k" showAfterNs=1000000})"},
        {"a double is not narrowed", R"({"key":"k","showAfterMs":4294967297.0})",
         R"(condition{enabled=true key="k" showAfterNs=600000000000})"},
    });
}

}  // namespace
}  // namespace stanag_overlay
