// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The frame's time as the host gives it: durations run by it, and the clock is not even asked.
#include "FrameTime.h"
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::uint64_t kMs = 1000000;
constexpr std::uint64_t kHour = 3600000 * kMs;

/// A plugin that shows "v=7" once the condition on v has held for 200 ms, and for 100 ms after it.
class Seat {
public:
    Seat()
    {
        plugin_.init(host_.init());
        plugin_.setConfig(R"({"overlay":[{"formatString":"v=%v",
            "condition":{"key":"v","showAfterMs":200,"keepAfterMs":100}}]})");
    }

    /// Whether a frame with v, or with another key, shows the block.
    bool shows(bool withKey)
    {
        host_.deliver(withKey ? R"({"v":7})" : R"({"other":1})");
        return !hostRequests(plugin_, host_.nextFrame(++frame_), {"drawText"}).empty();
    }

private:
    TestHost host_;
    StanagOverlayPlugin plugin_;
    std::uint64_t frame_ = 0;
};

bool showsAt(Seat& seat, std::uint64_t ns, bool withKey = true)
{
    FrameTime const time(ns);
    return seat.shows(withKey);
}

}  // namespace

TEST(FrameTime, IsWhatDurationsRunBy)
{
    test_clock::setNowNs(5);
    Seat seat;
    EXPECT_FALSE(showsAt(seat, kHour));
    EXPECT_FALSE(showsAt(seat, kHour + 200 * kMs - 1));
    EXPECT_TRUE(showsAt(seat, kHour + 200 * kMs));
    EXPECT_TRUE(showsAt(seat, kHour + 300 * kMs, false));
    EXPECT_FALSE(showsAt(seat, kHour + 300 * kMs + 1, false));
    EXPECT_EQ(test_clock::readings(), 0) << "the clock is not asked";
}

TEST(FrameTime, WithoutOneTheSteadyClockRules)
{
    test_clock::setNowNs(kHour);
    Seat seat;
    EXPECT_FALSE(seat.shows(true));
    EXPECT_EQ(test_clock::readings(), 1) << "one reading per frame";
    test_clock::setNowNs(kHour + 200 * kMs);
    EXPECT_TRUE(seat.shows(true));
    EXPECT_EQ(test_clock::readings(), 1);
}

TEST(FrameTime, EndsWithItsScopeAndNests)
{
    EXPECT_EQ(FrameTime::given(), 0U);
    {
        FrameTime const outer(10);
        EXPECT_EQ(FrameTime::given(), 10U);
        {
            FrameTime const inner(7);
            EXPECT_EQ(FrameTime::given(), 7U);
        }
        EXPECT_EQ(FrameTime::given(), 10U);
        try {
            FrameTime const thrown(8);
            throw 1;
        } catch (int) {
            EXPECT_EQ(FrameTime::given(), 10U);
        }
    }
    EXPECT_EQ(FrameTime::given(), 0U);
}

TEST(FrameTime, OfZeroIsTheFirstMoment)
{
    test_clock::setNowNs(kHour);
    FrameTime const time(0);
    EXPECT_EQ(FrameTime::given(), 1U);
    Seat seat;
    EXPECT_FALSE(seat.shows(true));
    EXPECT_TRUE(showsAt(seat, 200 * kMs + 1));
    EXPECT_EQ(test_clock::readings(), 0);
}

TEST(FrameTime, BelongsToItsThread)
{
    FrameTime const here(kHour);
    std::uint64_t there = 1;
    std::thread([&there] { there = FrameTime::given(); }).join();
    EXPECT_EQ(there, 0U);
}

TEST(FrameTime, OfSeveralInstancesOnSeveralThreadsIsEachTheirOwn)
{
    constexpr std::uint64_t kThreads = 8;
    constexpr std::uint64_t kFrames = 202;
    std::vector<std::unique_ptr<TestHost>> hosts;
    std::generate_n(std::back_inserter(hosts), kThreads, [] { return std::make_unique<TestHost>(); });
    recording::journal().clear();
    std::atomic<std::uint64_t> ready{0};
    std::vector<std::thread> threads;
    for (std::uint64_t number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            TestHost& host = *hosts[number];
            StanagOverlayPlugin plugin;
            plugin.init(host.init());
            plugin.setConfig(R"({"overlay":[{"formatString":"thread )" + std::to_string(number) +
                             R"( frame %f","condition":{"key":"f","showAfterMs":200}}]})");
            ++ready;
            while (ready < kThreads) {
                std::this_thread::yield();
            }
            // The time runs at another speed on each thread, so the block appears in another frame.
            for (std::uint64_t frame = 0; frame < kFrames; ++frame) {
                host.deliver(("{\"f\":" + std::to_string(frame) + "}").c_str());
                RenderContext& context = host.nextFrame(frame + 1);
                FrameTime const time((number + 1) * (kHour + frame * kMs));
                plugin.render(context);
                std::this_thread::yield();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::string const drawn = recording::journal().text({"drawText"});
    constexpr std::array<std::uint64_t, kThreads> kFirst = {200, 100, 67, 50, 40, 34, 29, 25};
    for (std::uint64_t number = 0; number < kThreads; ++number) {
        auto const shows = [&](std::uint64_t frame) {
            return drawn.find("\"thread " + std::to_string(number) + " frame " + std::to_string(frame) + "\"") !=
                   std::string::npos;
        };
        EXPECT_FALSE(shows(kFirst[number] - 1)) << number;
        EXPECT_TRUE(shows(kFirst[number])) << number;
        EXPECT_TRUE(shows(kFrames - 1)) << number;
    }
}
