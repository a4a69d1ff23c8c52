// Parts of a clip: burnt one by one and joined they are the whole, picture by picture and packet by packet.
#include "clips.h"
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
    EXPECT_EQ(behind.err,
              "stanag-overlay: " + clip_ + ": has no picture at 24.000 s: it ends at 24.000 s; give an earlier time\n");
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
