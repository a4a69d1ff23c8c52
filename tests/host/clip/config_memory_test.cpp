// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How far back configurations reach, each rule by name.
#include "clip/config_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace {

struct Row {
    char const* name;
    char const* config;
    std::optional<std::uint64_t> memoryNs;
};

class Memory : public testing::TestWithParam<Row> {};

TEST_P(Memory, IsTheSumOfAllDurationsOrHasNoBound)
{
    EXPECT_EQ(clip::memoryNsOf(GetParam().config), GetParam().memoryNs);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Memory,
    testing::Values(
        Row{"nothing", "{}", 0}, Row{"no_json", "x", 0},
        Row{"plain_block", R"({"overlay":[{"formatString":"%a"}]})", 0},
        Row{"hold", R"({"overlay":[{"formats":{"a":{"holdLastMs":500}}}]})", 500000000},
        Row{"fraction", R"({"overlay":[{"formats":{"a":{"holdLastMs":0.0005}}}]})", 500},
        Row{"all_kinds_of_several_blocks",
            R"({"overlay":[{"formats":{"a":{"holdLastMs":500},"b":{"holdLastMs":20}}},
                {"condition":{"key":"a","showAfterMs":300,"keepAfterMs":4000}}]})",
            4820000000},
        Row{"refresh", R"({"overlay":[{"formats":{"a":{"refreshEveryMs":1}}}]})", std::nullopt},
        Row{"no_refresh", R"({"overlay":[{"formats":{"a":{"refreshEveryMs":0}}}]})", 0},
        Row{"every_second_frame", R"({"overlay":[{"updateEveryNFrames":2}]})", std::nullopt},
        Row{"every_frame", R"({"overlay":[{"updateEveryNFrames":1}]})", 0},
        Row{"interval_that_is_no_whole_number", R"({"overlay":[{"updateEveryNFrames":1.5}]})", std::nullopt},
        Row{"duration_in_text", R"({"overlay":[{"formats":{"a":{"holdLastMs":"x"}}}]})", std::nullopt},
        Row{"duration_below_zero", R"({"overlay":[{"formats":{"a":{"holdLastMs":-4294967295}}}]})", std::nullopt},
        Row{"bool", R"({"overlay":[{"condition":{"key":"a","showAfterMs":true}}]})", std::nullopt},
        Row{"a_minute", R"({"overlay":[{"formats":{"a":{"holdLastMs":60000}}}]})", 60000000000},
        Row{"more_than_a_minute", R"({"overlay":[{"formats":{"a":{"holdLastMs":60001}}}]})", std::nullopt}),
    [](auto const& row) { return std::string(row.param.name); });

}  // namespace
