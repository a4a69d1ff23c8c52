// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers as messages show them.
#include "sw_number_text.h"

#include "comma_locale.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

struct Row {
    char const* name;
    double number;
    char const* text;
};

class NumberText : public testing::TestWithParam<Row> {};

TEST_P(NumberText, IsAsPeopleWriteIt)
{
    EXPECT_EQ(sw_text::numberText(GetParam().number), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberText,
                         testing::Values(Row{"zero", 0, "0"}, Row{"minus_zero", -0.0, "-0"},
                                         Row{"whole", 600000, "600000"}, Row{"fraction", 1.5, "1.5"},
                                         Row{"tenth", 0.1, "0.1"}, Row{"single_precision", 0.1F, "0.10000000149011612"},
                                         Row{"negative", -12.25, "-12.25"},
                                         Row{"sixteen_digits", 1.0 / 3, "0.3333333333333333"},
                                         Row{"last_digit_is_rounded", 2.0 / 3, "0.6666666666666666"},
                                         Row{"seventeen_digits", 0.1 + 0.2, "0.30000000000000004"},
                                         Row{"largest_plain", 123456789012345, "123456789012345"},
                                         Row{"larger_plain", 1234567890123456, "1234567890123456"},
                                         Row{"large", 1e22, "1e+22"}, Row{"smallest_plain", 0.0001, "0.0001"},
                                         Row{"small", 0.00001, "1e-05"},
                                         Row{"greatest", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
                                         Row{"infinite", std::numeric_limits<double>::infinity(), "inf"}),
                         [](auto const& row) { return row.param.name; });

TEST(NumberText, KnowsNoLanguage)
{
    CommaCLocale const german;
    EXPECT_EQ(sw_text::numberText(1.5), "1.5");
    EXPECT_EQ(sw_text::secondsText(9.8), "9.800 s");
}

TEST(SecondsText, EndsAtTheMillisecond)
{
    EXPECT_EQ(sw_text::secondsText(0.0), "0.000 s");
    EXPECT_EQ(sw_text::secondsText(9.8), "9.800 s");
    EXPECT_EQ(sw_text::secondsText(3600.0004), "3600.000 s");
    EXPECT_EQ(sw_text::secondsText(0.9996), "1.000 s");
}

TEST(Counted, HasOneAndMany)
{
    EXPECT_EQ(sw_text::counted(0, "packet", "packets"), "0 packets");
    EXPECT_EQ(sw_text::counted(1, "packet", "packets"), "1 packet");
    EXPECT_EQ(sw_text::counted(18446744073709551615U, "packet", "packets"), "18446744073709551615 packets");
}

}  // namespace
