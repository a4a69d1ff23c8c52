// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text of a key that is a time: units, rounding, patterns, time zones and the locale's names.
#include "stanag_overlay_format.h"

#include "comma_locale.h"
#include "global_facet.h"
#include "time_zone.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <string>
#include <vector>

namespace stanag_overlay {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();

// The text under a format of its own.
std::string lookup(FormatSpec const& spec, SwJsonValue const& value)
{
    OverlayCfg cfg;
    cfg.missingPlaceholder = "(block)";
    cfg.formats["k"] = spec;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", value}};
    return OverlayTextFormatter().lookupFormatted(&root, "k", cfg, runtime, 1);
}

FormatSpec dateSpec(TimestampUnit unit, char const* pattern = nullptr)
{
    FormatSpec spec;
    spec.date = true;
    spec.timestampUnit = unit;
    if (pattern != nullptr) {
        spec.dateFormat = pattern;
    }
    return spec;
}

TEST(ValueDate, Dates)
{
    struct DateRow {
        char const* name;
        TimestampUnit unit;
        SwJsonValue value;
        char const* expected;
    };
    auto const s = TimestampUnit::Seconds;
    auto const ms = TimestampUnit::Milliseconds;
    auto const us = TimestampUnit::Microseconds;
    char const* const epoch = "00:00:00 01-01-1970";
    std::vector<DateRow> const rows = {
        {"milliseconds", ms, 1700000000123LL, "22:13:20 14-11-2023"},
        {"seconds", s, 1700000000.9, "22:13:20 14-11-2023"},
        {"microseconds", us, 1700000000123456LL, "22:13:20 14-11-2023"},
        {"text", ms, "1700000000123", "22:13:20 14-11-2023"},
        {"christmas", s, 1735135387, "14:03:07 25-12-2024"},
        {"leap day", s, 1709164800, "00:00:00 29-02-2024"},
        {"epoch", s, 0, epoch},
        {"the fraction is dropped toward 1970", s, -1.5, "23:59:59 31-12-1969"},
        {"less than a second before 1970", s, -0.9, epoch},
        {"half microseconds round away from zero", us, -999999.5, "23:59:59 31-12-1969"},
        {"less than half does not", us, -999999.25, epoch},
        {"half microseconds upward", us, 59999999.5, "00:01:00 01-01-1970"},
        {"text no number", ms, "abc", "abc"},
        {"empty text", ms, "", ""},
        {"true", ms, true, "true"},
        {"null", ms, nullptr, "null"},
        {"array", ms, SwJsonArray{1}, "{}"},
        {"not a number", ms, kNotANumber, epoch},
        {"text nan", ms, "nan", epoch},
        // The largest count of microseconds times 1000 wraps to -1000 nanoseconds.
        {"infinite", ms, kInfinity, epoch},
        {"negative infinite", ms, -kInfinity, epoch},
        {"far beyond 64 bits", s, 1e300, epoch},
        {"largest integer", us, kMax64, epoch},
        {"latest time before the wrap", s, 9223372036.0, "23:47:16 11-04-2262"},
        {"one second later wraps to the earliest", s, 9223372037.0, "00:12:44 21-09-1677"},
        {"earliest time", s, -9223372036.0, "00:12:44 21-09-1677"},
        {"a whole turn of the wrap", us, 18446744073709552.0, epoch},
        // These need more digits than a double has: it would give a second more, and an even half.
        {"microseconds of a text in seconds", s, "9099999999.999999", "01:46:39 15-05-2258"},
        {"less than half a microsecond more", s, "9099999999.9999994", "01:46:39 15-05-2258"},
        {"half a microsecond of a text, away from zero", us, "64563604257983430.5", "00:12:44 21-09-1677"},
    };
    for (DateRow const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lookup(dateSpec(row.unit), row.value), row.expected);
    }
}

TEST(ValueDate, DatePatterns)
{
    struct PatternRow {
        char const* name;
        std::string pattern;
        std::string expected;
    };
    // 2024-01-02 03:04:05 UTC, a Tuesday.
    SwJsonValue const time = 1704164645;
    std::vector<PatternRow> const rows = {
        {"default", "%H:%M:%S %d-%m-%Y", "03:04:05 02-01-2024"},
        {"empty", "", ""},
        {"no conversion", "UTC", "UTC"},
        {"percent", "100%%", "100%"},
        {"percent at the end", "%H%", "03"},
        {"percent alone", "%", ""},
        {"modifier at the end", "%H%E", "03"},
        {"ISO", "%Y-%m-%dT%H:%M:%SZ", "2024-01-02T03:04:05Z"},
        {"composed conversions", "%F %T %R %D", "2024-01-02 03:04:05 03:04 01/02/24"},
        {"names", "%a %A %b %B", "Tue Tuesday Jan January"},
        {"day of the year, week", "%j %U %V %u", "002 00 01 2"},
        {"twelve hours", "%I %p", "03 AM"},
        {"zone", "%z %Z", "+0000 GMT"},
        {"modifiers", "%EY %Od", "2024 02"},
        {"line feed", "%H%n%M\n%S", "03\n04\n05"},
        {"UTF-8", "%H\xC2\xB7%M",
         "03\xC2\xB7"
         "04"},
        {"a zero byte ends it", std::string("%H\0%M", 5), "03"},
        {"two-digit year and century", "%y%%%C", "24%20"},
    };
    for (PatternRow const& row : rows) {
        SCOPED_TRACE(row.name);
        FormatSpec spec = dateSpec(TimestampUnit::Seconds);
        spec.dateFormat = row.pattern;
        EXPECT_EQ(lookup(spec, time), row.expected);
    }
}

TEST(ValueDate, DatesBypassDecimalsAndComeAfterTheChecks)
{
    FormatSpec spec = dateSpec(TimestampUnit::Seconds, "%Y");
    spec.decimals = 2;
    spec.trimTrailingZeros = true;
    EXPECT_EQ(lookup(spec, 1700000000), "2023");
    spec.invalidValues = {"0"};
    EXPECT_EQ(lookup(spec, 0), "--");
    spec.hasMin = true;
    spec.minValue = 100;
    EXPECT_EQ(lookup(spec, 99), "--");
    EXPECT_EQ(lookup(spec, 100), "1970");
    EXPECT_EQ(lookup(spec, "abc"), "--") << "with bounds a text that is no number is out of range";
}

TEST(ValueDate, LocalTime)
{
    FormatSpec spec = dateSpec(TimestampUnit::Seconds, "%H:%M:%S %d-%m-%Y %Z");
    spec.localTime = true;
    FormatSpec utc = spec;
    utc.localTime = false;
    {
        TimeZone const zone("CET-1CEST,M3.5.0,M10.5.0/3");
        EXPECT_EQ(lookup(spec, 1700000000), "23:13:20 14-11-2023 CET");
        EXPECT_EQ(lookup(spec, 1690000000), "06:26:40 22-07-2023 CEST");
        EXPECT_EQ(lookup(utc, 1700000000), "22:13:20 14-11-2023 GMT");
    }
    {
        TimeZone const zone("NST3:30");
        EXPECT_EQ(lookup(spec, 1700000000), "18:43:20 14-11-2023 NST");
        EXPECT_EQ(lookup(spec, -9223372036.0), "20:42:44 20-09-1677 NST");
    }
    {
        TimeZone const zone("UTC0");
        EXPECT_EQ(lookup(spec, 1700000000), "22:13:20 14-11-2023 UTC");
    }
    spec.dateFormat = "%H:%M:%S %d-%m-%Y";
    {
        TimeZone const zone("AAA-24:30");
        EXPECT_EQ(lookup(spec, 1700000000), "22:43:20 15-11-2023");
    }
    {
        TimeZone const unusable("No/Such Zone,,/");
        EXPECT_EQ(lookup(spec, 1700000000), "22:13:20 14-11-2023");
    }
    {
        TimeZone const none("");
        EXPECT_EQ(lookup(spec, 1700000000), "22:13:20 14-11-2023");
    }
}

// Only the global locale of streams counts, not the one of the C library.
TEST(ValueDate, NamesOfDaysStayEnglishUnderAnotherCLocale)
{
    CommaCLocale const german;
    EXPECT_EQ(lookup(dateSpec(TimestampUnit::Seconds, "%A %d %B %H:%M"), 1704164645), "Tuesday 02 January 03:04");
    EXPECT_EQ(lookup(dateSpec(TimestampUnit::Seconds), "1704164645.5"), "03:04:05 02-01-2024");
}

class ShoutingTime : public std::time_put<char> {
protected:
    iter_type do_put(iter_type out, std::ios_base& /*base*/, char /*fill*/, std::tm const* /*time*/, char conversion,
                     char /*modifier*/) const override
    {
        *out++ = '!';
        *out++ = conversion;
        return out;
    }
};

TEST(ValueDate, DatesFollowTheGlobalLocalesFacet)
{
    FormatSpec const spec = dateSpec(TimestampUnit::Seconds, "%H:%M");
    {
        GlobalFacet const shouting(new ShoutingTime);
        EXPECT_EQ(lookup(spec, 0), "!H:!M");
    }
    EXPECT_EQ(lookup(spec, 0), "00:00");
    GlobalFacet const comma(new DecimalComma);
    EXPECT_EQ(lookup(spec, 0), "00:00");
}

}  // namespace
}  // namespace stanag_overlay
