// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The bounded way from the reading thread to the drawing one. Time is told, not measured, but where threads meet.
#include "media/live_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

namespace {

using media::LiveItem;
using media::LiveQueue;
using media::LiveTime;
using media::StreamKind;
using std::chrono::milliseconds;

LiveTime at(int ms)
{
    return LiveTime(std::chrono::hours(1) + milliseconds(ms));
}

LiveItem item(int ms, StreamKind kind, std::int64_t ticks, bool key = false)
{
    std::uint8_t const byte = 0;
    LiveItem made{at(ms), nullptr, media::makePacket({&byte, 1}, ticks), kind, {}};
    made.packet->flags = key ? AV_PKT_FLAG_KEY : 0;
    return made;
}

/// The items that wait as "v10 k11": kind and ticks.
std::string contents(LiveQueue& queue)
{
    std::string text;
    while (std::optional<LiveItem> const next = queue.pop(at(0))) {
        text += (text.empty() ? "" : " ") + std::string(next->kind == StreamKind::Video ? "v" : "k") +
                std::to_string(next->packet->pts);
    }
    return text;
}

TEST(LiveQueue, GivesItemsInTheirOrder)
{
    LiveQueue queue;
    queue.push(item(0, StreamKind::Video, 1, true));
    queue.push(item(1, StreamKind::Klv, 2));
    queue.push(item(1000, StreamKind::Video, 3));
    EXPECT_EQ(contents(queue), "v1 k2 v3") << "a whole second is not too long";
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST(LiveQueue, DropsPicturesThatWaitedForMoreThanASecondUpToTheNextKeyPicture)
{
    LiveQueue queue;
    queue.push(item(0, StreamKind::Video, 1, true));
    queue.push(item(10, StreamKind::Klv, 2));
    queue.push(item(900, StreamKind::Video, 3));
    queue.push(item(1001, StreamKind::Video, 4));
    queue.push(item(1002, StreamKind::Klv, 5));
    queue.push(item(1041, StreamKind::Video, 6, true));
    queue.push(item(1081, StreamKind::Video, 7));
    EXPECT_EQ(contents(queue), "k2 k5 v6 v7");
    EXPECT_EQ(queue.dropped(), 3U);
}

TEST(LiveQueue, TelemetryAloneDropsOldPicturesToo)
{
    LiveQueue queue;
    queue.push(item(0, StreamKind::Video, 1, true));
    queue.push(item(1500, StreamKind::Klv, 2));
    EXPECT_EQ(contents(queue), "k2");
    EXPECT_EQ(queue.dropped(), 1U);
}

TEST(LiveQueue, NeverHoldsMoreThanItsBound)
{
    LiveQueue queue;
    for (int number = 0; number < 20000; ++number) {
        queue.push(item(0, StreamKind::Klv, number));
    }
    std::string const text = contents(queue);
    EXPECT_EQ(text.rfind("k3616 ", 0), 0U) << "16384 of them";
}

TEST(LiveQueue, EndsWhenAllHasBeenTaken)
{
    LiveQueue queue;
    queue.push(item(0, StreamKind::Klv, 1));
    queue.close("gone");
    EXPECT_FALSE(queue.ended());
    EXPECT_EQ(contents(queue), "k1");
    EXPECT_TRUE(queue.ended());
    EXPECT_EQ(queue.failure(), "gone");
    EXPECT_FALSE(queue.pop(LiveTime::max()).has_value()) << "does not wait";
}

TEST(LiveQueue, HandsThingsFromThreadToThread)
{
    constexpr int kItems = 5000;
    LiveQueue queue;
    std::thread producer([&queue] {
        for (int number = 0; number < kItems; ++number) {
            queue.push(item(0, number % 3 == 0 ? StreamKind::Video : StreamKind::Klv, number, true));
        }
        queue.close();
    });
    int expected = 0;
    while (!queue.ended()) {
        if (std::optional<LiveItem> const next =
                queue.pop(std::chrono::steady_clock::now() + std::chrono::seconds(10))) {
            EXPECT_EQ(next->packet->pts, expected++);
        }
    }
    producer.join();
    EXPECT_EQ(expected, kItems);
}

}  // namespace
