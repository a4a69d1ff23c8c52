// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The way of a frame, compared as text: every host call with its arguments, in order.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

using recording::journal;

class Render : public testing::Test {
protected:
    Render()
    {
        test_clock::setNowNs(1000);
        plugin_.init(host_.init());
        host_.deliver(kOneBlockTelemetry);
    }

    /// Renders a new frame and gives what the host was asked for.
    std::string rendered(std::uint64_t frameIndex = 1) { return hostRequests(plugin_, host_.nextFrame(frameIndex)); }

    std::string drawnTexts(std::uint64_t frameIndex, char const* payload)
    {
        host_.deliver(payload);
        rendered(frameIndex);
        return journal().text({"drawText"});
    }

    TestHost host_;
    StanagOverlayPlugin plugin_;
};

/// A drawn text at the default position and size.
std::string drawn(std::string const& text)
{
    return "drawText 10 10 16 0 0 \"" + text + "\" on 1920x1080\n";
}

}  // namespace

TEST_F(Render, OneBlockOfDefaults)
{
    plugin_.setConfig(kOneBlockConfig);
    EXPECT_EQ(rendered(), kOneBlockFrame);
}

TEST_F(Render, BlocksAreDrawnInConfigurationOrderWithTheirOwnStyle)
{
    plugin_.setConfig(R"({"overlay":[
        {"formatString":"first\nsecond","textColor":"#FF8000","bgColor":"#010203","bgAlpha":0.25,"textSize":32,
         "thickness":2,"position":{"x":0.5,"y":0.25}},
        {"formatString":"%{v}%%","textColor":"#102030","bgAlpha":1,"textSize":7,"thickness":16,"position":{"x":1,"y":1}},
        {"formatString":"\"last\"","bgAlpha":0}]})");
    EXPECT_EQ(rendered(), R"(payload 1 telemetry
clone
makeRenderTarget
map recording 1
getPen
setPenThickness 2
measureText 960 270 32 0 0 "first\nsecond"
setPenRGB 1 2 3
drawBackground 956 266 1062 340 0.25 4 5 on 1920x1080
setPenRGB 255 128 0
drawText 960 270 32 0 0 "first\nsecond" on 1920x1080
setPenThickness 16
measureText 1920 1080 7 0 0 "7%"
setPenRGB 0 0 0
drawBackground 1916 1076 1932 1092 1 4 5 on 1920x1080
setPenRGB 16 32 48
drawText 1920 1080 7 0 0 "7%" on 1920x1080
setPenThickness 1
measureText 10 10 16 0 0 "\"last\""
setPenRGB 0 0 0
drawBackground 6 6 64 32 0 4 5 on 1920x1080
setPenRGB 255 255 255
drawText 10 10 16 0 0 "\"last\"" on 1920x1080
setPen 255 255 255 1
)");
}

TEST_F(Render, SizesScaleWithThePictureHeight)
{
    host_.width = 1280;
    host_.height = 720;
    plugin_.setConfig(R"({"overlay":[{"formatString":"abc","textSize":32,"thickness":1,"position":{"x":0,"y":0}}]})");
    // Size 21.33 is cut to 21, pen 0.67 rounds to 1, margin 3.33 gives a box 3 pixels wider on each side.
    EXPECT_EQ(rendered(), R"(payload 1 telemetry
clone
makeRenderTarget
map recording 1
getPen
setPenThickness 1
measureText 0 0 21 0 0 "abc"
setPenRGB 0 0 0
drawBackground -2 -2 34 24 0.5 4 3.33333349 on 1280x720
setPenRGB 255 255 255
drawText 0 0 21 0 0 "abc" on 1280x720
setPen 255 255 255 1
)");
}

TEST_F(Render, AnchorOfAnOddPictureIsMadeEven)
{
    host_.width = 1919;
    host_.height = 1079;
    plugin_.setConfig(R"({"overlay":[{"formatString":"x","position":{"x":0.5,"y":0.5}}]})");
    rendered();
    EXPECT_EQ(journal().text({"drawText"}), "drawText 960 540 15 0 0 \"x\" on 1919x1079\n");
}

TEST_F(Render, MeasuredBoxGrowsByTheMarginAndIsMadeEven)
{
    struct Row {
        char const* name;
        recording::Box measured;
        std::string expected;
    };
    plugin_.setConfig(kOneBlockConfig);
    for (Row const& row : {
             Row{"odd results move up", {10, 12, 20, 30}, "6 8 26 36"},
             Row{"even results stay", {11, 13, 21, 31}, "6 8 26 36"},
             Row{"outside the picture to the left", {-10, -11, -1, -2}, "-14 -16 4 4"},
             Row{"outside the picture to the right", {4000, 3001, 5000, 4001}, "3996 2996 5006 4006"},
             Row{"at the edges of int",
                 {-2147483647 - 1, 2147483647, 2147483647, -2147483647 - 1},
                 "2147483644 2147483642 -2147483644 -2147483642"},
         }) {
        SCOPED_TRACE(row.name);
        recording::controls(host_.painter).box = row.measured;
        rendered();
        EXPECT_EQ(journal().text({"drawBackground"}), "drawBackground " + row.expected + " 0.5 4 5 on 1920x1080\n");
    }
}

TEST_F(Render, TheMarginIsRounded)
{
    // 4.995 is 5 pixels, not 4.
    host_.height = 1079;
    plugin_.setConfig(kOneBlockConfig);
    recording::controls(host_.painter).box = recording::Box{11, 13, 20, 30};
    rendered();
    EXPECT_EQ(journal().text({"drawBackground"}), "drawBackground 6 8 26 36 0.5 4 4.99537039 on 1920x1079\n");
}

TEST_F(Render, AnchorsAreSinglePrecision)
{
    // As floats 0.005 * 1000 is 5 and 0.009 * 1000 is 9; with more digits both stay below.
    host_.width = 1000;
    host_.height = 1000;
    plugin_.setConfig(kOneBlockConfig);
    rendered();
    EXPECT_EQ(journal().text({"drawText"}), "drawText 6 10 14 0 0 \"v=7\" on 1000x1000\n");
}

TEST_F(Render, PenThicknessRoundsHalvesAwayAndKeepsEightBits)
{
    struct Row {
        char const* name;
        unsigned height;
        int thickness;
        char const* expected;
    };
    for (Row const& row :
         {Row{"unchanged at 1080 lines", 1080, 16, "16"}, Row{"0.67 rounds to 1", 720, 1, "1"},
          Row{"0.5 rounds to 1", 540, 1, "1"}, Row{"1.5 rounds to 2", 540, 3, "2"}, Row{"2.5 rounds to 3", 540, 5, "3"},
          Row{"0.09 is at least 1", 100, 1, "1"}, Row{"no lines is at least 1", 0, 16, "1"},
          Row{"256 keeps its low bits", 17280, 16, "0"}, Row{"296 keeps its low bits", 20000, 16, "40"}}) {
        SCOPED_TRACE(row.name);
        host_.height = row.height;
        recording::Backend backend;
        backend.mapsTo = MappedNV12{recording::anyPlane(), recording::anyPlane(), 16, 16, 0, 0};
        plugin_.init({&backend, &host_.painter});
        plugin_.setConfig(R"({"overlay":[{"formatString":"x","thickness":)" + std::to_string(row.thickness) + "}]}");
        rendered();
        EXPECT_EQ(journal().text({"setPenThickness"}), std::string("setPenThickness ") + row.expected + "\n");
    }
}

TEST_F(Render, TextSizeIsTruncated)
{
    struct Row {
        unsigned height;
        int textSize;
        char const* expected;
    };
    for (Row const& row : {Row{1080, 256, "256"}, Row{720, 32, "21"}, Row{719, 256, "170"}, Row{2160, 13, "26"},
                           Row{2, 6, "0"}, Row{1079, 16, "15"}}) {
        SCOPED_TRACE(std::to_string(row.textSize) + " at " + std::to_string(row.height));
        host_.height = row.height;
        plugin_.setConfig(R"({"overlay":[{"formatString":"x","position":{"x":0,"y":0},"textSize":)" +
                          std::to_string(row.textSize) + "}]}");
        rendered();
        EXPECT_EQ(journal().text({"measureText"}), std::string("measureText 0 0 ") + row.expected + " 0 0 \"x\"\n");
    }
}

TEST_F(Render, HugePictureSaturatesInsteadOfOverflowing)
{
    host_.width = 4294967295U;
    host_.height = 4294967295U;
    recording::Backend backend;
    backend.mapsTo = MappedNV12{recording::anyPlane(), recording::anyPlane(), 16, 16, 0, 0};
    plugin_.init({&backend, &host_.painter});
    plugin_.setConfig(R"({"overlay":[{"formatString":"x","position":{"x":1,"y":0},"textSize":6}]})");
    rendered();
    // 2^31 - 1 is odd and moves up by one, which wraps.
    EXPECT_EQ(journal().text({"drawText"}), "drawText -2147483648 0 23860928 0 0 \"x\" on 16x16\n");
}

TEST_F(Render, GeometryFollowsThePictureNotTheMapping)
{
    host_.backend.mapsTo = MappedNV12{recording::anyPlane(), recording::anyPlane(), 64, 48, 0, 0};
    plugin_.setConfig(kOneBlockConfig);
    rendered();
    EXPECT_EQ(journal().text({"drawText"}), "drawText 10 10 16 0 0 \"v=7\" on 64x48\n");
}

TEST_F(Render, GeometryFollowsThePictureAsItWasBeforeItsCopyWasMade)
{
    host_.pool = nullptr;
    host_.cloner = [](std::string const&, std::uint64_t) { return std::make_shared<zelvo::ZelvoPicture>(1280U, 720U); };
    plugin_.setConfig(kOneBlockConfig);
    rendered();
    EXPECT_EQ(journal().text({"drawText"}), "drawText 10 10 16 0 0 \"v=7\" on 1280x720\n");
    // From then on the copy is what can be read.
    hostRequests(plugin_, host_.sameContext(2));
    EXPECT_EQ(journal().text({"drawText"}), "drawText 6 6 10 0 0 \"v=7\" on 1280x720\n");
}

TEST_F(Render, ThePenIsRestored)
{
    recording::controls(host_.painter).pen = {1, 2, 3, 4};
    plugin_.setConfig(kOneBlockConfig);
    rendered();
    EXPECT_EQ(journal().text({"setPen "}), "setPen 1 2 3 4\n");
    EXPECT_EQ(recording::controls(host_.painter).pen, (Pen{1, 2, 3, 4}));
}

TEST_F(Render, WithoutBlocksOnlyPictureAndPenAreTouched)
{
    EXPECT_EQ(rendered(), R"(payload 1 telemetry
clone
makeRenderTarget
map recording 1
getPen
setPen 255 255 255 1
)");
}

TEST_F(Render, AnUnmeasurableTextIsNotDrawnAndThePenStillRestored)
{
    recording::controls(host_.painter).measureFails = true;
    plugin_.setConfig(R"({"overlay":[{"formatString":"a","thickness":3},{"formatString":"b"}]})");
    EXPECT_EQ(rendered(), R"(payload 1 telemetry
clone
makeRenderTarget
map recording 1
getPen
setPenThickness 3
measureText 10 10 16 0 0 "a"
setPenThickness 1
measureText 10 10 16 0 0 "b"
setPen 255 255 255 1
)");
}

TEST_F(Render, AHiddenBlockDrawsNothing)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"hidden","condition":{"key":"absent"}},{"formatString":"b"}]})");
    rendered();
    EXPECT_EQ(journal().text({"measureText", "draw"}),
              "measureText 10 10 16 0 0 \"b\"\ndrawBackground 6 6 24 32 0.5 4 5 on 1920x1080\n" + drawn("b"));
}

TEST_F(Render, AnEmptyTextDrawsNothing)
{
    host_.deliver(R"({"empty":""})");
    plugin_.setConfig(R"({"overlay":[{"formatString":"%empty"}]})");
    rendered();
    EXPECT_EQ(journal().text({"setPenThickness", "measure", "draw"}), "");
}

TEST_F(Render, AnEmptyTemplateListsTheFramesKeys)
{
    plugin_.setConfig(R"({"overlay":[{}]})");
    EXPECT_EQ(drawnTexts(1, R"({"b":2,"a":"x"})"), drawn("a: x\\nb: 2"));
}

TEST_F(Render, AFrameWithoutPayloadAsksForThePayloadOnly)
{
    plugin_.setConfig(kOneBlockConfig);
    rendered(1);
    host_.deliver("{}");
    EXPECT_EQ(rendered(2), "payload 2 telemetry\n");
    EXPECT_FALSE(host_.context().mapping.mapped);
}

TEST_F(Render, AFrameWithoutPayloadLeavesHeldStateAlone)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":10}]})");
    EXPECT_EQ(drawnTexts(1, R"({"v":1})"), drawn("1"));
    EXPECT_EQ(drawnTexts(2, "{}"), "");
    EXPECT_EQ(drawnTexts(3, R"({"v":3})"), drawn("1"));
}

TEST_F(Render, TheClockIsReadOncePerFrame)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"a"},{"formatString":"b"}]})");
    test_clock::setNowNs(1);
    rendered();
    EXPECT_EQ(test_clock::readings(), 1);
}

TEST_F(Render, WithoutSourcePictureNothingHappens)
{
    plugin_.setConfig(kOneBlockConfig);
    RenderContext& context = host_.nextFrame(1);
    context.picture.reset("/camera", 1, nullptr, host_.pool, {});
    journal().clear();
    test_clock::setNowNs(1);
    plugin_.render(context);
    EXPECT_EQ(journal().text(), "");
    EXPECT_EQ(test_clock::readings(), 0);
}

TEST_F(Render, APictureThatVanishesIsAnError)
{
    plugin_.setConfig(kOneBlockConfig);
    host_.deliverBy([this](std::uint64_t, std::string const&) {
        host_.context().picture.reset("/camera", 1, nullptr, host_.pool, {});
        return SwAny(jsonObject(R"({"v":1})"));
    });
    try {
        plugin_.render(host_.nextFrame(1));
        FAIL() << "no exception";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "LazyDetachedPicture has no readable picture");
    }
}

TEST_F(Render, FailuresOfTheWritableCopyReachTheHost)
{
    struct Row {
        char const* name;
        std::uint64_t sourceId;
        bool poolGivesNothing;
        char const* expected;
    };
    plugin_.setConfig(kOneBlockConfig);
    for (Row const& row : {Row{"no id", 0, false, "LazyDetachedPicture has no source picture id"},
                           Row{"no copy", 5, true, "LazyDetachedPicture cloneDetached failed"}}) {
        SCOPED_TRACE(row.name);
        RenderContext& context = host_.nextFrame(1);
        recording::controls(*host_.pool).givesNothing = row.poolGivesNothing;
        context.picture.reset("", row.sourceId, std::make_shared<zelvo::ZelvoPicture>(64U, 48U), host_.pool, {});
        journal().clear();
        try {
            plugin_.render(context);
            ADD_FAILURE() << "no exception";
        } catch (std::runtime_error const& error) {
            EXPECT_STREQ(error.what(), row.expected);
        }
        EXPECT_EQ(journal().text({"getPen", "setPen", "draw", "map"}), "");
        EXPECT_FALSE(context.mapping.mapped);
    }
}

// updateEveryNFrames

TEST_F(Render, TextIsExpandedAgainAfterNFrames)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":5}]})");
    EXPECT_EQ(drawnTexts(10, R"({"v":10})"), drawn("10"));
    EXPECT_EQ(drawnTexts(11, R"({"v":11})"), drawn("10"));
    EXPECT_EQ(drawnTexts(14, R"({"v":14})"), drawn("10"));
    EXPECT_EQ(drawnTexts(15, R"({"v":15})"), drawn("15"));
    EXPECT_EQ(drawnTexts(19, R"({"v":19})"), drawn("15"));
    EXPECT_EQ(drawnTexts(25, R"({"v":25})"), drawn("25"));
}

TEST_F(Render, WithTwoTextIsExpandedOnEveryOtherFrame)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":2}]})");
    EXPECT_EQ(drawnTexts(10, R"({"v":10})"), drawn("10"));
    EXPECT_EQ(drawnTexts(11, R"({"v":11})"), drawn("10"));
    EXPECT_EQ(drawnTexts(12, R"({"v":12})"), drawn("12"));
}

TEST_F(Render, WithOneOrLessTextIsExpandedOnEveryFrame)
{
    for (char const* n : {"0", "1", "-3"}) {
        SCOPED_TRACE(n);
        plugin_.setConfig(std::string(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":)") + n + "}]}");
        EXPECT_EQ(drawnTexts(10, R"({"v":1})"), drawn("1"));
        EXPECT_EQ(drawnTexts(11, R"({"v":2})"), drawn("2"));
        EXPECT_EQ(drawnTexts(11, R"({"v":3})"), drawn("3"));
    }
}

TEST_F(Render, AnExpansionInFrameZeroCountsAsNever)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":5}]})");
    EXPECT_EQ(drawnTexts(0, R"({"v":0})"), drawn("0"));
    EXPECT_EQ(drawnTexts(1, R"({"v":1})"), drawn("1"));
    EXPECT_EQ(drawnTexts(2, R"({"v":2})"), drawn("1"));
}

TEST_F(Render, AFrameNumberThatGoesBackExpandsAnew)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":120}]})");
    EXPECT_EQ(drawnTexts(1000, R"({"v":1})"), drawn("1"));
    EXPECT_EQ(drawnTexts(999, R"({"v":2})"), drawn("2"));
}

TEST_F(Render, AKeptBlockShowsItsTextWithoutExpanding)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%v","condition":{"key":"on","keepAfterMs":1000}}]})");
    EXPECT_EQ(drawnTexts(1, R"({"v":1,"on":1})"), drawn("1"));
    test_clock::advanceNs(1000 * test_clock::kNsPerMs);
    EXPECT_EQ(drawnTexts(2, R"({"v":2})"), drawn("1"));
    test_clock::advanceNs(1);
    EXPECT_EQ(drawnTexts(3, R"({"v":3})"), "");
    EXPECT_EQ(drawnTexts(4, R"({"v":4,"on":1})"), drawn("4"));
}

TEST_F(Render, AHiddenBlockIsNotExpandedMeanwhile)
{
    plugin_.setConfig(
        R"({"overlay":[{"formatString":"%v","updateEveryNFrames":100,"condition":{"key":"on","showAfterMs":2000}}]})");
    EXPECT_EQ(drawnTexts(1, R"({"v":1,"on":1})"), "");
    test_clock::advanceNs(2000 * test_clock::kNsPerMs - 1);
    EXPECT_EQ(drawnTexts(2, R"({"v":2,"on":1})"), "");
    test_clock::advanceNs(1);
    EXPECT_EQ(drawnTexts(3, R"({"v":3,"on":1})"), drawn("3"));
    EXPECT_EQ(drawnTexts(4, R"({"v":4,"on":1})"), drawn("3"));
}
