// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The check and the plugin's parser on the same hostile configurations: they never disagree.
#include "check/format_check.h"
#include "check_agreement.h"
#include "stanag_overlay_format.h"

#include "SwJson.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using check_agreement::disagreement;
using check_agreement::templateDisagreement;

/// Standard error goes nowhere while it lives: the JSON reader writes a line for every text of digits that is no
/// number.
class QuietStandardError {
public:
    QuietStandardError() : before_(std::cerr.rdbuf(nowhere_.rdbuf())) {}
    QuietStandardError(QuietStandardError const&) = delete;
    QuietStandardError& operator=(QuietStandardError const&) = delete;
    ~QuietStandardError() { std::cerr.rdbuf(before_); }

private:
    std::ostringstream nowhere_;
    std::streambuf* before_;
};

using Names = std::vector<std::string>;

Names const kBlockNames = {
    "formatString", "decimals", "trimTrailingZeros", "missingPlaceholder", "textColor", "textSize", "thickness",
    "position",     "bgColor",  "bgAlpha",           "updateEveryNFrames", "condition", "formats",  "textsize"};
Names const kConditionNames = {"key",     "operator",    "value",       "equals", "notEquals",
                               "bitmask", "showAfterMs", "keepAfterMs", "op"};
Names const kFormatNames = {
    "date",          "decimals",   "trimTrailingZeros", "dateFormat", "timestampUnit", "timezone", "missingPlaceholder",
    "invalidValues", "holdLastMs", "refreshEveryMs",    "minValue",   "maxValue",      "min"};

/// Values as they stand in a file. Those that are no container are also tried in quotes.
Names const kScalars = {
    // numbers around every limit and width
    "0", "-0", "1", "-1", "2", "5", "6", "7", "12", "13", "16", "17", "120", "121", "256", "257", "999", "600000",
    "600001", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296", "4294967297",
    "4294967312", "-4294967295", "9007199254740993", "9223372036854775807", "-9223372036854775808",
    // with a point or an exponent
    "0.0", "-0.0", "0.5", "0.1", "-0.1", "1.0", "1.5", "2.5", "-2.5", "12.0", "12.9", "0.999999999", "1.0000001",
    "0.0000001", "1.23456789", "5.000000001", "4294967297.0", "2147483648.0", "-1.0", "4294967296.5", "1e0", "1e1",
    "1e2", "1e-1", "5e-1", "1e10", "-1e10", "1e18", "1e19", "1e20", "1e23", "1e300", "-1e300", "1e-300",
    "1.7976931348623157e308", "2.2250738585072014e-308", "18446744073709551615.0", "600000.5", "599999.999999999999",
    // literals
    "true", "false", "null"};
Names const kTexts = {
    "", "-", ".", "-.", ".5", "5.", "-.5", "1.2.3", "+5", " 5", "5 ", "\\t5", "\\u000b5", "5\\u00006", "1_000", "0b101",
    "007", "010", "08", "-010", "0x10", "0X10", "-0x10", "0x1G", "0x", " 0x10", " 010", "-0", "-1 ", " -1", "- 1",
    "99999999999", "-99999999999", "18446744073709551615", "18446744073709551616", "0xFFFFFFFF", "0x80000000",
    "0xFFFFFFFFFFFFFFFF", "0x10000000000000000", "0xFFFFFFFFFFFFFFFFFF", "0x1p4", "0x.8", "1e1", "1E1", "1e-999",
    "1e999", "-1e999", "1e-310", "1e309", ".5e20", ".18446744073709551615e20", ".1e4000", ".1e-4000", "1e5000", "inf",
    "-inf", "nan", "infinity", "nan(1)", "1,5", "1.5 m", "12 m", "abc", "TRUE", "yes", "None", "NULL", "true ",
    "1000000000000000000000000000000000000000.0", "-1000000000000000000000000000000000000000.0", "0.3", "00.5", "3.25",
    "0.00000000000000000000000000000000000000000000000000001", "16777217.0",
    "3402823600000000000000000000000000000000.5",
    // words of members
    "s", "ms", "us", "S", "sec", "utc", "local", "UTC", "eq", "EQ", "==", "!=", ">", ">=", "<", "<=", "gte", " gte",
    "GreaterThan", "equal", "exists", "Exists", "notEquals", "#FF8000", "#ff8000", "#12zzzz", "#zzzzzz", "# 1234",
    "#-12345", "#+12345", "#0x12ab", "#-0x1ff", "#123456 ", "FF8000", "#FFF", "red", "%a %{b", "%{a}", "100%", "%",
    "%H:%M:%S.%f", "%Ey%Oy%E", "%-d", "%Y becomes 2", "x becomes \\\"y\\\"", "\\n", "\\\"", "\\\\", "\\u00e9",
    "\\ud83d\\ude00"};
Names const kContainers = {"{}",        "[]",   "[1]",
                           "{\"a\":1}", "[[]]", "[0,\"N/A\",null,true,1.5,0.0000001,\"010\",[1],{}]"};

class RandomConfigurations {
public:
    explicit RandomConfigurations(std::uint32_t seed) : random_(seed) {}

    std::string text()
    {
        std::string blocks;
        std::size_t const count = 1 + below_(3);
        for (std::size_t index = 0; index < count; ++index) {
            blocks += (index == 0 ? "" : ",") + (oneIn_(20) ? value_() : block_());
        }
        return R"({"availableKeys":[],"overlay":[)" + blocks + "]}";
    }

    std::string templateText()
    {
        static Names const kPieces = {"%",  "%%", "%{", "}", "{", "a", "b c", "lat_deg", " ",  ":",   ",",  "(",
                                      ")",  "/",  ";",  "<", ">", "[", "]",   "\\",      "\"", "'",   "\n", "\t",
                                      "\r", ".",  "-",  "+", "=", "?", "\v",  "\x7f",    "é",  "\x80"};
        std::string text;
        std::size_t const count = below_(12);
        for (std::size_t piece = 0; piece < count; ++piece) {
            text += oneIn_(8) ? std::string(1, static_cast<char>(4 + below_(252))) : oneOf_(kPieces);
        }
        return text;
    }

private:
    std::size_t below_(std::size_t limit) { return random_() % limit; }
    bool oneIn_(std::size_t count) { return below_(count) == 0; }
    std::string const& oneOf_(Names const& choices) { return choices[below_(choices.size())]; }

    /// Digits, signs, points and letters of numbers in any order.
    std::string madeUp_()
    {
        static std::string const kBytes = "00112345678999..--+eExXabF_ ";
        std::string text;
        std::size_t const count = below_(24);
        for (std::size_t at = 0; at < count; ++at) {
            text += kBytes[below_(kBytes.size())];
        }
        return text;
    }

    std::string value_()
    {
        switch (below_(8)) {
        case 0:
            return oneOf_(kContainers);
        case 1:
            return '"' + oneOf_(kScalars) + '"';
        case 2:
            return '"' + madeUp_() + '"';
        case 3:
            return std::to_string(static_cast<std::int64_t>(random_()) >> below_(64));
        case 4:
        case 5:
            return '"' + oneOf_(kTexts) + '"';
        default:
            return oneOf_(kScalars);
        }
    }

    std::string object_(Names const& names, std::string const& fixed = "")
    {
        std::string members = fixed;
        std::size_t const count = oneIn_(4) ? names.size() : 1 + below_(4);
        for (std::size_t index = 0; index < count; ++index) {
            std::string const& name = count == names.size() ? names[index] : oneOf_(names);
            members += (members.empty() ? "\"" : ",\"") + name + "\":" + member_(name);
        }
        return '{' + members + '}';
    }

    std::string member_(std::string const& name)
    {
        if (name == "position" && !oneIn_(8)) {
            return object_({"x", "y", "z"});
        }
        if (name == "condition" && !oneIn_(8)) {
            return object_(kConditionNames, oneIn_(4) ? "" : "\"key\":\"k\"");
        }
        if (name == "formats" && !oneIn_(8)) {
            return R"({"a":)" + (oneIn_(8) ? value_() : object_(kFormatNames)) + R"(,"b_2":)" + object_(kFormatNames) +
                   '}';
        }
        return value_();
    }

    std::string block_() { return object_(kBlockNames); }

    std::mt19937_64 random_;
};

TEST(CheckProperty, EveryValueOfEveryMemberAgrees)
{
    QuietStandardError const quiet;
    Names values = kContainers;
    for (std::string const& scalar : kScalars) {
        values.push_back(scalar);
        values.push_back('"' + scalar + '"');
    }
    for (std::string const& text : kTexts) {
        values.push_back('"' + text + '"');
    }
    std::size_t compared = 0;
    auto const compare = [&compared](std::string const& block) {
        std::string const text = R"({"overlay":[)" + block + "]}";
        EXPECT_EQ(disagreement(text), "") << text;
        ++compared;
    };
    for (std::string const& value : values) {
        for (std::string const& name : kBlockNames) {
            compare("{\"" + name + "\":" + value + "}");
        }
        for (char const* const name : {"x", "y"}) {
            compare(std::string(R"({"position":{")") + name + "\":" + value + "}}");
        }
        for (std::string const& name : kConditionNames) {
            compare(R"({"condition":{"key":"k",")" + name + "\":" + value + "}}");
        }
        for (std::string const& name : kFormatNames) {
            compare(R"({"formats":{"k":{")" + name + "\":" + value + "}}}");
        }
        compare(R"({"formats":{"k":{"invalidValues":[)" + value + "]}}}");
    }
    EXPECT_GT(compared, 8000U);
}

TEST(CheckProperty, EveryPairOfBoundsAgrees)
{
    QuietStandardError const quiet;
    Names values = kScalars;
    for (std::string const& text : kTexts) {
        values.push_back('"' + text + '"');
    }
    for (std::string const& least : values) {
        for (std::string const& most : values) {
            std::string const text =
                R"({"overlay":[{"formats":{"k":{"minValue":)" + least + R"(,"maxValue":)" + most + "}}}]}";
            ASSERT_EQ(disagreement(text), "") << text;
        }
    }
}

TEST(CheckProperty, RandomConfigurationsAgree)
{
    QuietStandardError const quiet;
    RandomConfigurations random(20261);
    for (int round = 0; round < 5000; ++round) {
        std::string const text = random.text();
        ASSERT_EQ(disagreement(text), "") << "round " << round << ": " << text;
    }
}

TEST(CheckProperty, RandomTemplatesAgree)
{
    RandomConfigurations random(20262);
    for (int round = 0; round < 50000; ++round) {
        std::string const text = random.templateText();
        ASSERT_EQ(templateDisagreement(text), "") << "round " << round << ": " << SwJsonValue::escapeString(text);
    }
}

/// A date in the plugin's hands.
std::string dateText(std::string const& pattern)
{
    using namespace stanag_overlay;
    OverlayCfg cfg;
    FormatSpec spec;
    spec.date = true;
    spec.dateFormat = pattern;
    cfg.formats["t"] = spec;
    SwJsonObject const payload = {{"t", SwJsonValue(std::int64_t{1700000000000})}};
    OverlayRuntime runtime;
    return OverlayTextFormatter().lookupFormatted(&payload, "t", cfg, runtime, 1);
}

TEST(CheckProperty, ConversionsThatTheCLibraryDoesNotKnowAreShownAsTheyStand)
{
    for (std::string const modifier : {"", "E", "O"}) {
        for (int byte = 1; byte < 256; ++byte) {
            std::string const pattern = "%" + modifier + static_cast<char>(byte);
            if (pattern == "%E" || pattern == "%O") {
                continue;
            }
            std::string const shown = dateText(pattern);
            bool const standsThere = shown.size() >= pattern.size() &&
                                     shown.compare(shown.size() - pattern.size(), pattern.size(), pattern) == 0;
            std::vector<std::string> const unknown = check::unknownConversions(pattern);
            EXPECT_EQ(unknown.size(), standsThere ? 1U : 0U) << pattern << " shows " << shown;
        }
    }
    for (std::string const pattern : {"%", "%E", "%O"}) {
        EXPECT_EQ(dateText(pattern), "");
        EXPECT_EQ(check::unknownConversions(pattern), std::vector<std::string>{"%"});
    }
    EXPECT_EQ(check::unknownConversions("%H %f%L %Ef %f %% %"), (std::vector<std::string>{"%f", "%L", "%Ef", "%"}));
}

}  // namespace
