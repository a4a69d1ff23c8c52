// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The formatter against its plain version: random configurations, payloads and times, side by side, every
// text and every remembered value equal.
#include "stanag_overlay_format.h"

#include "plain_overlay_format.h"
#include "random_overlays.h"
#include "runtime_text.h"
#include "time_zone.h"

#include <gtest/gtest.h>

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
        maker.chooseKeys();
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

void compareInEveryZone(std::uint32_t seed, int blocks, int frames)
{
    for (std::string const& zone : timeZones()) {
        SCOPED_TRACE(zone);
        TimeZone const here(zone.c_str());
        compare(seed++, blocks, frames);
    }
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
