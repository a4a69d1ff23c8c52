// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Memory that runs out at any single allocation: the host gets std::bad_alloc, but for a payload that cannot be taken,
// which counts as empty; nothing leaks, and with memory again the next frame is drawn as if nothing had happened.
#include "StanagOverlayPlugin.h"

#include "live_memory.h"
#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

using recording::journal;

constexpr char const* kConfig = R"({"overlay":[
    {"formatString":"a text that is longer than short strings: a=%a b=%{b}","condition":{"key":"a","keepAfterMs":10},
     "formats":{"a":{"holdLastMs":1000,"refreshEveryMs":1,"decimals":2,"invalidValues":["7","text"]},
                "b":{"date":true,"dateFormat":"%A %B","timestampUnit":"s","holdLastMs":1000}}},
    {}]})";

struct Stage {
    Stage()
    {
        test_clock::setNowNs(1000);
        host.deliverBy([](std::uint64_t, std::string const& key) {
            // Made before memory fails: the compiler's own way out of a half-made list is not what is tested.
            static std::string const text = R"({"a":1,"nested":[[{"x":["a text beyond short strings"]}]]})";
            static SwJsonObject const object = jsonObject(R"({"b":1700000000,"c":[1,"two",null]})");
            if (key == "text") {
                return SwAny(text);
            }
            return SwAny(object);
        });
        host.addInput({"text", "", 0, false});
        host.addInput({"object", "", 0, false});
        plugin.init(host.init());
    }

    /// One frame from its configuration on.
    void run()
    {
        plugin.setConfig(kConfig);
        plugin.render(host.context());
        plugin.getConfigList();
        plugin.getUuid();
    }
    std::string drawnAfterwards()
    {
        plugin.setConfig(kConfig);
        return hostRequests(plugin, host.nextFrame(2), {"setPenThickness", "setPenRGB", "measure", "draw"});
    }

    TestHost host;
    StanagOverlayPlugin plugin;
};

/// Runs a stage whose allocation number `failing` fails; gives what the next frame draws.
std::string drawnAfterFailure(std::size_t failing, bool& reachedHost)
{
    Stage stage;
    reachedHost = false;
    live_memory::failAllocation(failing);
    try {
        stage.run();
    } catch (std::bad_alloc const&) {
        reachedHost = true;
    }
    live_memory::failAllocation(0);
    return stage.drawnAfterwards();
}

std::size_t allocationsOfAFrame()
{
    Stage stage;
    std::size_t const before = live_memory::allocations();
    stage.run();
    return live_memory::allocations() - before;
}

/// What frame 2, which lacks "v", draws after frame 1 had it, when memory runs out at allocation number `failing`
/// of the new configuration in between; without one the first configuration stays.
std::string drawnAfterReplacing(std::string const& replacement, std::size_t failing = 0,
                                std::size_t* allocations = nullptr)
{
    test_clock::setNowNs(1000);
    TestHost host;
    host.deliver(R"({"v":7,"w":1})");
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    // Both blocks still show frame 1's text in frame 2: one because it is not due, one because it holds the value.
    plugin.setConfig(R"({"overlay":[{"formatString":"old %v","updateEveryNFrames":100},
        {"formatString":"old held %v","formats":{"v":{"holdLastMs":1000}}}]})");
    plugin.render(host.nextFrame(1));
    std::size_t const before = live_memory::allocations();
    if (!replacement.empty()) {
        live_memory::failAllocation(failing);
        try {
            plugin.setConfig(replacement);
        } catch (std::bad_alloc const&) {
        }
        live_memory::failAllocation(0);
    }
    if (allocations != nullptr) {
        *allocations = live_memory::allocations() - before;
    }
    host.deliver(R"({"w":1})");
    return hostRequests(plugin, host.nextFrame(2), {"drawText"});
}

std::size_t countOf(std::string const& part, std::string const& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

}  // namespace

TEST(MemoryFailure, AtAnyAllocationOfAConfigurationLeavesTheOldPluginOrTheNewOne)
{
    // As many blocks as before: their number does not show that they are others.
    std::string const replacement = R"({"overlay":[
        {"formatString":"new %v","textSize":30,"updateEveryNFrames":100},
        {"formatString":"new held %v","textSize":30,"formats":{"v":{"holdLastMs":1000},
            "a key that no short string holds":{"invalidValues":["and a text of that kind"]}}}]})";
    std::size_t allocations = 0;
    std::string const before = drawnAfterReplacing("");
    std::string const after = drawnAfterReplacing(replacement, 0, &allocations);
    EXPECT_EQ(before, R"(drawText 10 10 16 0 0 "old 7" on 1920x1080
drawText 10 10 16 0 0 "old held 7" on 1920x1080
)");
    EXPECT_EQ(after, R"(drawText 10 10 30 0 0 "new --" on 1920x1080
drawText 10 10 30 0 0 "new held --" on 1920x1080
)");
    EXPECT_GT(allocations, 10U);
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        EXPECT_EQ(drawnAfterReplacing(replacement, failing), before) << "allocation " << failing;
    }
}

TEST(MemoryFailure, AtAnyAllocationOfAFrameLeavesNothingWrong)
{
    bool reachedHost = false;
    std::string const good = drawnAfterFailure(0, reachedHost);
    EXPECT_NE(good.find("a=1"), std::string::npos) << good;
    journal().clear();
    std::size_t const allocations = allocationsOfAFrame();
    EXPECT_GT(allocations, 100U);
    std::size_t thrown = 0;
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        // The second run finds in place what is kept for later use: it must not add to it.
        std::size_t bytes = 0;
        for (int round = 0; round < 2; ++round) {
            bytes = live_memory::newBytes();
            std::string const drawn = drawnAfterFailure(failing, reachedHost);
            EXPECT_EQ(drawn, good);
            journal().clear();
        }
        ASSERT_EQ(live_memory::newBytes(), bytes);
        thrown += reachedHost ? 1 : 0;
    }
    // Only while a payload is copied, converted or read does a failure stay inside: it then counts as empty.
    EXPECT_GT(thrown, allocations / 2);
    EXPECT_LT(thrown, allocations);
}

TEST(MemoryFailure, AtAnyAllocationOfTheFrameworkLeaksNothing)
{
    std::string text = R"({"list":[1,2.5,"a text that is longer than short strings",true,null,[[[{"x":{}}]]]])";
    for (int member = 0; member < 40; ++member) {
        text += ",\"a member with a long name, number " + std::to_string(member) + "\":" + std::to_string(member);
    }
    text += "}";
    auto const work = [&text] {
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
        SwJsonValue copy = document.root();
        (*copy.editObject())["a new member that is longer than short strings"] = document.array();
        (*copy.editObject())["list"].editArray()->append(copy);
        copy.editObject()->erase("a member with a long name, number 20");
        SwString written;
        SwJsonDocument::generateJson(copy, written, true, 0, "pass phrase");
        SwAny const any(SwJsonDocument::fromJson(written, "pass phrase", error).object());
        SwAny const again = SwAny(any.toString()).convert<std::string>();
        SwString("%1 of a text that is longer than short strings").arg(again.toString()).split('l');
        SwString(text).encryptAES("pass phrase").decryptAES("pass phrase");
    };
    work();
    std::size_t const before = live_memory::allocations();
    work();
    std::size_t const allocations = live_memory::allocations() - before;
    EXPECT_GT(allocations, 300U);
    std::size_t thrown = 0;
    testing::internal::CaptureStderr();
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        std::size_t bytes = 0;
        // As above, the second run.
        for (int round = 0; round < 2; ++round) {
            bytes = live_memory::newBytes();
            live_memory::failAllocation(failing);
            try {
                work();
            } catch (std::bad_alloc const&) {
                ++thrown;
            }
            live_memory::failAllocation(0);
        }
        ASSERT_EQ(live_memory::newBytes(), bytes) << "allocation " << failing;
    }
    // Encryption and decryption of a single text turn every failure into a line, nothing else does.
    std::string const lines = testing::internal::GetCapturedStderr();
    std::size_t const told = countOf("cryption error: std::bad_alloc\n", lines);
    EXPECT_GT(countOf("Encryption error: std::bad_alloc\n", lines), 0U);
    EXPECT_GT(countOf("Decryption error: std::bad_alloc\n", lines), 0U);
    EXPECT_EQ(thrown + told, 2 * allocations);
}
