// The formatter against its plain version: random configurations, payloads and times, side by side, every
// text and every remembered value equal.
#include "stanag_overlay_format.h"

#include "plain_overlay_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <locale>
#include <random>
#include <string>

namespace stanag_overlay {
namespace {

class Maker {
public:
    explicit Maker(std::uint32_t seed) : random_(seed) {}

    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <typename T>
    T const& oneOf(std::vector<T> const& choices)
    {
        return choices[below(choices.size())];
    }

    std::string key() { return oneOf(keys_); }

    double number()
    {
        switch (below(6)) {
        case 0:
            return oneOf<double>({0.0, -0.0, 0.5, 2.5, 0.05, 100.0, 1e-9, 999.9995, 1e22, 5e-324,
                                  1.7976931348623157e308, std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()});
        case 1: {
            std::uint64_t const bits = random_();
            double any = 0.0;
            std::memcpy(&any, &bits, sizeof any);
            return any;
        }
        case 2:
            return static_cast<double>(below(4000)) / 8.0 - 250.0;
        case 3:
            return static_cast<double>(below(2000000000)) * 1.0e3 + 0.25;
        default:
            return std::uniform_real_distribution<double>(-1000.0, 1000.0)(random_);
        }
    }

    std::string text()
    {
        return oneOf<std::string>({"",       "abc",  "12",   " 12", "12 ",           "1.50",
                                   "-0.0",   "nan",  "-nan", "inf", "0x1A",          "1e400",
                                   "1e5000", "true", "null", "{}",  "1700000000123", "9007199254740993",
                                   "1,5",    "%a"});
    }

    SwJsonValue value()
    {
        switch (below(10)) {
        case 0:
            return nullptr;
        case 1:
            return oneIn(2);
        case 2:
            return static_cast<std::int64_t>(random_());
        case 3:
            return static_cast<std::int64_t>(below(200)) - 100;
        case 4:
            return text();
        case 5:
            return oneIn(2) ? SwJsonValue(SwJsonObject{{"a", 1}}) : SwJsonValue(SwJsonArray{1});
        default:
            return number();
        }
    }

    SwJsonObject payload()
    {
        SwJsonObject object;
        for (std::string const& key : keys_) {
            if (!oneIn(4)) {
                object[key] = value();
            }
        }
        return object;
    }

    FormatSpec spec()
    {
        FormatSpec result;
        result.date = oneIn(3);
        result.decimals = oneIn(3) ? -1 : static_cast<int>(oneIn(10) ? below(400) : below(8));
        result.trimTrailingZeros = oneIn(2);
        if (oneIn(2)) {
            result.dateFormat =
                oneOf<std::string>({"", "%", "%H", "%Y-%m-%dT%H:%M:%SZ", "%%%H", "%H%", "%E", "%F %T %Z", "%y%j",
                                    "plain", "%Q %", "%d.%m.%Y \xC3\xA9", "%EY%Od", "%e"});
        }
        result.timestampUnit = static_cast<TimestampUnit>(below(3));
        result.localTime = oneIn(2);
        result.missingPlaceholder = oneOf<std::string>({"--", "", "?"});
        result.hasMin = oneIn(4);
        result.hasMax = oneIn(4);
        result.minValue = number();
        result.maxValue = number();
        while (oneIn(2)) {
            result.invalidValues.push_back(oneIn(2) ? text() : SwJsonValue(number()).toString());
        }
        result.holdLastNs = duration();
        result.refreshEveryNs = duration();
        return result;
    }

    std::string templateText()
    {
        std::string result;
        for (std::size_t parts = below(9); parts > 0; --parts) {
            switch (below(6)) {
            case 0:
                result += oneOf<std::string>({" ", ":", "\n", "m/s", "%%", "%", "{", "}", "%{", "\xC3\xA9", "(", ","});
                break;
            case 1:
                result += "%" + key();
                break;
            case 2:
                result += "%{" + key() + "}";
                break;
            default:
                result += "%" + key() + " ";
                break;
            }
        }
        return result;
    }

    OverlayCfg block()
    {
        OverlayCfg cfg;
        cfg.decimals = static_cast<int>(below(14)) - 1;
        cfg.trimTrailingZeros = oneIn(2);
        cfg.missingPlaceholder = oneOf<std::string>({"--", "n/a"});
        cfg.formatString = templateText();
        for (std::string const& key : keys_) {
            if (!oneIn(3)) {
                cfg.formats[key] = spec();
            }
        }
        return cfg;
    }

    std::vector<std::string> const& keys() const { return keys_; }

    std::uint64_t step() { return oneIn(50) ? random_() : below(4) * 10; }

private:
    std::uint64_t duration() { return oneIn(2) ? 0 : below(6) * 10; }

    std::mt19937_64 random_;
    std::vector<std::string> const keys_ = {"a", "b", "alt_m", "utc_timestamp_us", "a b", "", "x.y-z%"};
};

// Maps as sorted text, so that a difference is readable.
std::string asText(std::unordered_map<std::string, TimedText> const& map)
{
    std::vector<std::string> entries;
    entries.reserve(map.size());
    for (auto const& [key, entry] : map) {
        entries.push_back(key + "=" + entry.text + "@" + std::to_string(entry.timeNs));
    }
    std::sort(entries.begin(), entries.end());
    std::string text;
    for (std::string const& entry : entries) {
        text += entry + "\n";
    }
    return text;
}

void compare(std::uint32_t seed, int blocks, int frames)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    Maker maker(seed);
    OverlayTextFormatter const formatter;
    for (int block = 0; block < blocks; ++block) {
        OverlayCfg const cfg = maker.block();
        OverlayRuntime fast;
        OverlayRuntime slow;
        std::uint64_t nowNs = maker.step();
        for (int frame = 0; frame < frames; ++frame) {
            SCOPED_TRACE("block " + std::to_string(block) + ", frame " + std::to_string(frame));
            SwJsonObject const payload = maker.payload();
            SwJsonObject const* const root = maker.oneIn(8) ? nullptr : &payload;
            ASSERT_EQ(formatter.expandTemplate(cfg.formatString, root, cfg, fast, nowNs, maker.keys()),
                      plain::expandTemplate(cfg.formatString, root, cfg, slow, nowNs, maker.keys()))
                << cfg.formatString;
            ASSERT_EQ(asText(fast.heldValues), asText(slow.heldValues));
            ASSERT_EQ(asText(fast.refreshValues), asText(slow.refreshValues));
            nowNs += maker.step();
        }
    }
}

// Each time zone by a rule of its own, so that no zone files are needed.
void compareInEveryZone(std::uint32_t seed, int blocks, int frames)
{
    for (char const* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30", "AAA-24:59:59", "unusable///"}) {
        SCOPED_TRACE(zone);
        setenv("TZ", zone, 1);
        tzset();
        compare(seed++, blocks, frames);
    }
    unsetenv("TZ");
    tzset();
}

TEST(FormatProperty, PlainAndFastAgree)
{
    compareInEveryZone(1, 60, 25);
}

class DecimalComma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

TEST(FormatProperty, PlainAndFastAgreeUnderADecimalComma)
{
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    compareInEveryZone(100, 20, 25);
    std::locale::global(before);
}

}  // namespace
}  // namespace stanag_overlay
