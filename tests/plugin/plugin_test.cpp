// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's shell: identity, registration and the configuration entry points.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <class_loader/class_loader.hpp>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

/// The list of keys that the plugin publishes.
std::vector<std::string> publishedKeys(StanagOverlayPlugin& plugin)
{
    SwJsonObject const schema = jsonObject(plugin.getConfigList());
    std::vector<std::string> keys;
    for (SwJsonValue const& key : schema["properties"].toObject()["availableKeys"].toObject()["default"].toArray()) {
        keys.push_back(key.toString());
    }
    return keys;
}

using Keys = std::vector<std::string>;

/// The plugin's records of its blocks. They are private: only an explicit instantiation may name them.
using Runtimes = std::vector<stanag_overlay::OverlayRuntime>;
Runtimes StanagOverlayPlugin::*runtimesMember();
template <Runtimes StanagOverlayPlugin::*Member>
struct RuntimesAccess {
    friend Runtimes StanagOverlayPlugin::*runtimesMember() { return Member; }
};
template struct RuntimesAccess<&StanagOverlayPlugin::runtimes_>;

Runtimes& runtimesOf(StanagOverlayPlugin& plugin)
{
    return plugin.*runtimesMember();
}

}  // namespace

TEST(Plugin, NameIsTheRegisteredClassName)
{
    EXPECT_STREQ(StanagOverlayPlugin().getName(), "StanagOverlayPlugin");
}

TEST(Plugin, UuidIsThePrefixAndTheAddressInDecimal)
{
    StanagOverlayPlugin const plugin;
    EXPECT_EQ(plugin.getUuid(), "stanagoverlay-" + std::to_string(reinterpret_cast<std::uintptr_t>(&plugin)));
    EXPECT_EQ(plugin.getUuid().find_first_not_of("0123456789", std::strlen("stanagoverlay-")), std::string::npos);
}

TEST(Plugin, UuidIsStableAndUniquePerInstance)
{
    StanagOverlayPlugin const one;
    StanagOverlayPlugin const other;
    EXPECT_EQ(one.getUuid(), one.getUuid());
    EXPECT_NE(one.getUuid(), other.getUuid());
}

TEST(Plugin, InputTypesHoldExactlyOneType)
{
    EXPECT_EQ(StanagOverlayPlugin().input_types(), std::vector<std::string>{"stanag.v1"});
}

TEST(Plugin, InputRequirementsAreTheTypesNoneRequired)
{
    auto const requirements = StanagOverlayPlugin().input_requirements();
    ASSERT_EQ(requirements.size(), 1U);
    EXPECT_EQ(requirements[0].type, "stanag.v1");
    EXPECT_FALSE(requirements[0].required);
}

TEST(Plugin, InputRequirementsFollowTheInputTypesOfADerivedPlugin)
{
    class TwoTypes : public StanagOverlayPlugin {
    public:
        std::vector<std::string> input_types() const override { return {"b", "a"}; }
    };
    auto const requirements = TwoTypes().input_requirements();
    ASSERT_EQ(requirements.size(), 2U);
    EXPECT_EQ(requirements[0].type, "b");
    EXPECT_EQ(requirements[1].type, "a");
    EXPECT_FALSE(requirements[0].required || requirements[1].required);
}

TEST(Plugin, InputRequirementsBelongToRenderBase)
{
    using OfRenderBase = std::vector<RenderInputRequirement> (RenderBase::*)() const;
    EXPECT_TRUE((std::is_same_v<decltype(&StanagOverlayPlugin::input_requirements), OfRenderBase>));
    EXPECT_TRUE((std::is_base_of_v<IRenderPlugin, RenderBase>));
    EXPECT_TRUE((std::is_base_of_v<RenderBase, StanagOverlayPlugin>));
}

TEST(Plugin, DefaultConstructibleAndVirtuallyDeletable)
{
    EXPECT_TRUE(std::is_default_constructible_v<StanagOverlayPlugin>);
    std::unique_ptr<IRenderPlugin> const plugin = std::make_unique<StanagOverlayPlugin>();
    EXPECT_STREQ(plugin->getName(), "StanagOverlayPlugin");
}

TEST(Plugin, RegistersItsFactoryUnderClassAndBaseName)
{
    auto const& factories = class_loader::impl::getFactoryMapForBaseClass<IRenderPlugin>();
    ASSERT_EQ(factories.count("StanagOverlayPlugin"), 1U);
    auto const* factory = factories.at("StanagOverlayPlugin");
    EXPECT_EQ(factory->className(), "StanagOverlayPlugin");
    EXPECT_EQ(factory->baseClassName(), "IRenderPlugin");
}

TEST(Plugin, InitWithNullPointersIsTrueAndRenderThenDoesNothing)
{
    TestHost host;
    host.deliver(R"({"a":1})");
    struct Row {
        char const* name;
        RenderInit init;
    };
    for (Row const& row : {Row{"both null", {nullptr, nullptr}}, Row{"no painter", {&host.backend, nullptr}},
                           Row{"no backend", {nullptr, &host.painter}}}) {
        SCOPED_TRACE(row.name);
        StanagOverlayPlugin plugin;
        plugin.setConfig(R"({"overlay":[{"formatString":"x"}]})");
        EXPECT_TRUE(plugin.init(row.init));
        plugin.render(host.context());
        EXPECT_EQ(recording::journal().text(), "");
    }
}

TEST(Plugin, RenderWithoutInitDoesNothing)
{
    TestHost host;
    host.deliver(R"({"a":1})");
    StanagOverlayPlugin plugin;
    plugin.render(host.context());
    EXPECT_EQ(recording::journal().text(), "");
}

TEST(Plugin, LaterInitReplacesBothPointers)
{
    TestHost first;
    TestHost second;
    second.deliver(R"({"a":1})");
    recording::Backend backend("later");
    StanagOverlayPlugin plugin;
    plugin.setConfig(R"({"overlay":[{"formatString":"x"}]})");
    plugin.init(first.init());
    EXPECT_TRUE(plugin.init({&backend, &second.painter}));
    recording::controls(second.painter).pen = {9, 8, 7, 6};
    plugin.render(second.context());
    EXPECT_EQ(recording::journal().text({"map", "setPen 9"}), "map later 1\nsetPen 9 8 7 6\n");
}

TEST(PluginConfig, ConfigurationMayComeBeforeInit)
{
    TestHost host;
    host.deliver(R"({"a":1})");
    StanagOverlayPlugin plugin;
    plugin.setConfig(R"({"overlay":[{"formatString":"x"}]})");
    plugin.init(host.init());
    plugin.render(host.context());
    EXPECT_EQ(recording::journal().count("drawText"), 1U);
}

TEST(PluginConfig, NoKeysBeforeTheFirstFrame)
{
    StanagOverlayPlugin plugin;
    EXPECT_EQ(publishedKeys(plugin), Keys{});
}

TEST(PluginConfig, KeysOfTheLastPayloadInByteOrder)
{
    TestHost host;
    host.deliver(R"({"sensor_lat_deg":1.5,"heading_deg":2})");
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.render(host.context());
    EXPECT_EQ(publishedKeys(plugin), (Keys{"heading_deg", "sensor_lat_deg"}));
}

TEST(PluginConfig, KeysStayOverAFrameWithoutPayload)
{
    TestHost host;
    host.deliver(R"({"a":1,"b":2})");
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.render(host.context());
    host.deliver("{}");
    plugin.render(host.nextFrame(2));
    EXPECT_EQ(publishedKeys(plugin), (Keys{"a", "b"}));
}

TEST(PluginConfig, KeysFollowThePayloadFromFrameToFrame)
{
    struct Row {
        char const* name;
        char const* payload;
        Keys expected;
    };
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    std::uint64_t frame = 0;
    for (Row const& row :
         {Row{"first", R"({"b":1,"d":1})", {"b", "d"}}, Row{"same", R"({"b":2,"d":3})", {"b", "d"}},
          Row{"one in front", R"({"a":1,"b":1,"d":1})", {"a", "b", "d"}}, Row{"others", R"({"c":1,"x":1})", {"c", "x"}},
          Row{"fewer", R"({"x":1})", {"x"}}, Row{"upper case first", R"({"a":1,"B":1})", {"B", "a"}},
          Row{"the empty key is left out", R"({"":1,"k":1})", {"k"}}}) {
        SCOPED_TRACE(row.name);
        host.deliver(row.payload);
        plugin.render(host.nextFrame(++frame));
        EXPECT_EQ(publishedKeys(plugin), row.expected);
    }
}

TEST(PluginConfig, KeysFollowAPayloadWhosePictureCannotBeDrawnOn)
{
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());

    host.deliver(R"({"a":1})");
    host.backend.mapsTo = MappedNV12{};
    plugin.render(host.nextFrame(1));
    EXPECT_EQ(publishedKeys(plugin), Keys{"a"});

    host.deliverBy([&host](std::uint64_t, std::string const&) {
        host.context().picture.reset("/camera", 1, nullptr, host.pool, {});
        return SwAny(jsonObject(R"({"b":1})"));
    });
    EXPECT_THROW(plugin.render(host.nextFrame(2)), std::runtime_error);
    EXPECT_EQ(publishedKeys(plugin), Keys{"b"});
}

TEST(PluginConfig, SetConfigKeepsKeys)
{
    TestHost host;
    host.deliver(R"({"a":1})");
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.render(host.context());
    plugin.setConfig(R"({"overlay":[]})");
    EXPECT_EQ(publishedKeys(plugin), Keys{"a"});
}

TEST(PluginConfig, SetConfigKeepsIdentifierDebugAndMissCount)
{
    TestHost host;
    host.deliver("{}");
    test_clock::setNowNs(1);
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.enableDebug(true);
    std::string const uuid = plugin.getUuid();
    testing::internal::CaptureStderr();
    plugin.render(host.context());
    plugin.setConfig(R"({"overlay":[{}]})");
    test_clock::advanceNs(2000 * test_clock::kNsPerMs);
    plugin.render(host.nextFrame(2));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[StanagOverlay][Fallback] frame=1 decision=skip miss_count=1 providers_missing=0 "
              "providers_using_lookback=0\n"
              "[StanagOverlay][Fallback] frame=2 decision=skip miss_count=2 providers_missing=0 "
              "providers_using_lookback=0\n");
    EXPECT_EQ(plugin.getUuid(), uuid);
}

TEST(PluginConfig, TheSameTextAgainExpandsAllTemplatesAnew)
{
    constexpr char const* kConfig = R"({"overlay":[{"formatString":"%v","updateEveryNFrames":100}]})";
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(kConfig);
    auto const drawnAt = [&](std::uint64_t frame, char const* payload) {
        host.deliver(payload);
        recording::journal().clear();
        plugin.render(host.nextFrame(frame));
        return recording::journal().text({"drawText"});
    };
    EXPECT_EQ(drawnAt(1, R"({"v":1})"), "drawText 10 10 16 0 0 \"1\" on 1920x1080\n");
    EXPECT_EQ(drawnAt(2, R"({"v":2})"), "drawText 10 10 16 0 0 \"1\" on 1920x1080\n");
    plugin.setConfig(kConfig);
    EXPECT_EQ(drawnAt(3, R"({"v":3})"), "drawText 10 10 16 0 0 \"3\" on 1920x1080\n");
}

TEST(PluginConfig, AnotherNumberOfBlocksExpandsAllTemplatesAnew)
{
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    std::string const block = R"({"formatString":"%v","updateEveryNFrames":100})";
    std::uint64_t frame = 0;
    for (std::string const& blocks : {block, block + "," + block, block}) {
        plugin.setConfig("{\"overlay\":[" + blocks + "]}");
        ++frame;
        host.deliver(SwAny(SwJsonObject{{"v", static_cast<int>(frame)}}));
        recording::journal().clear();
        plugin.render(host.nextFrame(frame));
        std::string const drawn = "drawText 10 10 16 0 0 \"" + std::to_string(frame) + "\" on 1920x1080\n";
        EXPECT_EQ(recording::journal().text({"drawText"}), frame == 2 ? drawn + drawn : drawn);
    }
}

// No call brings the two lists out of step; a frame must not trust that.
TEST(PluginConfig, AFrameThatFindsAnotherNumberOfRecordsReplacesThemAll)
{
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(R"({"overlay":[{"formatString":"%v","updateEveryNFrames":100}]})");
    for (std::size_t const records : {std::size_t{2}, std::size_t{0}}) {
        SCOPED_TRACE(records);
        auto& runtimes = runtimesOf(plugin);
        runtimes.resize(records);
        for (auto& runtime : runtimes) {
            runtime.text = "stale";
            runtime.lastUpdateFrame = 1;
        }
        host.deliver(R"({"v":7})");
        recording::journal().clear();
        plugin.render(host.nextFrame(2));
        EXPECT_EQ(recording::journal().text({"drawText"}), "drawText 10 10 16 0 0 \"7\" on 1920x1080\n");
        EXPECT_EQ(runtimes.size(), 1U);
    }
}

TEST(PluginConfig, ANewConfigurationForgetsConditionTimesAndHeldValues)
{
    constexpr char const* kConfig = R"({"overlay":[
        {"formatString":"held %v","formats":{"v":{"holdLastMs":600000}}},
        {"formatString":"limited %w","formats":{"w":{"refreshEveryMs":600000}}},
        {"formatString":"kept","condition":{"key":"v","keepAfterMs":600000}}]})";
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(kConfig);
    test_clock::setNowNs(1000);
    auto const drawnAt = [&](std::uint64_t frame, char const* payload) {
        host.deliver(payload);
        recording::journal().clear();
        plugin.render(host.nextFrame(frame));
        return recording::journal().text({"drawText"});
    };
    EXPECT_EQ(drawnAt(1, R"({"v":1,"w":1})"), "drawText 10 10 16 0 0 \"held 1\" on 1920x1080\n"
                                              "drawText 10 10 16 0 0 \"limited 1\" on 1920x1080\n"
                                              "drawText 10 10 16 0 0 \"kept\" on 1920x1080\n");
    EXPECT_EQ(drawnAt(2, R"({"w":2})"), "drawText 10 10 16 0 0 \"held 1\" on 1920x1080\n"
                                        "drawText 10 10 16 0 0 \"limited 1\" on 1920x1080\n"
                                        "drawText 10 10 16 0 0 \"kept\" on 1920x1080\n");
    plugin.setConfig(kConfig);
    EXPECT_EQ(drawnAt(3, R"({"w":3})"), "drawText 10 10 16 0 0 \"held --\" on 1920x1080\n"
                                        "drawText 10 10 16 0 0 \"limited 3\" on 1920x1080\n");
}

TEST(PluginConfig, TwoBlocksWithTheSameTemplateKeepSeparateHeldValues)
{
    TestHost host;
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    // The second block shows only while "on" is there, so it has not seen the first value.
    plugin.setConfig(R"({"overlay":[
        {"formatString":"%v","formats":{"v":{"holdLastMs":1000}}},
        {"formatString":"%v","formats":{"v":{"holdLastMs":1000}},"condition":{"key":"on"}}]})");
    test_clock::setNowNs(1000);
    host.deliver(R"({"v":1})");
    plugin.render(host.nextFrame(1));
    host.deliver(R"({"on":1})");
    recording::journal().clear();
    plugin.render(host.nextFrame(2));
    EXPECT_EQ(recording::journal().text({"drawText"}), "drawText 10 10 16 0 0 \"1\" on 1920x1080\n"
                                                       "drawText 10 10 16 0 0 \"--\" on 1920x1080\n");
}

TEST(PluginConfig, UnreadableTextLeavesNothingToDraw)
{
    TestHost host;
    host.deliver(R"({"v":1})");
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(R"({"overlay":[{"formatString":"x"}]})");
    plugin.setConfig("{");
    plugin.render(host.context());
    EXPECT_EQ(recording::journal().count("draw"), 0U);
}
