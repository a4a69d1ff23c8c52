// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry that stands where it belongs: files by their stamps, offsets, greatest age, several streams.
#include "clips.h"
#include "run_program.h"
#include "telemetry/telemetry.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;
using e2e::Result;
using e2e::run;

constexpr int kFrames = 20;  // of 40 ms

/// Number `number` as a heading, stamped `milliseconds` after the first one; without stamp when that is negative.
SwJsonObject numbered(int number, int milliseconds)
{
    SwJsonObject payload{{"heading_deg", SwJsonValue(static_cast<double>(number))}};
    if (milliseconds >= 0) {
        payload.insertOrAssign("utc_timestamp_us",
                               SwJsonValue(std::int64_t{1700000000000000} + std::int64_t{milliseconds} * 1000));
    }
    return payload;
}

/// The packets of a raw KLV file with these stamps.
std::string rawKlv(std::vector<int> const& milliseconds)
{
    std::string bytes;
    for (std::size_t number = 0; number < milliseconds.size(); ++number) {
        auto const packet = telemetry::encodeKlv(numbered(static_cast<int>(number), milliseconds[number]));
        bytes.append(packet.begin(), packet.end());
    }
    return bytes;
}

std::vector<int> steps(int count, int milliseconds)
{
    std::vector<int> stamps;
    for (int number = 0; number < count; ++number) {
        stamps.push_back(number * milliseconds);
    }
    return stamps;
}

class Telemetry : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = new media_test::TempFolder;
        e2e::writeFile(
            file("c.json"),
            R"({"overlay":[{"formatString":"%heading_deg","decimals":0,"formats":{"course_3digits":{}},"textSize":100}]})");
        e2e::writeFile(file("host.json"),
                       R"({"overlay":[{"formatString":"%heading_deg %telemetry_age_s %video_time_s %frame_index",
                       "decimals":2,"textSize":100}]})");
        clip_test::makeClip({file("plain.ts"), 64, 48, kFrames, "mpeg2video"});
        std::vector<SwJsonObject> first;
        std::vector<SwJsonObject> second;
        for (int number = 0; number < kFrames; ++number) {
            first.push_back(numbered(number, number * 40));
            second.push_back(numbered(100 + number, number * 40));
        }
        clip_test::makeClip({file("own.ts"), 64, 48, kFrames, "mpeg2video", 90000, {first}});
        clip_test::makeClip({file("late.ts"), 64, 48, kFrames, "mpeg2video", 900000, {first}});
        clip_test::makeClip({file("two.ts"), 64, 48, kFrames, "mpeg2video", 90000, {first, second}});
        e2e::writeFile(file("t.klv"), rawKlv(steps(10, 80)));
        e2e::writeFile(file("lines.jsonl"), "{\"t\":0,\"heading_deg\":7}\n{\"t\":0.4,\"heading_deg\":8}\n");
    }
    static void TearDownTestSuite()
    {
        delete folder_;
        folder_ = nullptr;
    }
    static std::string file(std::string const& name) { return folder_->file(name); }

    /// "text" on a clip of the folder; "@" at the start of a word stands for the folder.
    static Result text(std::string const& clip, Words const& more, std::string const& config = "c.json")
    {
        Words words = {"text", file(clip), "-c", file(config)};
        for (std::string const& word : more) {
            words.push_back(word.rfind('@', 0) == 0 ? file(word.substr(1)) : word);
        }
        return run(words);
    }

    /// What is drawn, one after the other: "." for nothing, how often it stands as "x3".
    static std::string drawn(Result const& result)
    {
        std::string all;
        std::string last;
        int count = 0;
        auto const flush = [&] {
            all += count == 0 ? "" : (all.empty() ? "" : " ") + last + "x" + std::to_string(count);
        };
        for (std::string const& line : e2e::linesOf(result.out)) {
            SwJsonObject const parsed = clip_test::parseLine(line);
            SwJsonArray const& draws = parsed["draws"].toArray();
            std::string const now = draws.empty() ? "." : draws[0].toObject()["text"].toString();
            if (now != last) {
                flush();
                last = now;
                count = 0;
            }
            ++count;
        }
        flush();
        return all;
    }

private:
    inline static media_test::TempFolder* folder_ = nullptr;
};

constexpr char const* kEverySecond = "0x2 1x2 2x2 3x2 4x2 5x2 6x2 7x2 8x2 9x2";
constexpr char const* kEach =
    "0x1 1x1 2x1 3x1 4x1 5x1 6x1 7x1 8x1 9x1 10x1 11x1 12x1 13x1 14x1 15x1 16x1 17x1 18x1 19x1";

TEST_F(Telemetry, RawKlvFollowsItsStamps)
{
    Result const result = text("plain.ts", {"--telemetry", "@t.klv"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(drawn(result), kEverySecond);
    e2e::writeFile(file("flight.klv"), rawKlv(steps(147, 200)));
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@flight.klv"})), "0x5 1x5 2x5 3x5")
        << "a flight longer than the clip is not squeezed into it";
}

TEST_F(Telemetry, RawKlvWithoutStampsIsSpreadAndThatIsSaid)
{
    e2e::writeFile(file("plain.klv"), rawKlv(std::vector<int>(10, -1)));
    Result const result = text("plain.ts", {"--telemetry", "@plain.klv"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "stanag-overlay: " + file("plain.klv") +
                              ": 10 packets have no time; they were spread evenly over the clip\n");
    EXPECT_EQ(drawn(result), kEverySecond);
}

TEST_F(Telemetry, StampsThatJumpLeaveReadingOrderAndThatIsSaid)
{
    e2e::writeFile(file("jump.klv"), rawKlv({90000, 90080, 90160, 10, 90, 170, 3600000, 3600080, 3600160, 3600240}));
    Result const result = text("plain.ts", {"--telemetry", "@jump.klv"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "stanag-overlay: " + file("jump.klv") +
                              ": 2 time stamps jump or run backwards; reading order decides there\n");
    EXPECT_EQ(drawn(result), kEverySecond);
}

TEST_F(Telemetry, FilesOfAnyNameAreLookedInto)
{
    std::filesystem::copy_file(file("t.klv"), file("raw.dat"));
    std::filesystem::copy_file(file("lines.jsonl"), file("lines.txt"));
    std::filesystem::copy_file(file("own.ts"), file("clip"));
    e2e::writeFile(file("table.csv"), "t;heading_deg\n0;90\n");
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@raw.dat"})), kEverySecond);
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@lines.txt"})), "7x10 8x10");
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@clip"})), kEach);
    Result const table = text("plain.ts", {"--telemetry", "@table.csv"});
    EXPECT_EQ(table.exitCode, 1);
    EXPECT_EQ(table.err, "stanag-overlay: " + file("table.csv") +
                             ": holds no telemetry that can be read; give raw KLV, JSON Lines or a clip with KLV\n");
    Result const none = text("plain.ts", {"--telemetry", "@none.ts"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.err, "stanag-overlay: " + file("none.ts") +
                            ": cannot open the telemetry file (No such file or directory); check the name and its "
                            "permissions\n");
}

TEST_F(Telemetry, OffsetShiftsEverySource)
{
    struct Row {
        char const* name;
        char const* clip;
        Words words;
        char const* drawn;
    };
    Row const rows[] = {
        {"raw later", "plain.ts", {"--telemetry", "@t.klv", "--telemetry-offset", "0.4"}, ".x10 0x2 1x2 2x2 3x2 4x2"},
        {"raw earlier", "plain.ts", {"--telemetry", "@t.klv", "--telemetry-offset", "-0.4"}, "5x2 6x2 7x2 8x2 9x12"},
        {"lines later", "plain.ts", {"--telemetry", "@lines.jsonl", "--telemetry-offset", "0.2"}, ".x5 7x10 8x5"},
        {"lines earlier", "plain.ts", {"--telemetry", "@lines.jsonl", "--telemetry-offset=-0.2"}, "7x5 8x15"},
        {"another clip", "plain.ts", {"--telemetry", "@late.ts", "--telemetry-offset", "-0.68"}, "17x1 18x1 19x18"},
        {"its own later", "own.ts", {"--telemetry-offset", "0.72"}, ".x18 0x1 1x1"},
        {"its own earlier", "own.ts", {"--telemetry-offset", "-0.68"}, "17x1 18x1 19x18"},
        {"beyond the clip", "own.ts", {"--telemetry-offset", "1e9"}, ".x20"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        Result const result = text(row.clip, row.words);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(drawn(result), row.drawn);
    }
}

TEST_F(Telemetry, OffsetOfAPipeIsThatOfTheFile)
{
    for (char const* const offset : {"-0.68", "0.72"}) {
        Result const piped =
            run({"text", "-", "-c", file("c.json"), "--telemetry-offset", offset}, {file("own.ts"), ""});
        EXPECT_EQ(piped.err, "");
        EXPECT_EQ(piped.out, text("own.ts", {"--telemetry-offset", offset}).out);
    }
}

TEST_F(Telemetry, AnotherClipStandsFromFirstPictureToFirstPicture)
{
    Result const result = text("plain.ts", {"--telemetry", "@late.ts"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(drawn(result), kEach);
    Result const without = text("own.ts", {"--telemetry", "@plain.ts"});
    EXPECT_EQ(without.exitCode, 0);
    EXPECT_EQ(without.err,
              "stanag-overlay: " + file("plain.ts") + ": no usable telemetry was found: there is no KLV stream\n");
    EXPECT_EQ(drawn(without), ".x20");
}

TEST_F(Telemetry, WhatKeysPrintsGivesTheSameTexts)
{
    for (char const* const clip : {"own.ts", "late.ts", "two.ts"}) {
        SCOPED_TRACE(clip);
        e2e::writeFile(file("k.jsonl"), run({"keys", file(clip)}).out);
        Result const result = text(clip, {"--telemetry", "@k.jsonl"}, "host.json");
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, text(clip, {}, "host.json").out);
    }
    // Lines without "t" count by their "pts".
    e2e::writeFile(file("pts.jsonl"),
                   "{\"packet\": 0, \"pts\": 0.0, \"checksum\": \"ok\", \"payload\": {\"heading_deg\": 3}}\n"
                   "{\"packet\": 1, \"pts\": 0.2, \"checksum\": \"ok\", \"payload\": {\"heading_deg\": 4}}\n");
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@pts.jsonl"})), "3x5 4x15");
}

TEST_F(Telemetry, TextsOfJsonLinesStayTexts)
{
    e2e::writeFile(file("texts.jsonl"), R"({"t":0,"tail":"00123","side":"1e5","n":123,"d":1.50})"
                                        "\n");
    e2e::writeFile(file("texts.json"), R"({"overlay":[{"formatString":"%tail %side %n %d","textSize":100}]})");
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@texts.jsonl"}, "texts.json")), "00123 1e5 123 1.500000x20");
}

TEST_F(Telemetry, TextsThatLookLikeNumbersFollowTheBlocksDecimals)
{
    e2e::writeFile(file("texts.jsonl"), "{\"t\":0,\"tail\":\"00123\",\"side\":\"N12\"}\n");
    e2e::writeFile(file("texts.json"), R"({"overlay":[{"formatString":"%tail %side","textSize":100,"decimals":0},
        {"formatString":"%tail","textSize":100,"decimals":0,"formats":{"tail":{"decimals":-1}}}]})");
    Result const result = text("plain.ts", {"--telemetry", "@texts.jsonl"}, "texts.json");
    EXPECT_EQ(drawn(result), "123 N12x20");
    std::string const first = e2e::linesOf(result.out).front();
    EXPECT_NE(first.find("{\"text\": \"00123\""), std::string::npos) << "the key's own format wins: " << first;
}

TEST_F(Telemetry, TheFirstOfJsonLinesMayHoldConstants)
{
    e2e::writeFile(file("tail.json"), R"({"overlay":[{"formatString":"%tail %heading_deg","textSize":100}]})");
    struct Row {
        char const* name;
        std::string lines;
        char const* drawn;
    };
    std::string const headings = "{\"t\":0.2,\"heading_deg\":1}\n{\"t\":0.4,\"heading_deg\":2}\n";
    Row const rows[] = {
        {"without a time", "{\"tail\":\"T7\"}\n" + headings, "T7 --x5 T7 1x5 T7 2x10"},
        {"with one", "{\"t\":0,\"tail\":\"T7\"}\n" + headings, "T7 --x5 T7 1x5 T7 2x10"},
        {"a later line says otherwise, for itself only",
         "{\"tail\":\"T7\"}\n{\"t\":0,\"tail\":\"T8\",\"heading_deg\":0}\n" + headings, "T8 0x5 T7 1x5 T7 2x10"},
        {"null says otherwise too", "{\"tail\":\"T7\"}\n{\"t\":0,\"tail\":null,\"heading_deg\":0}\n" + headings,
         "null 0x5 T7 1x5 T7 2x10"},
        {"later lines hold for themselves", headings + "{\"t\":0.6,\"tail\":\"T9\"}\n", ".x5 -- 1x5 -- 2x5 T9 1x5"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        e2e::writeFile(file("t.jsonl"), row.lines);
        Result const result = text("plain.ts", {"--telemetry", "@t.jsonl"}, "tail.json");
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(drawn(result), row.drawn);
    }
    // Greatest age counts from the line that is shown, not from the first one.
    e2e::writeFile(file("t.jsonl"), rows[0].lines);
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@t.jsonl", "--max-age", "0.2"}, "tail.json")),
              "T7 --x5 T7 1x5 T7 2x6 -- --x4");
}

TEST_F(Telemetry, BeyondTheGreatestAgeItCountsAsGone)
{
    std::vector<SwJsonObject> payloads(170);
    payloads[10] = numbered(5, 0);
    payloads[160] = numbered(6, 6000);
    clip_test::makeClip({file("gap.ts"), 64, 48, 170, "mpeg2video", 90000, {payloads}});
    EXPECT_EQ(drawn(text("gap.ts", {})), ".x10 5x126 --x24 6x10") << "five seconds, and blocks stay in place";
    EXPECT_EQ(drawn(text("gap.ts", {"--max-age", "0"})), ".x10 5x150 6x10") << "without limit";
    EXPECT_EQ(drawn(text("gap.ts", {"--max-age", "0.2"})), ".x10 5x6 --x144 6x6 --x4");
    Result const burnt =
        run({"burn", file("gap.ts"), "-c", file("c.json"), "-o", file("burnt.ts"), "--max-age", "0.2"});
    EXPECT_EQ(burnt.exitCode, 0);
    EXPECT_EQ(burnt.err, "");
    // Raw KLV grows old as well, JSON Lines only when somebody says so.
    e2e::writeFile(file("one.klv"), rawKlv({0}));
    EXPECT_EQ(drawn(text("gap.ts", {"--telemetry", "@one.klv"})), "0x126 --x44");
    e2e::writeFile(file("one.jsonl"), "{\"t\":0,\"heading_deg\":9}\n");
    EXPECT_EQ(drawn(text("gap.ts", {"--telemetry", "@one.jsonl"})), "9x170");
    EXPECT_EQ(drawn(text("gap.ts", {"--telemetry", "@one.jsonl", "--max-age", "1"})), "9x26 --x144");
}

TEST_F(Telemetry, HostKeysAreThereOnceThereHasBeenTelemetry)
{
    std::vector<SwJsonObject> payloads(8);
    payloads[2] = numbered(5, 0);
    payloads[5] = numbered(6, 120);
    clip_test::makeClip({file("host.ts"), 64, 48, 8, "mpeg2video", 90000, {payloads}});
    EXPECT_EQ(drawn(text("host.ts", {"--max-age", "0.05"}, "host.json")),
              ".x2 5 0 0.08 2x1 5 0.04 0.12 3x1 -- 0.08 0.16 4x1 6 0 0.2 5x1 6 0.04 0.24 6x1 -- 0.08 0.28 7x1");
    EXPECT_EQ(drawn(text("plain.ts", {}, "host.json")), ".x20") << "a clip that never had any stays untouched";
    e2e::writeFile(file("own_keys.jsonl"), "{\"t\":0,\"heading_deg\":1,\"frame_index\":77,\"video_time_s\":-1}\n");
    EXPECT_EQ(drawn(text("plain.ts", {"--telemetry", "@own_keys.jsonl"}, "host.json")).substr(0, 30),
              "1 0 -1 77x1 1 0.04 -1 77x1 1 0")
        << "keys of the telemetry win";
}

TEST_F(Telemetry, StreamsAreNamedAndChosen)
{
    std::vector<std::string> const lines = e2e::linesOf(run({"keys", file("two.ts")}).out);
    ASSERT_EQ(lines.size(), 2U * kFrames);
    std::size_t const tail = std::string(R"("stream": "0x101", "t": 0.0})").size();
    EXPECT_EQ(lines[0].substr(lines[0].size() - tail), R"("stream": "0x101", "t": 0.0})");
    EXPECT_EQ(lines[1].substr(lines[1].size() - tail), R"("stream": "0x102", "t": 0.0})");
    e2e::writeFile(file("both.jsonl"), run({"keys", file("two.ts")}).out);
    struct Row {
        Words words;
        int first;
    };
    Row const rows[] = {
        {{}, 0},
        {{"--klv", "0x101"}, 0},
        {{"--klv", "0x102"}, 100},
        {{"--klv", "0X102"}, 100},
        {{"--klv", "2"}, 100},
        {{"--klv", "0x102", "--telemetry-offset", "-0.0001"}, 100},
        {{"--klv", "0x102", "--telemetry", "@both.jsonl"}, 100},
        {{"--klv", "0x102", "--telemetry", "@two.ts"}, 100},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        Result const result = text("two.ts", row.words);
        EXPECT_EQ(result.err, "");
        std::string const expected = std::to_string(row.first) + "x1 " + std::to_string(row.first + 1) + "x1 ";
        EXPECT_EQ(drawn(result).substr(0, expected.size()), expected);
    }
    Result const keys = run({"keys", file("two.ts"), "--klv", "0x102"});
    EXPECT_EQ(e2e::linesOf(keys.out).size(), static_cast<std::size_t>(kFrames));
    EXPECT_EQ(keys.out.find("0x101"), std::string::npos);
    ASSERT_EQ(run({"burn", file("two.ts"), "-c", file("c.json"), "-o", file("o.ts"), "--klv", "0x102"}).exitCode, 0);
    EXPECT_EQ(clip_test::packetsOf(file("o.ts")).klv, 2 * kFrames) << "all streams are copied";
    EXPECT_EQ(
        run({"frame", file("two.ts"), "-c", file("c.json"), "--at", "0.4", "-o", file("o.png"), "--klv", "2"}).exitCode,
        0);
}

TEST_F(Telemetry, UnknownStreamsAreRefusedWithThoseThatAreThere)
{
    std::string const there = ": has no KLV stream 0x1f1; there are 0x101 (number 1), 0x102 (number 2)\n";
    for (Words words : {Words{"keys"}, Words{"text", "-c", file("c.json")}, Words{"schema"},
                        Words{"burn", "-c", file("c.json"), "-o", file("n.ts")},
                        Words{"frame", "-c", file("c.json"), "--at", "0", "-o", file("n.png")}}) {
        SCOPED_TRACE(words.front());
        words.insert(words.begin() + 1, file("two.ts"));
        words.insert(words.end(), {"--klv", "0x1f1"});
        Result const result = run(words);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "stanag-overlay: " + file("two.ts") + there);
    }
    EXPECT_EQ(run({"check", file("c.json"), file("two.ts"), "--klv", "0x1f1"}).err,
              "stanag-overlay: " + file("two.ts") + there);
    EXPECT_EQ(text("plain.ts", {"--klv", "1"}).err,
              "stanag-overlay: " + file("plain.ts") + ": has no KLV stream 1 and no other; leave out --klv\n");
    EXPECT_EQ(text("plain.ts", {"--telemetry", "@t.klv", "--klv", "1"}).err,
              "stanag-overlay: " + file("t.klv") + ": has no KLV stream 1 and no other; leave out --klv\n");
    Result const nonsense = text("two.ts", {"--klv", "first"});
    EXPECT_EQ(nonsense.exitCode, 2);
    EXPECT_EQ(nonsense.err, "stanag-overlay: --klv first: give a PID such as 0x1f1, or the stream's number\n");
    EXPECT_FALSE(std::filesystem::exists(file("n.ts")));
    EXPECT_FALSE(std::filesystem::exists(file("n.png")));
}

TEST_F(Telemetry, OptionsThatCannotBeMeantAreWrongUsage)
{
    struct Row {
        char const* option;
        char const* value;
        char const* line;
    };
    for (Row const& row :
         {Row{"--max-age", "-1", "--max-age: give a number from 0 to 1000000000"},
          Row{"--max-age", "nan", "--max-age: give a number from 0 to 1000000000"},
          Row{"--telemetry-offset", "nan", "--telemetry-offset: give a number from -1000000000 to 1000000000"},
          Row{"--telemetry-offset", "late", "--telemetry-offset: give a number from -1000000000 to 1000000000"}}) {
        Result const result = text("own.ts", {row.option, row.value});
        EXPECT_EQ(result.exitCode, 2);
        ASSERT_FALSE(e2e::linesOf(result.err).empty());
        EXPECT_EQ(e2e::linesOf(result.err).front(),
                  "stanag-overlay: text: " + std::string(row.line) + "; see stanag-overlay text --help");
    }
}

TEST_F(Telemetry, SchemaAndCheckTakeItToo)
{
    EXPECT_NE(
        run({"schema", file("plain.ts"), "--telemetry", file("lines.jsonl")})
            .out.find(
                R"("default": ["frame_index","heading_3digits","heading_compass","heading_deg","telemetry_age_s",)"
                R"("video_time_s","video_time_text"])"),
        std::string::npos);
    EXPECT_NE(run({"schema", "--telemetry", file("lines.jsonl")}).out.find("\"heading_deg\""), std::string::npos);
    EXPECT_NE(run({"schema", file("plain.ts")}).out.find("\"default\": []"), std::string::npos);
    e2e::writeFile(file("check.json"), R"({"overlay":[{"formatString":"%heading_deg %telemetry_age_s %pitch_deg"}]})");
    EXPECT_EQ(run({"check", file("check.json"), file("plain.ts"), "--telemetry", file("lines.jsonl")}).out,
              file("check.json") + ": no block is drawn on the first pictures; --at chooses another one\n" +
                  file("check.json") + ": overlay[0].formatString: the input never delivers \"pitch_deg\"\n");
}

TEST_F(Telemetry, KeysGivesTimesWithTheOffset)
{
    EXPECT_EQ(run({"keys", file("own.ts"), "--telemetry", file("lines.jsonl"), "--telemetry-offset", "-1.5"}).out,
              "{\"packet\": 0, \"pts\": -1.5, \"checksum\": \"absent\", \"payload\": {\"heading_deg\": 7}}\n"
              "{\"packet\": 1, \"pts\": -1.1, \"checksum\": \"absent\", \"payload\": {\"heading_deg\": 8}}\n");
    std::string const first = e2e::linesOf(run({"keys", file("late.ts"), "--telemetry-offset", "2"}).out).front();
    EXPECT_EQ(first.rfind(R"({"packet": 0, "pts": 12.0, )", 0), 0U) << first;
    EXPECT_NE(first.find(R"(, "stream": "0x101", "t": 2.0})"), std::string::npos) << first;
    EXPECT_EQ(e2e::linesOf(run({"keys", file("t.klv")}).out).front().find("\"stream\""), std::string::npos);
}

/// Ten packets of a JSON Lines file: 10 metres per second to the north-east, one packet without a position.
std::string movingLines()
{
    std::string lines;
    for (int number = 0; number < 10; ++number) {
        lines += "{\"t\": 0.0" + std::to_string(number) + ", \"velocity_north_mps\": 3.0, \"velocity_east_mps\": 4, " +
                 (number == 1 ? "\"note\": \"a, \\\"b\\\"\"" : "\"sensor_lat_deg\": 60.39, \"sensor_lon_deg\": 5.32") +
                 "}\n";
    }
    return lines;
}

TEST_F(Telemetry, DerivedKeysAreThereForThoseWhoNameThem)
{
    e2e::writeFile(file("moving.jsonl"), movingLines());
    e2e::writeFile(file("derived.json"),
                   R"({"overlay":[{"formatString":"%{sensor_mgrs}|%{sensor_lat_dms}|%{speed_kmh}|%{course_3digits}|)"
                   R"(%{video_time_text}","decimals":0,"formats":{"course_3digits":{}},"textSize":100}]})");
    Result const text =
        run({"text", file("plain.ts"), "-c", file("derived.json"), "--telemetry", file("moving.jsonl")});
    ASSERT_EQ(text.exitCode, 0) << text.err;
    EXPECT_NE(text.out.find("32V KN 97230 00510|60\u00B023'24.00\\\"N|18|053|00:00:00.000"), std::string::npos)
        << text.out.substr(0, 400);
    EXPECT_NE(text.out.find("|00:00:00.760"), std::string::npos);

    Result const keys = run({"keys", file("moving.jsonl")});
    EXPECT_EQ(keys.out.find("speed"), std::string::npos) << "only for those who ask";
    Result const derived = run({"keys", file("moving.jsonl"), "--derived"});
    EXPECT_EQ(e2e::linesOf(derived.out).at(1),
              R"({"packet": 1, "pts": 0.01, "checksum": "absent", "payload": {"course_3digits": "053", )"
              R"("course_compass": "NE", "course_deg": 53.13010235415598, "note": "a, \"b\"", "speed_kmh": 18.0, )"
              R"("speed_kt": 9.719222462203025, "speed_mps": 5.0, "velocity_east_kmh": 14.4, )"
              R"("velocity_east_kt": 7.775377969762419, "velocity_east_mps": 4, "velocity_north_kmh": 10.8, )"
              R"("velocity_north_kt": 5.831533477321814, "velocity_north_mps": 3.0}})");

    Result const schema = run({"schema", file("moving.jsonl")});
    EXPECT_NE(schema.out.find("\"sensor_mgrs\""), std::string::npos);
    EXPECT_NE(schema.out.find("\"video_time_text\""), std::string::npos);
    EXPECT_EQ(schema.out.find("\"heading_compass\""), std::string::npos);

    EXPECT_EQ(run({"check", file("derived.json"), file("moving.jsonl")}).exitCode, 0);
    e2e::writeFile(file("other.json"), R"({"overlay":[{"formatString":"%heading_compass","textSize":100}]})");
    Result const check = run({"check", file("other.json"), file("moving.jsonl")});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_NE(check.out.find("overlay[0].formatString: the input never delivers \"heading_compass\": it is made of "
                             "\"heading_deg\", which is missing\n"),
              std::string::npos)
        << check.out;
}

TEST_F(Telemetry, TableOfKeys)
{
    e2e::writeFile(file("moving.jsonl"), movingLines());
    std::string const head = "packet,pts,checksum,stream,t,note,sensor_lat_deg,sensor_lon_deg,velocity_east_mps,"
                             "velocity_north_mps\n"
                             "0,0.0,absent,,,,60.39,5.32,4,3.0\n"
                             "1,0.01,absent,,,\"a, \"\"b\"\"\",,,4,3.0\n";
    Result const table = run({"keys", file("moving.jsonl"), "--csv"});
    EXPECT_EQ(table.exitCode, 0) << table.err;
    EXPECT_EQ(table.out.substr(0, head.size()), head);
    EXPECT_EQ(e2e::linesOf(table.out).size(), 11U);

    Result const clip = run({"keys", file("own.ts"), "--csv", "--derived"});
    e2e::RunOptions piped;
    piped.inputFile = file("own.ts");
    EXPECT_EQ(run({"keys", "-", "--csv", "--derived"}, piped).out, clip.out) << "what is read once gives the same";
    EXPECT_NE(clip.out.find("heading_compass"), std::string::npos);
}

}  // namespace
