// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Instances of the plugin on threads of their own: nothing is shared between them but the payload that the host
// hands to all. Made to be run under the thread sanitizer.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 8;
constexpr int kFrames = 60;

std::vector<std::string> sortedLines(std::string const& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// One host with one plugin.
struct Seat {
    TestHost host{1920, 1080};
    StanagOverlayPlugin plugin;
};

/// Runs `work` on each seat at once.
template <typename Work>
void atOnce(std::vector<std::unique_ptr<Seat>>& seats, Work work)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    threads.reserve(seats.size());
    for (std::size_t number = 0; number < seats.size(); ++number) {
        threads.emplace_back([&, number] {
            ++ready;
            while (ready < kThreads) {
                std::this_thread::yield();
            }
            work(*seats[number], static_cast<int>(number));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace

TEST(PluginThreads, EachInstanceDrawsItsOwnTexts)
{
    SwAny const shared(jsonObject(R"({"shared":{"list":[1,2,{"x":"text"}]},"heading_deg":271.5,"time":1700000000})"));
    SwAny const text(std::string(R"({"alt":120})"));
    std::vector<std::unique_ptr<Seat>> seats;
    std::generate_n(std::back_inserter(seats), kThreads, [] { return std::make_unique<Seat>(); });
    recording::journal().clear();
    atOnce(seats, [&](Seat& seat, int number) {
        seat.plugin.init(seat.host.init());
        seat.host.deliverBy(
            [&](std::uint64_t, std::string const& producer) { return producer == "text" ? text : shared; });
        seat.host.addInput({"object", "", 0, false});
        seat.host.addInput({"text", "", 0, false});
        for (int frame = 1; frame <= kFrames; ++frame) {
            std::string const id = std::to_string(number) + "_" + std::to_string(frame);
            seat.plugin.setConfig(R"({"overlay":[{"formatString":")" + id + R"( %heading_deg %alt %time %shared",
                "formats":{"heading_deg":{"decimals":1,"holdLastMs":10},"time":{"date":true,"timestampUnit":"s",
                "timezone":"local","dateFormat":"%A","refreshEveryMs":10}}}]})");
            seat.plugin.render(seat.host.nextFrame(static_cast<std::uint64_t>(frame)));
            seat.plugin.getConfigList();
        }
    });
    std::vector<std::string> expected;
    for (int number = 0; number < kThreads; ++number) {
        for (int frame = 1; frame <= kFrames; ++frame) {
            expected.push_back("drawText 10 10 16 0 0 \"" + std::to_string(number) + "_" + std::to_string(frame) +
                               " 271.5 120 Tuesday {}\" on 1920x1080");
        }
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sortedLines(recording::journal().text({"drawText"})), expected);
}
