// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which byte of a live input came when.
#include "media/arrival_times.h"

#include <gtest/gtest.h>

namespace {

using media::ArrivalTimes;

ArrivalTimes::Time at(int milliseconds)
{
    return ArrivalTimes::Time(std::chrono::milliseconds(milliseconds));
}

TEST(ArrivalTimes, TellsOfEachByte)
{
    ArrivalTimes times;
    times.came(188, at(10));
    times.came(376, at(20));
    times.came(188, at(2500));
    EXPECT_EQ(times.of(0), at(10));
    EXPECT_EQ(times.of(187), at(10));
    EXPECT_EQ(times.of(188), at(20));
    EXPECT_EQ(times.of(563), at(20));
    EXPECT_EQ(times.of(564), at(2500));
}

TEST(ArrivalTimes, KnowsNothingOfWhatHasNotCome)
{
    ArrivalTimes times;
    EXPECT_EQ(times.of(0), std::nullopt);
    times.came(188, at(10));
    EXPECT_EQ(times.of(-1), std::nullopt) << "a packet without a place";
    EXPECT_EQ(times.of(187), at(10));
    EXPECT_EQ(times.of(188), std::nullopt);
    times.came(188, at(20));
    EXPECT_EQ(times.of(188), at(20));
}

TEST(ArrivalTimes, WhatNobodyAsksForIsForgotten)
{
    ArrivalTimes times;
    for (int number = 0; number < 70000; ++number) {
        times.came(1, at(number));
    }
    EXPECT_EQ(times.of(0), at(70000 - 65536));
    EXPECT_EQ(times.of(69999), at(69999));
}

}  // namespace
