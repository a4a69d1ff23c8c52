// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which pictures are worth waiting with.
#include "clip/telemetry_wait.h"

#include <gtest/gtest.h>

namespace {

using clip::TelemetryWait;

TEST(TelemetryWait, ExpectsNothingBeforeTwoPackets)
{
    TelemetryWait wait;
    EXPECT_FALSE(wait.expectsFor(5.0));
    wait.arrived(1.0);
    EXPECT_FALSE(wait.expectsFor(5.0));
    wait.arrived(1.1);
    EXPECT_TRUE(wait.expectsFor(5.0));
}

TEST(TelemetryWait, ExpectsTheNextPacketOneIntervalAfterTheNewest)
{
    TelemetryWait wait;
    wait.arrived(1.0);
    wait.arrived(1.1);
    EXPECT_FALSE(wait.expectsFor(1.1));
    EXPECT_FALSE(wait.expectsFor(1.16));
    EXPECT_FALSE(wait.expectsFor(1.19));
    EXPECT_TRUE(wait.expectsFor(1.196)) << "clocks of telemetry and pictures differ a little";
    EXPECT_TRUE(wait.expectsFor(1.2));
    wait.arrived(1.2);
    EXPECT_FALSE(wait.expectsFor(1.2));
}

TEST(TelemetryWait, PacketsOfOneTimeOrOutOfOrderTellNoInterval)
{
    TelemetryWait wait;
    wait.arrived(1.0);
    wait.arrived(1.5);
    wait.arrived(1.5);
    wait.arrived(1.2);
    EXPECT_FALSE(wait.expectsFor(1.9));
    EXPECT_TRUE(wait.expectsFor(2.0));
}

TEST(TelemetryWait, WaitsNoMoreOnceItWasInVain)
{
    TelemetryWait wait;
    wait.arrived(1.0);
    wait.arrived(1.1);
    EXPECT_TRUE(wait.expectsFor(1.2));
    wait.gaveUp();
    EXPECT_FALSE(wait.expectsFor(1.2));
    EXPECT_FALSE(wait.expectsFor(1.3));
    wait.arrived(1.35);
    EXPECT_TRUE(wait.expectsFor(1.6)) << "telemetry is there again";
}

TEST(TelemetryWait, ALongGapIsNoInterval)
{
    TelemetryWait wait;
    wait.arrived(1.0);
    wait.arrived(11.5);
    EXPECT_FALSE(wait.expectsFor(22.0));
}

}  // namespace
