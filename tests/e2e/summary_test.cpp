// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// burn --summary: what was done, or why not, for those who run many.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

namespace {

using e2e::Result;
using Words = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr int kFrames = 10;

/// What a run needs is never the same: numbers become N where they stand alone for that.
std::string withoutResources(std::string const& summary)
{
    std::regex const resource("(\"(processorSeconds|wallSeconds|peakMemoryMiB)\": )([0-9]+\\.[0-9]+)");
    return std::regex_replace(summary, resource, "$1N");
}

double numberIn(std::string const& summary, std::string const& name)
{
    std::string const begin = "\"" + name + "\": ";
    std::size_t const at = summary.find(begin);
    return at == std::string::npos ? -1.0 : std::stod(summary.substr(at + begin.size()));
}

class Summary : public testing::Test {
protected:
    Summary()
    {
        e2e::writeFile(file("c.json"), R"({"overlay":[{"formatString":"%heading_deg"}]})");
        std::vector<SwJsonObject> const telemetry(kFrames, {{"heading_deg", SwJsonValue(7)}});
        clip_test::makeClip({file("a.ts"), 64, 48, kFrames, "mpeg2video", 90000, {telemetry}});
        clip_test::makeClip({file("plain.mkv"), 64, 48, kFrames, "ffv1"});
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    Result burn(std::string const& input, std::string const& output, std::string const& summary, Words const& more = {},
                e2e::RunOptions const& options = {}) const
    {
        Words words = {"burn", input, "-c", file("c.json"), "-o", output, "--summary", summary};
        words.insert(words.end(), more.begin(), more.end());
        return e2e::run(words, options);
    }

    /// The summary with these members, resources left out.
    static std::string expected(std::string const& input, std::string const& output, int exitCode,
                                std::string const& error, std::string const& counts, std::string const& telemetry,
                                std::string const& warnings)
    {
        return "{\n  \"input\": \"" + input + "\",\n  \"output\": \"" + output +
               "\",\n  \"exitCode\": " + std::to_string(exitCode) + ",\n  \"error\": \"" + error + "\",\n  " + counts +
               ",\n  \"processorSeconds\": N,\n  \"wallSeconds\": N,\n  \"peakMemoryMiB\": N,\n  \"telemetry\": {\n   "
               " " +
               telemetry + "\n  },\n  \"warnings\": " + warnings + ",\n  \"warningsLeftOut\": 0\n}\n";
    }

    /// Nothing but what the test has made is in the folder.
    void expectOnly(std::vector<std::string> names) const
    {
        names.insert(names.end(), {"a.ts", "c.json", "plain.mkv"});
        std::vector<std::string> found;
        for (fs::directory_entry const& entry : fs::directory_iterator(folder_.path())) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, names);
    }

    media_test::TempFolder folder_;
};

constexpr char const* kWholeTelemetry = R"("streams": 1,
    "packets": 10,
    "badChecksums": 0,
    "droppedPackets": 0,
    "damagedSets": 0,
    "foreignPackets": 0)";
constexpr char const* kNoTelemetry = R"("streams": 0,
    "packets": 0,
    "badChecksums": 0,
    "droppedPackets": 0,
    "damagedSets": 0,
    "foreignPackets": 0)";

TEST_F(Summary, TellsWhatWasDone)
{
    Result const result = burn(file("a.ts"), file("o.ts"), file("s.json"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    std::string const summary = e2e::readFile(file("s.json"));
    EXPECT_EQ(withoutResources(summary), expected(file("a.ts"), file("o.ts"), 0, "",
                                                  "\"frames\": 10,\n  \"videoSeconds\": 0.4", kWholeTelemetry, "[]"));
    EXPECT_GT(numberIn(summary, "processorSeconds"), 0.0);
    EXPECT_LT(numberIn(summary, "processorSeconds"), 100.0);
    EXPECT_GT(numberIn(summary, "wallSeconds"), 0.0);
    EXPECT_GT(numberIn(summary, "peakMemoryMiB"), 5.0);
    EXPECT_LT(numberIn(summary, "peakMemoryMiB"), 1000.0);
    expectOnly({"o.ts", "s.json"});
}

TEST_F(Summary, GoesToStandardOutputWithTheWarnings)
{
    Result const result = burn(file("plain.mkv"), file("o.mkv"), "-", {"--to", "0.2", "--video-codec", "ffv1"});
    EXPECT_EQ(result.exitCode, 0);
    std::string const warning = file("plain.mkv") + ": no usable telemetry was found: there is no KLV stream";
    EXPECT_EQ(result.err, "stanag-overlay: " + warning + "\n");
    EXPECT_EQ(withoutResources(result.out),
              expected(file("plain.mkv"), file("o.mkv"), 0, "", "\"frames\": 5,\n  \"videoSeconds\": 0.2", kNoTelemetry,
                       "[\n    \"" + warning + "\"\n  ]"));
}

TEST_F(Summary, CountsTheLinesOfATelemetryFile)
{
    e2e::writeFile(file("t.jsonl"), "{\"t\":0,\"heading_deg\":7}\n{\"t\":0.2,\"heading_deg\":8}\n");
    Result const result = burn(file("a.ts"), file("o.ts"), "-", {"--telemetry", file("t.jsonl")});
    EXPECT_EQ(numberIn(result.out, "streams"), 1.0);
    EXPECT_EQ(numberIn(result.out, "packets"), 2.0);
}

TEST_F(Summary, CountsDamagedTelemetry)
{
    // The last byte of the second packet is its checksum's; the stream carries each packet once.
    std::string bytes = e2e::readFile(file("a.ts"));
    std::string const key("\x06\x0E\x2B\x34\x02\x0B\x01\x01\x0E\x01\x03\x01\x01\x00\x00\x00", 16);
    std::size_t const first = bytes.find(key);
    std::size_t const second = bytes.find(key, first + 1);
    ASSERT_NE(second, std::string::npos);
    auto const length = static_cast<unsigned char>(bytes[second + key.size()]);
    ASSERT_LT(length, 128);
    bytes[second + key.size() + length] ^= 1;
    e2e::writeFile(file("a.ts"), bytes);
    Result const result = burn(file("a.ts"), file("o.ts"), "-");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(numberIn(result.out, "packets"), 10.0);
    EXPECT_EQ(numberIn(result.out, "badChecksums"), 1.0);
    EXPECT_NE(result.out.find("1 of 10 telemetry packets has a wrong checksum and was used all the same"),
              std::string::npos)
        << result.out;
}

TEST_F(Summary, TellsWhyNothingWasDone)
{
    Result const result = burn(file("none.ts"), file("o.ts"), file("s.json"));
    EXPECT_EQ(result.exitCode, 1);
    std::string const error = file("none.ts") + ": cannot be opened: No such file or directory; check the path";
    EXPECT_EQ(result.err, "stanag-overlay: " + error + "\n");
    EXPECT_EQ(withoutResources(e2e::readFile(file("s.json"))),
              expected(file("none.ts"), file("o.ts"), 1, error, "\"frames\": 0,\n  \"videoSeconds\": 0.0", kNoTelemetry,
                       "[]"));
    expectOnly({"s.json"});
}

TEST_F(Summary, TellsWrongUsage)
{
    Result const result = burn(file("a.ts"), file("o.ts"), file("s.json"), {"--from", "2", "--to", "1"});
    EXPECT_EQ(result.exitCode, 2);
    std::string const summary = e2e::readFile(file("s.json"));
    EXPECT_EQ(numberIn(summary, "exitCode"), 2.0);
    EXPECT_NE(summary.find("\"error\": \"--to 1: give a time after that of --from, which is 0 without it\""),
              std::string::npos)
        << summary;
    expectOnly({"s.json"});
}

TEST_F(Summary, ReplacesAnOlderOneWhole)
{
    e2e::writeFile(file("s.json"), std::string(100000, '#'));
    EXPECT_EQ(burn(file("a.ts"), file("o.ts"), file("s.json")).exitCode, 0);
    std::string const summary = e2e::readFile(file("s.json"));
    EXPECT_EQ(summary.find('#'), std::string::npos);
    EXPECT_EQ(summary.substr(summary.size() - 2), "}\n");
    expectOnly({"o.ts", "s.json"});
}

TEST_F(Summary, IsWrittenWhenSignalsEndTheBurn)
{
    clip_test::makeClip({file("a.ts"), 320, 240, 500, "mpeg2video"});
    std::string const bytes = e2e::readFile(file("a.ts"));
    for (int const signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        Result const result = e2e::runInterrupted({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"),
                                                   "--video-codec", "mpeg2video", "--summary", file("s.json")},
                                                  bytes, signal);
        EXPECT_EQ(result.exitCode, 128 + signal);
        std::string const summary = e2e::readFile(file("s.json"));
        EXPECT_EQ(numberIn(summary, "exitCode"), 128.0 + signal) << result.err;
        EXPECT_GT(numberIn(summary, "frames"), 0.0);
        EXPECT_EQ(fs::exists(file("o.ts")), signal == SIGINT) << summary;
        std::string const why =
            signal == SIGINT
                ? "\n    \"" + file("o.ts") + ": interrupted; the file was finished up to "
                : "\"error\": \"" + file("o.ts") + ": terminated before the end, nothing was kept; start again\"";
        EXPECT_NE(summary.find(why), std::string::npos) << summary;
        fs::remove(file("o.ts"));
    }
}

struct PlaceRow {
    char const* name;
    char const* output;
    char const* summary;
    int exitCode;
    char const* message;
};

class SummaryPlaces : public Summary, public testing::WithParamInterface<PlaceRow> {};

/// "@" stands for the folder.
std::string placed(std::string text, std::string const& folder)
{
    for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@')) {
        text.replace(at, 1, folder + "/");
    }
    return text;
}

TEST_P(SummaryPlaces, AreRefusedBeforeWorkBegins)
{
    PlaceRow const& row = GetParam();
    std::string const before = e2e::readFile(file("a.ts"));
    Result const result = burn(file("a.ts"), placed(row.output, folder_.path()), placed(row.summary, folder_.path()));
    EXPECT_EQ(result.exitCode, row.exitCode);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, placed(std::string("stanag-overlay: ") + row.message + "\n", folder_.path()));
    EXPECT_EQ(e2e::readFile(file("a.ts")), before);
    expectOnly({});
}

INSTANTIATE_TEST_SUITE_P(
    Bad, SummaryPlaces,
    testing::Values(
        PlaceRow{"no_folder", "@o.ts", "@none/s.json", 1, "@none/s.json: folder @none does not exist; create it first"},
        PlaceRow{"folder", "@o.ts", "@.", 1, "@.: is a folder; give the name of a file"},
        PlaceRow{"input", "@o.ts", "@a.ts", 1, "@a.ts: is the input itself; give another name for the output"},
        PlaceRow{"configuration", "@o.ts", "@c.json", 1,
                 "@c.json: is the configuration itself; give another name for the output"},
        PlaceRow{"output", "@o.ts", "@./o.ts", 1, "@./o.ts: is the output itself; give another name for the summary"},
        PlaceRow{"both_to_standard_output", "-", "-", 2,
                 "--summary -: standard output carries the video already; give the name of a file"},
        PlaceRow{"address", "@o.ts", "udp://127.0.0.1:9", 2,
                 "--summary udp://127.0.0.1:9: give the name of a file, or - for standard output"}),
    [](testing::TestParamInfo<PlaceRow> const& row) { return row.param.name; });

}  // namespace
