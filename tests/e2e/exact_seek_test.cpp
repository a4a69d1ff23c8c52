// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A picture anywhere in a clip is the one that a full run draws there: holds, delays, frame numbers and all.
#include "clips.h"
#include "recorded_clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;
using media_test::TempFolder;

/// Texts that depend on all that came before: the frame of the last update, held values, delays.
constexpr char const* kConfig = R"({"overlay":[
{"formatString":"%utc_timestamp_us %heading_deg %sensor_alt_m","textSize":96,"updateEveryNFrames":7,"decimals":6},
{"formatString":"%{heading_deg} / %{sensor_lat_deg}","position":{"x":0.1,"y":0.3},"textSize":80,
 "formats":{"heading_deg":{"decimals":5,"refreshEveryMs":730,"holdLastMs":900},
            "sensor_lat_deg":{"decimals":7,"maxValue":41,"holdLastMs":600000}}},
{"formatString":"late %heading_deg","position":{"x":0.1,"y":0.6},"textSize":80,
 "condition":{"key":"heading_deg","operator":"gt","value":100,"showAfterMs":900,"keepAfterMs":1900}}]})";

/// Burns the clip losslessly and compares pictures at random times with those of the burn.
void expectSameAnywhere(std::string const& clip, TempFolder const& folder, int times,
                        std::vector<std::string> const& telemetry = {})
{
    auto const withTelemetry = [&telemetry](std::vector<std::string> words) {
        words.insert(words.end(), telemetry.begin(), telemetry.end());
        return words;
    };
    e2e::writeFile(folder.file("c.json"), kConfig);
    std::string const burn = folder.file("burn.mkv");
    Result const burnt =
        run(withTelemetry({"burn", clip, "-c", folder.file("c.json"), "-o", burn, "--video-codec", "ffv1"}));
    ASSERT_EQ(burnt.exitCode, 0) << burnt.err;
    auto const pictures = clip_test::picturesOf(burn);
    std::vector<double> shown;
    for (std::string const& line : e2e::linesOf(run(withTelemetry({"text", clip, "-c", folder.file("c.json")})).out)) {
        shown.push_back(clip_test::parseLine(line)["pts"].toDouble());
    }
    ASSERT_EQ(shown.size(), pictures.size());
    std::mt19937 random(20261121);
    std::uniform_real_distribution<double> anywhere(0.0, shown.back() - shown.front());
    for (int i = 0; i < times; ++i) {
        // With milliseconds, as people write it.
        double const at = std::floor(anywhere(random) * 1000.0) / 1000.0;
        auto const after = std::upper_bound(shown.begin(), shown.end(), shown.front() + at + 1e-6);
        auto const number = static_cast<std::size_t>(after - shown.begin()) - 1;
        SCOPED_TRACE("at " + std::to_string(at) + " frame " + std::to_string(number));
        Result const picture = run(withTelemetry(
            {"frame", clip, "-c", folder.file("c.json"), "--at", std::to_string(at), "-o", folder.file("frame.png")}));
        EXPECT_EQ(picture.exitCode, 0) << picture.err;
        clip_test::writePngOf(folder.file("expected.png"), *pictures[number]);
        EXPECT_TRUE(e2e::readFile(folder.file("frame.png")) == e2e::readFile(folder.file("expected.png")));
    }
}

class RecordedSeek : public testing::TestWithParam<char const*> {};

TEST_P(RecordedSeek, GivesThePicturesOfAFullRun)
{
    std::string const clip = e2e::recordedClip(GetParam());
    if (!std::filesystem::exists(clip)) {
        GTEST_SKIP() << "recorded data is missing: " << clip << " (set OVERLAY_RECORDED_DATA)";
    }
    TempFolder const folder;
    expectSameAnywhere(clip, folder, 30, e2e::telemetryFor(GetParam(), folder.file("telemetry.jsonl")));
}

INSTANTIATE_TEST_SUITE_P(Rows, RecordedSeek, testing::ValuesIn(e2e::kRecordedClips),
                         [](auto const& row) { return "clip_" + std::to_string(row.index); });

/// Telemetry that turns and has gaps.
SwJsonObject telemetryAt(int number)
{
    if (number % 40 > 30) {
        return {};
    }
    return {{"heading_deg", SwJsonValue((number * 7) % 360)},
            {"sensor_lat_deg", SwJsonValue(40.5 + 0.001 * (number % 1000))},
            {"utc_timestamp_us", SwJsonValue(std::int64_t{1700000000000000} + number * 40000)}};
}

std::vector<SwJsonObject> telemetryOf(int frames)
{
    std::vector<SwJsonObject> payloads;
    for (int number = 0; number < frames; ++number) {
        payloads.push_back(telemetryAt(number));
    }
    return payloads;
}

/// Frames at uneven distances, from a 25th of a second to nearly half a second.
std::vector<std::int64_t> unevenTimes(double seconds)
{
    std::mt19937 random(7);
    std::vector<std::int64_t> times;
    for (std::int64_t ticks = 0; ticks < std::llround(seconds * 90000.0);) {
        times.push_back(ticks);
        ticks += 3600 * (1 + static_cast<std::int64_t>(random() % 11));
    }
    return times;
}

clip_test::ClipSpec unevenClip(std::string const& path, double seconds, std::string const& codec)
{
    clip_test::ClipSpec spec;
    spec.path = path;
    spec.width = 96;
    spec.height = 64;
    spec.codec = codec;
    spec.times = unevenTimes(seconds);
    spec.frames = static_cast<int>(spec.times.size());
    spec.klvStreams = {telemetryOf(spec.frames)};
    return spec;
}

TEST(MadeSeek, TenMinutesWithReorderedPicturesAtUnevenTimes)
{
    TempFolder const folder;
    // This encoder reorders pictures, and its key pictures lie 250 pictures apart, which is about a minute here.
    clip_test::makeClip(unevenClip(folder.file("a.ts"), 600.0, "libx264"));
    expectSameAnywhere(folder.file("a.ts"), folder, 30);
}

/// Blocks whose memory is bounded: values that are held, delays, and one after the other.
std::string boundedConfig(std::mt19937& random)
{
    auto const upTo = [&random](unsigned most) { return std::to_string(random() % (most + 1)); };
    std::string blocks;
    for (int i = 0; i < 8; ++i) {
        std::string const key = random() % 2 == 0 ? "heading_deg" : "sensor_lat_deg";
        std::string const limit = key == "heading_deg" ? upTo(360) : "40." + upTo(9);
        blocks += (i == 0 ? "" : ",") +
                  std::string(R"({"textSize":96,"formatString":"%heading_deg %sensor_lat_deg %frame_index")") +
                  R"(,"formats":{"heading_deg":{"holdLastMs":)" + upTo(900) + R"(,"maxValue":)" + upTo(360) +
                  R"(},"sensor_lat_deg":{"holdLastMs":)" + upTo(300) + R"(}},"condition":{"key":")" + key +
                  R"(","operator":"gt","value":)" + limit + R"(,"showAfterMs":)" + upTo(400) + R"(,"keepAfterMs":)" +
                  upTo(700) + "}}";
    }
    return R"({"overlay":[)" + blocks + "]}";
}

// What lies behind a configuration's memory is not drawn in passing; no text may show it.
TEST(MadeSeek, FramesBehindTheMemoryOfAConfigurationAreNotNeeded)
{
    TempFolder const folder;
    clip_test::makeClip(unevenClip(folder.file("a.ts"), 120.0, "mpeg2video"));
    std::mt19937 random(3);
    std::size_t drawn = 0;
    for (int round = 0; round < 12; ++round) {
        e2e::writeFile(folder.file("c.json"), boundedConfig(random));
        std::vector<std::string> const whole =
            e2e::linesOf(run({"text", folder.file("a.ts"), "-c", folder.file("c.json")}).out);
        ASSERT_GT(whole.size(), 300U);
        double const begin = clip_test::parseLine(whole[0])["pts"].toDouble();
        for (int i = 0; i < 5; ++i) {
            std::size_t const number = random() % (whole.size() - 30);
            double const at = clip_test::parseLine(whole[number])["pts"].toDouble() - begin;
            SCOPED_TRACE("round " + std::to_string(round) + " frame " + std::to_string(number));
            std::vector<std::string> const part =
                e2e::linesOf(run({"text", folder.file("a.ts"), "-c", folder.file("c.json"), "--from",
                                  std::to_string(at), "--to", std::to_string(at + 2.0)})
                                 .out);
            ASSERT_FALSE(part.empty());
            for (std::size_t line = 0; line < part.size(); ++line) {
                ASSERT_EQ(part[line], whole[number + line]);
                drawn += clip_test::parseLine(part[line])["draws"].toArray().size();
            }
        }
    }
    EXPECT_GT(drawn, 500U);
}

TEST(MadeSeek, OtherCodecs)
{
    TempFolder const folder;
    for (char const* const codec : {"mpeg2video", "mpeg4", "mjpeg"}) {
        SCOPED_TRACE(codec);
        std::string const clip = folder.file(std::string(codec) + (std::string(codec) == "mjpeg" ? ".mkv" : ".ts"));
        clip_test::ClipSpec spec = unevenClip(clip, 60.0, codec);
        if (spec.codec == "mjpeg") {
            spec.klvStreams.clear();
        }
        spec.times.clear();  // these encoders count frames
        spec.frames = 400;
        if (!spec.klvStreams.empty()) {
            spec.klvStreams = {telemetryOf(400)};
        }
        clip_test::makeClip(spec);
        expectSameAnywhere(clip, folder, 6);
    }
}

TEST(MadeSeek, JoinedAndDamagedClipsAndClipsWithoutABeginning)
{
    TempFolder const folder;
    clip_test::makeClip(unevenClip(folder.file("a.ts"), 40.0, "libx264"));
    clip_test::makeClip(unevenClip(folder.file("b.ts"), 20.0, "libx264"));
    std::string const a = e2e::readFile(folder.file("a.ts"));
    std::string const b = e2e::readFile(folder.file("b.ts"));
    constexpr std::size_t kPacket = 188;
    e2e::writeFile(folder.file("joined.ts"), a + b);
    // Without its first tenth, and with some packets gone, twisted and filled with noise.
    e2e::writeFile(folder.file("headless.ts"), a.substr(a.size() / 10 / kPacket * kPacket));
    std::string damaged = a;
    damaged.erase(a.size() / 2 / kPacket * kPacket, 3 * kPacket);
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(a.size() / 4), 700, '\x5A');
    e2e::writeFile(folder.file("damaged.ts"), damaged);
    for (char const* const name : {"joined.ts", "headless.ts", "damaged.ts"}) {
        SCOPED_TRACE(name);
        expectSameAnywhere(folder.file(name), folder, 8);
    }
}

/// One to three bytes of pictures changed, each by a bit or wholly, without a trace in the container.
std::string damagedBy(unsigned seed, std::string bytes)
{
    constexpr std::size_t kPacket = 188;
    constexpr std::size_t kHead = 20;  // of a packet: what the container itself reads
    std::mt19937 random(seed);
    for (auto count = 1 + random() % 3; count > 0; --count) {
        std::size_t const packet = 20 + random() % (bytes.size() / kPacket - 20);
        char& byte = bytes[packet * kPacket + kHead + random() % (kPacket - kHead)];
        auto const other = static_cast<char>(random() % 2 == 0 ? 1U << random() % 8 : 1 + random() % 255);
        byte = static_cast<char>(byte ^ other);
    }
    return bytes;
}

struct DamageRow {
    char const* codec;
    unsigned seed;
};

class DamagedSeek : public testing::TestWithParam<DamageRow> {};

TEST_P(DamagedSeek, GoesOnAsAFullRun)
{
    TempFolder const folder;
    std::string const clip = folder.file("a.ts");
    clip_test::ClipSpec spec = unevenClip(clip, 0.0, GetParam().codec);
    spec.times.clear();
    spec.frames = 200;
    spec.klvStreams = {telemetryOf(200)};
    clip_test::makeClip(spec);
    e2e::writeFile(clip, damagedBy(GetParam().seed, e2e::readFile(clip)));
    e2e::writeFile(folder.file("c.json"), kConfig);
    auto const burn = [&](std::string const& output, std::vector<std::string> const& range) {
        // More threads may show damaged parts of H.264 differently each time.
        std::vector<std::string> words = {
            "burn", clip,        "-c", folder.file("c.json"), "-o", folder.file(output), "--video-codec",
            "ffv1", "--threads", "1"};
        words.insert(words.end(), range.begin(), range.end());
        EXPECT_EQ(run(words).exitCode, 0);
        return clip_test::picturesOf(folder.file(output));
    };
    auto const whole = burn("whole.mkv", {});
    for (char const* const from : {"0.9", "3.33", "5.7"}) {
        SCOPED_TRACE(from);
        auto const part = burn("part.mkv", {"--from", from});
        ASSERT_LE(part.size(), whole.size());
        std::size_t const passed = whole.size() - part.size();
        for (std::size_t number = 0; number < part.size(); ++number) {
            EXPECT_TRUE(clip_test::samePicture(*part[number], *whole[passed + number])) << number;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, DamagedSeek,
                         testing::Values(DamageRow{"mpeg2video", 1}, DamageRow{"mpeg2video", 2},
                                         DamageRow{"mpeg2video", 3}, DamageRow{"mpeg2video", 4},
                                         DamageRow{"mpeg2video", 5}, DamageRow{"mpeg2video", 6},
                                         DamageRow{"libx264", 1}, DamageRow{"libx264", 2}, DamageRow{"libx264", 3},
                                         DamageRow{"libx264", 4}, DamageRow{"libx264", 5}, DamageRow{"libx264", 6}),
                         [](auto const& row) { return row.param.codec + ("_" + std::to_string(row.param.seed)); });

TEST(MadeSeek, IsTheSameThroughAPipe)
{
    TempFolder const folder;
    clip_test::makeClip(unevenClip(folder.file("a.ts"), 30.0, "libx264"));
    e2e::writeFile(folder.file("c.json"), kConfig);
    e2e::RunOptions piped;
    piped.inputFile = folder.file("a.ts");
    ASSERT_EQ(
        run({"frame", "-", "-c", folder.file("c.json"), "--at", "21.7", "-o", folder.file("p.png")}, piped).exitCode,
        0);
    ASSERT_EQ(
        run({"frame", folder.file("a.ts"), "-c", folder.file("c.json"), "--at", "21.7", "-o", folder.file("f.png")})
            .exitCode,
        0);
    EXPECT_TRUE(e2e::readFile(folder.file("p.png")) == e2e::readFile(folder.file("f.png")));
}

TEST(MadeSeek, BeyondTheEndNamesTheClipsLength)
{
    TempFolder const folder;
    clip_test::makeClip({folder.file("a.ts"), 64, 48, 50, "libx264", 90000, {}});
    e2e::writeFile(folder.file("c.json"), kConfig);
    for (char const* const at : {"2", "00:00:02", "7:01.5"}) {
        Result const result =
            run({"frame", folder.file("a.ts"), "-c", folder.file("c.json"), "--at", at, "-o", folder.file("f.png")});
        EXPECT_EQ(result.exitCode, 1);
        std::string const asked = std::string(at) == "7:01.5" ? "421.500 s" : "2.000 s";
        EXPECT_EQ(result.err, "stanag-overlay: " + folder.file("a.ts") + ": has no picture at " + asked +
                                  ": it ends at 2.000 s; give an earlier time\n");
    }
    EXPECT_EQ(
        run({"frame", folder.file("a.ts"), "-c", folder.file("c.json"), "--at", "1.999", "-o", folder.file("f.png")})
            .exitCode,
        0);
}

}  // namespace
