// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the check command reports, each rule and each member by name.
#include "check/config_check.h"
#include "check/suggestion.h"
#include "check/template_keys.h"
#include "comma_locale.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

SwJsonObject read(std::string const& text)
{
    SwString error;
    SwJsonDocument document = SwJsonDocument::fromJson(text, "", error);
    EXPECT_EQ(error.toStdString(), "") << text;
    return document.object();
}

std::string linesOf(std::vector<check::Finding> const& findings)
{
    std::string lines;
    for (check::Finding const& finding : findings) {
        lines += (lines.empty() ? "" : "\n") + finding.place + ": " + finding.text;
    }
    return lines;
}

struct Row {
    char const* name;
    char const* block;  ///< members of one block
    char const* expected;
};

class BlockCheck : public testing::TestWithParam<Row> {};

TEST_P(BlockCheck, TellsWhatIsNotTakenAsItStands)
{
    std::string const text = std::string(R"({"overlay":[{)") + GetParam().block + "}]}";
    EXPECT_EQ(linesOf(check::checkConfig(read(text), text)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Members, BlockCheck,
    testing::Values(
        Row{"nothing", "", ""},
        Row{"all_good",
            R"("formatString":"%a","decimals":2,"trimTrailingZeros":true,"missingPlaceholder":"-","textColor":"#Ff8000",
               "textSize":20,"thickness":2,"position":{"x":0,"y":1.0},"bgColor":"#000000","bgAlpha":0.25,
               "updateEveryNFrames":5,"condition":{"key":"k","operator":">=","value":3,"bitmask":"0x10","showAfterMs":10,
               "keepAfterMs":600000},"formats":{"a":{"date":false,"decimals":40,"trimTrailingZeros":1,"dateFormat":"%H",
               "timestampUnit":"us","timezone":"local","missingPlaceholder":"x","invalidValues":[0,"N/A",null,true],
               "holdLastMs":0,"refreshEveryMs":250,"minValue":-1.5,"maxValue":"2.5"}})",
            ""},
        Row{"text_in_quotes_read_as_number", R"("formatString":"100")",
            "overlay[0].formatString: \"100\", even in quotes, is read as no text and is ignored; the default stays"},
        Row{"text_object", R"("missingPlaceholder":{})",
            "overlay[0].missingPlaceholder: an object is no text and is ignored; the default stays"},
        Row{"unclosed_placeholder", R"("formatString":"%a %{b")",
            "overlay[0].formatString: \"%{\" without \"}\": the text from there on is shown as it is"},
        Row{"text_size_low", R"("textSize":2)", "overlay[0].textSize: 2 becomes 6 (allowed: 6 to 256)"},
        Row{"text_size_high", R"("textSize":1000)", "overlay[0].textSize: 1000 becomes 256 (allowed: 6 to 256)"},
        Row{"text_size_fraction", R"("textSize":12.9)", "overlay[0].textSize: 12.9 becomes 12 (allowed: 6 to 256)"},
        Row{"text_size_whole_double", R"("textSize":12.0)", ""}, Row{"text_size_quoted", R"("textSize":"20")", ""},
        Row{"text_size_bool", R"("textSize":true)",
            "overlay[0].textSize: true is no number and becomes 6 (allowed: 6 to 256)"},
        Row{"text_size_word", R"("textSize":"big")",
            "overlay[0].textSize: \"big\" is no number and becomes 6 (allowed: 6 to 256)"},
        Row{"text_size_beyond_32_bits", R"("textSize":4294967306)",
            "overlay[0].textSize: 4294967306 becomes 10 (allowed: 6 to 256)"},
        Row{"thickness", R"("thickness":0)", "overlay[0].thickness: 0 becomes 1 (allowed: 1 to 16)"},
        Row{"decimals", R"("decimals":20)", "overlay[0].decimals: 20 becomes 12 (allowed: -1 to 12)"},
        Row{"switch_word", R"("trimTrailingZeros":"yes")",
            "overlay[0].trimTrailingZeros: \"yes\" becomes false (allowed: true, false)"},
        Row{"switch_number", R"("trimTrailingZeros":5)",
            "overlay[0].trimTrailingZeros: 5 becomes true (allowed: true, false)"},
        Row{"color_name", R"("textColor":"red")",
            "overlay[0].textColor: \"red\" is not #rrggbb and is ignored; the default stays"},
        Row{"color_short", R"("bgColor":"#FF80")",
            "overlay[0].bgColor: \"#FF80\" is not #rrggbb and is ignored; the default stays"},
        Row{"color_half_read", R"("textColor":"#12zzzz")",
            "overlay[0].textColor: \"#12zzzz\" is not #rrggbb and becomes #000012"},
        Row{"color_not_read", R"("textColor":"#zzzzzz")",
            "overlay[0].textColor: \"#zzzzzz\" is not #rrggbb and becomes #000000"},
        Row{"position_limits", R"("position":{"x":1.5,"y":-2})",
            "overlay[0].position.x: 1.5 becomes 1 (allowed: 0 to 1)\n"
            "overlay[0].position.y: -2 becomes 0 (allowed: 0 to 1)"},
        Row{"position_word", R"("position":{"x":"left"})",
            "overlay[0].position.x: \"left\" is no number and becomes 0 (allowed: 0 to 1)"},
        Row{"position_array", R"("position":[0,1])",
            "overlay[0].position: an array is no object and is ignored; the default stays"},
        Row{"opacity_word", R"("bgAlpha":"half")",
            "overlay[0].bgAlpha: \"half\" is no number and is ignored; 0.5 stays"},
        Row{"opacity_bool", R"("bgAlpha":true)", "overlay[0].bgAlpha: true is no number and is ignored; 0.5 stays"},
        Row{"opacity_high", R"("bgAlpha":7)", "overlay[0].bgAlpha: 7 becomes 1 (allowed: 0 to 1)"},
        Row{"frames_zero", R"("updateEveryNFrames":0)",
            "overlay[0].updateEveryNFrames: 0 becomes 1 (allowed: 1 to 120)"},
        Row{"frames_fraction", R"("updateEveryNFrames":2.7)",
            "overlay[0].updateEveryNFrames: 2.7 becomes 2 (allowed: 1 to 120)"},
        Row{"frames_null", R"("updateEveryNFrames":null)",
            "overlay[0].updateEveryNFrames: null is no number and becomes 1 (allowed: 1 to 120)"},
        Row{"unknown_key", R"("textsize":20)", "overlay[0].textsize: unknown key, ignored; did you mean \"textSize\"?"},
        Row{"unknown_key_far_off", R"("zebra":20)", "overlay[0].zebra: unknown key, ignored"}),
    [](auto const& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Conditions, BlockCheck,
    testing::Values(
        Row{"condition_word", R"("condition":"k")",
            "overlay[0].condition: \"k\" is no object and is ignored: the block is always shown"},
        Row{"condition_without_key", R"("condition":{"value":1})",
            "overlay[0].condition: \"key\" is missing: the condition is ignored and the block is always shown"},
        Row{"condition_key_number", R"("condition":{"key":5})",
            "overlay[0].condition.key: 5 is no key: the condition is ignored and the block is always shown"},
        Row{"condition_key_empty", R"("condition":{"key":""})",
            "overlay[0].condition.key: \"\" is no key: the condition is ignored and the block is always shown"},
        Row{"operator_any_case", R"("condition":{"key":"k","operator":"GreaterThan","value":1})", ""},
        Row{"operator_unknown", R"("condition":{"key":"k","operator":"greaterr","value":1})",
            "overlay[0].condition.operator: \"greaterr\" is no operator and becomes \"equals\""},
        Row{"operator_misspelt", R"("condition":{"key":"k","operator":"equal","value":1})",
            "overlay[0].condition.operator: \"equal\" is no operator and becomes \"equals\"; did you mean \"equals\"?"},
        Row{"equals_wins", R"("condition":{"key":"k","operator":"lt","equals":1,"notEquals":2,"value":3})",
            "overlay[0].condition.notEquals: has no effect: \"equals\" wins\n"
            "overlay[0].condition.operator: has no effect: \"equals\" wins\n"
            "overlay[0].condition.value: has no effect: \"equals\" wins"},
        Row{"not_equals_wins", R"("condition":{"key":"k","notEquals":2,"value":3})",
            "overlay[0].condition.value: has no effect: \"notEquals\" wins"},
        Row{"operand_array", R"("condition":{"key":"k","value":[1]})",
            "overlay[0].condition.value: an array becomes \"{}\""},
        Row{"show_after", R"("condition":{"key":"k","showAfterMs":700000})",
            "overlay[0].condition.showAfterMs: 700000 becomes 600000 (allowed: 0 to 600000)"},
        Row{"keep_after", R"("condition":{"key":"k","keepAfterMs":-1})",
            "overlay[0].condition.keepAfterMs: -1 becomes 0 (allowed: 0 to 600000)"},
        Row{"bitmask_negative", R"("condition":{"key":"k","bitmask":-1})",
            "overlay[0].condition.bitmask: -1 is no bit mask and is ignored; masks from bit 31 on need quotes and 0x"},
        Row{"bitmask_bit_31", R"("condition":{"key":"k","bitmask":2147483648})",
            "overlay[0].condition.bitmask: 2147483648 is no bit mask and is ignored; masks from bit 31 on need quotes "
            "and 0x"},
        Row{"bitmask_beyond_32_bits", R"("condition":{"key":"k","bitmask":4294967312})",
            "overlay[0].condition.bitmask: 4294967312 becomes 16"},
        Row{"bitmask_fraction", R"("condition":{"key":"k","bitmask":2.9})",
            "overlay[0].condition.bitmask: 2.9 becomes 2"},
        Row{"bitmask_word", R"("condition":{"key":"k","bitmask":"abc"})",
            "overlay[0].condition.bitmask: \"abc\" is no number and is ignored"},
        Row{"bitmask_bad_hex", R"("condition":{"key":"k","bitmask":"0x1G"})",
            "overlay[0].condition.bitmask: \"0x1G\" is no whole number and is ignored"},
        Row{"condition_unknown_key", R"("condition":{"key":"k","op":"lt"})",
            "overlay[0].condition.op: unknown key, ignored"}),
    [](auto const& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Formats, BlockCheck,
    testing::Values(
        Row{"formats_array", R"("formats":[])", "overlay[0].formats: an array is no object and is ignored"},
        Row{"format_number", R"("formats":{"a":2})", "overlay[0].formats.a: 2 is no object and is ignored"},
        Row{"unit", R"("formats":{"a":{"timestampUnit":"sec"}})",
            "overlay[0].formats.a.timestampUnit: \"sec\" becomes \"ms\" (allowed: \"s\", \"ms\", \"us\")"},
        Row{"zone", R"("formats":{"a":{"timezone":"Local"}})",
            "overlay[0].formats.a.timezone: \"Local\" becomes \"utc\" (allowed: \"utc\", \"local\")"},
        Row{"date_format_object", R"("formats":{"a":{"dateFormat":{}}})",
            "overlay[0].formats.a.dateFormat: an object becomes \"{}\""},
        Row{"date_word", R"("formats":{"a":{"date":"on"}})",
            "overlay[0].formats.a.date: \"on\" becomes false (allowed: true, false)"},
        Row{"hold", R"("formats":{"a":{"holdLastMs":1000000}})",
            "overlay[0].formats.a.holdLastMs: 1000000 becomes 600000 (allowed: 0 to 600000)"},
        Row{"refresh_word", R"("formats":{"a":{"refreshEveryMs":"soon"}})",
            "overlay[0].formats.a.refreshEveryMs: \"soon\" is no number and becomes 0 (allowed: 0 to 600000)"},
        Row{"hold_fraction", R"("formats":{"a":{"holdLastMs":12.5}})",
            "overlay[0].formats.a.holdLastMs: 12.5 becomes 12 (allowed: 0 to 600000)"},
        Row{"invalid_values_number", R"("formats":{"a":{"invalidValues":0}})",
            "overlay[0].formats.a.invalidValues: 0 is no array and is ignored"},
        Row{"invalid_values_nested", R"("formats":{"a":{"invalidValues":[0,[1],{}]}})",
            "overlay[0].formats.a.invalidValues[1]: an array is skipped\n"
            "overlay[0].formats.a.invalidValues[2]: an object is skipped"},
        Row{"bounds_equal", R"("formats":{"a":{"minValue":5,"maxValue":5}})",
            "overlay[0].formats.a: \"minValue\" 5 and \"maxValue\" 5 are equal: there is no bound at all"},
        Row{"bound_word", R"("formats":{"a":{"minValue":"abc"}})",
            "overlay[0].formats.a.minValue: \"abc\" is no number and is ignored: there is no bound"},
        Row{"bound_with_unit", R"("formats":{"a":{"maxValue":"12 m"}})",
            "overlay[0].formats.a.maxValue: \"12 m\" becomes 12"},
        Row{"bound_null", R"("formats":{"a":{"minValue":null}})", "overlay[0].formats.a.minValue: null becomes 0"},
        Row{"bound_beyond_32_bits", R"("formats":{"a":{"maxValue":4294967296}})",
            "overlay[0].formats.a.maxValue: 4294967296 becomes 0"},
        Row{"format_unknown_key", R"("formats":{"a":{"decimal":2}})",
            "overlay[0].formats.a.decimal: unknown key, ignored; did you mean \"decimals\"?"}),
    [](auto const& row) { return row.param.name; });

// Silent or wrong before.
INSTANTIATE_TEST_SUITE_P(
    FormerBugs, BlockCheck,
    testing::Values(
        Row{"bitmask_beyond_64_bits", R"("condition":{"key":"k","bitmask":"0xFFFFFFFFFFFFFFFFFF"})",
            "overlay[0].condition.bitmask: \"0xFFFFFFFFFFFFFFFFFF\" becomes 18446744073709551615"},
        Row{"bitmask_negative_text", R"("condition":{"key":"k","bitmask":" -1"})",
            "overlay[0].condition.bitmask: \" -1\" becomes 18446744073709551615"},
        Row{"bitmask_fraction_text", R"("condition":{"key":"k","bitmask":".5"})",
            "overlay[0].condition.bitmask: \".5\" becomes 0"},
        Row{"bitmask_digits_beyond_32_bits", R"("condition":{"key":"k","bitmask":"4294967295"})",
            "overlay[0].condition.bitmask: \"4294967295\" becomes 0"},
        Row{"bound_too_small", R"("formats":{"a":{"minValue":"1e-999"}})",
            "overlay[0].formats.a.minValue: \"1e-999\" is out of range and is ignored: there is no bound"},
        Row{"bound_too_large", R"("formats":{"a":{"maxValue":"1e5000"}})",
            "overlay[0].formats.a.maxValue: \"1e5000\" is out of range and is ignored: there is no bound"},
        Row{"bound_in_quotes_single_precision", R"("formats":{"a":{"minValue":"0.1"}})",
            "overlay[0].formats.a.minValue: \"0.1\" becomes 0.10000000149011612"},
        Row{"bounds_equal_as_text", R"("formats":{"a":{"minValue":" 5","maxValue":5}})",
            "overlay[0].formats.a: \"minValue\" \" 5\" and \"maxValue\" 5 are equal: there is no bound at all"},
        Row{"bounds_equal_as_bool", R"("formats":{"a":{"minValue":true,"maxValue":1}})",
            "overlay[0].formats.a: \"minValue\" true and \"maxValue\" 1 are equal: there is no bound at all"},
        Row{"bounds_equal_in_32_bits", R"("formats":{"a":{"minValue":4294967297,"maxValue":1}})",
            "overlay[0].formats.a: \"minValue\" 4294967297 and \"maxValue\" 1 are equal: there is no bound at all"},
        Row{"bounds_crossed", R"("formats":{"a":{"minValue":9,"maxValue":-1.5}})",
            "overlay[0].formats.a: \"minValue\" 9 is above \"maxValue\" -1.5: every value is out of range"},
        Row{"bounds_crossed_in_32_bits", R"("formats":{"a":{"minValue":0,"maxValue":3000000000}})",
            "overlay[0].formats.a.maxValue: 3000000000 becomes -1294967296\n"
            "overlay[0].formats.a: \"minValue\" 0 is above \"maxValue\" -1294967296: every value is out of range"},
        Row{"date_conversions", R"("formats":{"a":{"date":true,"dateFormat":"%H:%M:%S.%f %L %f%"}})",
            "overlay[0].formats.a.dateFormat: \"%f\" is no date conversion and is shown as it stands\n"
            "overlay[0].formats.a.dateFormat: \"%L\" is no date conversion and is shown as it stands\n"
            "overlay[0].formats.a.dateFormat: \"%\" at the end is not shown"},
        Row{"date_format_number", R"("formats":{"a":{"dateFormat":"1.5"}})",
            "overlay[0].formats.a.dateFormat: \"1.5\" becomes \"1.500000\""},
        Row{"octal_in_quotes", R"("textSize":"010")", "overlay[0].textSize: \"010\" becomes 8 (allowed: 6 to 256)"},
        Row{"digits_in_quotes_beyond_32_bits", R"("textSize":"99999999999")",
            "overlay[0].textSize: \"99999999999\" becomes 6 (allowed: 6 to 256)"},
        Row{"infinite_in_quotes", R"("decimals":"1000000000000000000000000000000000000000.0")",
            "overlay[0].decimals: \"1000000000000000000000000000000000000000\"... becomes 12 (allowed: -1 to 12)"},
        Row{"operand_of_seven_decimals", R"("condition":{"key":"k","value":0.0000001})",
            "overlay[0].condition.value: 0.0000001 becomes \"0.000000\""},
        Row{"operand_octal", R"("condition":{"key":"k","equals":"010"})",
            "overlay[0].condition.equals: \"010\" becomes \"8\""},
        Row{"invalid_value_of_seven_decimals", R"("formats":{"a":{"invalidValues":[1.5,0.0000001,"N/A"]}})",
            "overlay[0].formats.a.invalidValues[1]: 0.0000001 becomes \"0.000000\""},
        Row{"operator_without_operand", R"("condition":{"key":"k","operator":"ist"})",
            "overlay[0].condition.operator: \"ist\" is no operator and becomes \"exists\""},
        Row{"operator_overruled", R"("condition":{"key":"k","operator":"greaterr","equals":1})",
            "overlay[0].condition.operator: has no effect: \"equals\" wins"},
        Row{"ignored_condition", R"("condition":{"key":5,"showAfterMs":700000,"operater":"lt"})",
            "overlay[0].condition.key: 5 is no key: the condition is ignored and the block is always shown\n"
            "overlay[0].condition.operater: unknown key, ignored; did you mean \"operator\"?"},
        Row{"color_with_sign", R"("textColor":"#-12345")",
            "overlay[0].textColor: \"#-12345\" is not #rrggbb and becomes #fedcbb"},
        Row{"member_twice", R"("textSize":300,"condition":{"key":"a","key":"b"},"textSize":20)",
            "overlay[0].condition.key: stands there more than once: only the last one counts\n"
            "overlay[0].textSize: stands there more than once: only the last one counts"},
        Row{"name_with_line_feed", R"("formats":{"a\nb":2})",
            "overlay[0].formats.a\\nb: 2 is no object and is ignored"}),
    [](auto const& row) { return row.param.name; });

TEST(ConfigCheck, FormerBugReadsNumbersInTheLocaleOfTheProcess)
{
    CommaCLocale const comma;
    std::string const text = R"({"overlay":[{"position":{"x":0.25},"formats":{"a":{"minValue":"1.5e0"}}},
        {"formats":{"a":{"minValue":"1,5"}}},{"condition":{"key":"k","bitmask":".5e1"}}]})";
    EXPECT_EQ(linesOf(check::checkConfig(read(text), text)), "overlay[1].formats.a.minValue: \"1,5\" becomes 1");
}

TEST(ConfigCheck, LooksAtRootAndItems)
{
    std::string const text = R"({"availableKeys":[],"overlays":1,"overlay":[1,{},"a"]})";
    EXPECT_EQ(linesOf(check::checkConfig(read(text), text)),
              "overlays: unknown key, ignored; did you mean \"overlay\"?\n"
              "overlay[0]: 1 is no object and is skipped\n"
              "overlay[2]: \"a\" is no object and is skipped");
}

TEST(CheckKeys, NamesKeysThatTheInputNeverDelivers)
{
    SwJsonObject const root = read(R"({"overlay":[
        {"formatString":"%heading_deg %{sensor_lat} %%x","condition":{"key":"laser"},
         "formats":{"heading_deg":{},"headng_deg":{}}},
        {"condition":{"key":""}}, {}]})");
    EXPECT_EQ(linesOf(check::checkKeys(root, {"heading_deg", "laser_range_enabled", "sensor_lat_deg"})),
              "overlay[0].formatString: the input never delivers \"sensor_lat\"; did you mean \"sensor_lat_deg\"?\n"
              "overlay[0].condition.key: the input never delivers \"laser\"; did you mean \"laser_range_enabled\"?\n"
              "overlay[0].formats: the input never delivers \"headng_deg\"; did you mean \"heading_deg\"?");
}

TEST(CheckKeys, KnowsKeysThatCanBeMade)
{
    SwJsonObject const root =
        read(R"({"overlay":[{"formatString":"%sensor_mgrs %speed_kt %heading %heading_compas %heading_compass"}]})");
    auto const sources = [](std::string const& key) {
        using Keys = std::vector<std::string>;
        return key == "sensor_mgrs" ? Keys{"sensor_lat_deg", "sensor_lon_deg"}
               : key == "speed_kt"  ? Keys{"speed_mps"}
                                    : Keys{};
    };
    check::Derivable const derivable{{"heading_3digits", "heading_compass"}, sources};
    EXPECT_EQ(
        linesOf(check::checkKeys(root, {"heading_deg"}, derivable)),
        "overlay[0].formatString: the input never delivers \"sensor_mgrs\": it is made of \"sensor_lat_deg\" and "
        "\"sensor_lon_deg\", which are missing\n"
        "overlay[0].formatString: the input never delivers \"speed_kt\": it is made of \"speed_mps\", which is "
        "missing\n"
        "overlay[0].formatString: the input never delivers \"heading\"; did you mean \"heading_deg\"?\n"
        "overlay[0].formatString: the input never delivers \"heading_compas\"; did you mean \"heading_compass\"?");
}

struct TemplateRow {
    char const* name;
    char const* text;
    std::vector<std::string> keys;
    bool unclosed;
};

class TemplateKeys : public testing::TestWithParam<TemplateRow> {};

TEST_P(TemplateKeys, FollowTheRulesOfPlaceholders)
{
    check::TemplateKeys const found = check::templateKeys(GetParam().text);
    EXPECT_EQ(found.keys, GetParam().keys);
    EXPECT_EQ(found.unclosed, GetParam().unclosed);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TemplateKeys,
    testing::Values(TemplateRow{"plain", "Alt: %alt m", {"alt"}, false},
                    TemplateRow{"braces", "%{Sensor Lat}", {"Sensor Lat"}, false},
                    TemplateRow{"percent", "100%% 5% a % b %", {}, false},
                    TemplateRow{"unclosed", "x %{a %b", {}, true}, TemplateRow{"unclosed_at_end", "%a %{", {"a"}, true},
                    TemplateRow{"one_name", "%a%b", {"a%b"}, false}, TemplateRow{"dots", "%a.b-c", {"a.b-c"}, false},
                    TemplateRow{"pair", "(%lat,%lon)", {"lat", "lon"}, false},
                    TemplateRow{"empty_name", "%{}", {""}, false}, TemplateRow{"colon", "%:%a", {"a"}, false}),
    [](auto const& row) { return row.param.name; });

TEST(NearestWord, IsCloseOrEmpty)
{
    std::vector<std::string> const known = {"textSize", "textColor", "x"};
    EXPECT_EQ(check::nearestWord("TEXTSIZE", known), "textSize");
    EXPECT_EQ(check::nearestWord("textColour", known), "textColor");
    EXPECT_EQ(check::nearestWord("textCol", known), "textColor");
    EXPECT_EQ(check::nearestWord("zebra", known), "");
    EXPECT_EQ(check::nearestWord("y", known), "");
    EXPECT_EQ(check::nearestWord("", known), "");
    EXPECT_EQ(check::nearestWord(std::string(100000, 'a'), known), "");
    EXPECT_EQ(check::didYouMean("textsize", known), "; did you mean \"textSize\"?");
    EXPECT_EQ(check::didYouMean("zebra", known), "");
}

}  // namespace
