// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The keys that the host adds to a frame's telemetry.
#include "clip/host_keys.h"

#include "payload_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HostKeys, AreAgeTimeAndNumberInWholeMicroseconds)
{
    EXPECT_EQ(telemetry::payloadText(clip::hostKeys(0.0, 0.0, 0)), "frame_index=0 telemetry_age_s=0d video_time_s=0d");
    EXPECT_EQ(telemetry::payloadText(clip::hostKeys(0.25000049, 1.5, 37)),
              "frame_index=37 telemetry_age_s=0.25d video_time_s=1.5d");
    EXPECT_EQ(clip::toMicroseconds(1.04 - 1.0), 0.04);
    EXPECT_EQ(clip::toMicroseconds(-0.0000006), -0.000001);
}

TEST(HostKeys, AreWantedOneByOne)
{
    auto const wants = [](char const* text) {
        return clip::wantsHostKeys(
            telemetry::KeySelection::namedIn(R"({"overlay":[{"formatString":")" + std::string(text) + R"("}]})"));
    };
    EXPECT_TRUE(wants("%frame_index"));
    EXPECT_TRUE(wants("%telemetry_age_s"));
    EXPECT_TRUE(wants("%video_time_s"));
    EXPECT_FALSE(wants("%heading_deg"));
}

}  // namespace
