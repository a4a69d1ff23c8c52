// The editor's pictures against those of the command that makes one annotated picture, at any place and in any order.
#include "editor/preview.h"

#include "clip/clip_seek.h"
#include "clip/placed_blocks.h"
#include "clips.h"
#include "imaging/imaging_access.h"
#include "media/rgb_picture.h"
#include "temp_folder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using editor::Place;
using media_test::TempFolder;

/// Texts that depend on all that came before, on some of it and on nothing.
constexpr std::array kConfigs{
    R"({"overlay":[
{"formatString":"%utc_timestamp_us %heading_deg","textSize":96,"updateEveryNFrames":7,"decimals":6},
{"formatString":"%{heading_deg} / %{sensor_lat_deg}","position":{"x":0.3,"y":0.3},"textSize":120,
 "formats":{"heading_deg":{"decimals":5,"refreshEveryMs":730,"holdLastMs":900},
            "sensor_lat_deg":{"decimals":7,"maxValue":41,"holdLastMs":600000}}}]})",
    R"({"overlay":[
{"formatString":"late %heading_deg","position":{"x":0.2,"y":0.6},"textSize":120,
 "condition":{"key":"heading_deg","operator":"gt","value":100,"showAfterMs":300,"keepAfterMs":500}},
"no block",
{"formatString":"%sensor_lat_deg","position":{"x":0.5,"y":0.8},"textSize":100,
 "formats":{"sensor_lat_deg":{"holdLastMs":300}}},
{"formatString":"always %frame_index","textColor":"#ff8000","textSize":100}]})",
    R"({"overlay":[{"textSize":40},{"formatString":"%sensor_alt_ft %sensor_mgrs","textSize":100}]})",
    R"({"overlay":[{"formatString":"%video_time_s","textSize":200,"bgColor":"#00ff00"}]})",
    R"({"overlay":[]})",
};

constexpr int kFrames = 260;

/// Telemetry that turns, has gaps and keys that come and go.
SwJsonObject telemetryAt(int number)
{
    if (number < 3 || number % 40 > 30) {
        return {};
    }
    SwJsonObject payload{{"heading_deg", SwJsonValue((number * 7) % 360)},
                         {"utc_timestamp_us", SwJsonValue(std::int64_t{1700000000000000} + number * 40000)}};
    if (number % 20 < 12) {
        payload["sensor_lat_deg"] = SwJsonValue(40.5 + 0.01 * (number % 100));
        payload["sensor_lon_deg"] = SwJsonValue(8.25);
    }
    if (number > 100) {
        payload["sensor_alt_m"] = SwJsonValue(1000.0 + number);
    }
    return payload;
}

clip_test::ClipSpec specOf(std::string const& path, std::string const& codec)
{
    clip_test::ClipSpec spec;
    spec.path = path;
    spec.width = 320;
    spec.height = 240;
    spec.codec = codec;
    spec.frames = kFrames;
    spec.klvStreams.emplace_back();
    for (int number = 0; number < kFrames; ++number) {
        spec.klvStreams.front().push_back(telemetryAt(number));
    }
    return spec;
}

std::string makeClip(TempFolder const& folder, std::string const& name = "clip.ts", std::string const& codec = {})
{
    clip_test::makeClip(specOf(folder.file(name), codec));
    return folder.file(name);
}

clip::ClipSource sourceOf(std::string const& input, std::string const& config = {})
{
    clip::ClipSource source;
    source.input = input;
    source.config = config;
    return source;
}

/// The text with the items left out, by the reader and the writer of the framework.
std::string without(std::string const& text, std::vector<std::size_t> const& hidden)
{
    SwString error;
    SwJsonObject root = SwJsonDocument::fromJson(SwString(text), SwString(), error).object();
    SwJsonArray kept;
    SwJsonArray const items = std::as_const(root)["overlay"].toArray();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::count(hidden.begin(), hidden.end(), i) == 0) {
            kept.append(items[i]);
        }
    }
    root["overlay"] = SwJsonValue(kept);
    return clip::configText(root);
}

std::vector<std::uint8_t> expectedRgb(clip::ClipSource const& source, double seconds)
{
    auto const opened = clip::openShownAt(source, seconds);
    auto const picture = opened->annotate(opened->next().value());
    media::FrameConverter converter;
    media::FramePtr const rgb = media::rgbOf(imaging::planesOf(*picture), opened->traits().color, converter);
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < rgb->height; ++y) {
        std::uint8_t const* const row = rgb->data[0] + static_cast<std::ptrdiff_t>(y) * rgb->linesize[0];
        bytes.insert(bytes.end(), row, row + static_cast<std::ptrdiff_t>(rgb->width) * 3);
    }
    return bytes;
}

std::string boxesText(std::vector<editor::Box> const& boxes)
{
    std::string text;
    for (editor::Box const& box : boxes) {
        for (int const number :
             {static_cast<int>(box.block), box.left, box.top, box.right, box.bottom, box.anchorX, box.anchorY}) {
            text += std::to_string(number) + " ";
        }
        text += "\n";
    }
    return text;
}

std::vector<editor::Box> expectedBoxes(clip::ClipSource const& source, std::string const& config, double seconds,
                                       std::vector<std::size_t> const& hidden)
{
    SwString error;
    SwJsonObject const root = SwJsonDocument::fromJson(SwString(config), SwString(), error).object();
    std::vector<editor::Box> boxes;
    for (auto const& [block, text] : clip::blocksShownAt(source, root, seconds).blocks) {
        if (std::count(hidden.begin(), hidden.end(), block) == 0) {
            boxes.push_back({block, text.left, text.top, text.right, text.bottom, text.x, text.y});
        }
    }
    return boxes;
}

void expectTheSame(editor::Shown const& shown, clip::ClipSource source, std::string const& config,
                   std::vector<std::size_t> const& hidden)
{
    SCOPED_TRACE("frame " + std::to_string(shown.frame) + " " + config);
    source.config = without(config, hidden);
    EXPECT_TRUE(shown.rgb == expectedRgb(source, shown.seconds));
    EXPECT_EQ(boxesText(shown.boxes), boxesText(expectedBoxes(source, config, shown.seconds, hidden)));
}

/// Goes about as a person does: steps, plays, jumps, and changes the configuration in between.
void expectTheSameAnywhere(clip::ClipSource const& source, int visits)
{
    editor::Preview preview(source);
    std::mt19937 random(20261122);
    std::uint64_t frame = 1;
    std::string config = kConfigs.front();
    std::vector<std::size_t> hidden;
    for (int visit = 0; visit < visits; ++visit) {
        switch (random() % 6) {
        case 0:
            frame = 1 + random() % kFrames;
            break;
        case 1:
            frame = std::max<std::uint64_t>(frame, 2) - 1;
            break;
        case 2:
            config = kConfigs[random() % kConfigs.size()];
            break;
        case 3:
            hidden = {random() % 3};
            break;
        case 4:
            hidden.clear();
            break;
        default:
            frame = std::min<std::uint64_t>(frame + 1 + random() % 2, kFrames);
        }
        editor::Shown const shown = preview.show(config, Place::ofFrame(frame), hidden);
        EXPECT_EQ(shown.frame, frame);
        EXPECT_EQ(shown.last, frame == kFrames);
        expectTheSame(shown, source, config, hidden);
    }
}

TEST(Preview, EqualsOnePictureAtATimeInAnyOrder)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder)), 60);
}

TEST(Preview, EqualsItWithReorderedPictures)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder, "clip.ts", "libx264")), 40);
}

TEST(Preview, EqualsItWherePacketsDoNotTellTheFrames)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder, "clip.ts", "mpeg4")), 30);
}

TEST(Preview, EqualsItWithATelemetryFileThatBeginsWithConstants)
{
    TempFolder const folder;
    std::ofstream lines(folder.file("t.jsonl"));
    lines << R"({"platform":"P-7","sensor_alt_m":100})"
          << "\n";
    for (int i = 0; i < 100; ++i) {
        lines << R"({"t":)" << 0.1 * i << R"(,"heading_deg":)" << i * 3
              << (i % 9 > 4 ? R"(,"sensor_alt_m":2500,"sensor_lat_deg":1.5,"sensor_lon_deg":2})" : "}") << "\n";
    }
    lines.close();
    clip::ClipSource source = sourceOf(makeClip(folder));
    source.telemetry.file = folder.file("t.jsonl");
    expectTheSameAnywhere(source, 40);
}

TEST(Preview, ShowsTheFrameAtATimeAndKeepsToTheClip)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder)));
    editor::ClipFacts const facts = preview.facts();
    EXPECT_EQ(facts.name, "clip.ts");
    EXPECT_EQ(facts.width, 320);
    EXPECT_EQ(facts.height, 240);
    EXPECT_NEAR(facts.seconds.value(), kFrames * 0.04, 0.05);
    EXPECT_DOUBLE_EQ(facts.frameSeconds, 0.04);
    EXPECT_EQ(facts.frames, std::nullopt);
    std::string const config = kConfigs[3];
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
    editor::Preview preview(sourceOf(makeClip(folder)));
    SwJsonObject const values = preview.show(kConfigs.back(), Place::ofFrame(104)).values;
    EXPECT_EQ(values["sensor_alt_m"].toDouble() > 1100.0, true);
    EXPECT_NEAR(values["sensor_alt_ft"].toDouble(), values["sensor_alt_m"].toDouble() / 0.3048, 1e-6);
    EXPECT_EQ(values["frame_index"], SwJsonValue(103));
    EXPECT_TRUE(values["sensor_mgrs"].isString());
}

TEST(Preview, KnowsKeysAndSchemaOfTheWholeClip)
{
    TempFolder const folder;
    editor::Preview preview(sourceOf(makeClip(folder)));
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
    clip::ClipSource const source = sourceOf(makeClip(folder), R"({"overlay":[]})");
    editor::Preview preview(source);
    std::vector<std::uint8_t> const undrawn = expectedRgb(source, 2.0);
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
    expectTheSame(preview.show(kConfigs[1], Place::at(2.0)), source, kConfigs[1], {});
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
