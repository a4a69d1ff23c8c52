// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers read, compared, shown and dated with 64 bits of fraction: a golden of exact results, the same on every
// processor. More than half of its cases come out otherwise with 113 bits.
#include "overlay_numbers.h"
#include "stanag_overlay_condition.h"
#include "stanag_overlay_format.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace stanag_overlay {
namespace {

/// The 64 bits and the exponent of two: 1 is 8000000000000000p-63. Bits beyond them show behind a point.
std::string bitsOf(long double number)
{
    if (number == 0.0L) {
        return "0";
    }
    int exponent = 0;
    long double const mantissa = std::ldexp(std::frexp(std::fabs(number), &exponent), 64);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s%016llXp%d", number < 0.0L ? "-" : "",
                  static_cast<unsigned long long>(mantissa), exponent - 64);
    return std::trunc(mantissa) == mantissa ? text.data() : std::string(text.data()) + " and more";
}

std::string read(std::string const& text)
{
    long double number = 0.0L;
    return parseWholeNumber(text, number) ? bitsOf(number) : "refused";
}

std::string mask(std::string const& text)
{
    unsigned long number = 0;
    return tryParseUnsignedString(text, number) ? std::to_string(number) : "refused";
}

std::string shown(FormatSpec const& spec, std::string const& text)
{
    OverlayCfg cfg;
    cfg.formats["k"] = spec;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", SwJsonValue(text)}};
    return OverlayTextFormatter().lookupFormatted(&root, "k", cfg, runtime, 1);
}

std::string fixed(int decimals, std::string const& text)
{
    FormatSpec spec;
    spec.decimals = decimals;
    return shown(spec, text);
}

std::string date(std::string const& unit, std::string const& text)
{
    FormatSpec spec;
    spec.date = true;
    spec.timestampUnit = unit == "s"    ? TimestampUnit::Seconds
                         : unit == "ms" ? TimestampUnit::Milliseconds
                                        : TimestampUnit::Microseconds;
    return shown(spec, text);
}

std::string holds(ConditionOp op, std::string const& value, std::string const& operand)
{
    OverlayCfg cfg;
    cfg.condition.enabled = true;
    cfg.condition.key = "k";
    cfg.condition.op = op;
    cfg.condition.value = operand;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", SwJsonValue(value)}};
    return OverlayConditionEvaluator().visibility(cfg, runtime, &root, 1) == Visibility::Refresh ? "yes" : "no";
}

/// What an invalid value of the second text makes of the first one.
std::string countsAsInvalid(std::string const& value, std::string const& invalid)
{
    FormatSpec spec;
    spec.invalidValues = {invalid};
    return shown(spec, value) == "--" ? "yes" : "no";
}

std::vector<std::string> fieldsOf(std::string const& line)
{
    std::vector<std::string> fields(1);
    for (char const byte : line) {
        if (byte == '\t') {
            fields.emplace_back();
        } else {
            fields.back() += byte;
        }
    }
    return fields;
}

std::string resultOf(std::vector<std::string> const& fields)
{
    std::string const& operation = fields.front();
    if (operation == "read") {
        return read(fields[1]);
    }
    if (operation == "mask") {
        return mask(fields[1]);
    }
    if (operation == "fixed") {
        return fixed(std::stoi(fields[1]), fields[2]);
    }
    if (operation == "date") {
        return date(fields[1], fields[2]);
    }
    if (operation == "more") {
        return holds(ConditionOp::GreaterThan, fields[1], fields[2]);
    }
    return operation == "equal" ? holds(ConditionOp::Equals, fields[1], fields[2]) : "no such operation";
}

TEST(ExtendedNumbers, AreThoseOfTheGolden)
{
    std::ifstream golden(OVERLAY_SOURCE_DIR "/tests/golden/extended_numbers.txt");
    int cases = 0;
    for (std::string line; std::getline(golden, line); ++cases) {
        std::vector<std::string> fields = fieldsOf(line);
        ASSERT_GE(fields.size(), 3U) << line;
        std::string const expected = fields.back();
        fields.pop_back();
        EXPECT_EQ(resultOf(fields), expected) << line;
        if (fields.front() == "equal") {
            EXPECT_EQ(countsAsInvalid(fields[1], fields[2]), expected) << line;
        }
    }
    EXPECT_EQ(cases, 1000);
}

// Former bugs: where long double has 113 bits, these came out otherwise.
TEST(ExtendedNumbers, FormerBugs)
{
    EXPECT_EQ(holds(ConditionOp::Equals, "2.000000001", "2"), "yes");
    EXPECT_EQ(holds(ConditionOp::NotEquals, "2.000000001", "2"), "no");
    EXPECT_EQ(countsAsInvalid("2.000000001", "2"), "yes");
    EXPECT_EQ(fixed(6, "0.0122105"), "0.012210");
    EXPECT_EQ(read("0.1"), "CCCCCCCCCCCCCCCDp-67");
    EXPECT_EQ(read("18446744073709551617"), "8000000000000000p1");
    EXPECT_EQ(read("1.18973149535723176508575932662800702e4932"), "refused");
    EXPECT_EQ(read("0x1.8p-16445"), "refused");
}

}  // namespace
}  // namespace stanag_overlay
