// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Headers of access unit cells, off and on.
#include "clip/klv_cells.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(WithoutCells, TakesTheHeadersAway)
{
    struct Row {
        char const* name;
        Bytes unit;
        Bytes expected;
    };
    for (Row const& row : {
             Row{"none", {6, 0x0E, 0x2B, 0x34, 1}, {6, 0x0E, 0x2B, 0x34, 1}},
             Row{"one", {0, 1, 0xDF, 0, 2, 7, 8}, {7, 8}},
             Row{"two", {0, 1, 0xDF, 0, 2, 7, 8, 0, 2, 0xDF, 0, 1, 9}, {7, 8, 9}},
             Row{"too short for its length", {0, 1, 0xDF, 0, 3, 7, 8}, {0, 1, 0xDF, 0, 3, 7, 8}},
             Row{"bytes behind it", {0, 1, 0xDF, 0, 1, 7, 8}, {0, 1, 0xDF, 0, 1, 7, 8}},
             Row{"nothing", {}, {}},
         }) {
        EXPECT_EQ(clip::withoutCells(row.unit), row.expected) << row.name;
    }
}

TEST(InCell, PutsOneHeaderBeforeTheKlv)
{
    EXPECT_EQ(clip::inCell(Bytes{7, 8}, 0), (Bytes{0, 0, 0xDF, 0, 2, 7, 8}));
    Bytes const cell = clip::inCell(Bytes(0x115, 6), 255);
    EXPECT_EQ(Bytes(cell.begin(), cell.begin() + 6), (Bytes{0, 255, 0xDF, 0x01, 0x15, 6}));
    EXPECT_EQ(clip::withoutCells(cell), Bytes(0x115, 6));
    EXPECT_EQ(clip::inCell(Bytes(0xFFFF, 1), 0).size(), 0x10004U);
    EXPECT_EQ(clip::inCell(Bytes(0x10000, 1), 0), Bytes()) << "no length says so much";
}

}  // namespace
