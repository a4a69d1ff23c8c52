// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The shipped configurations on the made flight: nothing that check finds fault with, and crosshairs in the middle.
#include "clips.h"
#include "rgb_picture.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;

constexpr char kFolder[] = OVERLAY_SOURCE_DIR "/examples/";

std::vector<std::string> examples()
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(kFolder)) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Examples, AreNamedInTheReadme)
{
    std::string const readme = e2e::readFile(OVERLAY_SOURCE_DIR "/README.md");
    EXPECT_FALSE(examples().empty());
    for (std::string const& name : examples()) {
        EXPECT_NE(readme.find("examples/" + name), std::string::npos) << name;
    }
}

/// At 4 s the laser of the made flight is on, at 1 s it is off: every block is drawn at one of them.
TEST(Examples, AreCleanOnTheMadeFlight)
{
    media_test::TempFolder const folder;
    std::string const clip = folder.file("flight.ts");
    ASSERT_EQ(run({"sample", clip, "--seconds", "5", "--size", "1280x720", "--fps", "2"}).exitCode, 0);
    for (std::string const& name : examples()) {
        std::string said;
        for (char const* const seconds : {"1", "4"}) {
            Result const result = run({"check", kFolder + name, clip, "--at", seconds});
            EXPECT_EQ(result.exitCode, 0) << seconds << " s: " << result.out;
            said += result.out;
        }
        SwJsonObject const root = clip_test::parseLine(e2e::readFile(kFolder + name));
        for (std::size_t block = 0; block < root["overlay"].toArray().size(); ++block) {
            std::string const drawn = "overlay[" + std::to_string(block) + "]: box ";
            EXPECT_NE(said.find(drawn), std::string::npos) << name << ": " << drawn;
        }
    }
}

/// The first block whose text is a plus sign.
SwJsonObject crosshairOf(std::string const& name)
{
    SwJsonObject const root = clip_test::parseLine(e2e::readFile(kFolder + name));
    SwJsonArray const& blocks = root["overlay"].toArray();
    for (auto const& block : blocks) {
        if (block.toObject()["formatString"].toString() == "+") {
            return block.toObject();
        }
    }
    return {};
}

class Crosshair : public testing::TestWithParam<clip_test::ClipSpec> {};

TEST_P(Crosshair, StandsInTheMiddle)
{
    media_test::TempFolder const folder;
    clip_test::ClipSpec spec = GetParam();
    spec.path = folder.file("grey.ts");
    spec.frames = 2;
    spec.klvStreams = {std::vector<SwJsonObject>(2, clip_test::parseLine(R"({"heading_deg": 90.0})"))};
    clip_test::makeClip(spec);
    e2e::writeFile(folder.file("none.json"), R"({"overlay": []})");
    auto const render = [&](std::string const& config) {
        Result const result = run({"frame", spec.path, "-c", config, "--at", "0", "-o", folder.file("picture.png")});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return imaging_test::readPng(folder.file("picture.png"));
    };
    imaging_test::Box const ink = imaging_test::differingBox(render(folder.file("none.json")),
                                                             render(std::string(kFolder) + "minimal_crosshair.json"));
    EXPECT_GT(ink.right - ink.left, spec.height / 40);
    EXPECT_LE(std::abs(ink.left + ink.right - spec.width), 2) << "half pixels off the middle";
    EXPECT_LE(std::abs(ink.top + ink.bottom - spec.height), 2) << "half pixels off the middle";
}

INSTANTIATE_TEST_SUITE_P(Sizes, Crosshair,
                         testing::Values(clip_test::ClipSpec{"", 1920, 1080}, clip_test::ClipSpec{"", 1280, 720},
                                         clip_test::ClipSpec{"", 3840, 2160}, clip_test::ClipSpec{"", 640, 360}),
                         [](auto const& row) { return "lines" + std::to_string(row.param.height); });

TEST(CrosshairOfOthers, StandsWhereThePlainOneStands)
{
    SwJsonObject const plain = crosshairOf("minimal_crosshair.json");
    std::size_t crosshairs = 0;
    for (std::string const& name : examples()) {
        SwJsonObject const other = crosshairOf(name);
        if (other.empty()) {
            continue;
        }
        ++crosshairs;
        for (char const* const member : {"position", "textSize", "thickness"}) {
            EXPECT_EQ(other[member], plain[member]) << name << ": " << member;
        }
    }
    EXPECT_GE(crosshairs, 2U);
}

}  // namespace
