// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Times within a clip as people write them.
#include "cli/clip_time.h"
#include "cli/messages.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ClipTime, IsSecondsOrClock)
{
    struct Row {
        char const* text;
        double seconds;
    };
    for (Row const& row : {Row{"0", 0.0}, Row{"90.5", 90.5}, Row{"1000000000", 1e9}, Row{"0.04", 0.04}, Row{".5", 0.5},
                           Row{"1:30.5", 90.5}, Row{"00:01:30.5", 90.5}, Row{"00:59:30", 3570.0}, Row{"75:00", 4500.0},
                           Row{"100:00:00.001", 360000.001}, Row{"0:00", 0.0}, Row{"1:2:3", 3723.0}}) {
        EXPECT_DOUBLE_EQ(cli::parseClipTime("--at", row.text), row.seconds) << row.text;
    }
}

std::string refusalOf(std::string const& text)
{
    try {
        cli::parseClipTime("--from", text);
    } catch (cli::WrongUsage const& failure) {
        return failure.what();
    }
    return "taken";
}

TEST(ClipTime, RefusesEverythingElse)
{
    for (char const* const text :
         {"",     " ",     "abc",    "1s",      "1e3",  "0x10", "1:",   ":1",  "1:60", "1:60:00", "1:2:60",
          "1:-2", "-1:00", "1.5:00", "1:2:3:4", "1: 2", "+1",   "1:+2", "1,5", "1:.5", "1..5"}) {
        EXPECT_EQ(refusalOf(text),
                  "--from " + std::string(text) + ": give seconds or [HH:]MM:SS[.fff], for example 90.5 or 00:01:30.5");
    }
    for (char const* const text : {"-1", "nan", "inf", "1000000000.5", "300000000:00:00"}) {
        EXPECT_EQ(refusalOf(text), "--from: give a number from 0 to 1000000000") << text;
    }
}

}  // namespace
