// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The backend's interface and the guard of a mapping.
#include "RenderBackend.h"

#include "recording_imaging.h"
#include "slot_of.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

TEST(RenderBackend, SlotsStandInTheAgreedOrder)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<IRenderBackend>);  // slots 0 and 1
    EXPECT_EQ(slotOf(&IRenderBackend::name), 2U);
    EXPECT_EQ(slotOf(&IRenderBackend::map), 3U);
}

TEST(BackendGuard, ReleasesOnce)
{
    int releases = 0;
    {
        IRenderBackend::Guard guard(MappedNV12{recording::anyPlane(), recording::anyPlane(), 2, 2, 0, 0},
                                    [&releases] { ++releases; });
        EXPECT_EQ(guard.planes().width, 2);
        guard.release();
        EXPECT_EQ(releases, 1);
        EXPECT_EQ(guard.planes().y, nullptr);
        EXPECT_EQ(guard.planes().width, 0);
        guard.release();
    }
    EXPECT_EQ(releases, 1);
}

TEST(BackendGuard, MovesItsMapping)
{
    int releases = 0;
    {
        IRenderBackend::Guard first(MappedNV12{recording::anyPlane(), recording::anyPlane(), 2, 2, 0, 0},
                                    [&releases] { ++releases; });
        IRenderBackend::Guard const second(std::move(first));
        EXPECT_EQ(first.planes().y, nullptr);  // NOLINT: that it is empty is the point
        EXPECT_EQ(second.planes().width, 2);
        EXPECT_EQ(releases, 0);
    }
    EXPECT_EQ(releases, 1);
}

TEST(BackendGuard, AssignmentEndsTheMappingThatWasThere)
{
    std::string order;
    {
        IRenderBackend::Guard guard(MappedNV12{recording::anyPlane(), recording::anyPlane(), 2, 2, 0, 0},
                                    [&order] { order += "old "; });
        guard = IRenderBackend::Guard(MappedNV12{recording::anyPlane(), recording::anyPlane(), 4, 4, 0, 0},
                                      [&order] { order += "new "; });
        EXPECT_EQ(order, "old ");
        EXPECT_EQ(guard.planes().width, 4);
    }
    EXPECT_EQ(order, "old new ");
}

TEST(BackendGuard, AssignedToItselfItKeepsItsMapping)
{
    int releases = 0;
    IRenderBackend::Guard guard(MappedNV12{recording::anyPlane(), recording::anyPlane(), 2, 2, 0, 0},
                                [&releases] { ++releases; });
    IRenderBackend::Guard& same = guard;
    guard = std::move(same);
    EXPECT_EQ(releases, 0);
    EXPECT_EQ(guard.planes().width, 2);
}

TEST(BackendGuard, IsMoveOnlyAndMayHaveNoRelease)
{
    EXPECT_FALSE(std::is_copy_constructible_v<IRenderBackend::Guard>);
    EXPECT_FALSE(std::is_copy_assignable_v<IRenderBackend::Guard>);
    IRenderBackend::Guard guard(MappedNV12{}, nullptr);
    guard.release();
    EXPECT_EQ(guard.planes().y, nullptr);
}
