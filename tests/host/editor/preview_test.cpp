// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the editor is told of a clip and its frames; preview_anywhere_test compares the pictures.
#include "editor/preview.h"

#include "preview_clip.h"
#include "temp_folder.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using editor::Place;
using editor_test::kFrames;
using editor_test::makeClip;
using editor_test::sourceOf;
using media_test::TempFolder;

constexpr char const* kConfig = R"({"overlay":[{"formatString":"%video_time_s","textSize":200}]})";

TEST(Preview, ShowsTheFrameAtATimeAndKeepsToTheClip)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder.file("clip.ts"))));
    editor::ClipFacts const facts = preview.facts();
    EXPECT_EQ(facts.name, "clip.ts");
    EXPECT_EQ(facts.width, 320);
    EXPECT_EQ(facts.height, 240);
    EXPECT_NEAR(facts.seconds.value(), kFrames * 0.04, 0.05);
    EXPECT_DOUBLE_EQ(facts.frameSeconds, 0.04);
    EXPECT_EQ(facts.frames, std::nullopt);
    std::string const config = kConfig;
    EXPECT_EQ(preview.show(config, Place::at(0.0)).frame, 1U);
    EXPECT_EQ(preview.show(config, Place::at(0.4)).frame, 11U);
    EXPECT_EQ(preview.show(config, Place::at(0.439)).frame, 11U);
    EXPECT_EQ(preview.show(config, Place::at(-5.0)).frame, 1U);
    EXPECT_EQ(preview.show(config, Place::ofFrame(0)).frame, 1U);
    for (Place const& behind : {Place::at(1e9), Place::ofFrame(kFrames + 1)}) {
        editor::Shown const last = preview.show(config, behind);
        EXPECT_EQ(last.frame, std::uint64_t{kFrames});
        EXPECT_NEAR(last.seconds, (kFrames - 1) * 0.04, 1e-6);
        EXPECT_TRUE(last.last);
    }
    EXPECT_EQ(preview.facts().frames, std::uint64_t{kFrames});
    EXPECT_FALSE(preview.show(config, Place::ofFrame(kFrames - 1)).last);
}

TEST(Preview, TellsTheFramesValues)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder.file("clip.ts"))));
    SwJsonObject const values = preview.show(kConfig, Place::ofFrame(104)).values;
    EXPECT_EQ(values["sensor_alt_m"].toDouble() > 1100.0, true);
    EXPECT_NEAR(values["sensor_alt_ft"].toDouble(), values["sensor_alt_m"].toDouble() / 0.3048, 1e-6);
    EXPECT_EQ(values["frame_index"], SwJsonValue(103));
    EXPECT_TRUE(values["sensor_mgrs"].isString());
}

TEST(Preview, KnowsKeysAndSchemaOfTheWholeClip)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder.file("clip.ts"))));
    auto const has = [](std::vector<std::string> const& keys, std::string const& key) {
        return std::binary_search(keys.begin(), keys.end(), key);
    };
    EXPECT_TRUE(has(preview.keys(), "sensor_alt_m"));
    EXPECT_TRUE(has(preview.keys(), "video_time_s"));
    EXPECT_FALSE(has(preview.keys(), "sensor_alt_ft"));
    EXPECT_TRUE(has(preview.derivableKeys(), "sensor_alt_ft"));
    EXPECT_NE(preview.schema().find("sensor_alt_m"), std::string::npos);
}

TEST(Preview, ShowsTheUndrawnPictureOfATextThatIsNoConfiguration)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder.file("clip.ts"))));
    std::vector<std::uint8_t> const undrawn = preview.show(R"({"overlay":[]})", Place::at(2.0)).rgb;
    editor::Shown shown = preview.show("{\n\"overlay\": [,]}", Place::at(2.0));
    EXPECT_TRUE(shown.rgb == undrawn);
    EXPECT_TRUE(shown.boxes.empty());
    ASSERT_TRUE(shown.fault);
    ASSERT_TRUE(shown.fault->place);
    EXPECT_EQ(shown.fault->place->line, 2U);
    shown = preview.show("{}", Place::at(2.0));
    EXPECT_TRUE(shown.rgb == undrawn);
    ASSERT_TRUE(shown.fault);
    EXPECT_FALSE(shown.fault->place);
    EXPECT_FALSE(preview.show(kConfig, Place::at(2.0)).rgb == undrawn) << "the next text is drawn again";
}

std::string failureOf(std::string const& input)
{
    try {
        editor::Preview const preview(sourceOf(input));
    } catch (std::runtime_error const& failure) {
        return failure.what();
    }
    return "";
}

TEST(Preview, RefusesWhatItCannotGoToAndFroIn)
{
    TempFolder const folder;
    EXPECT_EQ(failureOf("-"), "-: is no file; the editor goes to and fro in files only");
    std::ofstream(folder.file("empty.ts")).close();
    EXPECT_NE(failureOf(folder.file("empty.ts")).find("empty.ts"), std::string::npos);
}

}  // namespace
