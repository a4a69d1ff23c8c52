// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The remarks about a clip's telemetry.
#include "clip/clip_telemetry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using clip::TelemetrySummary;

TelemetrySummary summaryOf(telemetry::KlvCounts counts, std::uint64_t usable, bool anyStream = true)
{
    TelemetrySummary summary;
    summary.counts = counts;
    summary.usable = usable;
    summary.anyStream = anyStream;
    return summary;
}

TelemetrySummary fileWithoutPackets()
{
    TelemetrySummary summary = summaryOf({}, 0);
    summary.fromFile = true;
    return summary;
}

struct Row {
    char const* name;
    TelemetrySummary summary;
    std::vector<std::string> remarks;
};

class TelemetryRemarks : public testing::TestWithParam<Row> {};

TEST_P(TelemetryRemarks, SayOneThingALine)
{
    EXPECT_EQ(clip::telemetryRemarks("a.ts", GetParam().summary), GetParam().remarks);
}

// Counts in the order of their fields: packets, bad checksums, foreign keys, truncated, damaged sets.
INSTANTIATE_TEST_SUITE_P(
    Rows, TelemetryRemarks,
    testing::Values(
        Row{"all_well", summaryOf({277, 0, 0, 0}, 277), {}},
        Row{"no_stream", summaryOf({}, 0, false), {"a.ts: no usable telemetry was found: there is no KLV stream"}},
        Row{"foreign_only",
            summaryOf({0, 0, 48, 0}, 0),
            {"a.ts: no usable telemetry was found: 48 KLV packets are not MISB ST 0601"}},
        Row{"one_foreign",
            summaryOf({0, 0, 1, 0}, 0),
            {"a.ts: no usable telemetry was found: 1 KLV packet is not MISB ST 0601"}},
        Row{"empty_stream",
            summaryOf({}, 0),
            {"a.ts: no usable telemetry was found: the KLV stream holds no MISB ST 0601 packet"}},
        Row{"empty_file", fileWithoutPackets(), {"a.ts: no usable telemetry was found: the file holds no packet"}},
        Row{"one_bad",
            summaryOf({5, 1, 0, 0}, 5),
            {"a.ts: 1 of 5 telemetry packets has a wrong checksum and was used all the same"}},
        Row{"bad_and_cut",
            summaryOf({5, 2, 0, 1}, 5),
            {"a.ts: 2 of 5 telemetry packets have a wrong checksum and were used all the same",
             "a.ts: 1 telemetry packet runs past the end and was dropped"}},
        Row{"two_cut", summaryOf({5, 0, 0, 2}, 5), {"a.ts: 2 telemetry packets run past the end and were dropped"}},
        Row{"one_damaged_set",
            summaryOf({5, 0, 0, 0, 1}, 5),
            {"a.ts: 1 nested set of telemetry packets runs past its end and was left out"}},
        Row{"two_damaged_sets",
            summaryOf({5, 0, 0, 0, 2}, 5),
            {"a.ts: 2 nested sets of telemetry packets run past their ends and were left out"}}),
    [](auto const& row) { return row.param.name; });

}  // namespace
