// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the packets of a telemetry file stand after the clip's first picture.
#include "clip/telemetry_placement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kStart = 1'700'000'000'000'000;

/// A packet by its stamp in milliseconds after kStart.
telemetry::Packet stamped(std::int64_t milliseconds)
{
    telemetry::Packet packet;
    packet.payload.insertOrAssign("utc_timestamp_us", SwJsonValue(kStart + milliseconds * 1000));
    return packet;
}

telemetry::Packet plain(std::optional<double> seconds = std::nullopt)
{
    telemetry::Packet packet;
    packet.timeSeconds = seconds;
    packet.payload.insertOrAssign("heading_deg", SwJsonValue(90.0));
    return packet;
}

std::vector<telemetry::Packet> allStamped(std::vector<std::int64_t> const& milliseconds)
{
    std::vector<telemetry::Packet> packets;
    for (std::int64_t const stamp : milliseconds) {
        packets.push_back(stamped(stamp));
    }
    return packets;
}

/// Places in milliseconds, then the remarks, each in a line.
std::string textOf(std::vector<telemetry::Packet> const& packets, std::optional<double> length = 2.0)
{
    clip::Placement const placement = clip::placePackets(packets, {length, 0.04});
    std::string text;
    for (double const seconds : placement.seconds) {
        text += (text.empty() ? "" : " ") + std::to_string(std::lround(seconds * 1000.0));
    }
    for (std::string const& remark : placement.remarks) {
        text += "\n" + remark;
    }
    return text;
}

TEST(TelemetryPlacement, FollowsTheStamps)
{
    EXPECT_EQ(textOf({}), "");
    EXPECT_EQ(textOf(allStamped({0})), "0");
    EXPECT_EQ(textOf(allStamped({5000, 5100, 5200, 5201})), "0 100 200 201") << "the first at the clip's start";
    EXPECT_EQ(textOf(allStamped({0, 0, 40, 40})), "0 0 40 40") << "a stamp may come twice";
    EXPECT_EQ(textOf(allStamped({0, 9000, 19000, 147000 - 119000})), "0 9000 19000 28000")
        << "a gap of up to ten seconds is one, and the clip's length is of no concern";
}

TEST(TelemetryPlacement, KeepsReadingOrderWhereStampsRunBackwards)
{
    constexpr char const* kOne = "\n1 time stamp jumps or runs backwards; reading order decides there";
    EXPECT_EQ(textOf(allStamped({0, 100, 60, 140})), std::string("0 100 100 140") + kOne);
    EXPECT_EQ(textOf(allStamped({0, 160, 80, 40, 120, 320, 240, 200})),
              "0 160 160 160 160 320 320 320\n5 time stamps jump or run backwards; reading order decides there")
        << "telemetry in the decoding order of its pictures";
    EXPECT_EQ(textOf(allStamped({2000, 2100, 1100, 2200})), std::string("0 100 100 200") + kOne)
        << "a second back is disorder";
    EXPECT_EQ(textOf(allStamped({2000, 2100, 1099, 1199})), std::string("0 100 200 300") + kOne)
        << "further back is a clock that was set";
}

TEST(TelemetryPlacement, GoesOnOneStepBehindAClockThatWasSet)
{
    EXPECT_EQ(textOf(allStamped({0, 40, 10040, 10080})), "0 40 10040 10080");
    EXPECT_EQ(textOf(allStamped({0, 40, 10041, 10081})),
              "0 40 80 120\n1 time stamp jumps or runs backwards; reading order decides there");
    EXPECT_EQ(textOf(allStamped({0, 50, 100, 86400000, 150, 200})),
              "0 50 100 150 200 250\n2 time stamps jump or run backwards; reading order decides there")
        << "one stamp that is wrong";
    EXPECT_EQ(textOf(allStamped({0, 3600000, 3600100})),
              "0 0 100\n1 time stamp jumps or runs backwards; reading order decides there")
        << "no step is known yet";
    EXPECT_EQ(textOf(allStamped({0, 40, 40, 90000, 90000})),
              "0 40 40 80 80\n1 time stamp jumps or runs backwards; reading order decides there")
        << "a stamp that comes twice is no step";
}

TEST(TelemetryPlacement, AGapThatFitsIntoTheClipIsAGap)
{
    EXPECT_EQ(textOf(allStamped({0, 40, 10041, 10081}), 60.0), "0 40 10041 10081");
    EXPECT_EQ(textOf(allStamped({0, 40, 60040, 60080}), 60.0), "0 40 60040 60080");
    EXPECT_EQ(textOf(allStamped({0, 40, 60041, 60081}), 60.0),
              "0 40 80 120\n1 time stamp jumps or runs backwards; reading order decides there");
    EXPECT_EQ(textOf(allStamped({0, 40, 3600040}), std::nullopt), "0 40 3600040");
    EXPECT_EQ(textOf(allStamped({0, 40, 3600041}), std::nullopt),
              "0 40 80\n1 time stamp jumps or runs backwards; reading order decides there")
        << "an hour where the clip's length is unknown";
}

TEST(TelemetryPlacement, ALastingFirstPacketNeedsNoTime)
{
    telemetry::Packet constants = plain();
    constants.lasting = true;
    EXPECT_EQ(textOf({constants}), "0");
    EXPECT_EQ(textOf({constants, plain(5.0), plain(6.0)}), "0 5000 6000");
    EXPECT_EQ(textOf({constants, plain(-2.0), plain(-3.0), plain(1.0)}), "-3000 -2000 -3000 1000");
    EXPECT_EQ(textOf({constants, stamped(500), stamped(700)}), "0 0 200");
    EXPECT_EQ(textOf({constants, plain(), plain(1.0)}),
              "0 667 1000\n1 packet has no time; it was spread evenly over the clip");
    constants.timeSeconds = 0.5;
    EXPECT_EQ(textOf({constants, plain(0.25)}), "500 250") << "a time that it has counts";
}

TEST(TelemetryPlacement, SetsPacketsWithoutStampBetweenTheirNeighbours)
{
    EXPECT_EQ(textOf({stamped(0), plain(), plain(), plain(), stamped(200)}),
              "0 50 100 150 200\n3 packets have no time stamp; they stand between their neighbours");
    EXPECT_EQ(textOf({plain(), stamped(1000), stamped(1100), plain()}),
              "0 0 100 100\n2 packets have no time stamp; they stand between their neighbours");
    EXPECT_EQ(textOf({stamped(0), stamped(-kStart / 1000), stamped(100)}),
              "0 50 100\n1 packet has no time stamp; it stands between its neighbours")
        << "a stamp of 0 is none";
}

TEST(TelemetryPlacement, SpreadsWhatHasNeitherTimeNorStamp)
{
    EXPECT_EQ(textOf({plain(), plain(), plain(), plain()}),
              "0 500 1000 1500\n4 packets have no time; they were spread evenly over the clip");
    EXPECT_EQ(textOf({plain(), plain(), plain()}, std::nullopt),
              "0 40 80\n3 packets have no time; they were spread evenly over the clip")
        << "one to a picture of a clip whose length is unknown";
}

TEST(TelemetryPlacement, PrefersTimesToStamps)
{
    telemetry::Packet both = stamped(70000);
    both.timeSeconds = 1.25;
    EXPECT_EQ(textOf({plain(0.0), both, plain(-3.0)}), "0 1250 -3000");
    EXPECT_EQ(textOf({plain(), both}), "0 1250\n1 packet has no time; it was spread evenly over the clip");
}

TEST(TelemetryPlacement, BearsStampsOfAnySize)
{
    telemetry::Packet largest;
    largest.payload.insertOrAssign("utc_timestamp_us", SwJsonValue(INT64_MAX));
    telemetry::Packet negative;
    negative.payload.insertOrAssign("utc_timestamp_us", SwJsonValue(INT64_MIN));
    telemetry::Packet text;
    text.payload.insertOrAssign("utc_timestamp_us", SwJsonValue("now"));
    EXPECT_EQ(textOf({stamped(0), stamped(10), largest, negative, text, stamped(20)}),
              "0 10 20 23 27 30\n2 packets have no time stamp; they stand between their neighbours\n"
              "2 time stamps jump or run backwards; reading order decides there");
}

}  // namespace
