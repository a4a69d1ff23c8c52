// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The line that tells of frames without telemetry: its text, and how seldom it is written.
#include "StanagOverlayPlugin.h"

#include "flushed_cerr.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <iostream>
#include <locale>
#include <stdexcept>
#include <string>

namespace {

class Fallback : public testing::Test {
protected:
    Fallback()
    {
        test_clock::setNowNs(5000);
        plugin_.init(host_.init());
        plugin_.enableDebug(true);
        host_.deliver("{}");
    }

    /// Renders a frame without telemetry and gives what was written.
    std::string miss(std::uint64_t frameIndex)
    {
        testing::internal::CaptureStderr();
        plugin_.render(host_.nextFrame(frameIndex));
        return testing::internal::GetCapturedStderr();
    }

    TestHost host_;
    StanagOverlayPlugin plugin_;
};

std::string line(std::uint64_t frame, std::uint64_t misses)
{
    return "[StanagOverlay][Fallback] frame=" + std::to_string(frame) +
           " decision=skip miss_count=" + std::to_string(misses) + " providers_missing=0 providers_using_lookback=0\n";
}

}  // namespace

TEST_F(Fallback, TwoHundredMissesWithinASecond)
{
    std::string printed;
    for (std::uint64_t frame = 1; frame <= 200; ++frame) {
        printed += miss(frame + 1000);
        test_clock::advanceNs(4 * test_clock::kNsPerMs);
    }
    EXPECT_EQ(printed, line(1001, 1) + line(1060, 60) + line(1120, 120) + line(1180, 180));
}

TEST_F(Fallback, OneLineAfterTwoSecondsOfSilence)
{
    EXPECT_EQ(miss(1), line(1, 1));
    test_clock::advanceNs(2000 * test_clock::kNsPerMs - 1);
    EXPECT_EQ(miss(2), "");
    test_clock::advanceNs(1);
    EXPECT_EQ(miss(3), line(3, 3));
    EXPECT_EQ(miss(4), "");
}

TEST_F(Fallback, ALineOnEverySixtiethStartsTheIntervalAnew)
{
    miss(1);
    for (std::uint64_t frame = 2; frame <= 59; ++frame) {
        EXPECT_EQ(miss(frame), "");
    }
    test_clock::advanceNs(1500 * test_clock::kNsPerMs);
    EXPECT_EQ(miss(60), line(60, 60));
    test_clock::advanceNs(1999 * test_clock::kNsPerMs);
    EXPECT_EQ(miss(61), "");
    test_clock::advanceNs(1 * test_clock::kNsPerMs);
    EXPECT_EQ(miss(62), line(62, 62));
}

TEST_F(Fallback, AGoodFrameStartsTheCountAnew)
{
    EXPECT_EQ(miss(1), line(1, 1));
    EXPECT_EQ(miss(2), "");
    host_.deliver(R"({"v":1})");
    EXPECT_EQ(miss(3), "");
    host_.deliver("{}");
    EXPECT_EQ(miss(4), line(4, 1));
}

TEST_F(Fallback, SilentWithoutDebugButStillCounting)
{
    plugin_.enableDebug(false);
    EXPECT_EQ(miss(1), "");
    EXPECT_EQ(miss(2), "");
    plugin_.enableDebug(true);
    EXPECT_EQ(miss(3), line(3, 3));  // no line yet, so none is too early
    plugin_.enableDebug(false);
    test_clock::advanceNs(10000 * test_clock::kNsPerMs);
    EXPECT_EQ(miss(4), "");
}

TEST_F(Fallback, LargeNumbersAreUnsignedDecimal)
{
    EXPECT_EQ(miss(18446744073709551615U), line(18446744073709551615U, 1));
}

TEST_F(Fallback, TheStreamsNumberFormatHasNoSay)
{
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::ios_base::fmtflags const flags = std::cerr.flags(std::ios_base::hex | std::ios_base::showpos);
    std::locale const locale = std::cerr.imbue(std::locale(std::locale::classic(), new Grouped));
    std::string const written = miss(1234567);
    std::cerr.flags(flags);
    std::cerr.imbue(locale);
    EXPECT_EQ(written, line(1234567, 1));
}

TEST_F(Fallback, TheLineIsFlushedAtItsEnd)
{
    FlushedCerr const flushed;
    plugin_.render(host_.nextFrame(7));
    EXPECT_EQ(flushed.text(), line(7, 1));
}

TEST_F(Fallback, AFrameWhosePictureVanishesStartsTheCountAnew)
{
    EXPECT_EQ(miss(1), line(1, 1));
    EXPECT_EQ(miss(2), "");
    host_.deliverBy([this](std::uint64_t, std::string const&) {
        host_.context().picture.reset("/camera", 1, nullptr, host_.pool, {});
        return SwAny(jsonObject(R"({"v":1})"));
    });
    EXPECT_THROW(plugin_.render(host_.nextFrame(3)), std::runtime_error);
    host_.deliver("{}");
    EXPECT_EQ(miss(4), line(4, 1));
}

TEST_F(Fallback, AFrameWithPayloadStartsTheCountAnewThoughItCannotBeDrawnOn)
{
    EXPECT_EQ(miss(1), line(1, 1));
    host_.deliver(R"({"v":1})");
    host_.backend.mapsTo = MappedNV12{};
    EXPECT_EQ(miss(2), "");
    host_.deliver("{}");
    EXPECT_EQ(miss(3), line(3, 1));
}
