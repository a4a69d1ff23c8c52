// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The editor's pictures against those of the command that makes one annotated picture, at any place and in any order.
#include "editor/preview.h"

#include "clip/clip_seek.h"
#include "clip/placed_blocks.h"
#include "imaging/imaging_access.h"
#include "media/rgb_picture.h"
#include "preview_clip.h"
#include "temp_folder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using editor::Place;
using editor_test::kFrames;
using editor_test::makeClip;
using editor_test::sourceOf;
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
void expectTheSameAnywhere(clip::ClipSource const& source, int visits, std::uint64_t frames = kFrames)
{
    editor::Preview preview(source);
    std::mt19937 random(20261122);
    std::uint64_t frame = 1;
    std::string config = kConfigs.front();
    std::vector<std::size_t> hidden;
    for (int visit = 0; visit < visits; ++visit) {
        switch (random() % 6) {
        case 0:
            frame = 1 + random() % frames;
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
            frame = std::min<std::uint64_t>(frame + 1 + random() % 2, frames);
        }
        editor::Shown const shown = preview.show(config, Place::ofFrame(frame), hidden);
        EXPECT_EQ(shown.frame, frame);
        expectTheSame(shown, source, config, hidden);
    }
}

TEST(PreviewAnywhere, EqualsOnePictureAtATime)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder.file("a.ts"))), 40);
}

TEST(PreviewAnywhere, EqualsItWithReorderedPictures)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder.file("a.ts"), "libx264")), 40);
}

TEST(PreviewAnywhere, EqualsItWherePacketsDoNotTellTheFrames)
{
    TempFolder const folder;
    expectTheSameAnywhere(sourceOf(makeClip(folder.file("a.ts"), "mpeg4")), 30);
}

TEST(PreviewAnywhere, EqualsItWherePacketsDoNotTellThemAnyMore)
{
    TempFolder const folder;
    clip::ClipSource source = sourceOf(makeClip(folder.file("a.ts"), "libx264"));
    std::ifstream file(source.input, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    bytes.replace(bytes.size() / 2, 400, std::string(400, '\x5A'));
    std::ofstream(source.input, std::ios::binary) << bytes;
    // More threads may show damaged parts differently each time.
    source.decoding.threads = 1;
    expectTheSameAnywhere(source, 30, kFrames - 20);
}

TEST(PreviewAnywhere, EqualsItWithATelemetryFileThatBeginsWithConstants)
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
    clip::ClipSource source = sourceOf(makeClip(folder.file("a.ts")));
    source.telemetry.file = folder.file("t.jsonl");
    expectTheSameAnywhere(source, 40);
}

class RecordedPreview : public testing::TestWithParam<char const*> {};

TEST_P(RecordedPreview, EqualsOnePictureAtATime)
{
    std::string const clip = std::string(OVERLAY_RECORDED_DATA) + "/" + GetParam();
    if (!std::filesystem::exists(clip)) {
        GTEST_SKIP() << "recorded data is missing: " << clip << " (set OVERLAY_RECORDED_DATA)";
    }
    std::uint64_t const frames = editor::Preview(sourceOf(clip)).show("", Place::at(1e9)).frame;
    expectTheSameAnywhere(sourceOf(clip), 15, frames);
}

INSTANTIATE_TEST_SUITE_P(Rows, RecordedPreview,
                         testing::Values("osh_sim_640x480_h264_klv06.ts", "kwiver_h264_160x120_klv06_nopts.ts",
                                         "kwiver_mpeg2_160x120_klv06_nopts.ts", "kwiver_aphill_720x480i_h264_eg0104.ts",
                                         "mp2tp_foreman_352x288_h264_klv15_aucell.ts",
                                         "mux_car_768x432_osh_klv_30hz.ts"),
                         [](auto const& row) { return "clip_" + std::to_string(row.index); });

}  // namespace
