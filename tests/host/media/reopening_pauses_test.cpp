// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pauses that grow, and begin anew.
#include "media/reopening_pauses.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<long> nextOf(media::ReopeningPauses& pauses, int count)
{
    std::vector<long> milliseconds;
    for (int number = 0; number < count; ++number) {
        milliseconds.push_back(pauses.next().count());
    }
    return milliseconds;
}

TEST(ReopeningPauses, GrowToASecondAndBeginAnewWhenPicturesCame)
{
    media::ReopeningPauses pauses;
    EXPECT_EQ(nextOf(pauses, 7), (std::vector<long>{100, 200, 400, 800, 1000, 1000, 1000}));
    pauses.cameBack();
    EXPECT_EQ(nextOf(pauses, 2), (std::vector<long>{100, 200}));
}

}  // namespace
