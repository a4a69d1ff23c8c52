// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Parts of a clip: burnt one by one and joined they are the whole, picture by picture and packet by packet.
#include "clips.h"
#include "recorded_clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;

/// A held value, a delay and a rare update: texts that reach from one part into the next.
constexpr char const* kConfig = R"({"overlay":[
{"formatString":"%heading_deg","textSize":128,"updateEveryNFrames":9,"formats":{"heading_deg":{"holdLastMs":2000}}},
{"formatString":"%heading_deg","textSize":128,"position":{"x":0.1,"y":0.4},
 "formats":{"heading_deg":{"refreshEveryMs":1300}}},
{"formatString":"after","textSize":128,"position":{"x":0.1,"y":0.7},
 "condition":{"key":"heading_deg","operator":"lt","value":50,"showAfterMs":400,"keepAfterMs":1500}}]})";

class Ranges : public testing::Test {
protected:
    static constexpr int kFrames = 600;

    Ranges()
    {
        e2e::writeFile(file("c.json"), kConfig);
        std::vector<SwJsonObject> telemetry;
        for (int number = 0; number < kFrames; ++number) {
            // A gap of 15 frames in every 75.
            bool const there = number % 75 < 60;
            telemetry.push_back(there ? SwJsonObject{{"heading_deg", SwJsonValue(number % 100)}}
                                      : SwJsonObject{{"sensor_alt_m", SwJsonValue(5)}});
        }
        clip_test::makeClip({clip_, 96, 64, kFrames, "libx264", 90000, {telemetry}, true});
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    Result burn(std::string const& output, std::vector<std::string> const& range) const
    {
        std::vector<std::string> words = {"burn", clip_, "-c", file("c.json"), "-o", file(output)};
        words.insert(words.end(), range.begin(), range.end());
        return run(words);
    }

    /// Expects of the part all packets of the whole from `begin` up to `end`, in seconds after the first picture.
    void expectPart(std::string const& part, clip_test::StreamTimes const& whole, double begin, double end) const
    {
        SCOPED_TRACE(part);
        constexpr double kFirstPicture = 1.0;
        constexpr double kTick = 1.0 / 90000.0;
        clip_test::StreamTimes const times = clip_test::timesOf(file(part));
        auto const expectTimes = [&](std::vector<double> const& found, std::vector<double> const& all) {
            std::vector<double> expected;
            for (double const time : all) {
                if (time - kFirstPicture >= begin - kTick && time - kFirstPicture < end - kTick) {
                    expected.push_back(time - std::max(begin, 0.0));
                }
            }
            ASSERT_EQ(found.size(), expected.size());
            EXPECT_NEAR(found.front(), expected.front(), 2 * kTick);
            EXPECT_NEAR(found.back(), expected.back(), 2 * kTick);
        };
        expectTimes(times.klv, whole.klv);
        expectTimes(times.sound, whole.sound);
    }

    media_test::TempFolder folder_;
    std::string clip_ = folder_.file("a.ts");
};

TEST_F(Ranges, JoinedAreTheWhole)
{
    // The cuts lie between key pictures, in a gap that is held over, and between two frames.
    std::vector<std::string> const codec = {"--video-codec", "ffv1"};
    auto const withCodec = [&codec](std::vector<std::string> range) {
        range.insert(range.end(), codec.begin(), codec.end());
        return range;
    };
    ASSERT_EQ(burn("whole.mkv", codec).exitCode, 0);
    ASSERT_EQ(burn("1.mkv", withCodec({"--to", "2.72"})).exitCode, 0);
    ASSERT_EQ(burn("2.mkv", withCodec({"--from", "2.72", "--to", "00:13.333"})).exitCode, 0);
    ASSERT_EQ(burn("3.mkv", withCodec({"--from", "00:00:13.333"})).exitCode, 0);
    auto const whole = clip_test::picturesOf(file("whole.mkv"));
    auto joined = clip_test::picturesOf(file("1.mkv"));
    EXPECT_EQ(joined.size(), 68U);
    for (char const* const part : {"2.mkv", "3.mkv"}) {
        for (auto& picture : clip_test::picturesOf(file(part))) {
            joined.push_back(std::move(picture));
        }
    }
    ASSERT_EQ(whole.size(), static_cast<std::size_t>(kFrames));
    ASSERT_EQ(joined.size(), whole.size());
    for (std::size_t number = 0; number < whole.size(); ++number) {
        EXPECT_TRUE(clip_test::samePicture(*whole[number], *joined[number])) << number;
    }
}

TEST_F(Ranges, CutTelemetryAndSoundAtTheSamePlaces)
{
    ASSERT_EQ(burn("whole.ts", {}).exitCode, 0);
    ASSERT_EQ(burn("1.ts", {"--to", "5"}).exitCode, 0);
    ASSERT_EQ(burn("2.ts", {"--from", "5", "--to", "17.5"}).exitCode, 0);
    ASSERT_EQ(burn("3.ts", {"--from", "17.5"}).exitCode, 0);
    clip_test::StreamCounts const whole = clip_test::packetsOf(file("whole.ts"));
    clip_test::StreamCounts const first = clip_test::packetsOf(file("1.ts"));
    clip_test::StreamCounts const second = clip_test::packetsOf(file("2.ts"));
    clip_test::StreamCounts const third = clip_test::packetsOf(file("3.ts"));
    EXPECT_EQ(whole.video, kFrames);
    EXPECT_EQ(whole.klv, kFrames);
    EXPECT_EQ(first.video, 125);
    EXPECT_EQ(first.klv, 125);
    EXPECT_EQ(second.video, 313);
    EXPECT_EQ(second.klv, 313);
    EXPECT_EQ(third.video, kFrames - 125 - 313);
    EXPECT_EQ(third.klv, kFrames - 125 - 313);
    EXPECT_EQ(first.sound + second.sound + third.sound, whole.sound);
    // Each packet stands as long after its part's first picture as after the picture in the clip. The second cut is at
    // 17.52 s, where the first picture after 17.5 s is shown.
    clip_test::StreamTimes const times = clip_test::timesOf(file("whole.ts"));
    expectPart("1.ts", times, -1.0, 5.0);
    expectPart("2.ts", times, 5.0, 17.52);
    expectPart("3.ts", times, 17.52, 100.0);
    // The same telemetry in the same order, each part from the time on at which the clip begins.
    auto const payloads = [](std::string const& out) {
        std::vector<std::string> found;
        for (std::string const& line : e2e::linesOf(out)) {
            std::size_t const payload = line.find("\"payload\"");
            found.push_back(line.substr(payload, line.find('}', payload) - payload));
        }
        return found;
    };
    std::vector<std::string> joined;
    for (char const* const part : {"1.ts", "2.ts", "3.ts"}) {
        Result const keys = run({"keys", file(part)});
        EXPECT_DOUBLE_EQ(clip_test::parseLine(e2e::linesOf(keys.out).front())["pts"].toDouble(), 1.0) << part;
        std::vector<std::string> const more = payloads(keys.out);
        joined.insert(joined.end(), more.begin(), more.end());
    }
    EXPECT_EQ(joined, payloads(run({"keys", clip_}).out));
}

/// Parts of a recorded clip, cut at these shares of its pictures.
class RecordedRanges : public testing::TestWithParam<char const*> {};

TEST_P(RecordedRanges, JoinedAreTheWhole)
{
    std::string const clip = e2e::recordedClip(GetParam());
    if (!std::filesystem::exists(clip)) {
        GTEST_SKIP() << "recorded data is missing: " << clip << " (set OVERLAY_RECORDED_DATA)";
    }
    media_test::TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), kConfig);
    std::vector<std::string> const telemetry = e2e::telemetryFor(GetParam(), folder.file("telemetry.jsonl"));
    auto const burn = [&](std::vector<std::string> const& range) {
        std::string const output = folder.file("o.mkv");
        std::vector<std::string> words = {"burn",          clip,  "-c", folder.file("c.json"), "-o", output,
                                          "--video-codec", "ffv1"};
        words.insert(words.end(), telemetry.begin(), telemetry.end());
        words.insert(words.end(), range.begin(), range.end());
        Result const result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return clip_test::picturesOf(output);
    };
    auto const whole = burn({});
    auto const lines = e2e::linesOf(run({"text", clip, "-c", folder.file("c.json")}).out);
    ASSERT_EQ(lines.size(), whole.size());
    // Shortly before a picture, at one, and in the midst of the gaps of made telemetry.
    auto const timeOf = [&lines](double share) {
        auto const place = static_cast<std::size_t>(share * static_cast<double>(lines.size()));
        double const first = clip_test::parseLine(lines.front())["pts"].toDouble();
        return clip_test::parseLine(lines[place])["pts"].toDouble() - first;
    };
    std::string const one = std::to_string(timeOf(0.31) - 0.002);
    std::string const two = std::to_string(timeOf(0.77));
    auto joined = burn({"--to", one});
    for (std::vector<std::string> const& range :
         {std::vector<std::string>{"--from", one, "--to", two}, std::vector<std::string>{"--from", two}}) {
        for (auto& picture : burn(range)) {
            joined.push_back(std::move(picture));
        }
    }
    ASSERT_EQ(joined.size(), whole.size());
    for (std::size_t number = 0; number < whole.size(); ++number) {
        EXPECT_TRUE(clip_test::samePicture(*whole[number], *joined[number])) << number;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, RecordedRanges, testing::ValuesIn(e2e::kRecordedClips),
                         [](auto const& row) { return "clip_" + std::to_string(row.index); });

TEST_F(Ranges, InsideAHoldADelayAndBetweenKeyPicturesJoinToTheWhole)
{
    // Telemetry is missing from 2.4 s to 3.0 s and held over; the third block is delayed from 4.0 s on. This encoder
    // sets key pictures 10 s apart.
    std::vector<std::string> const codec = {"--video-codec", "ffv1"};
    ASSERT_EQ(burn("whole.mkv", codec).exitCode, 0);
    auto const whole = clip_test::picturesOf(file("whole.mkv"));
    for (char const* const cut : {"2.44", "2.96", "4.2", "9.96", "10.0", "15.5"}) {
        SCOPED_TRACE(cut);
        ASSERT_EQ(burn("1.mkv", {"--to", cut, codec[0], codec[1]}).exitCode, 0);
        ASSERT_EQ(burn("2.mkv", {"--from", cut, codec[0], codec[1]}).exitCode, 0);
        auto joined = clip_test::picturesOf(file("1.mkv"));
        for (auto& picture : clip_test::picturesOf(file("2.mkv"))) {
            joined.push_back(std::move(picture));
        }
        ASSERT_EQ(joined.size(), whole.size());
        for (std::size_t number = 0; number < whole.size(); ++number) {
            EXPECT_TRUE(clip_test::samePicture(*whole[number], *joined[number])) << number;
        }
    }
}

TEST_F(Ranges, OfTextAreTheLinesOfTheWhole)
{
    auto const lines = e2e::linesOf(run({"text", clip_, "-c", file("c.json")}).out);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kFrames));
    auto const part = e2e::linesOf(run({"text", clip_, "-c", file("c.json"), "--from", "7.01", "--to", "9.0"}).out);
    EXPECT_EQ(part, std::vector<std::string>(lines.begin() + 176, lines.begin() + 225));
    EXPECT_EQ(e2e::linesOf(run({"text", clip_, "-c", file("c.json"), "--from", "23.96"}).out),
              std::vector<std::string>{lines.back()});
    EXPECT_EQ(e2e::linesOf(run({"text", clip_, "-c", file("c.json"), "--to", "0.04"}).out),
              std::vector<std::string>{lines.front()});
    EXPECT_EQ(e2e::linesOf(run({"text", clip_, "-c", file("c.json"), "--to", "1:00"}).out), lines);
}

TEST_F(Ranges, ThatHoldNoPictureAreRefused)
{
    Result const behind = burn("o.ts", {"--from", "24"});
    EXPECT_EQ(behind.exitCode, 1);
    EXPECT_EQ(behind.err, "stanag-overlay: " + clip_ +
                              ": has no picture at or after 24.000 s: it ends at 24.000 s; give an earlier time\n");
    Result const between = burn("o.ts", {"--from", "1.01", "--to", "1.03"});
    EXPECT_EQ(between.exitCode, 1);
    EXPECT_EQ(between.err,
              "stanag-overlay: " + clip_ + ": has no picture from 1.010 s to 1.030 s; give a longer range\n");
    Result const backwards = burn("o.ts", {"--from", "10", "--to", "9.5"});
    EXPECT_EQ(backwards.exitCode, 2);
    EXPECT_EQ(backwards.err, "stanag-overlay: --to 9.5: give a time after that of --from, which is 0 without it\n");
    Result const odd = burn("o.ts", {"--from", "1:2:3:4"});
    EXPECT_EQ(odd.exitCode, 2);
    EXPECT_EQ(odd.err, "stanag-overlay: --from 1:2:3:4: give seconds or [HH:]MM:SS[.fff], for example 90.5 or "
                       "00:01:30.5\n");
    EXPECT_FALSE(std::filesystem::exists(file("o.ts")));
}

}  // namespace
