// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry that a configuration does not name is not decoded; nobody must see that.
#include "run_program.h"
#include "temp_folder.h"

#include "telemetry/st0601_table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using e2e::Result;
using e2e::run;

/// The same blocks beside a text that names every key, which no block reads.
std::string namingAllKeys(std::string const& config)
{
    std::string names;
    for (telemetry::TableRow const& row : telemetry::st0601Table()) {
        names += std::string(row.key) + " ";
    }
    names += std::string(telemetry::kYawKey) + " " + std::string(telemetry::kLaserKey);
    std::size_t const begin = config.find('{');
    return config.substr(0, begin + 1) + R"("note":")" + names + "\"," + config.substr(begin + 1);
}

class NamedKeys : public testing::TestWithParam<char const*> {};

TEST_P(NamedKeys, GiveTheSameTextsAsAllKeys)
{
    std::string const clip = std::string(OVERLAY_RECORDED_DATA) + "/" + GetParam();
    if (!std::filesystem::exists(clip)) {
        GTEST_SKIP() << "recorded data is missing: " << clip << " (set OVERLAY_RECORDED_DATA)";
    }
    media_test::TempFolder const folder;
    std::string const example = std::string(OVERLAY_SOURCE_DIR) + "/examples/";
    std::string const configs[] = {
        e2e::readFile(example + "corner_line.json"),
        e2e::readFile(example + "full_screen_hud.json"),
        e2e::readFile(example + "laser_range_block.json"),
        R"({"overlay":[{"formatString":"no key"}]})",
        R"({"overlay":[{"formatString":"%yaw_deg","condition":{"key":"platform_pitch_deg","keepAfterMs":200}}]})",
        R"({"overlay":[{"formatString":"%telemetry_age_s %video_time_s"},{"formatString":"%frame_index %unknown"}]})",
        R"({"overlay":[{"decimals":3}]})",
    };
    for (std::string const& config : configs) {
        e2e::writeFile(folder.file("named.json"), config);
        e2e::writeFile(folder.file("all.json"), namingAllKeys(config));
        Result const named = run({"text", clip, "-c", folder.file("named.json")});
        Result const all = run({"text", clip, "-c", folder.file("all.json")});
        EXPECT_EQ(named.exitCode, 0) << named.err;
        EXPECT_TRUE(named.out == all.out) << config;
        EXPECT_EQ(named.err, all.err) << config;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, NamedKeys,
                         testing::Values("osh_sim_640x480_h264_klv06.ts", "kwiver_h264_160x120_klv06_nopts.ts",
                                         "kwiver_h264_160x120_no_klv.ts", "mp2tp_foreman_352x288_h264_klv15_aucell.ts",
                                         "mux_car_768x432_osh_klv_30hz.ts"),
                         [](auto const& row) { return "clip" + std::to_string(row.index); });

}  // namespace
