// The line that live work writes every ten seconds.
#include "cli/live_counters.h"

#include <gtest/gtest.h>

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

}  // namespace
