// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The line that live work writes every ten seconds.
#include "cli/live_counters.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace {

TEST(LiveLine, NamesEveryCounter)
{
    EXPECT_EQ(cli::liveLine({250, 3, 1}, 0.02, 0.0449),
              "250 pictures, 3 dropped, 1 reopened, telemetry 0.020 s old, delay 45 ms");
}

TEST(LiveLine, SaysWhenThereIsNoTelemetry)
{
    EXPECT_EQ(cli::liveLine({1, 0, 0}, std::nullopt, 0.0),
              "1 picture, 0 dropped, 0 reopened, no telemetry, delay 0 ms");
}

cli::LiveReports::Time at(double seconds)
{
    return cli::LiveReports::Time(std::chrono::milliseconds(std::llround(seconds * 1e3)));
}

TEST(LiveReports, AreDueEveryTenSeconds)
{
    cli::LiveReports reports(at(100.0));
    EXPECT_FALSE(reports.isDue(at(109.999)));
    EXPECT_TRUE(reports.isDue(at(110.0)));
    EXPECT_FALSE(reports.isDue(at(110.001)));
    EXPECT_FALSE(reports.isDue(at(119.999)));
    EXPECT_TRUE(reports.isDue(at(120.5)));
    EXPECT_TRUE(reports.isDue(at(130.0)));
}

// Former bug: one line for each ten seconds in which nobody had asked.
TEST(LiveReports, OneIsEnoughAfterALongTime)
{
    cli::LiveReports reports(at(0.0));
    EXPECT_TRUE(reports.isDue(at(47.0)));
    EXPECT_FALSE(reports.isDue(at(47.05)));
    EXPECT_FALSE(reports.isDue(at(49.999)));
    EXPECT_TRUE(reports.isDue(at(50.0)));
}

TEST(LiveReports, TellTheGreatestDelaySinceTheLastOne)
{
    cli::LiveReports reports(at(0.0));
    reports.sent(0.02);
    reports.sent(0.045);
    reports.sent(0.03);
    EXPECT_EQ(reports.take({3, 0, 0}, std::nullopt), "3 pictures, 0 dropped, 0 reopened, no telemetry, delay 45 ms");
    reports.sent(0.01);
    EXPECT_EQ(reports.take({4, 0, 0}, std::nullopt), "4 pictures, 0 dropped, 0 reopened, no telemetry, delay 10 ms");
}

}  // namespace
