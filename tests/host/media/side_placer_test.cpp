// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The places of telemetry and sound beside the pictures of a clip at 25 frames per second.
#include "media/side_placer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr AVRational kClock{1, 90000};
constexpr std::int64_t kTicksPerFrame = 3600;

class SidePlacer : public testing::Test {
protected:
    void video(std::int64_t ticks, std::int64_t position)
    {
        timeline_.placeVideo(ticks, ticks);
        placer_.placeUpToVideo(position);
    }
    void side(std::optional<double> seconds, std::int64_t position)
    {
        media::SideUnit unit;
        unit.packet = media::makePacket();
        unit.packet->pos = position;
        unit.streamSeconds = seconds;
        placer_.add(std::move(unit));
    }
    /// "position=milliseconds" of each unit that has its place.
    std::string taken()
    {
        std::string text;
        for (media::SideUnit const& unit : placer_.take()) {
            text += (text.empty() ? "" : " ") + std::to_string(unit.packet->pos) + "=" +
                    std::to_string(std::lround(unit.seconds * 1000.0));
        }
        return text;
    }

    media::Timeline timeline_{kClock, kTicksPerFrame, true};
    media::SidePlacer placer_{timeline_};
};

TEST_F(SidePlacer, KeepsTheTimesThatUnitsCarry)
{
    video(90000, 0);
    side(1.5, 10);
    side(0.5, 20);
    EXPECT_EQ(taken(), "") << "they wait for the next picture";
    video(93600, 30);
    EXPECT_EQ(taken(), "10=1500 20=500");
    EXPECT_EQ(taken(), "");
}

TEST_F(SidePlacer, SpreadsUnitsWithoutTimeUpToTheirPicture)
{
    video(90000, 0);
    side({}, 10);
    side({}, 20);
    side({}, 40);
    video(93600, 30);
    EXPECT_EQ(taken(), "10=1020 20=1040") << "what stands behind the picture belongs to the next one";
    video(97200, 60);
    EXPECT_EQ(taken(), "40=1080");
}

TEST_F(SidePlacer, PlacesWhatNoPictureFollows)
{
    video(90000, 0);
    side({}, 10);
    side(7.0, 20);
    side({}, 30);
    placer_.placeRest();
    EXPECT_EQ(taken(), "10=1040 20=7000 30=1080");
}

}  // namespace
