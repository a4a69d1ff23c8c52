// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The frames' times as the plugin is told them.
#include "clip/frame_clock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr std::uint64_t kHour = 3600000000000;

struct Row {
    char const* name;
    AVRational timeBase;
    std::vector<std::int64_t> ticks;
    std::vector<std::uint64_t> expected;
};

class Clock : public testing::TestWithParam<Row> {};

TEST_P(Clock, GivesTimes)
{
    Row const& row = GetParam();
    clip::FrameClock clock(row.timeBase);
    std::vector<std::uint64_t> times;
    for (std::int64_t const ticks : row.ticks) {
        times.push_back(clock.next(ticks));
    }
    EXPECT_EQ(times, row.expected);
}

constexpr AVRational k90kHz{1, 90000};
constexpr std::int64_t kLeast = -(std::int64_t{1} << 60);
constexpr std::uint64_t kMost = kHour + static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() / 4);

INSTANTIATE_TEST_SUITE_P(
    Rows, Clock,
    testing::Values(
        Row{"starts_at_an_hour", k90kHz, {90000, 93600}, {kHour, kHour + 40000000}},
        Row{"starts_at_an_hour_below_zero", k90kHz, {-7200, -3600, 0}, {kHour, kHour + 40000000, kHour + 80000000}},
        // A third of a tick is rounded down everywhere alike: 4500 frames later lies 150 s later to the nanosecond.
        Row{"rounds_down", {1, 30}, {0, 1, 2, 3}, {kHour, kHour + 33333333, kHour + 66666666, kHour + 100000000}},
        Row{"keeps_distances", {1, 30}, {-1, 1, 46}, {kHour, kHour + 66666666, kHour + 1566666666}},
        Row{"never_falls",
            k90kHz,
            {0, 7200, 3600, 10800},
            {kHour, kHour + 80000000, kHour + 80000000, kHour + 120000000}},
        Row{"not_below_the_first", k90kHz, {0, -90000, 3600}, {kHour, kHour, kHour + 40000000}},
        Row{"bounded", {1, 1}, {kLeast, -kLeast}, {kHour, kMost}}),
    [](auto const& row) { return row.param.name; });

}  // namespace
