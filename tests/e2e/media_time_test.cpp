// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Holds, delays and limits run by the clip's own time: the same clip gives the same texts and the same pictures
// whatever else the machine does.
#include "clips.h"
#include "recorded_clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include "imaging/imaging_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;
using media_test::TempFolder;

std::vector<std::string> examples()
{
    std::vector<std::string> files;
    for (auto const& entry : std::filesystem::directory_iterator(std::string(OVERLAY_SOURCE_DIR) + "/examples")) {
        if (entry.path().extension() == ".json") {
            files.push_back(entry.path().string());
        }
    }
    return files;
}

std::string example(std::string const& name)
{
    return std::string(OVERLAY_SOURCE_DIR) + "/examples/" + name;
}

/// Keeps every processor busy with more threads than it can run.
class FullLoad {
public:
    FullLoad()
    {
        for (unsigned i = 0; i < 2 * std::max(1U, std::thread::hardware_concurrency()); ++i) {
            threads_.emplace_back([this] {
                while (!ended_) {
                }
            });
        }
    }
    ~FullLoad()
    {
        ended_ = true;
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    FullLoad(FullLoad const&) = delete;
    FullLoad& operator=(FullLoad const&) = delete;

private:
    std::atomic<bool> ended_{false};
    std::vector<std::thread> threads_;
};

/// Blocks with every duration there is, none of them a multiple of a frame.
std::string randomConfig(unsigned seed)
{
    std::mt19937 random(seed);
    auto const upTo = [&random](unsigned most) { return std::to_string(random() % (most + 1)); };
    std::vector<std::string> const keys = {
        "heading_deg",          "sensor_lat_deg",      "sensor_alt_m", "tilt_deg", "measured_slant_range_m",
        "frame_center_lat_deg", "platform_tail_number"};
    std::string config = R"({"overlay":[)";
    for (int block = 0; block < 6; ++block) {
        std::string const& key = keys[random() % keys.size()];
        std::string const& other = keys[random() % keys.size()];
        config += std::string(block == 0 ? "" : ",") + R"({"formatString":"%)" + key + " %utc_timestamp_us %" + other +
                  R"(","textSize":64,"updateEveryNFrames":)" + upTo(4) + R"(,"decimals":4,"condition":{"key":")" +
                  other + R"(","operator":"gt","value":)" + upTo(90) + R"(,"showAfterMs":)" + upTo(300) +
                  R"(,"keepAfterMs":)" + upTo(700) + R"(},"formats":{")" + key + R"(":{"decimals":3,"minValue":)" +
                  upTo(40) + R"(,"maxValue":)" + upTo(400) + R"(,"holdLastMs":)" + upTo(500) + R"(,"refreshEveryMs":)" +
                  upTo(400) + R"(},"utc_timestamp_us":{"refreshEveryMs":)" + upTo(900) + R"(,"holdLastMs":)" +
                  upTo(900) + "}}}";
    }
    return config + "]}";
}

class Recorded : public testing::TestWithParam<char const*> {
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(clip_)) {
            GTEST_SKIP() << "recorded data is missing: " << clip_ << " (set OVERLAY_RECORDED_DATA)";
        }
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    std::string randomConfigFile(unsigned seed) const
    {
        std::string path = file("random" + std::to_string(seed) + ".json");
        e2e::writeFile(path, randomConfig(seed));
        return path;
    }

    Result text(std::string const& config, e2e::RunOptions const& options = {}) const
    {
        return run(withTelemetry_({"text", clip_, "-c", config}), options);
    }

    Result burn(std::string const& config, std::string const& output) const
    {
        return run(withTelemetry_({"burn", clip_, "-c", config, "-o", output, "--video-codec", "ffv1"}));
    }

private:
    std::vector<std::string> withTelemetry_(std::vector<std::string> words) const
    {
        words.insert(words.end(), telemetry_.begin(), telemetry_.end());
        return words;
    }

    TempFolder folder_;
    std::string clip_ = e2e::recordedClip(GetParam());
    std::vector<std::string> telemetry_ = e2e::telemetryFor(GetParam(), folder_.file("telemetry.jsonl"));
};

TEST_P(Recorded, GivesTheSameTextsAloneUnderLoadAndSlowedDown)
{
    std::vector<std::string> configs = examples();
    ASSERT_GE(configs.size(), 8U);
    for (unsigned seed = 1; seed <= 3; ++seed) {
        configs.push_back(randomConfigFile(seed));
    }
    std::vector<std::string> alone;
    for (std::string const& config : configs) {
        Result const result = text(config);
        EXPECT_EQ(result.exitCode, 0) << config;
        alone.push_back(result.out);
        e2e::RunOptions slowed;
        slowed.slowed = true;
        EXPECT_TRUE(text(config, slowed).out == alone.back()) << "slowed down: " << config;
    }
    auto const drawsText = [](std::string const& out) { return out.find("\"text\"") != std::string::npos; };
    EXPECT_GE(std::count_if(alone.begin(), alone.end(), drawsText), 4) << "there is something to compare";
    FullLoad const load;
    for (std::size_t number = 0; number < configs.size(); ++number) {
        EXPECT_TRUE(text(configs[number]).out == alone[number]) << "load: " << configs[number];
    }
}

TEST_P(Recorded, BurntTwiceGivesTheSamePictures)
{
    std::string const config = randomConfigFile(4);
    ASSERT_EQ(burn(config, file("a.mkv")).exitCode, 0);
    {
        FullLoad const load;
        ASSERT_EQ(burn(config, file("b.mkv")).exitCode, 0);
    }
    auto const a = clip_test::picturesOf(file("a.mkv"));
    auto const b = clip_test::picturesOf(file("b.mkv"));
    ASSERT_FALSE(a.empty());
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t number = 0; number < a.size(); ++number) {
        EXPECT_TRUE(clip_test::samePicture(*a[number], *b[number])) << "frame " << number;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Recorded, testing::ValuesIn(e2e::kRecordedClips),
                         [](auto const& row) { return "clip_" + std::to_string(row.index); });

/// The demo flight: 30 frames per second, the laser is on from 3.0 s to 8.0 s.
class DemoFlight : public testing::Test {
protected:
    DemoFlight() { run({"sample", clip_, "--seconds", "10", "--size", "320x180"}); }

    std::string file(std::string const& name) const { return folder_.file(name); }

    TempFolder folder_;
    std::string clip_ = folder_.file("flight.ts");
};

TEST_F(DemoFlight, ShowsItsLaserBlockFromThreePointTwoToNineAndAHalfSeconds)
{
    Result const result = run({"text", clip_, "-c", example("laser_range_block.json")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    std::vector<std::string> const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 300U);
    for (std::size_t number = 0; number < lines.size(); ++number) {
        // Shown once the laser has been on for 200 ms, and for 1500 ms after its last frame, which is frame 239: frame
        // 96 is shown from 3.2 s on, frame 284 up to 9.5 s.
        bool const expected = number >= 96 && number <= 284;
        EXPECT_EQ(clip_test::parseLine(lines[number])["draws"].toArray().size(), expected ? 1U : 0U)
            << "frame " << number;
    }
}

TEST_F(DemoFlight, BurntTwiceGivesTheSamePictures)
{
    std::string const config = example("laser_range_block.json");
    ASSERT_EQ(run({"burn", clip_, "-c", config, "-o", file("a.mkv"), "--video-codec", "ffv1"}).exitCode, 0);
    {
        FullLoad const load;
        ASSERT_EQ(run({"burn", clip_, "-c", config, "-o", file("b.mkv"), "--video-codec", "ffv1"}).exitCode, 0);
    }
    auto const a = clip_test::picturesOf(file("a.mkv"));
    auto const b = clip_test::picturesOf(file("b.mkv"));
    ASSERT_EQ(a.size(), 300U);
    ASSERT_EQ(b.size(), 300U);
    for (std::size_t number = 0; number < a.size(); ++number) {
        EXPECT_TRUE(clip_test::samePicture(*a[number], *b[number])) << "frame " << number;
    }
}

TEST_F(DemoFlight, HasNoLaserRangeLongAfterTheLaser)
{
    std::string const config = example("laser_range_block.json");
    e2e::writeFile(file("none.json"), R"({"overlay":[]})");
    for (char const* const at : {"3.1", "9.51", "9.8"}) {
        ASSERT_EQ(run({"frame", clip_, "-c", config, "--at", at, "-o", file("a.png")}).exitCode, 0);
        ASSERT_EQ(run({"frame", clip_, "-c", file("none.json"), "--at", at, "-o", file("b.png")}).exitCode, 0);
        EXPECT_TRUE(e2e::readFile(file("a.png")) == e2e::readFile(file("b.png"))) << at;
    }
    ASSERT_EQ(run({"frame", clip_, "-c", config, "--at", "9.49", "-o", file("a.png")}).exitCode, 0);
    ASSERT_EQ(run({"frame", clip_, "-c", file("none.json"), "--at", "9.49", "-o", file("b.png")}).exitCode, 0);
    EXPECT_FALSE(e2e::readFile(file("a.png")) == e2e::readFile(file("b.png")));
}

}  // namespace
