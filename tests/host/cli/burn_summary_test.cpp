// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text of a burn's summary, and which warnings it keeps.
#include "cli/burn_summary.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(SummaryText, NamesWhatWasDone)
{
    cli::BurnOptions options;
    options.input = "a.ts";
    options.output = "out/a.ts";
    cli::BurnReport report;
    report.frames = 250;
    report.videoSeconds = 10.0;
    report.telemetry = {2, 240, {230, 1, 2, 3, 4}};
    report.warnings = {"a.ts: one", "a.ts: \"two\""};
    EXPECT_EQ(cli::summaryText(options, report, {1.23456, 0.5, 61.25}), R"({
  "input": "a.ts",
  "output": "out/a.ts",
  "exitCode": 0,
  "error": "",
  "frames": 250,
  "videoSeconds": 10.0,
  "processorSeconds": 1.235,
  "wallSeconds": 0.5,
  "peakMemoryMiB": 61.3,
  "telemetry": {
    "streams": 2,
    "packets": 240,
    "badChecksums": 1,
    "droppedPackets": 3,
    "damagedSets": 4,
    "foreignPackets": 2
  },
  "warnings": [
    "a.ts: one",
    "a.ts: \"two\""
  ],
  "warningsLeftOut": 0
}
)");
}

TEST(SummaryText, NamesAFailureOfLiveWork)
{
    cli::BurnOptions options;
    options.input = "udp://127.0.0.1:5000";
    options.output = "-";
    cli::BurnReport report;
    report.exitCode = 1;
    report.error = "line\nfeed and \xFF";
    report.live = clip::LiveCounts{7, 8, 9};
    report.warningsLeftOut = 3;
    EXPECT_EQ(cli::summaryText(options, report, {}), R"({
  "input": "udp://127.0.0.1:5000",
  "output": "-",
  "exitCode": 1,
  "error": "line\nfeed and )"
                                                     "\xEF\xBF\xBD"
                                                     R"(",
  "frames": 0,
  "videoSeconds": 0.0,
  "processorSeconds": 0.0,
  "wallSeconds": 0.0,
  "peakMemoryMiB": 0.0,
  "telemetry": {
    "streams": 0,
    "packets": 0,
    "badChecksums": 0,
    "droppedPackets": 0,
    "damagedSets": 0,
    "foreignPackets": 0
  },
  "live": {
    "droppedPictures": 8,
    "reopened": 9
  },
  "warnings": [],
  "warningsLeftOut": 3
}
)");
}

TEST(Warnings, AreKeptUpToAThousand)
{
    cli::BurnReport report;
    cli::warnAll(report, std::vector<std::string>(999, "often"));
    cli::warnAll(report, {"last", "too many", "too many"});
    ASSERT_EQ(report.warnings.size(), 1000U);
    EXPECT_EQ(report.warnings.back(), "last");
    EXPECT_EQ(report.warningsLeftOut, 2U);
}

}  // namespace
