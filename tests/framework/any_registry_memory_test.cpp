// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A program of its own, since the registry is filled once per process: memory runs out while it is filled.
#include "SwAny.h"

#include "live_memory.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <new>

TEST(SwAnyRegistryMemory, AFillingThatFailsIsDoneAgainFromTheStart)
{
    std::string const banner = "********************CALL ONCE NOT TWICE********************\n";
    std::string lines;
    std::size_t failures = 0;
    for (bool filled = false; !filled; failures += filled ? 0 : 1) {
        testing::internal::CaptureStderr();
        live_memory::failAllocation(failures + 1);
        try {
            filled = SwAny::registerAllType();
        } catch (std::bad_alloc const&) {
        }
        live_memory::failAllocation(0);
        lines = testing::internal::GetCapturedStderr();
        ASSERT_LT(failures, 10000U);
    }
    EXPECT_GT(failures, 100U);
    EXPECT_EQ(lines, banner);
    EXPECT_EQ(SwAny::getConverters().size(), 26U);
    EXPECT_EQ(SwAny(17).convert<SwString>().convert<int>().get<int>(), 17);
}
