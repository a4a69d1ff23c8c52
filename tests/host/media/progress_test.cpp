// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The progress line.
#include "media/progress.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

struct Row {
    char const* name;
    std::uint64_t frames;
    double video;
    std::optional<double> total;
    double real;
    char const* expected;
};

class ProgressLine : public testing::TestWithParam<Row> {};

TEST_P(ProgressLine, TellsFramesShareSpeedAndTimeLeft)
{
    Row const& row = GetParam();
    EXPECT_EQ(media::progressLine(row.frames, row.video, row.total, row.real), row.expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, ProgressLine,
                         testing::Values(Row{"known_length", 300, 10.0, 20.0, 5.0, "300 frames  50 %  2.0x  0:05 left"},
                                         Row{"one_frame", 1, 0.0, 20.0, 1.0, "1 frame  0 %  0.0x"},
                                         Row{"unknown_length", 90, 3.0, std::nullopt, 1.0, "90 frames  3.0x"},
                                         Row{"no_time_passed", 2, 0.1, 1.0, 0.0, "2 frames  10 %  0.0x"},
                                         Row{"longer_than_announced", 600, 24.0, 20.0, 8.0,
                                             "600 frames  100 %  3.0x  0:00 left"},
                                         Row{"hours_left", 30, 1.0, 7201.0, 1.0, "30 frames  0 %  1.0x  2:00:00 left"}),
                         [](auto const& row) { return row.param.name; });

}  // namespace
