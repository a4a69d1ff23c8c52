// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Time codes of parts; what else is kept of a container is compared in whole files.
#include "media/kept_tags.h"

#include <gtest/gtest.h>

namespace {

TEST(LaterTimecode, CountsFrames)
{
    struct Row {
        char const* timecode;
        AVRational rate;
        std::int64_t frames;
        char const* expected;
    };
    for (Row const& row : {
             Row{"01:00:00:00", {25, 1}, 0, "01:00:00:00"},
             Row{"01:00:00:00", {25, 1}, 25, "01:00:01:00"},
             Row{"01:02:03:24", {25, 1}, 1, "01:02:04:00"},
             Row{"23:59:59:29", {30, 1}, 1, "24:00:00:00"},
             Row{"00:00:59;29", {30000, 1001}, 1, "00:01:00;02"},  // the numbers 0 and 1 are dropped
             Row{"", {25, 1}, 5, ""},
             Row{"noon", {25, 1}, 5, ""},
         }) {
        EXPECT_EQ(media::laterTimecode(row.timecode, row.rate, row.frames), row.expected) << row.timecode;
    }
}

}  // namespace
