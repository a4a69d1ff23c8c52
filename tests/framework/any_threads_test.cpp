// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A program of its own, since the registry is filled once per process: eight threads ask for it at once.
#include "SwAny.h"

#include "test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(SwAnyThreads, TheRegistryIsFilledOnceByEightThreadsAtOnce)
{
    constexpr int kThreads = 8;
    std::atomic<int> ready{0};
    std::atomic<int> right{0};
    std::string const lines = framework_test::standardErrorOf([&] {
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                ++ready;
                while (ready < kThreads) {
                    std::this_thread::yield();
                }
                bool const registered = SwAny::registerAllType();
                SwAny const text = SwAny(i).convert<SwString>();
                SwAny const number = text.convert<int>();
                SwAny::registerConversion<int, SwJsonValue>([](int value) { return SwJsonValue(value); });
                SwAny const json = number.convert<SwJsonValue>();
                right += registered && number.get<int>() == i && json.get<SwJsonValue>().toInt() == i ? 1 : 0;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_TRUE(SwAny::registerAllType());
        EXPECT_EQ(SwAny::getConverters().size(), 27U);
    });
    EXPECT_EQ(right, kThreads);
    EXPECT_EQ(lines, "********************CALL ONCE NOT TWICE********************\n");
}
