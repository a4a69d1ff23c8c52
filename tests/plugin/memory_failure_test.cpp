// Memory that runs out at any single allocation: the host gets std::bad_alloc, nothing leaks, and with memory again
// the next frame is drawn as if nothing had happened. This program replaces operator new to make it so.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <utility>

namespace {

using recording::journal;

/// Allocations until one fails; 0: none does.
std::size_t g_left = 0;
long g_blocks = 0;

/// Neither this nor `give` is inlined: seen together with its callers, the pair looks mismatched to the compiler.
[[gnu::noinline]] void* take(std::size_t size, std::size_t alignment)
{
    if (g_left != 0 && --g_left == 0) {
        throw std::bad_alloc();
    }
    std::size_t const rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++g_blocks;
    return memory;
}

[[gnu::noinline]] void give(void* memory) noexcept
{
    if (memory != nullptr) {
        --g_blocks;
        std::free(memory);
    }
}

constexpr std::size_t kOrdinary = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t size)
{
    return take(size, kOrdinary);
}
void* operator new[](std::size_t size)
{
    return take(size, kOrdinary);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return take(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    give(memory);
}
void operator delete[](void* memory) noexcept
{
    give(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    give(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    give(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept
{
    give(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    give(memory);
}

namespace {

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
            return key == "text" ? SwAny(std::string(R"({"a":1,"nested":[[{"x":["a text beyond short strings"]}]]})"))
                                 : SwAny(SwJsonObject{{"b", 1700000000}, {"c", SwJsonArray{1, "two", nullptr}}});
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
        host.nextFrame(2);
        journal().clear();
        plugin.render(host.context());
        return journal().text({"setPenThickness", "setPenRGB", "measure", "draw"});
    }

    TestHost host;
    StanagOverlayPlugin plugin;
};

/// Runs a stage whose allocation number `failing` fails; gives what the next frame draws.
std::string drawnAfterFailure(std::size_t failing, bool& reachedHost)
{
    Stage stage;
    reachedHost = false;
    g_left = failing;
    try {
        stage.run();
    } catch (std::bad_alloc const&) {
        reachedHost = true;
    }
    g_left = 0;
    return stage.drawnAfterwards();
}

std::size_t allocationsOfAFrame()
{
    constexpr std::size_t kPlenty = 1000000;
    Stage stage;
    g_left = kPlenty;
    stage.run();
    return kPlenty - std::exchange(g_left, 0);
}

}  // namespace

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
        long blocks = 0;
        for (int round = 0; round < 2; ++round) {
            blocks = g_blocks;
            std::string const drawn = drawnAfterFailure(failing, reachedHost);
            EXPECT_EQ(drawn, good);
            journal().clear();
        }
        ASSERT_EQ(g_blocks, blocks);
        thrown += reachedHost ? 1 : 0;
    }
    // Only while a payload's text is read does a failure stay inside: that payload then counts as empty.
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
    };
    work();
    constexpr std::size_t kPlenty = 10000000;
    g_left = kPlenty;
    work();
    std::size_t const allocations = kPlenty - std::exchange(g_left, 0);
    EXPECT_GT(allocations, 300U);
    testing::internal::CaptureStderr();
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        long blocks = 0;
        // As above, the second run.
        for (int round = 0; round < 2; ++round) {
            blocks = g_blocks;
            g_left = failing;
            try {
                work();
            } catch (std::bad_alloc const&) {
            }
            g_left = 0;
        }
        ASSERT_EQ(g_blocks, blocks) << "allocation " << failing;
    }
    // Encryption and decryption turn every failure into a line.
    std::string const lines = testing::internal::GetCapturedStderr();
    EXPECT_NE(lines.find("Encryption error: std::bad_alloc\n"), std::string::npos);
    EXPECT_NE(lines.find("Decryption error: std::bad_alloc\n"), std::string::npos);
}
