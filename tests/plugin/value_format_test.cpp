// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text of one key: plain and fixed numbers, the checks before them, and what locales change.
#include "stanag_overlay_format.h"

#include "comma_locale.h"
#include "global_facet.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <string>

namespace stanag_overlay {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();

std::string lookup(OverlayCfg const& cfg, SwJsonValue const& value)
{
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", value}};
    return OverlayTextFormatter().lookupFormatted(&root, "k", cfg, runtime, 1);
}

// The text under a format of its own.
std::string lookup(FormatSpec const& spec, SwJsonValue const& value)
{
    OverlayCfg cfg;
    cfg.missingPlaceholder = "(block)";
    cfg.formats["k"] = spec;
    return lookup(cfg, value);
}

class GroupedComma : public DecimalComma {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

struct Row {
    char const* name;
    SwJsonValue value;
    std::string expected;
};

TEST(ValueFormat, TextFormWithoutDecimals)
{
    std::vector<Row> const rows = {
        {"double", 1.5, "1.500000"},
        {"integer", 42, "42"},
        {"smallest integer", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {"large double", 1e20, "100000000000000000000.000000"},
        {"infinite", kInfinity, "inf"},
        {"text", "abc", "abc"},
        {"text of a number", "7.50", "7.50"},
        {"empty text", "", ""},
        {"true", true, "true"},
        {"null", nullptr, "null"},
        {"array", SwJsonArray{1, 2}, "{}"},
        {"object", SwJsonObject{{"a", 1}}, "{}"},
    };
    FormatSpec plain;
    plain.decimals = -3;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lookup(OverlayCfg(), row.value), row.expected);
        EXPECT_EQ(lookup(FormatSpec(), row.value), row.expected);
        EXPECT_EQ(lookup(plain, row.value), row.expected) << "any negative count of decimals";
    }
}

TEST(ValueFormat, BlockDecimals)
{
    OverlayCfg cfg;
    cfg.decimals = 2;
    std::vector<Row> const rows = {
        {"pi", 3.14159, "3.14"},
        {"two", 2.0, "2"},
        {"text of a number", "7.50", "7.5"},
        {"text", "abc", "abc"},
        {"true", true, "true"},
        {"null", nullptr, "null"},
        {"integer", 42, "42"},
        {"zeros before", 100.0, "100"},
        {"object", SwJsonObject{}, "{}"},
        {"blank before", " 12", "12"},
        {"blank after", "12 ", "12 "},
        {"hexadecimal text", "0x1A", "26"},
        {"small negative", -0.001, "-0"},
        {"negative zero", -0.0, "-0"},
        {"infinite", kInfinity, "inf"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lookup(cfg, row.value), row.expected);
    }
    cfg.trimTrailingZeros = false;
    EXPECT_EQ(lookup(cfg, 2.0), "2.00");
    EXPECT_EQ(lookup(cfg, -0.001), "-0.00");
    cfg.decimals = 0;
    EXPECT_EQ(lookup(cfg, 2.5), "2");
}

TEST(ValueFormat, AnEntryReplacesTheBlocksFieldsEntirely)
{
    OverlayCfg cfg;
    cfg.decimals = 2;
    cfg.trimTrailingZeros = true;
    cfg.missingPlaceholder = "(block)";
    cfg.formats["k"];
    EXPECT_EQ(lookup(cfg, 1.5), "1.500000") << "the entry has no decimals of its own";
    cfg.formats["k"].decimals = 3;
    EXPECT_EQ(lookup(cfg, 1.5), "1.500") << "the entry does not trim";
    OverlayRuntime runtime;
    OverlayTextFormatter const formatter;
    EXPECT_EQ(formatter.lookupFormatted(nullptr, "k", cfg, runtime, 1), "--");
    EXPECT_EQ(formatter.lookupFormatted(nullptr, "other", cfg, runtime, 1), "(block)");
    EXPECT_EQ(formatter.lookupFormatted(nullptr, "K", cfg, runtime, 1), "(block)");
}

struct FixedRow {
    char const* name;
    SwJsonValue value;
    int decimals;
    char const* plain;
    char const* trimmed;
};

TEST(ValueFormat, FixedNumbers)
{
    std::vector<FixedRow> const rows = {
        {"just above the tie", 0.05, 1, "0.1", "0.1"},
        {"rounds to zero below zero", -0.04, 1, "-0.0", "-0"},
        {"tie to even, down", 2.5, 0, "2", "2"},
        {"tie to even, up", 3.5, 0, "4", "4"},
        {"tie to even, two digits", 0.125, 2, "0.12", "0.12"},
        {"just below the tie", 1.005, 2, "1.00", "1"},
        {"zeros after the point", 12.5, 3, "12.500", "12.5"},
        {"all zeros after the point", 12.0, 3, "12.000", "12"},
        {"zeros before the point stay", 1200.0, 2, "1200.00", "1200"},
        {"zeros before the point stay without a point", 1200.0, 0, "1200", "1200"},
        {"zero", 0.0, 2, "0.00", "0"},
        {"negative zero", -0.0, 2, "-0.00", "-0"},
        {"negative zero without a point", -0.0, 0, "-0", "-0"},
        {"carry", 999.996, 2, "1000.00", "1000"},
        {"integer", 5, 2, "5.00", "5"},
        {"largest integer through binary64", kMax64, 1, "9223372036854775808.0", "9223372036854775808"},
        {"2^53 + 1", 9007199254740993LL, 0, "9007199254740992", "9007199254740992"},
        {"twenty decimals of the stored value", 0.1, 20, "0.10000000000000000555", "0.10000000000000000555"},
        {"large", 1e22, 1, "10000000000000000000000.0", "10000000000000000000000"},
        {"infinite", kInfinity, 2, "inf", "inf"},
        {"negative infinite", -kInfinity, 2, "-inf", "-inf"},
        {"not a number", kNotANumber, 2, "nan", "nan"},
        {"not a number with a sign", std::copysign(kNotANumber, -1.0), 2, "-nan", "-nan"},
        {"text of a number", "1.25", 1, "1.2", "1.2"},
        {"text nan", "nan", 1, "nan", "nan"},
        {"text beyond binary64", "1e400", 1, "inf", "inf"},
        {"text out of every range", "1e5000", 1, "1e5000", "1e5000"},
        {"text with a unit", "12 m", 1, "12 m", "12 m"},
        {"text with trailing zeros that is no number", "v1.00", 1, "v1.00", "v1.00"},
        {"true", true, 1, "true", "true"},
        {"null", nullptr, 1, "null", "null"},
        {"array", SwJsonArray{}, 1, "{}", "{}"},
    };
    for (FixedRow const& row : rows) {
        SCOPED_TRACE(row.name);
        FormatSpec spec;
        spec.decimals = row.decimals;
        EXPECT_EQ(lookup(spec, row.value), row.plain);
        spec.trimTrailingZeros = true;
        EXPECT_EQ(lookup(spec, row.value), row.trimmed);
    }
}

std::string printed(double number, int decimals)
{
    std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, "%.*f", decimals, number)), '\0');
    std::snprintf(text.data(), text.size() + 1, "%.*f", decimals, number);
    return text;
}

TEST(ValueFormat, AnyCountOfDecimals)
{
    double const smallest = std::numeric_limits<double>::denorm_min();
    double const largest = std::numeric_limits<double>::max();
    FormatSpec spec;
    for (int const decimals : {12, 17, 100, 1073, 1074, 1075, 1500, 20000}) {
        SCOPED_TRACE(decimals);
        spec.decimals = decimals;
        for (double const number : {0.1, -2.5, smallest, -largest, 3.0, 1e-300}) {
            spec.trimTrailingZeros = false;
            std::string const expected = printed(number, decimals);
            EXPECT_TRUE(lookup(spec, number) == expected) << number;
            spec.trimTrailingZeros = true;
            std::size_t const last = expected.find_last_not_of('0');
            EXPECT_TRUE(lookup(spec, number) == expected.substr(0, expected[last] == '.' ? last : last + 1)) << number;
        }
    }
}

// Numbers of every size, and many ties, against the C library.
TEST(ValueFormat, FixedNumbersAreThoseOfTheCLibrary)
{
    std::mt19937_64 random(11);
    FormatSpec spec;
    for (int round = 0; round < 40000; ++round) {
        spec.decimals = static_cast<int>(random() % 15);
        double number = 0.0;
        switch (random() % 4) {
        case 0:
            number = std::bit_cast<double>(random());
            break;
        case 1:
            // Sizes around the point, from far below the last digit to beyond 64 bits.
            number = std::ldexp(static_cast<double>(random() >> 11U), static_cast<int>(random() % 200) - 150);
            break;
        case 2:
            // A tie at some digit.
            number = std::ldexp(static_cast<double>(random() % 1000000), -static_cast<int>(random() % 16));
            break;
        default:
            number = std::uniform_real_distribution<double>(-1000.0, 1000.0)(random);
            break;
        }
        number = random() % 2 == 0 ? number : -number;
        ASSERT_EQ(lookup(spec, number), printed(number, spec.decimals)) << number << " " << spec.decimals;
    }
}

TEST(ValueFormat, FixedNumbersAtTheEdgesOfTheirSizes)
{
    std::vector<double> const numbers = {4503599627370495.5,
                                         4503599627370496.0,
                                         18446744.073709551,
                                         18446744.073709553,
                                         1.8446744073709552e18,
                                         2.2250738585072014e-308,
                                         2.2250738585072009e-308,
                                         std::ldexp(1.0, -41),
                                         std::ldexp(1.0, -93),
                                         std::ldexp(1.0, -94),
                                         9.9999999999995e-13,
                                         5e-13,
                                         0.5,
                                         1.5,
                                         9.5,
                                         99.99999999999949,
                                         0.9999999999995};
    FormatSpec spec;
    for (double const number : numbers) {
        for (spec.decimals = 0; spec.decimals < 16; ++spec.decimals) {
            EXPECT_EQ(lookup(spec, number), printed(number, spec.decimals));
            EXPECT_EQ(lookup(spec, -number), printed(-number, spec.decimals));
        }
    }
}

TEST(ValueFormat, HugeCountsOfDecimalsCostOnlyWhatIsShown)
{
    FormatSpec spec;
    spec.decimals = std::numeric_limits<int>::max();
    spec.trimTrailingZeros = true;
    EXPECT_EQ(lookup(spec, 2.5), "2.5");
    EXPECT_EQ(lookup(spec, -3), "-3");
    EXPECT_EQ(lookup(spec, 0.1), "0.1000000000000000055511151231257827021181583404541015625");
    EXPECT_EQ(lookup(spec, "x"), "x");
    spec.trimTrailingZeros = false;
    EXPECT_EQ(lookup(spec, kInfinity), "inf");
    EXPECT_EQ(lookup(spec, kNotANumber), "nan");
    spec.decimals = 5000000;
    EXPECT_TRUE(lookup(spec, 2.5) == "2.5" + std::string(4999999, '0'));
}

TEST(ValueFormat, InvalidValues)
{
    struct InvalidRow {
        char const* name;
        std::vector<std::string> invalid;
        SwJsonValue value;
        bool isInvalid;
    };
    std::vector<InvalidRow> const rows = {
        {"zero", {"0"}, 0, true},
        {"zero as double", {"0"}, 0.0, true},
        {"negative zero", {"0"}, -0.0, true},
        {"almost zero", {"0"}, 0.0000000001, true},
        {"text of zero", {"0"}, "0.0", true},
        {"near zero", {"0"}, 0.000001, false},
        {"exactly the tolerance away", {"0"}, 1e-9, false},
        {"text", {"N/A"}, "N/A", true},
        {"text in another case", {"N/A"}, "n/a", false},
        {"number against text", {"N/A"}, 5, false},
        {"Bool is not 1", {"1"}, true, false},
        {"Bool by its text", {"true"}, true, true},
        {"Bool by its text, false", {"true"}, false, false},
        {"null by its text", {"null"}, nullptr, true},
        {"object by its text", {"{}"}, SwJsonObject{{"a", 1}}, true},
        {"array by its text", {"{}"}, SwJsonArray{1}, true},
        {"later in the list", {"N/A", "7", "9"}, 9, true},
        {"nowhere in the list", {"N/A", "7", "9"}, 8, false},
        {"numbers are not compared as texts", {"nan"}, kNotANumber, false},
        {"infinities differ from themselves", {"inf"}, kInfinity, false},
        {"a number's text against a text that is no number", {"5.000000 "}, 5.0, false},
        {"blank before the number", {" 5"}, 5, true},
        {"blank after it makes a text", {"5 "}, 5, false},
        {"the same text", {"5 "}, "5 ", true},
        {"hexadecimal", {"0x10"}, 16, true},
        {"text beyond every range is compared as text", {"1e5000"}, "1e5000", true},
        {"empty text", {""}, "", true},
        {"empty text against null", {""}, nullptr, false},
        {"2^53 and its neighbour", {"9007199254740992"}, 9007199254740993LL, true},
        {"no invalid values", {}, 0, false},
    };
    for (InvalidRow const& row : rows) {
        SCOPED_TRACE(row.name);
        FormatSpec spec;
        spec.missingPlaceholder = "(missing)";
        spec.invalidValues = row.invalid;
        EXPECT_EQ(lookup(spec, row.value), row.isInvalid ? "(missing)" : row.value.toString());
    }
}

TEST(ValueFormat, Range)
{
    struct RangeRow {
        char const* name;
        SwJsonValue value;
        bool shown;
    };
    FormatSpec spec;
    spec.missingPlaceholder = "(missing)";
    spec.hasMin = true;
    spec.hasMax = true;
    spec.maxValue = 100.0;
    std::vector<RangeRow> const rows = {
        {"lower bound", 0, true},
        {"negative zero", -0.0, true},
        {"upper bound", 100, true},
        {"upper bound as text", "100", true},
        {"inside", 50.5, true},
        {"below", -0.1, false},
        {"above", 100.5, false},
        {"barely below", -1e-300, false},
        {"below as a text smaller than any double", "-1e-400", false},
        {"barely above as text", "100.00000000000000001", false},
        {"infinite", kInfinity, false},
        {"not-a-number passes", kNotANumber, true},
        {"text nan passes", "nan", true},
        {"text", "abc", false},
        {"empty text", "", false},
        {"true", true, false},
        {"null", nullptr, false},
        {"array", SwJsonArray{}, false},
    };
    for (RangeRow const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lookup(spec, row.value), row.shown ? row.value.toString() : "(missing)");
    }
    spec.hasMax = false;
    EXPECT_EQ(lookup(spec, 1000), "1000");
    EXPECT_EQ(lookup(spec, -1), "(missing)");
    EXPECT_EQ(lookup(spec, "abc"), "(missing)");
    spec.hasMin = false;
    spec.hasMax = true;
    EXPECT_EQ(lookup(spec, 1000), "(missing)");
    EXPECT_EQ(lookup(spec, -1), "-1");
    spec.hasMax = false;
    EXPECT_EQ(lookup(spec, "abc"), "abc") << "bounds without their flags do not count";
    // Crossed bounds leave nothing.
    spec.hasMin = true;
    spec.hasMax = true;
    spec.minValue = 9;
    spec.maxValue = 1;
    EXPECT_EQ(lookup(spec, 5), "(missing)");
}

TEST(ValueFormat, FixedNumbersFollowTheGlobalLocalesDecimalPoint)
{
    GlobalFacet const comma(new DecimalComma);
    FormatSpec spec;
    spec.decimals = 2;
    EXPECT_EQ(lookup(spec, 1234.5), "1234,50");
    EXPECT_EQ(lookup(spec, "1234.5"), "1234,50") << "payload texts are still read with a point";
    EXPECT_EQ(lookup(spec, "1234,5"), "1234,5");
    EXPECT_EQ(lookup(spec, -kInfinity), "-inf");
    EXPECT_EQ(lookup(spec, kNotANumber), "nan");
    spec.trimTrailingZeros = true;
    EXPECT_EQ(lookup(spec, 1234.5), "1234,50") << "trimming looks for a point and finds none";
    EXPECT_EQ(lookup(spec, 2.0), "2,00");
    spec.decimals = 0;
    EXPECT_EQ(lookup(spec, 1200.0), "1200");
    spec.decimals = 1100;
    std::string expected = printed(0.1, 1100);
    expected[1] = ',';
    EXPECT_TRUE(lookup(spec, 0.1) == expected);
    spec.decimals = -1;
    EXPECT_EQ(lookup(spec, 1234.5), "1234.500000") << "the plain text form does not";
    spec.invalidValues = {"1.5"};
    EXPECT_EQ(lookup(spec, 1.5), "--");
}

// Only the global locale of streams counts, not the one of the C library.
TEST(ValueFormat, NumbersKeepTheirPointUnderAnotherCLocale)
{
    CommaCLocale const german;
    FormatSpec spec;
    spec.decimals = 2;
    EXPECT_EQ(lookup(spec, 1234.5), "1234.50");
    EXPECT_EQ(lookup(spec, "1234.5"), "1234.50");
    EXPECT_EQ(lookup(spec, "1234,5"), "1234,5");
    spec.trimTrailingZeros = true;
    EXPECT_EQ(lookup(spec, 1234.5), "1234.5");
    spec.decimals = 13;
    EXPECT_EQ(lookup(spec, 1234.5), "1234.5");
    spec.decimals = -1;
    EXPECT_EQ(lookup(spec, 1234.5), "1234.500000");
    spec.invalidValues = {"1.5"};
    EXPECT_EQ(lookup(spec, 1.5), "--");
}

TEST(ValueFormat, NumbersAreNeverGrouped)
{
    GlobalFacet const grouped(new GroupedComma);
    FormatSpec spec;
    spec.decimals = 2;
    EXPECT_EQ(lookup(spec, 1234567.5), "1234567,50");
    spec.trimTrailingZeros = true;
    EXPECT_EQ(lookup(spec, 1234567.5), "1234567,50");
    spec.decimals = 0;
    EXPECT_EQ(lookup(spec, 1000000.0), "1000000");
}

}  // namespace
}  // namespace stanag_overlay
