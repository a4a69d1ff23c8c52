// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Many frames with keys that never come twice, through the library as it is shipped: what it holds afterwards is
// to the byte what it held after the first thousand.
#include "IRenderPlugin.h"

#include "changing_telemetry.h"
#include "live_memory.h"
#include "recording_imaging.h"
#include "test_host.h"

#include <class_loader/class_loader.hpp>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t kFrames = 100000;
constexpr std::uint64_t kSampleEvery = 10 * changing_telemetry::kPeriod;

}  // namespace

TEST(Soak, KeysThatNeverComeTwiceLeaveNothingBehind)
{
    class_loader::ClassLoader loader(OVERLAY_PLUGIN_PATH);
    auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    TestHost host(320, 180);
    host.deliverBy([](std::uint64_t frame, std::string const& producer) {
        return SwAny(changing_telemetry::payload(producer == "first" ? 0 : 1, frame));
    });
    host.addInput({"first", "", 0, false});
    host.addInput({"second", "", 0, false});
    plugin->init(host.init());

    std::vector<std::size_t> samples;
    samples.reserve(kFrames / kSampleEvery + 1);
    std::uint64_t drawn = 0;
    for (std::uint64_t frame = 0; frame <= kFrames; ++frame) {
        if (frame % changing_telemetry::kPeriod == changing_telemetry::kPeriod / 2) {
            plugin->setConfig(changing_telemetry::config());
        }
        plugin->render(host.nextFrame(frame));
        drawn += recording::journal().count("drawText");
        recording::journal().clear();
        if (frame % kSampleEvery == changing_telemetry::kPeriod) {
            samples.push_back(live_memory::newBytes());
        }
    }
    EXPECT_GT(drawn, kFrames * 2) << "the blocks were drawn";
    ASSERT_EQ(samples.size(), kFrames / kSampleEvery);
    EXPECT_EQ(samples, std::vector<std::size_t>(samples.size(), samples.front()));
}
