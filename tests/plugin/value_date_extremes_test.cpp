// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Dates at their worst: every conversion that a pattern can name, patterns without end, and times at both ends of
// every kind of number. What must come out is what the standard library's own stream writes.
#include "stanag_overlay_format.h"

#include "time_zone.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace stanag_overlay {
namespace {

using Limits64 = std::numeric_limits<std::int64_t>;
constexpr std::array<TimestampUnit, 3> kUnits{TimestampUnit::Seconds, TimestampUnit::Milliseconds,
                                              TimestampUnit::Microseconds};
// 2024-01-02 03:04:05 UTC.
constexpr std::time_t kMoment = 1704164645;

std::string lookup(std::string const& pattern, SwJsonValue const& value, bool localTime = false,
                   TimestampUnit unit = TimestampUnit::Seconds)
{
    OverlayCfg cfg;
    FormatSpec& spec = cfg.formats["k"];
    spec.date = true;
    spec.dateFormat = pattern;
    spec.localTime = localTime;
    spec.timestampUnit = unit;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", value}};
    return OverlayTextFormatter().lookupFormatted(&root, "k", cfg, runtime, 1);
}

std::string streamed(std::string const& pattern, bool localTime)
{
    std::tm time{};
    if (localTime) {
        localtime_r(&kMoment, &time);
    } else {
        gmtime_r(&kMoment, &time);
    }
    std::ostringstream stream;
    stream << std::put_time(&time, pattern.c_str());
    return stream.str();
}

TEST(ValueDateExtremes, EveryByteAfterAPercentIsWhatTheStreamWrites)
{
    TimeZone const zone("CET-1CEST,M3.5.0,M10.5.0/3");
    for (bool const localTime : {false, true}) {
        for (int byte = 1; byte < 256; ++byte) {
            for (char const* const modifier : {"", "E", "O", "_", "-", "0", "^", "#", "+", "5", "EO", "%"}) {
                std::string const pattern = std::string("[%") + modifier + static_cast<char>(byte) + "] %H:%M";
                ASSERT_EQ(lookup(pattern, std::int64_t{kMoment}, localTime), streamed(pattern, localTime)) << pattern;
            }
        }
    }
}

TEST(ValueDateExtremes, AllConversionsTogether)
{
    EXPECT_EQ(lookup("%a|%A|%b|%B|%C|%d|%D|%e|%F|%g|%G|%h|%H|%I|%j|%k|%l|%m|%M|%n|%p|%r|%R|%s|%S|%t|%T|%u|%U|%V|%w|%W"
                     "|%y|%Y|%z|%Z|%%|%c|%x|%X|%Ec|%EC|%Ex|%EX|%Ey|%EY|%Od|%Oe|%OH|%OI|%Om|%OM|%OS|%Ou|%OU|%OV|%Ow|%OW"
                     "|%Oy",
                     std::int64_t{kMoment}),
              "Tue|Tuesday|Jan|January|20|02|01/02/24| 2|2024-01-02|24|2024|Jan|03|03|002| 3| 3|01|04|\n|AM|03:04:05 AM"
              "|03:04|1704164645|05|\t|03:04:05|2|00|01|2|01|24|2024|+0000|GMT|%|Tue Jan  2 03:04:05 2024|01/02/24"
              "|03:04:05|Tue Jan  2 03:04:05 2024|20|01/02/24|03:04:05|24|2024|02| 2|03|03|01|04|05|2|00|01|2|01|24");
}

TEST(ValueDateExtremes, PatternsWithoutEnd)
{
    constexpr std::size_t kCount = 100000;
    std::string numbers;
    std::string names;
    std::string hours;
    for (std::size_t i = 0; i < kCount; ++i) {
        numbers += "%H";
        names += "%A";
        hours += "03";
    }
    EXPECT_TRUE(lookup(numbers, std::int64_t{kMoment}) == hours);
    EXPECT_EQ(lookup(names, std::int64_t{kMoment}).size(), kCount * std::string("Tuesday").size());
    EXPECT_TRUE(lookup(std::string(kCount, 'x'), std::int64_t{kMoment}) == std::string(kCount, 'x'));
    EXPECT_TRUE(lookup(std::string(2 * kCount, '%'), std::int64_t{kMoment}) == std::string(kCount, '%'));
    EXPECT_TRUE(lookup(std::string(2 * kCount + 1, '%'), std::int64_t{kMoment}) == std::string(kCount, '%'));
}

TEST(ValueDateExtremes, ZonesWithoutUse)
{
    struct Row {
        char const* name;
        std::string zone;
        char const* expected;
    };
    std::string const endless(500, 'A');
    std::vector<Row> const rows = {
        {"not there", "No/Such/Zone", "03:04"},
        {"no text", "\xff\xfe", "03:04"},
        {"a folder", ":/", "03:04"},
        {"no zone file", ":/proc/self/maps", "03:04"},
        {"out of the zone folder", "../../../../etc/passwd", "03:04"},
        {"an hour beyond", "AAA-25", "03:04"},
        {"a rule cut off", "AAA-1BBB,M3", "04:04"},
        {"a name without end", endless + "-1", "04:04"},
        {"a signless name", "<+05>-5", "08:04"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        TimeZone const zone(row.zone.c_str());
        EXPECT_EQ(lookup("%H:%M", std::int64_t{kMoment}, true), row.expected);
        EXPECT_EQ(lookup("%H:%M", std::int64_t{kMoment}, false), "03:04");
        EXPECT_EQ(lookup("%c %z %Z", std::int64_t{kMoment}, true), streamed("%c %z %Z", true));
    }
}

// Nanoseconds in 64 bits reach from 1677 to 2262, so a year always has four digits.
TEST(ValueDateExtremes, NoNumberLeavesTheYearsOf64BitNanoseconds)
{
    double const infinity = std::numeric_limits<double>::infinity();
    std::vector<SwJsonValue> values;
    for (std::int64_t const number : {Limits64::min(), Limits64::min() + 1, std::int64_t{-1}, std::int64_t{0},
                                      Limits64::max() - 1, Limits64::max()}) {
        values.emplace_back(number);
        values.emplace_back(std::to_string(number));
        values.emplace_back(static_cast<double>(number));
    }
    for (char const* const text : {"18446744073709551615", "18446744073709551616", "-18446744073709551616", "1e4932",
                                   "-1e4932", "1e5000", "0x7fffffffffffffff", "nan", "-inf", "253402300800"}) {
        values.emplace_back(text);
    }
    for (double const number :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(), infinity, std::nextafter(9223372036854775808.0, 0.0),
          9223372036854775808.0, std::nextafter(9223372036854775808.0, infinity), 18446744073709551615.0,
          253402300799.0, 253402300800.0, -62135596800.0, -62167219200.0, -62167219201.0}) {
        values.emplace_back(number);
        values.emplace_back(-number);
    }
    values.emplace_back(std::numeric_limits<double>::quiet_NaN());
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        values.emplace_back(std::bit_cast<double>(random()));
        values.emplace_back(static_cast<std::int64_t>(random()));
    }
    TimeZone const zone("AAA-14:30");
    for (SwJsonValue const& value : values) {
        for (TimestampUnit const unit : kUnits) {
            for (bool const localTime : {false, true}) {
                std::string const text = lookup("%Y-%m-%d %H:%M:%S", value, localTime, unit);
                if (value.isString() && text == value.toString()) {
                    EXPECT_EQ(text, "1e5000") << "beyond every number: shown as it came";
                    continue;
                }
                ASSERT_EQ(text.size(), 19U) << value.toString() << " gives " << text;
                ASSERT_GE(text, "1677-09-21 00:12:43") << value.toString();
                ASSERT_LE(text, "2262-04-12 14:17:16") << value.toString();
            }
        }
    }
}

}  // namespace
}  // namespace stanag_overlay
