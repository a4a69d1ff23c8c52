// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The one rising time axis of a clip: unbroken streams keep their ticks, joined ones continue.
#include "media/timeline.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace {

using media::Timeline;

constexpr AVRational kClock{1, 90000};
constexpr std::int64_t kFrame = 3000;

Timeline transportStream()
{
    return {kClock, kFrame, true};
}

TEST(Timeline, KeepsTheTicksOfAnUnbrokenStream)
{
    Timeline timeline = transportStream();
    Timeline::Placed const first = timeline.placeVideo(126000, 133200);
    EXPECT_EQ(first.decodeTicks, 126000);
    EXPECT_EQ(first.presentTicks, 133200);
    Timeline::Placed const second = timeline.placeVideo(129600, 147600);
    EXPECT_EQ(second.decodeTicks, 129600);
    EXPECT_EQ(second.presentTicks, 147600);
    EXPECT_DOUBLE_EQ(timeline.placeOther(1.5), 1.5);
}

TEST(Timeline, ContinuesOneIntervalAfterAFallBack)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(1000000, 1000000);
    Timeline::Placed const restarted = timeline.placeVideo(1, 6001);
    EXPECT_EQ(restarted.decodeTicks, 1003000);
    EXPECT_EQ(restarted.presentTicks, 1009000);
    EXPECT_EQ(timeline.placeVideo(3001, 3001).decodeTicks, 1006000);
}

struct JumpRow {
    char const* name;
    std::int64_t stepTicks;
    bool mayJump;
    std::int64_t expectedStep;
};

class TimelineJump : public testing::TestWithParam<JumpRow> {};

TEST_P(TimelineJump, IsMendedOnlyBeyondItsLimits)
{
    JumpRow const& row = GetParam();
    Timeline timeline(kClock, kFrame, row.mayJump);
    timeline.placeVideo(2000000, 2000000);
    EXPECT_EQ(timeline.placeVideo(2000000 + row.stepTicks, std::nullopt).decodeTicks, 2000000 + row.expectedStep);
}

INSTANTIATE_TEST_SUITE_P(Rows, TimelineJump,
                         testing::Values(JumpRow{"small_disorder_stays", -18000, true, -18000},
                                         JumpRow{"fall_back_beyond_disorder", -18001, true, kFrame},
                                         JumpRow{"gap_of_ten_seconds_stays", 900000, true, 900000},
                                         JumpRow{"leap_beyond_ten_seconds", 900001, true, kFrame},
                                         JumpRow{"container_that_cannot_jump", -900000, false, -900000}),
                         [](auto const& row) { return row.param.name; });

TEST(Timeline, ALiveClockThatStartsAnewGoesOnAsLongAfterAsItTook)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(1000000, 1000000);
    timeline.setElapsed(4.0);
    EXPECT_EQ(timeline.placeVideo(1, 1).decodeTicks, 1000000 + 360000);
    timeline.setElapsed(0.001);
    EXPECT_EQ(timeline.placeVideo(90000 * 50, std::nullopt).decodeTicks, 1360000 + kFrame) << "at least one interval";
}

TEST(Timeline, ALeapBeyondTheRealTimeIsANewLiveClock)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(0, 0);
    timeline.setElapsed(3.0);
    EXPECT_EQ(timeline.placeVideo(90000 * 5, std::nullopt).decodeTicks, 90000 * 5) << "two seconds beyond it";
    timeline.setElapsed(3.0);
    EXPECT_EQ(timeline.placeVideo(90000 * 10 + 1, std::nullopt).decodeTicks, 90000 * 8);
}

TEST(Timeline, AClockThatStoodStillDuringAnOutageIsANewOne)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(0, 0);
    timeline.setElapsed(5.0, media::Timeline::Since::Outage);
    EXPECT_EQ(timeline.placeVideo(kFrame, std::nullopt).decodeTicks, 90000 * 5);
    timeline.setElapsed(0.04);
    EXPECT_EQ(timeline.placeVideo(2 * kFrame, std::nullopt).decodeTicks, 90000 * 5 + kFrame);
}

TEST(Timeline, AClockThatRanOnDuringAnOutageIsKept)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(0, 0);
    timeline.setElapsed(20.0, media::Timeline::Since::Outage);
    EXPECT_EQ(timeline.placeVideo(90000 * 19, std::nullopt).decodeTicks, 90000 * 19) << "one second less";
    timeline.setElapsed(20.0, media::Timeline::Since::Outage);
    EXPECT_EQ(timeline.placeVideo(90000 * 40, std::nullopt).decodeTicks, 90000 * 40) << "one second more";
    timeline.setElapsed(20.0, media::Timeline::Since::Outage);
    EXPECT_EQ(timeline.placeVideo(90000 * 61 + 1, std::nullopt).decodeTicks, 90000 * 60);
}

TEST(Timeline, GivesPacketsWithoutTimeTheNextSlot)
{
    Timeline timeline = transportStream();
    EXPECT_EQ(timeline.placeVideo(std::nullopt, std::nullopt).decodeTicks, 0);
    Timeline::Placed const second = timeline.placeVideo(std::nullopt, std::nullopt);
    EXPECT_EQ(second.decodeTicks, kFrame);
    EXPECT_EQ(second.presentTicks, kFrame);
}

TEST(Timeline, TakesThePresentationTimeWhenThereIsNoDecodeTime)
{
    Timeline timeline = transportStream();
    EXPECT_EQ(timeline.placeVideo(std::nullopt, 9000).decodeTicks, 9000);
}

TEST(Timeline, KeepsTheLeadOfPresentationOverDecodingForSlots)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(90000, 96000);
    EXPECT_DOUBLE_EQ(timeline.slotSeconds(), 96000.0 / 90000.0);
    EXPECT_DOUBLE_EQ(timeline.previousSlotSeconds(), 93000.0 / 90000.0);
    timeline.placeVideo(93000, 105000);
    EXPECT_DOUBLE_EQ(timeline.slotSeconds(), 99000.0 / 90000.0);
    EXPECT_DOUBLE_EQ(timeline.previousSlotSeconds(), 96000.0 / 90000.0);
}

TEST(Timeline, PlacesOtherStreamsOnTheNearerClockAfterAJump)
{
    Timeline timeline = transportStream();
    timeline.placeVideo(900000, 900000);  // 10 s
    timeline.placeVideo(0, 0);            // continues at 10.0333 s
    EXPECT_NEAR(timeline.placeOther(0.0), 10.0333333, 1e-6) << "new clock";
    EXPECT_DOUBLE_EQ(timeline.placeOther(9.9), 9.9) << "a late packet of the old clock";
    for (std::int64_t frame = 1; frame <= 90; ++frame) {
        timeline.placeVideo(frame * kFrame, frame * kFrame);
    }
    EXPECT_NEAR(timeline.placeOther(9.9), 19.9333333, 1e-6) << "the old clock is over";
}

TEST(Timeline, SurvivesTimesAtBothEndsOfSixtyFourBits)
{
    Timeline timeline(kClock, std::numeric_limits<std::int64_t>::max(), true);
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    for (std::int64_t const ticks : {kMost, kLeast, std::int64_t{0}, kMost, kMost, kLeast, kLeast}) {
        Timeline::Placed const placed = timeline.placeVideo(ticks, -(ticks + 1));
        EXPECT_LE(std::abs(placed.decodeTicks), std::int64_t{1} << 60);
        EXPECT_LE(std::abs(placed.presentTicks), std::int64_t{1} << 60);
    }
}

TEST(SecondsOf, IsTheDoubleNearestToTheQuotient)
{
    EXPECT_EQ(media::secondsOf(195030, kClock), 2.167);
    EXPECT_EQ(media::secondsOf(1001, {1, 30000}), 1001.0 / 30000.0);
    EXPECT_EQ(media::secondsOf(3, {1001, 30000}), 3003.0 / 30000.0);
}

}  // namespace
