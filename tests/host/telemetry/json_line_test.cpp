// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// JSON output of the program.
#include "telemetry/json_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

struct NumberRow {
    char const* name;
    double number;
    char const* expected;
};

class JsonNumber : public testing::TestWithParam<NumberRow> {};

TEST_P(JsonNumber, HasAllDigitsThatADoubleNeeds)
{
    std::string line;
    telemetry::appendJsonNumber(line, GetParam().number);
    EXPECT_EQ(line, GetParam().expected);
    if (line != "null") {
        EXPECT_EQ(std::strtod(line.c_str(), nullptr), GetParam().number);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, JsonNumber,
    testing::Values(NumberRow{"seconds", 2.167, "2.167"}, NumberRow{"latitude", 34.72115321770364, "34.72115321770364"},
                    NumberRow{"whole", 600000.0, "600000.0"}, NumberRow{"zero", 0.0, "0.0"},
                    NumberRow{"minus_zero", -0.0, "-0.0"}, NumberRow{"third", 1.0 / 3.0, "0.3333333333333333"},
                    NumberRow{"tiny", 5e-324, "5e-324"}, NumberRow{"huge", 1e22, "1e+22"},
                    NumberRow{"largest", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
                    NumberRow{"not_a_number", std::nan(""), "null"}, NumberRow{"infinite", HUGE_VAL, "null"}),
    [](auto const& row) { return row.param.name; });

struct StringRow {
    char const* name;
    std::string text;
    std::string expected;
};

class JsonString : public testing::TestWithParam<StringRow> {};

TEST_P(JsonString, IsAlwaysValidJson)
{
    std::string line;
    telemetry::appendJsonString(line, GetParam().text);
    EXPECT_EQ(line, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonString,
                         testing::Values(StringRow{"plain", "EO Nose", "\"EO Nose\""}, StringRow{"empty", "", "\"\""},
                                         StringRow{"quote_and_backslash", "a\"b\\c", R"("a\"b\\c")"},
                                         StringRow{"line_feed_and_control", "a\n\x01", R"("a\n\u0001")"},
                                         StringRow{"utf8_of_two_to_four_bytes", "\xC2\xB0\xE2\x82\xAC\xF0\x9F\x98\x80",
                                                   "\"\xC2\xB0\xE2\x82\xAC\xF0\x9F\x98\x80\""},
                                         StringRow{"latin_1", "20\xB0 N", "\"20\xEF\xBF\xBD N\""},
                                         StringRow{"cut_sequence", "a\xE2\x82", "\"a\xEF\xBF\xBD\xEF\xBF\xBD\""},
                                         StringRow{"overlong", "\xC0\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},
                                         StringRow{"surrogate", "\xED\xA0\x80",
                                                   "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
                                         StringRow{"beyond_the_last_code_point", "\xF4\x90\x80\x80",
                                                   "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}),
                         [](auto const& row) { return row.param.name; });

TEST(Json, WritesNestedValues)
{
    SwJsonObject const inner{{"b", SwJsonValue(true)}, {"a", SwJsonValue(nullptr)}};
    SwJsonArray const list{SwJsonValue(1), SwJsonValue(2.5), SwJsonValue("x"), SwJsonValue(SwJsonArray()),
                           SwJsonValue(inner)};
    SwJsonObject const root{{"list", SwJsonValue(list)}, {"none", SwJsonValue(SwJsonObject())}};
    std::string line;
    telemetry::appendJson(line, SwJsonValue(root));
    EXPECT_EQ(line, R"({"list": [1, 2.5, "x", [], {"a": null, "b": true}], "none": {}})");
}

TEST(Json, WritesAnyDepth)
{
    constexpr std::size_t kDepth = 200000;
    SwJsonValue value(1);
    for (std::size_t level = 0; level < kDepth; ++level) {
        SwJsonArray outer;
        outer.append(std::move(value));
        value = SwJsonValue(std::move(outer));
    }
    std::string line;
    telemetry::appendJson(line, value);
    EXPECT_EQ(line, std::string(kDepth, '[') + "1" + std::string(kDepth, ']'));
}

}  // namespace
