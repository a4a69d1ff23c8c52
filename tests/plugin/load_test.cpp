// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The built plugin library, opened as a host does: through class_loader, with the plugin's own code nowhere
// in this program. The imaging calls of the plugin meet the recording library that this program exports.
#include "FrameTime.h"
#include "IRenderPlugin.h"

#include "recording_imaging.h"
#include "test_host.h"

#include <class_loader/class_loader.hpp>
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using class_loader::ClassLoader;
using recording::journal;
using Names = std::vector<std::string>;

constexpr char const* kPluginPath = OVERLAY_PLUGIN_PATH;

/// Whether the library is in this process, asked of the dynamic linker itself.
bool isInProcess()
{
    void* const handle = dlopen(kPluginPath, RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

std::string drawnBy(IRenderPlugin& plugin, TestHost& host)
{
    plugin.init(host.init());
    plugin.setConfig(kOneBlockConfig);
    return hostRequests(plugin, host.nextFrame(1));
}

/// A type that only this host knows.
struct HostTelemetry {
    int value = 0;
};

}  // namespace

TEST(Load, ListsExactlyOneClassAndSaysNothing)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    Names classes;
    {
        ClassLoader const loader(kPluginPath);
        classes = loader.getAvailableClasses<IRenderPlugin>();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(classes, Names{"StanagOverlayPlugin"});
}

TEST(Load, CreatesUsesAndDeletes)
{
    ClassLoader loader(kPluginPath);
    auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    EXPECT_STREQ(plugin->getName(), "StanagOverlayPlugin");
    EXPECT_EQ(plugin->getUuid(), "stanagoverlay-" + std::to_string(reinterpret_cast<std::uintptr_t>(plugin.get())));
    EXPECT_EQ(plugin->input_types(), Names{"stanag.v1"});
    ASSERT_EQ(plugin->input_requirements().size(), 1U);
    TestHost host;
    host.deliver(kOneBlockTelemetry);
    EXPECT_EQ(drawnBy(*plugin, host), kOneBlockFrame);
    EXPECT_NE(plugin->getConfigList().find(R"("default": ["v"])"), std::string::npos);
}

TEST(Load, IsDeletedByTheHostThroughTheVirtualDestructor)
{
    ClassLoader loader(kPluginPath);
    auto owned = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    owned->setConfig(kOneBlockConfig);
    owned.reset();
    auto const shared = loader.createInstance<IRenderPlugin>("StanagOverlayPlugin");
    EXPECT_STREQ(shared->getName(), "StanagOverlayPlugin");
}

TEST(Load, UnloadsForRealAndLoadsAgain)
{
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        ClassLoader loader(kPluginPath);
        {
            auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
            TestHost host;
            host.deliver(kOneBlockTelemetry);
            EXPECT_EQ(drawnBy(*plugin, host), kOneBlockFrame);
        }
        EXPECT_TRUE(isInProcess());
        EXPECT_EQ(loader.unloadLibrary(), 0);
        EXPECT_FALSE(loader.isLibraryLoaded());
        EXPECT_FALSE(isInProcess());
        EXPECT_EQ(loader.getAvailableClasses<IRenderPlugin>(), Names{});
    }
}

TEST(Load, PayloadsAndContextsOutliveThePlugin)
{
    TestHost host;
    host.deliver(kOneBlockTelemetry);
    {
        ClassLoader loader(kPluginPath);
        auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
        drawnBy(*plugin, host);
    }
    EXPECT_FALSE(isInProcess());
    journal().clear();
    host.nextFrame(2);  // ends the mapping that the plugin has made
    EXPECT_EQ(journal().text(), "unmap recording 1\nend of target\n");
    EXPECT_EQ(SwAny(jsonObject(R"({"v":7})")).toString().toStdString(), R"({"v": 7})");
}

TEST(Load, TheLoadedPluginKnowsTheHostsConversions)
{
    SwAny::registerConversion<HostTelemetry, SwJsonObject>([](HostTelemetry const& telemetry) {
        SwJsonObject object;
        object["v"] = telemetry.value;
        return object;
    });
    ClassLoader loader(kPluginPath);
    auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    TestHost host;
    host.deliver(SwAny(HostTelemetry{7}));
    EXPECT_EQ(drawnBy(*plugin, host), kOneBlockFrame);
}

TEST(Load, TheLoadedPluginRunsByTheHostsFrameTime)
{
    ClassLoader loader(kPluginPath);
    auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    TestHost host;
    host.deliver(kOneBlockTelemetry);
    plugin->init(host.init());
    plugin->setConfig(R"({"overlay":[{"formatString":"v=%v","condition":{"key":"v","showAfterMs":600000}}]})");
    constexpr std::uint64_t kTenMinutesNs = 600000000000;
    auto const drawnAt = [&](std::uint64_t ns) {
        FrameTime const time(ns);
        return hostRequests(*plugin, host.nextFrame(1), {"drawText"});
    };
    EXPECT_EQ(drawnAt(1000), "");
    EXPECT_EQ(drawnAt(1000 + kTenMinutesNs - 1), "");
    EXPECT_EQ(drawnAt(1000 + kTenMinutesNs), "drawText 10 10 16 0 0 \"v=7\" on 1920x1080\n");
}

TEST(Load, MissingLibraryIsTheLoadersOwnException)
{
    EXPECT_THROW(ClassLoader("/nowhere/libstanag_overlay_plugin.so"), class_loader::LibraryLoadException);
}

TEST(Load, UnknownClassIsTheLoadersOwnException)
{
    ClassLoader loader(kPluginPath);
    try {
        loader.createUniqueInstance<IRenderPlugin>("NoSuchPlugin");
        FAIL() << "no exception";
    } catch (class_loader::CreateClassException const& error) {
        EXPECT_STREQ(error.what(), "Could not create instance of type NoSuchPlugin");
    }
}
