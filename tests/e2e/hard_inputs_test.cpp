// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Inputs and circumstances that go wrong: one clear line at most, the right exit code, never a half file.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;
using e2e::Result;
using e2e::run;
using media_test::TempFolder;

constexpr char const* kConfig =
    R"({"overlay":[{"formatString":"H %heading_deg L %sensor_lat_deg","textSize":100,"decimals":0}]})";

SwJsonObject heading(int value)
{
    return {{"heading_deg", SwJsonValue(static_cast<double>(value))}};
}

std::vector<SwJsonObject> headings(int count)
{
    std::vector<SwJsonObject> payloads(static_cast<std::size_t>(count));
    for (std::size_t number = 0; number < payloads.size(); ++number) {
        payloads[number] = heading(static_cast<int>(number));
    }
    return payloads;
}

/// The texts drawn on each frame.
std::vector<std::string> textsOf(Result const& result)
{
    std::vector<std::string> texts;
    for (std::string const& line : e2e::linesOf(result.out)) {
        SwJsonObject const object = clip_test::parseLine(line);
        SwJsonArray const& draws = object["draws"].toArray();
        texts.push_back(draws.empty() ? "" : draws[0].toObject()["text"].toString());
    }
    return texts;
}

class HardInputs : public testing::Test {
protected:
    HardInputs() { e2e::writeFile(file("c.json"), kConfig); }

    std::string file(std::string const& name) const { return folder_.file(name); }
    Result text(std::string const& clip) const { return run({"text", file(clip), "-c", file("c.json")}); }
    Result burn(std::string const& clip, std::string const& output) const
    {
        return run({"burn", file(clip), "-c", file("c.json"), "-o", output, "--video-codec", "mpeg2video"});
    }

private:
    TempFolder folder_;
};

TEST_F(HardInputs, CutAnywhereGiveAWholeFileOrNone)
{
    clip_test::makeClip({file("whole.ts"), 96, 64, 12, "mpeg2video", 90000, {headings(12)}});
    std::string const whole = e2e::readFile(file("whole.ts"));
    ASSERT_GT(whole.size(), 5000U);
    std::filesystem::create_directory(file("out"));
    int done = 0;
    int refused = 0;
    constexpr std::size_t kCuts = 60;
    for (std::size_t cut = 0; cut <= kCuts; ++cut) {
        // Steps that fall on every place within a transport packet.
        std::size_t const size = cut < 20 ? cut * 97 : whole.size() * (cut - 19) / (kCuts - 19);
        SCOPED_TRACE("cut at " + std::to_string(size));
        e2e::writeFile(file("cut.ts"), whole.substr(0, size));
        std::filesystem::remove(file("out/o.ts"));
        Result const result = burn("cut.ts", file("out/o.ts"));
        std::size_t const lines = e2e::linesOf(result.err).size();
        std::filesystem::directory_iterator const entries(file("out"));
        auto const files = std::distance(begin(entries), end(entries));
        if (result.exitCode == 0) {
            ++done;
            EXPECT_LE(lines, 2U) << result.err;
            EXPECT_EQ(files, 1);
            std::string const output = e2e::readFile(file("out/o.ts"));
            EXPECT_EQ(output.size() % 188, 0U);
            EXPECT_EQ(output.front(), '\x47');
            // Shorter files are too short to be recognised with certainty.
            EXPECT_TRUE(output.size() < 3000 || clip_test::packetsOf(file("out/o.ts")).video > 0);
        } else {
            ++refused;
            EXPECT_EQ(result.exitCode, 1) << result.err;
            EXPECT_EQ(lines, 1U) << result.err;
            EXPECT_EQ(result.err.rfind("stanag-overlay: " + file("cut.ts") + ": ", 0), 0U) << result.err;
            EXPECT_EQ(files, 0);
        }
    }
    EXPECT_GT(done, 30);
    EXPECT_GT(refused, 5);
}

TEST_F(HardInputs, DamagedBytesAreReportedAndPassedOver)
{
    clip_test::makeClip({file("whole.ts"), 96, 64, 25, "mpeg2video", 90000, {headings(25)}});
    std::string bytes = e2e::readFile(file("whole.ts"));
    constexpr std::size_t kPacket = 188;
    for (std::size_t place = kPacket * 12 + 40; place + 60 < bytes.size(); place += kPacket * 7) {
        bytes.replace(place, 60, std::string(60, '\xAA'));
    }
    e2e::writeFile(file("damaged.ts"), bytes);
    Result const result = burn("damaged.ts", file("o.ts"));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("damaged video packets or pictures"), std::string::npos) << result.err;
    EXPECT_GT(clip_test::packetsOf(file("o.ts")).video, 10);
}

TEST_F(HardInputs, NoiseIsRefused)
{
    std::string noise;
    unsigned state = 1;
    for (int count = 0; count < 200000; ++count) {
        state = state * 1103515245U + 12345U;
        noise += static_cast<char>(state >> 16U);
    }
    e2e::writeFile(file("noise.ts"), noise);
    e2e::writeFile(file("empty.ts"), "");
    for (char const* const name : {"noise.ts", "empty.ts"}) {
        SCOPED_TRACE(name);
        Result const result = burn(name, file("o.ts"));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(e2e::linesOf(result.err).size(), 1U) << result.err;
        EXPECT_FALSE(std::filesystem::exists(file("o.ts")));
    }
}

TEST_F(HardInputs, GapsInTelemetryKeepTheLastPacket)
{
    std::vector<SwJsonObject> payloads = headings(30);
    for (std::size_t number = 0; number < payloads.size(); ++number) {
        if (number < 3 || (number >= 8 && number < 20)) {
            payloads[number] = SwJsonObject();
        }
    }
    clip_test::makeClip({file("gap.ts"), 320, 240, 30, "mpeg2video", 90000, {payloads}});
    Result const result = text("gap.ts");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> const texts = textsOf(result);
    ASSERT_EQ(texts.size(), 30U);
    for (std::size_t number = 0; number < texts.size(); ++number) {
        SCOPED_TRACE("frame " + std::to_string(number));
        std::size_t const shown = number < 8 || number >= 20 ? number : 7;
        EXPECT_EQ(texts[number], number < 3 ? "" : "H " + std::to_string(shown) + " L --");
    }
}

TEST_F(HardInputs, NestingBeyondEveryStackIsReadOrRefused)
{
    constexpr std::size_t kLevels = 200000;
    std::string const deep = std::string(kLevels, '[') + std::string(kLevels, ']');
    clip_test::makeClip({file("a.ts"), 320, 240, 2, "mpeg2video"});
    e2e::writeFile(file("t.jsonl"), R"({"t":0,"heading_deg":7,"deep":)" + deep + "}\n");
    e2e::writeFile(file("deep.json"), R"({"overlay":[{"formatString":"%deep %heading_deg","decimals":0,"textSize":100,
        "condition":{"key":"heading_deg","value":)" +
                                          deep + "},\"formats\":{\"other\":" + deep + "}}]}");
    e2e::writeFile(file("open.json"), std::string(kLevels, '['));
    Result const drawn = run({"text", file("a.ts"), "-c", file("c.json"), "--telemetry", file("t.jsonl")});
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_EQ(textsOf(drawn), (Words{"H 7 L --", "H 7 L --"}));
    Result const keys = run({"keys", file("a.ts"), "--telemetry", file("t.jsonl")});
    EXPECT_EQ(keys.exitCode, 0);
    EXPECT_GT(keys.out.size(), 2 * kLevels);
    EXPECT_EQ(run({"text", file("a.ts"), "-c", file("deep.json"), "--telemetry", file("t.jsonl")}).exitCode, 0);
    Result const checked = run({"check", file("deep.json")});
    EXPECT_EQ(checked.exitCode, 1);
    EXPECT_EQ(checked.out, file("deep.json") + ": overlay[0].condition.value: an array becomes \"{}\"\n" +
                               file("deep.json") +
                               ": overlay[0].formats.other: an array is no object and is ignored\n");
    Result const refused = run({"check", file("open.json")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "stanag-overlay: " + file("open.json") +
                               ": line 1, column 200001: Unterminated JSON array; mend the JSON there\n");
}

TEST_F(HardInputs, TelemetryTimesThatRunBackwardsAreSorted)
{
    clip_test::makeClip({file("a.ts"), 320, 240, 10, "mpeg2video"});
    std::string lines;
    for (int number = 9; number >= 0; --number) {
        lines += "{\"t\":" + std::to_string(number * 0.04) + ",\"heading_deg\":" + std::to_string(number) + "}\n";
    }
    e2e::writeFile(file("t.jsonl"), lines);
    Result const result = run({"text", file("a.ts"), "-c", file("c.json"), "--telemetry", file("t.jsonl")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    std::vector<std::string> const texts = textsOf(result);
    ASSERT_EQ(texts.size(), 10U);
    for (std::size_t number = 0; number < texts.size(); ++number) {
        EXPECT_EQ(texts[number], "H " + std::to_string(number) + " L --");
    }
}

TEST_F(HardInputs, SeveralTelemetryStreamsAreMergedAndTheFirstWins)
{
    SwJsonObject const other{{"heading_deg", SwJsonValue(300.0)}, {"sensor_lat_deg", SwJsonValue(45.0)}};
    std::vector<SwJsonObject> const second(10, other);
    clip_test::makeClip({file("two.ts"), 320, 240, 10, "mpeg2video", 90000, {headings(10), second}});
    Result const result = text("two.ts");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> const texts = textsOf(result);
    ASSERT_EQ(texts.size(), 10U);
    EXPECT_EQ(texts[4], "H 4 L 45");
    ASSERT_EQ(burn("two.ts", file("o.ts")).exitCode, 0);
    EXPECT_EQ(clip_test::packetsOf(file("o.ts")).klv, 20);
    EXPECT_EQ(text("o.ts").out, result.out);
}

TEST_F(HardInputs, JoinedClipsOfDifferentSizesStayOneClip)
{
    clip_test::makeClip({file("a.ts"), 320, 240, 10, "mpeg2video", 900000, {headings(10)}});
    clip_test::makeClip({file("b.ts"), 128, 96, 10, "mpeg2video", 90000, {headings(10)}});
    e2e::writeFile(file("joined.ts"), e2e::readFile(file("a.ts")) + e2e::readFile(file("b.ts")));
    Result const result = burn("joined.ts", file("o.ts"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("pictures change from 320x240 to 128x96 at frame 10; they were scaled to the first size"),
              std::string::npos)
        << result.err;
    auto const pictures = clip_test::picturesOf(file("o.ts"));
    ASSERT_EQ(pictures.size(), 20U);
    EXPECT_EQ(pictures.back()->width(), 320U);
    std::vector<std::string> const texts = textsOf(text("joined.ts"));
    ASSERT_EQ(texts.size(), 20U);
    for (std::size_t number = 0; number < texts.size(); ++number) {
        EXPECT_EQ(texts[number], "H " + std::to_string(number % 10) + " L --") << number;
    }
}

TEST_F(HardInputs, InterruptCompletesTheFileAndSaysUpToWhere)
{
    clip_test::ClipSpec const clip{file("long.ts"), 320, 240, 200, "mpeg2video", 90000, {headings(200)}};
    clip_test::makeClip(clip);
    Result const result =
        e2e::runInterrupted({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"), "--video-codec", "mpeg2video"},
                            e2e::readFile(clip.path), SIGINT);
    EXPECT_EQ(result.exitCode, 130) << result.err;
    clip_test::StreamCounts const counts = clip_test::packetsOf(file("o.ts"));
    EXPECT_GT(counts.video, 0);
    EXPECT_LT(counts.video, 200);
    EXPECT_NEAR(counts.klv, counts.video, 1);
    EXPECT_EQ(clip_test::picturesOf(file("o.ts")).size(), static_cast<std::size_t>(counts.video));
    std::array<char, 32> last{};
    std::snprintf(last.data(), last.size(), "%.3f", 0.04 * (counts.video - 1));
    EXPECT_EQ(result.err,
              "stanag-overlay: " + file("o.ts") + ": interrupted; the file was finished up to " + last.data() + " s\n");
}

TEST_F(HardInputs, TerminationLeavesNothingUnderTheOutputsName)
{
    clip_test::ClipSpec const clip{file("long.ts"), 320, 240, 200, "mpeg2video", 90000, {headings(200)}};
    clip_test::makeClip(clip);
    std::string const older = "an older file";
    e2e::writeFile(file("older.ts"), older);
    for (char const* const output : {"o.ts", "older.ts"}) {
        Result const result =
            e2e::runInterrupted({"burn", "-", "-c", file("c.json"), "-o", file(output), "--video-codec", "mpeg2video"},
                                e2e::readFile(clip.path), SIGTERM);
        EXPECT_EQ(result.exitCode, 143) << result.err;
        EXPECT_EQ(result.err,
                  "stanag-overlay: " + file(output) + ": terminated before the end, nothing was kept; start again\n");
    }
    Result const sent =
        e2e::runInterrupted({"burn", "-", "-c", file("c.json"), "-o", "-", "--video-codec", "mpeg2video"},
                            e2e::readFile(clip.path), SIGTERM);
    EXPECT_EQ(sent.exitCode, 143);
    EXPECT_EQ(sent.err, "stanag-overlay: -: terminated before the end, what was sent is not whole\n");
    EXPECT_EQ(e2e::readFile(file("older.ts")), older);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file("")), {}), 3) << "clip, configuration, older file";
}

TEST_F(HardInputs, InterruptBeforeTheFirstPictureLeavesNothing)
{
    for (int const signal : {SIGINT, SIGTERM}) {
        Result const result = e2e::runInterrupted({"burn", "-", "-c", file("c.json"), "-o", file("o.ts")}, "", signal);
        EXPECT_EQ(result.exitCode, 128 + signal);
        // The signal may even come before the program listens to it.
        if (!result.err.empty()) {
            EXPECT_EQ(result.err, "stanag-overlay: -: interrupted before anything was read; start again\n");
        }
        EXPECT_FALSE(std::filesystem::exists(file("o.ts")));
    }
}

TEST_F(HardInputs, InterruptsShowInTheExitCodeOfListingsToo)
{
    clip_test::ClipSpec const clip{file("long.ts"), 320, 240, 200, "mpeg2video", 90000, {headings(200)}};
    clip_test::makeClip(clip);
    std::string const bytes = e2e::readFile(clip.path);
    EXPECT_EQ(e2e::runInterrupted({"text", "-", "-c", file("c.json")}, bytes, SIGINT).exitCode, 130);
    EXPECT_EQ(e2e::runInterrupted({"text", "-", "-c", file("c.json")}, bytes, SIGTERM).exitCode, 143);
    EXPECT_EQ(e2e::runInterrupted({"keys", "-"}, bytes, SIGTERM).exitCode, 143);
}

constexpr char const* kDiskFull =
    ": cannot be written: No space left on device; free some space or choose another folder\n";

TEST_F(HardInputs, FullDeviceIsSaidInOneLine)
{
    clip_test::makeClip({file("a.ts"), 320, 240, 30, "mpeg2video", 90000, {headings(30)}});
    std::filesystem::create_symlink("/dev/full", file("full.ts"));
    std::filesystem::create_symlink("/dev/full", file("full.mp4"));
    std::filesystem::create_symlink("/dev/full", file("full.png"));
    Result const burnt = burn("a.ts", file("full.ts"));
    EXPECT_EQ(burnt.exitCode, 1);
    EXPECT_EQ(burnt.err, "stanag-overlay: " + file("full.ts") + kDiskFull);
    Result const mp4 = burn("a.ts", file("full.mp4"));
    EXPECT_EQ(mp4.exitCode, 1);
    EXPECT_EQ(mp4.err, "stanag-overlay: " + file("full.mp4") + kDiskFull);
    Result const picture = run({"frame", file("a.ts"), "-c", file("c.json"), "--at", "0", "-o", file("full.png")});
    EXPECT_EQ(picture.exitCode, 1);
    EXPECT_EQ(picture.err, "stanag-overlay: " + file("full.png") + kDiskFull);
    for (Words const& words :
         {Words{"keys", file("a.ts")}, Words{"text", file("a.ts"), "-c", file("c.json")}, Words{"schema"}}) {
        SCOPED_TRACE(words.front());
        Result const printed = run(words, {"", "/dev/full"});
        EXPECT_EQ(printed.exitCode, 1);
        EXPECT_EQ(printed.err,
                  "stanag-overlay: standard output cannot be written: No space left on device; free some space\n");
    }
}

TEST_F(HardInputs, ClosedReaderEndsTheListingQuietly)
{
    clip_test::makeClip({file("a.ts"), 64, 48, 200, "mpeg2video", 90000, {headings(200)}});
    std::string const command = std::string("set -o pipefail; '") + OVERLAY_PROGRAM + "' keys '" + file("a.ts") +
                                "' 2>'" + file("err") + "' | head -1 >'" + file("out") + "'";
    EXPECT_EQ(std::system(("bash -c \"" + command + "\"").c_str()), 0);
    EXPECT_EQ(e2e::readFile(file("err")), "");
    EXPECT_EQ(e2e::linesOf(e2e::readFile(file("out"))).size(), 1U);
}

}  // namespace
