// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's library found and loaded, and frames through it, as the program does it.
#include "frame/frame_renderer.h"
#include "imaging/imaging_access.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using frame::Choice;
using frame::FrameRenderer;

constexpr char const* kOverride = "STANAG_OVERLAY_PLUGIN";

std::string failureOfLoading()
{
    try {
        frame::LoadedPlugin const plugin;
    } catch (std::runtime_error const& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

Choice choiceOf(std::string producer, SwJsonObject payload, std::uint64_t payloadFrame)
{
    return {std::move(producer), std::make_shared<SwJsonObject const>(std::move(payload)), payloadFrame, false};
}

TEST(PluginLoader, LooksBesideTheProgramInBothTrees)
{
    unsetenv(kOverride);
    std::vector<std::string> const candidates = frame::pluginCandidates();
    ASSERT_GE(candidates.size(), 2U);
    for (std::string const& candidate : candidates) {
        EXPECT_EQ(candidate.substr(candidate.rfind('/')), "/libstanag_overlay_plugin.so");
        EXPECT_EQ(candidate.front(), '/');
        EXPECT_EQ(candidate.find(".."), std::string::npos);
    }
    EXPECT_NE(candidates.front().find("/lib/"), std::string::npos);
}

TEST(PluginLoader, LooksInTheFoldersThatAHostNames)
{
    unsetenv(kOverride);
    EXPECT_EQ(frame::pluginCandidates({"/a/b", "/a/b/.."}),
              (std::vector<std::string>{"/a/b/libstanag_overlay_plugin.so", "/a/libstanag_overlay_plugin.so"}));
}

TEST(PluginLoader, TakesTheNamedFileAndNoOther)
{
    setenv(kOverride, "/nowhere/plugin.so", 1);
    EXPECT_EQ(frame::pluginCandidates(), std::vector<std::string>{"/nowhere/plugin.so"});
    EXPECT_EQ(failureOfLoading(), "the plugin's library was not found (/nowhere/plugin.so); build the target "
                                  "stanag_overlay_plugin or let STANAG_OVERLAY_PLUGIN name the file");
    unsetenv(kOverride);
}

TEST(PluginLoader, SaysSoWhenTheFileIsNoPlugin)
{
    setenv(kOverride, "/proc/self/maps", 1);
    std::string const failure = failureOfLoading();
    unsetenv(kOverride);
    EXPECT_EQ(failure.find("/proc/self/maps: cannot be loaded as the overlay plugin: "), 0U) << failure;
    EXPECT_NE(failure.find("; build it for this program's libraries"), std::string::npos) << failure;
}

/// Renders with the texts recorded.
class Recorded {
public:
    explicit Recorded(std::string const& config)
    {
        renderer_.plugin().setConfig(config);
        imaging::recordTexts(renderer_.painter(),
                             [this](imaging::DrawnText const& drawn) { texts_.push_back(drawn.text); });
    }

    std::vector<std::string> render(std::uint64_t frameIndex, std::vector<std::string> const& producers,
                                    std::vector<Choice> const& choices)
    {
        texts_.clear();
        renderer_.render(frameIndex, renderer_.takePicture(64, 1080), producers, choices);
        return texts_;
    }

    void pass(std::uint64_t frameIndex, std::vector<std::string> const& producers, std::vector<Choice> const& choices)
    {
        renderer_.pass(frameIndex, producers, choices);
    }

private:
    FrameRenderer renderer_;
    std::vector<std::string> texts_;
};

using Texts = std::vector<std::string>;

TEST(FrameRenderer, PassesPayloadsOfThisFrameAndOfEarlierOnes)
{
    Recorded recorded(R"({"overlay":[{"formatString":"%a"}]})");
    EXPECT_EQ(recorded.render(1, {"klv"}, {choiceOf("klv", {{"a", SwJsonValue(1)}}, 1)}), Texts{"1"});
    EXPECT_EQ(recorded.render(5, {"klv"}, {choiceOf("klv", {{"a", SwJsonValue(2)}}, 3)}), Texts{"2"});
}

TEST(FrameRenderer, LetsTheFirstProducerWinAndMergesTheRest)
{
    Recorded recorded(R"({"overlay":[{"formatString":"%a %b"}]})");
    Choice const late = choiceOf("a-late", {{"a", SwJsonValue(1)}, {"b", SwJsonValue(2)}}, 1);
    Choice const first = choiceOf("z-first", {{"a", SwJsonValue(9)}}, 1);
    EXPECT_EQ(recorded.render(1, {"z-first", "a-late"}, {first, late}), Texts{"9 2"});
}

TEST(FrameRenderer, PassesOverFramesAsIfTheyWereDrawn)
{
    // A value that is held for a minute, on frames that are passed over with other producers each time.
    char const* const config = R"({"overlay":[{"formatString":"%a %b","updateEveryNFrames":3,
        "formats":{"a":{"holdLastMs":60000},"b":{"holdLastMs":60000}}}]})";
    Choice const a1 = choiceOf("x", {{"a", SwJsonValue(1)}}, 1);
    Choice const b4 = choiceOf("y", {{"b", SwJsonValue(4)}}, 4);
    Choice const c5 = choiceOf("y", {{"c", SwJsonValue(5)}}, 5);
    Choice const a5 = choiceOf("x", {{"a", SwJsonValue(5)}}, 5);
    struct Frame {
        std::vector<std::string> producers;
        std::vector<Choice> choices;
    };
    std::vector<Frame> const frames = {{{"x"}, {a1}},          {{"x"}, {a1}},          {{"x"}, {}},
                                       {{"x", "y"}, {a1, b4}}, {{"x", "y"}, {a5, c5}}, {{"x", "y"}, {c5}},
                                       {{"x", "y"}, {c5}},     {{"x", "y"}, {c5}}};
    for (std::size_t passed = 0; passed < frames.size(); ++passed) {
        Recorded whole(config);
        Recorded part(config);
        for (std::size_t i = 0; i <= passed; ++i) {
            Frame const& frame = frames[i];
            Texts const expected = whole.render(i + 1, frame.producers, frame.choices);
            if (i < passed) {
                part.pass(i + 1, frame.producers, frame.choices);
            } else {
                EXPECT_EQ(part.render(i + 1, frame.producers, frame.choices), expected) << "frame " << i + 1;
            }
        }
    }
}

TEST(FrameRenderer, DrawsNothingWithoutTelemetry)
{
    FrameRenderer renderer;
    renderer.plugin().setConfig(R"({"overlay":[{"formatString":"text"}]})");
    auto const source = renderer.takePicture(64, 48);
    EXPECT_EQ(renderer.render(1, source, {"klv"}, {}), source) << "the very same picture";
}

TEST(FrameRenderer, LeavesTheSourcePictureAsItIs)
{
    FrameRenderer renderer;
    renderer.plugin().setConfig(R"({"overlay":[{"formatString":"%a","textSize":256}]})");
    auto const source = renderer.takePicture(320, 240);
    MappedNV12 const planes = imaging::planesOf(*source);
    std::size_t const bytes = static_cast<std::size_t>(planes.yStride) * 240;
    std::fill(planes.y, planes.y + bytes, std::uint8_t{77});
    auto const drawn = renderer.render(1, source, {"klv"}, {choiceOf("klv", {{"a", SwJsonValue(1)}}, 1)});
    EXPECT_NE(drawn, source);
    EXPECT_TRUE(std::all_of(planes.y, planes.y + bytes, [](std::uint8_t y) { return y == 77; }));
    MappedNV12 const result = imaging::planesOf(*drawn);
    EXPECT_FALSE(std::all_of(result.y, result.y + bytes, [](std::uint8_t y) { return y == 77; }));
}

TEST(FrameRenderer, DrawsOntoAPictureThatNobodyElseReads)
{
    FrameRenderer renderer;
    renderer.plugin().setConfig(R"({"overlay":[{"formatString":"%a","textSize":256}]})");
    auto const filled = [&renderer] {
        auto picture = renderer.takePicture(320, 240);
        MappedNV12 const planes = imaging::planesOf(*picture);
        std::fill_n(planes.y, planes.yStride * 240, std::uint8_t{77});
        std::fill_n(planes.uv, planes.uvStride * 120, std::uint8_t{128});
        return picture;
    };
    std::vector<Choice> const choices = {choiceOf("klv", {{"a", SwJsonValue(1)}}, 1)};
    auto const copy = renderer.render(1, filled(), {"klv"}, choices);
    auto const picture = filled();
    renderer.renderOnto(1, picture, {"klv"}, choices);
    MappedNV12 const drawn = imaging::planesOf(*picture);
    MappedNV12 const expected = imaging::planesOf(*copy);
    EXPECT_TRUE(std::equal(drawn.y, drawn.y + drawn.yStride * 240, expected.y));
    EXPECT_TRUE(std::equal(drawn.uv, drawn.uv + drawn.uvStride * 120, expected.uv));
    EXPECT_NE(std::count(drawn.y, drawn.y + drawn.yStride * 240, 77), drawn.yStride * 240);
}

TEST(Look, OutlineIsScaledLikeTheTextsAndNeverVanishes)
{
    struct Row {
        double outline;
        unsigned lines;
        int pixels;
    };
    for (Row const& row :
         {Row{0.0, 1080, 0}, Row{1.0, 1080, 1}, Row{1.5, 2160, 3}, Row{1.4, 1080, 1}, Row{1.5, 1080, 2},
          Row{3.0, 720, 2}, Row{4.0, 480, 2}, Row{0.1, 480, 1}, Row{32.0, 4320, 128}}) {
        EXPECT_EQ(frame::outlinePixels({"", row.outline}, row.lines), row.pixels) << row.outline << " on " << row.lines;
    }
}

TEST(Look, OutlineIsDrawnAroundWhatThePluginDraws)
{
    auto const darkest = [](double outline) {
        FrameRenderer renderer({"", outline});
        renderer.plugin().setConfig(R"({"overlay":[{"formatString":"%a","textSize":256,"bgAlpha":0}]})");
        auto const picture = renderer.takePicture(320, 240);
        MappedNV12 const planes = imaging::planesOf(*picture);
        std::size_t const bytes = static_cast<std::size_t>(planes.yStride) * 240;
        std::fill_n(planes.y, bytes, std::uint8_t{77});
        std::fill_n(planes.uv, static_cast<std::size_t>(planes.uvStride) * 120, std::uint8_t{128});
        renderer.renderOnto(1, picture, {"klv"}, {choiceOf("klv", {{"a", SwJsonValue(8)}}, 1)});
        return *std::min_element(planes.y, planes.y + bytes);
    };
    EXPECT_EQ(darkest(0.0), 77);
    EXPECT_EQ(darkest(8.0), 16) << "black in limited range";
}

TEST(Look, FontThatIsNotThereIsAnError)
{
    try {
        FrameRenderer const renderer({"No Such Family", 0.0});
        FAIL() << "a font was found";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(std::string(error.what()).rfind("no font of the family 'No Such Family' is installed", 0), 0U);
    }
}

}  // namespace
