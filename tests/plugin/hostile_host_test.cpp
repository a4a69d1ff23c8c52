// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A host that fails at every single call, and payloads that are not what they should be: the failure
// reaches the host, nothing leaks, and the next good frame draws as if nothing had happened.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using recording::HostFailure;
using recording::journal;

constexpr char const* kConfig = R"({"overlay":[
    {"formatString":"a=%a","textSize":20,"formats":{"a":{"holdLastMs":1000,"refreshEveryMs":1}}},
    {"formatString":"b=%b","thickness":3,"updateEveryNFrames":1,"condition":{"key":"b","keepAfterMs":1000}}]})";

std::vector<std::string> const kDrawing{"setPenThickness", "measureText", "setPenRGB", "draw"};

/// Two producers, a pool that gives nothing and a cloner: every way into the host is taken.
class HostileHost : public testing::Test {
protected:
    HostileHost() { startOver(); }

    void startOver()
    {
        test_clock::setNowNs(1000);
        host_ = std::make_unique<TestHost>(1280U, 720U);
        plugin_ = std::make_unique<StanagOverlayPlugin>();
        plugin_->init(host_->init());
        plugin_->setConfig(kConfig);
        host_->deliverBy([](std::uint64_t, std::string const& key) {
            return SwAny(jsonObject(key == "first" ? R"({"a":1})" : R"({"b":2})"));
        });
        host_->addInput({"first", "", 0, false});
        host_->addInput({"second", "", 0, false});
        host_->cloner = [](std::string const&, std::uint64_t) {
            journal().call("cloner");
            return std::make_shared<zelvo::ZelvoPicture>(1280U, 720U);
        };
        recording::controls(*host_->pool).givesNothing = true;
        pen() = Pen{10, 20, 30, 4};
        host_->nextFrame(1);
        journal().clear();
    }

    Pen& pen() { return recording::controls(host_->painter).pen; }

    std::string drawn(RenderContext& context) { return hostRequests(*plugin_, context, kDrawing); }

    std::unique_ptr<TestHost> host_;
    std::unique_ptr<StanagOverlayPlugin> plugin_;
};

/// The pen in EveryHostCallMayThrow when call `number` throws: whatever the calls before it have set.
Pen penAtFailure(std::size_t number)
{
    struct Row {
        std::size_t lastCall;
        Pen pen;
    };
    Row const rows[] = {
        {8, {10, 20, 30, 4}},      // the host's own, up to the first block's setPenThickness
        {10, {10, 20, 30, 1}},     // measureText, setPenRGB
        {12, {0, 0, 0, 1}},        // drawBackground, setPenRGB
        {14, {255, 255, 255, 1}},  // drawText, the second block's setPenThickness
        {16, {255, 255, 255, 2}},  // measureText, setPenRGB
        {18, {0, 0, 0, 2}},        // drawBackground, setPenRGB
        {20, {255, 255, 255, 2}},  // drawText, setPen
    };
    for (Row const& row : rows) {
        if (number <= row.lastCall) {
            return row.pen;
        }
    }
    throw std::out_of_range("the frame has more calls than this table");
}

std::string textOf(Pen const& pen)
{
    return "setPen " + std::to_string(pen.r) + " " + std::to_string(pen.g) + " " + std::to_string(pen.b) + " " +
           std::to_string(pen.thickness) + "\n";
}

}  // namespace

TEST_F(HostileHost, EveryHostCallMayThrow)
{
    plugin_->render(host_->context());
    std::string const goodFrame = journal().text();
    std::string const goodDrawing = journal().text(kDrawing);
    std::size_t const calls = journal().calls();
    EXPECT_EQ(goodFrame, R"(payload 1 first
payload 1 second
clone
cloner
makeRenderTarget
map recording 1
getPen
setPenThickness 1
measureText 6 6 13 0 0 "a=1"
setPenRGB 0 0 0
drawBackground 4 4 28 22 0.5 4 3.33333349 on 1280x720
setPenRGB 255 255 255
drawText 6 6 13 0 0 "a=1" on 1280x720
setPenThickness 2
measureText 6 6 10 0 0 "b=2"
setPenRGB 0 0 0
drawBackground 4 4 24 20 0.5 4 3.33333349 on 1280x720
setPenRGB 255 255 255
drawText 6 6 10 0 0 "b=2" on 1280x720
setPen 10 20 30 4
)");
    for (bool const inSameContext : {true, false}) {
        for (std::size_t number = 1; number <= calls; ++number) {
            SCOPED_TRACE("call " + std::to_string(number) + (inSameContext ? ", same context" : ", new context"));
            startOver();
            journal().throwAtCall(number);
            EXPECT_THROW(plugin_->render(host_->context()), HostFailure);
            EXPECT_EQ(journal().calls(), number);

            RenderMapping const& mapping = host_->context().mapping;
            bool const wasMapped = number > 6;  // "map recording 1" is call 6
            EXPECT_EQ(mapping.mapped, wasMapped);
            EXPECT_EQ(mapping.guard.planes().y != nullptr, wasMapped);
            EXPECT_EQ(mapping.backend, wasMapped ? &host_->backend : nullptr);

            std::string const penLeft = textOf(penAtFailure(number));
            EXPECT_EQ(textOf(pen()), penLeft);

            EXPECT_EQ(drawn(inSameContext ? host_->sameContext(2) : host_->nextFrame(2)), goodDrawing);
            EXPECT_EQ(journal().text({"setPen "}), penLeft);  // taken for the host's and given back
        }
    }
}

TEST_F(HostileHost, EveryMappingAndTargetEndsHoweverTheFrameEnds)
{
    plugin_->render(host_->context());
    std::size_t const calls = journal().calls();
    for (std::size_t number = 1; number <= calls; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        startOver();
        journal().throwAtCall(number);
        EXPECT_THROW(plugin_->render(host_->context()), HostFailure);
        std::size_t const targets = journal().count("makeRenderTarget") - (number == 5 ? 1 : 0);
        std::size_t const mappings = journal().count("map ") - (number == 6 ? 1 : 0);
        host_.reset();
        EXPECT_EQ(journal().count("end of target"), targets);
        EXPECT_EQ(journal().count("unmap"), mappings);
    }
}

TEST_F(HostileHost, AFailingRemapLeavesAContextThatCanBeUsedAgain)
{
    // The context comes with a mapping of another backend; each step of making a new one may fail.
    recording::Backend other("other");
    StanagOverlayPlugin before;
    before.init({&other, &host_->painter});
    before.render(host_->context());
    std::string const goodDrawing = drawn(host_->sameContext(2));
    for (std::size_t number = 3; number <= 4; ++number) {  // after two payloads: makeRenderTarget, map
        SCOPED_TRACE("call " + std::to_string(number));
        startOver();
        before.init({&other, &host_->painter});
        before.render(host_->context());
        journal().clear();
        journal().throwAtCall(number);
        EXPECT_THROW(plugin_->render(host_->sameContext(2)), HostFailure);
        EXPECT_FALSE(host_->context().mapping.mapped);
        EXPECT_EQ(host_->context().mapping.backend, nullptr);
        EXPECT_EQ(drawn(host_->sameContext(3)), goodDrawing);
    }
}

TEST_F(HostileHost, AnyPayloadBetweenTwoGoodFramesOnlyCostsItsOwnFrame)
{
    struct NoConversion {};
    struct Row {
        char const* name;
        SwAny payload;
    };
    std::vector<Row> const rows{
        {"empty", SwAny()},
        {"object without a value", SwAny::fromRawPointer(SwAny::nameOf<SwJsonObject>(), nullptr)},
        {"unknown type without a value", SwAny::fromRawPointer("type of nobody", nullptr)},
        {"integer", SwAny(42)},
        {"array", SwAny(SwJsonArray{1})},
        {"text that is no JSON", SwAny(std::string("\xff\x00{", 3))},
        {"cut JSON", SwAny(std::string(R"({"a":)"))},
        {"list", SwAny(std::vector<std::string>{"a"})},
        {"unknown type", SwAny(NoConversion())},
    };
    std::string const goodDrawing = drawn(host_->context());
    std::uint64_t frame = 1;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        TestHost bad(1280, 720);
        bad.deliver(row.payload);
        plugin_->init(bad.init());
        testing::internal::CaptureStderr();
        EXPECT_EQ(drawn(bad.nextFrame(++frame)), "");
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(journal().text(), "payload " + std::to_string(frame) + " telemetry\n");
        plugin_->init(host_->init());
        test_clock::advanceNs(test_clock::kNsPerMs);
        EXPECT_EQ(drawn(host_->nextFrame(++frame)), goodDrawing);
    }
}

TEST_F(HostileHost, APictureThatChangesItsSizeBetweenFramesIsDrawnInItsOwnSize)
{
    for (unsigned const height : {720U, 1080U, 2U, 1U, 4320U, 720U}) {
        SCOPED_TRACE(height);
        host_->width = height * 2;
        host_->height = height;
        std::string const sameFromTheStart = [&] {
            StanagOverlayPlugin fresh;
            fresh.init(host_->init());
            fresh.setConfig(kConfig);
            return hostRequests(fresh, host_->nextFrame(2), kDrawing);
        }();
        EXPECT_EQ(drawn(host_->nextFrame(2)), sameFromTheStart);
    }
}

TEST_F(HostileHost, AMappingThatFailsOnEverySecondFrameCostsOnlyThoseFrames)
{
    std::string const goodDrawing = drawn(host_->context());
    for (std::uint64_t frame = 2; frame < 10; ++frame) {
        SCOPED_TRACE(frame);
        bool const fails = frame % 2 == 0;
        host_->backend.mapsTo = fails ? std::optional<MappedNV12>(MappedNV12{}) : std::nullopt;
        EXPECT_EQ(drawn(host_->nextFrame(frame)), fails ? "" : goodDrawing);
    }
}

TEST_F(HostileHost, ATextThatCannotBeMeasuredComesBackWhenItCan)
{
    std::string const goodDrawing = drawn(host_->context());
    recording::controls(host_->painter).measureFails = true;
    drawn(host_->nextFrame(2));
    EXPECT_EQ(journal().count("draw"), 0U);
    recording::controls(host_->painter).measureFails = false;
    EXPECT_EQ(drawn(host_->nextFrame(3)), goodDrawing);
}
