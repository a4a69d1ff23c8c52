// The formatter against its plain version: random configurations, payloads and times, side by side, every
// text and every remembered value equal.
#include "stanag_overlay_format.h"

#include "plain_overlay_format.h"
#include "random_overlays.h"
#include "runtime_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <locale>
#include <string>

namespace stanag_overlay {
namespace {

void compare(std::uint32_t seed, int blocks, int frames)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomOverlays maker(seed);
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
            ASSERT_EQ(runtimeText(fast), runtimeText(slow));
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
