// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What live work writes and says: from standard input, which needs no real time, but where a silence is the matter.
#include "clips.h"
#include "imaging/imaging_access.h"
#include "live_clips.h"
#include "live_relays.h"
#include "live_stream.h"
#include "run_program.h"
#include "temp_folder.h"

extern "C" {
#include <libavformat/avio.h>
}

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using e2e::Result;
using Words = std::vector<std::string>;

class LiveOutput : public testing::Test {
protected:
    LiveOutput() { e2e::writeFile(file("c.json"), R"({"overlay":[{"formatString":"%heading_deg"}]})"); }

    std::string file(std::string const& name) const { return folder_.file(name); }

    static void ffmpeg(std::string const& arguments)
    {
        ASSERT_EQ(std::system(("ffmpeg -v error " + arguments).c_str()), 0) << arguments;
    }

    /// Burns what stands in the file as if somebody were sending it.
    Result burn(std::string const& input, std::string const& output) const
    {
        e2e::RunOptions options;
        options.inputFile = input;
        return e2e::run({"burn", "-", "-c", file("c.json"), "-o", output, "--live", "--preset", "ultrafast"}, options);
    }

    /// What was said but for the counters, which are the last line.
    static Words saidIn(Result const& result)
    {
        Words lines = e2e::linesOf(result.err);
        EXPECT_NE(lines.back().find(" dropped, "), std::string::npos) << result.err;
        lines.pop_back();
        return lines;
    }

private:
    media_test::TempFolder folder_;
};

// Former bug: the times of the input, which a player waits through.
TEST_F(LiveOutput, FilesBeginWithTheirFirstPicture)
{
    live_test::makeLiveClip({file("a.ts"), 96, 64, 900000, 50, false, true});
    for (std::string const ending : {".mp4", ".mkv"}) {
        SCOPED_TRACE(ending);
        Result const result = burn(file("a.ts"), file("live" + ending));
        EXPECT_EQ(result.exitCode, 0);
        ASSERT_EQ(e2e::run({"burn", file("a.ts"), "-c", file("c.json"), "-o", file("file" + ending)}).exitCode, 0);
        clip_test::StreamTimes const live = clip_test::timesOf(file("live" + ending));
        clip_test::StreamTimes const whole = clip_test::timesOf(file("file" + ending));
        ASSERT_EQ(live.video.size(), 50U) << result.err;
        EXPECT_DOUBLE_EQ(live.video.front(), 0.0);
        EXPECT_NEAR(live.video.back(), 49 * 0.04, 0.0011);
        ASSERT_FALSE(live.sound.empty());
        // A live output ends with its last picture, a file with the last sound.
        ASSERT_GT(live.sound.size() + 10, whole.sound.size());
        EXPECT_TRUE(std::equal(live.sound.begin(), live.sound.end(), whole.sound.begin()));
        EXPECT_EQ(saidIn(result),
                  (Words{"stanag-overlay: " + file("live" + ending) + ": " + (ending == ".mp4" ? "mp4" : "matroska") +
                         " cannot carry KLV; the telemetry stream is left out (.ts carries it)"}));
    }
    ASSERT_EQ(burn(file("a.ts"), file("live.ts")).exitCode, 0);
    EXPECT_DOUBLE_EQ(clip_test::timesOf(file("live.ts")).video.front(), 10.0);
}

TEST_F(LiveOutput, SoundFromBeforeTheFirstPictureStaysOutOfFiles)
{
    clip_test::ClipSpec spec{file("a.ts"), 96, 64, 50, "mpeg2video", 900000};
    spec.sound = true;
    spec.soundLead = 45000;
    clip_test::makeClip(spec);
    ASSERT_LT(clip_test::timesOf(file("a.ts")).sound.front(), 9.6);
    for (std::string const output : {"o.mp4", "o.mkv"}) {
        SCOPED_TRACE(output);
        ASSERT_EQ(burn(file("a.ts"), file(output)).exitCode, 0);
        clip_test::StreamTimes const times = clip_test::timesOf(file(output));
        EXPECT_DOUBLE_EQ(times.video.front(), 0.0);
        ASSERT_FALSE(times.sound.empty());
        EXPECT_NEAR(times.sound.front(), 0.0, 0.03);
    }
}

TEST_F(LiveOutput, WhatPicturesLoseIsTold)
{
    std::string const input = file("a.ts");
    ffmpeg("-f lavfi -i testsrc2=s=96x64:r=25:d=1 -pix_fmt yuv422p10le -c:v libx264 -preset ultrafast " + input);
    Result const result = burn(input, file("o.ts"));
    EXPECT_EQ(saidIn(result), (Words{"stanag-overlay: " + file("o.ts") +
                                     ": pictures of yuv422p10le (10 bits, chroma 4:2:2) are stored with 8 bits, "
                                     "chroma 4:2:0"}));
}

// Former bug: pictures of another shape were stretched.
TEST_F(LiveOutput, PicturesOfAnotherShapeGetBlackBars)
{
    auto const white = [](MappedNV12 const& picture) {
        std::memset(picture.y, 235,
                    static_cast<std::size_t>(picture.yStride) * static_cast<std::size_t>(picture.height));
    };
    clip_test::ClipSpec first{file("a.ts"), 96, 64, 25, "mpeg2video"};
    first.paint = white;
    clip_test::makeClip(first);
    clip_test::ClipSpec then{file("b.ts"), 64, 96, 25, "mpeg2video", 900000};
    then.paint = white;
    clip_test::makeClip(then);
    e2e::writeFile(file("both.ts"), e2e::readFile(file("a.ts")) + e2e::readFile(file("b.ts")));
    Result const result = burn(file("both.ts"), file("o.ts"));
    EXPECT_EQ(
        saidIn(result),
        (Words{"stanag-overlay: -: pictures change from 96x64 to 64x96; they are shown in 96x64 with black bars"}));
    auto const pictures = clip_test::picturesOf(file("o.ts"));
    ASSERT_EQ(pictures.size(), 50U);
    for (std::size_t number = 0; number < pictures.size(); ++number) {
        SCOPED_TRACE(number);
        MappedNV12 const picture = imaging::planesOf(*pictures[number]);
        ASSERT_EQ(picture.width, 96);
        ASSERT_EQ(picture.height, 64);
        std::uint8_t const* const row = picture.y + std::ptrdiff_t{60} * picture.yStride;
        // 64x96 fits with 42 columns, from 26 to 67.
        for (int const column : {4, 20, 74, 92}) {
            EXPECT_NEAR(row[column], number < 25 ? 235 : 16, 12) << column;
        }
        EXPECT_NEAR(row[48], 235, 12);
    }
}

TEST_F(LiveOutput, SilenceOnStandardInputIsAnOutage)
{
    live_test::makeLiveClip({file("first.ts"), 96, 64, 90000, 25, false, true});
    ffmpeg("-i " + file("first.ts") + " -map 0 -c copy -c:a ac3 " + file("then.ts"));
    std::string const pipe = file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::ofstream input;
    e2e::RunOptions options;
    options.inputFile = pipe;
    options.meanwhile = [&](int) {
        input.open(pipe, std::ios::binary);
        input << e2e::readFile(file("first.ts")) << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(3600));
        input << e2e::readFile(file("then.ts")) << std::flush;
        input.close();
    };
    Result const result = e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"), "--live"}, options);
    EXPECT_EQ(result.exitCode, 0);
    Words const said = saidIn(result);
    ASSERT_EQ(said.size(), 3U) << result.err;
    EXPECT_EQ(said[0], "stanag-overlay: -: nothing comes any more; waiting for it to come back");
    std::string const back = "stanag-overlay: -: is back after ";
    ASSERT_EQ(said[1].rfind(back, 0), 0U) << said[1];
    double const away = std::strtod(said[1].c_str() + back.size(), nullptr);
    EXPECT_GT(away, 3.0);
    EXPECT_LT(away, 5.0);
    EXPECT_EQ(said[2],
              "stanag-overlay: " + file("o.ts") + ": the input has come back with ac3 instead of mp2; it is left out");
    std::vector<double> const times = clip_test::timesOf(file("o.ts")).video;
    ASSERT_EQ(times.size(), 50U);
    EXPECT_NEAR(times[25] - times[24], away, 0.2) << "the time in which nothing came has passed in the output too";
}

// Former bug: the demuxer's held pictures came out with what followed the silence, which then counted as none; and the
// delay was that of a picture that had waited in the decoder for the sender.
TEST_F(LiveOutput, AShortSilenceBeforeANewClockPassesInTheOutputToo)
{
    live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, 50});
    std::string const pipe = file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    constexpr double kAway = 1.5;
    e2e::RunOptions options;
    options.inputFile = pipe;
    options.meanwhile = [&](int) {
        std::ofstream input(pipe, std::ios::binary);
        for (int round = 0; round < 3; ++round) {
            std::this_thread::sleep_for(std::chrono::duration<double>(round == 0 ? 0.0 : kAway));
            input << e2e::readFile(file("a.ts")) << std::flush;
        }
    };
    Result const result = e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"), "--live"}, options);
    EXPECT_EQ(saidIn(result), Words());
    EXPECT_NE(result.err.find(" 0 dropped, 0 reopened, "), std::string::npos) << result.err;
    std::string const delay = "delay ";
    EXPECT_LT(std::stoi(result.err.substr(result.err.rfind(delay) + delay.size())), 1000) << result.err;
    std::vector<double> const times = clip_test::timesOf(file("o.ts")).video;
    ASSERT_EQ(times.size(), 150U) << result.err;
    for (std::size_t const first : {50U, 100U}) {
        EXPECT_NEAR(times[first] - times[first - 1], kAway, 0.2) << first;
    }
}

TEST_F(LiveOutput, ATelemetryStreamThatIsNotThereIsTold)
{
    live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, 25});
    e2e::RunOptions options;
    options.inputFile = file("a.ts");
    Result const result =
        e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"), "--live", "--klv", "0x999"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(saidIn(result), (Words{"stanag-overlay: -: has no KLV stream 0x999; there is 0x101 (number 1)"}));
    EXPECT_NE(result.err.find(": 25 pictures, "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(", no telemetry, "), std::string::npos) << result.err;
}

TEST_F(LiveOutput, WhoComesIntoALongGroupOfPicturesIsToldWhatIsWaitedFor)
{
    constexpr std::size_t kPacket = 188;
    ffmpeg("-f lavfi -i testsrc2=s=96x64:r=25:d=8 -c:v libx264 -preset ultrafast -tune zerolatency -g 100 " +
           file("whole.ts"));
    std::string const bytes = e2e::readFile(file("whole.ts"));
    e2e::writeFile(file("later.ts"), bytes.substr(bytes.size() / 8 / kPacket * kPacket));
    int const port = live_test::freePort();
    std::string const address = live_test::addressOf(port);
    e2e::RunOptions options;
    options.meanwhile = [&](int program) {
        live_test::waitForListener(port);
        live_test::Sender const sender(port, file("later.ts"));
        std::this_thread::sleep_for(std::chrono::seconds(5));
        kill(program, SIGINT);
    };
    Result const result = e2e::run({"burn", address, "-c", file("c.json"), "-o", file("o.ts"), "--live"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(saidIn(result), (Words{"stanag-overlay: " + address +
                                     ": pictures come, but none can be decoded yet; "
                                     "waiting for a key picture"}));
    EXPECT_GT(clip_test::packetsOf(file("o.ts")).video, 10) << result.err;
}

TEST_F(LiveOutput, AnAddressToWhichNobodySendsIsTold)
{
    std::string const address = live_test::addressOf(live_test::freePort());
    std::string const line =
        "stanag-overlay: " + address + ": nothing has come yet; waiting for somebody to send there";
    for (Words const& words :
         {Words{"burn", address, "-c", file("c.json"), "-o", file("o.ts")}, Words{"keys", address}}) {
        SCOPED_TRACE(words.front());
        e2e::RunOptions options;
        options.meanwhile = [](int program) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2800));
            kill(program, SIGINT);
        };
        Result const result = e2e::run(words, options);
        EXPECT_EQ(result.exitCode, 130);
        ASSERT_FALSE(result.err.empty());
        EXPECT_EQ(e2e::linesOf(result.err).front(), line);
        EXPECT_EQ(result.err.rfind(line), 0U) << "once: " << result.err;
    }
}

// Former bug: the terminal's end left an .mp4 without its index, under a hidden name.
TEST_F(LiveOutput, ATerminalThatGoesAwayFinishesTheFile)
{
    live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, 50});
    std::string const pipe = file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (bool const live : {true, false}) {
        SCOPED_TRACE(live);
        std::string const output = file(live ? "live.mp4" : "file.mp4");
        e2e::RunOptions options;
        options.inputFile = pipe;
        options.meanwhile = [&](int program) {
            std::ofstream input(pipe, std::ios::binary);
            input << e2e::readFile(file("a.ts")) << std::flush;
            std::this_thread::sleep_for(std::chrono::seconds(1));
            kill(program, SIGHUP);
            kill(program, SIGHUP);
            if (!live) {
                input << e2e::readFile(file("a.ts")) << std::flush;  // a plain read of a pipe is not ended by signals
            }
            input.close();
        };
        Words words = {"burn", "-", "-c", file("c.json"), "-o", output};
        words.insert(words.end(), live ? 1U : 0U, "--live");
        Result const result = e2e::run(words, options);
        EXPECT_EQ(result.exitCode, live ? 0 : 129) << result.err;
        EXPECT_GT(clip_test::packetsOf(output).video, 10) << result.err;
    }
}

class WaitingReceiver : public LiveOutput {
protected:
    WaitingReceiver() { live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, 50}); }

    /// Burns to an address at which nobody comes and sends the signal after so long; gives the seconds from then on
    /// too.
    std::pair<Result, double> burnToNobody(std::string const& address, bool live, int signal, int afterMs) const
    {
        std::chrono::steady_clock::time_point sent;
        e2e::RunOptions options;
        options.inputFile = file("a.ts");
        options.watchdogSeconds = 20;
        options.meanwhile = [&](int program) {
            std::this_thread::sleep_for(std::chrono::milliseconds(afterMs));
            sent = std::chrono::steady_clock::now();
            kill(program, signal);
        };
        Words words = {"burn", "-", "-c", file("c.json"), "-o", address, "--preset", "ultrafast"};
        words.insert(words.end(), live ? 1U : 0U, "--live");
        Result const result = e2e::run(words, options);
        return {result, std::chrono::duration<double>(std::chrono::steady_clock::now() - sent).count()};
    }

    static std::string tcpListener()
    {
        return "tcp://127.0.0.1:" + std::to_string(live_test::freeTcpPort()) + "?listen=1";
    }

    void expectThatSignalsEndTheWait(std::string const& address) const
    {
        for (int const signal : {SIGINT, SIGTERM}) {
            for (bool const live : {true, false}) {
                SCOPED_TRACE((live ? "live " : "file ") + std::to_string(signal));
                auto const [result, seconds] = burnToNobody(address, live, signal, 4800);
                EXPECT_LT(seconds, 2.0);
                EXPECT_EQ(result.exitCode, live ? 0 : 128 + signal);
                EXPECT_EQ(result.err, "stanag-overlay: " + address +
                                          ": nobody has come yet; waiting for somebody to receive there\n"
                                          "stanag-overlay: " +
                                          address + ": interrupted before anything was written\n");
            }
        }
    }
};

// Former bug: signals were ignored, and nothing told what was waited for.
TEST_F(WaitingReceiver, SignalsEndTheWaitForACallByTcp)
{
    expectThatSignalsEndTheWait(tcpListener());
}

TEST_F(WaitingReceiver, SignalsEndTheWaitForACallBySrt)
{
    std::string const address = "srt://127.0.0.1:" + std::to_string(live_test::freePort()) + "?mode=listener";
    if (avio_find_protocol_name(address.c_str()) == nullptr) {
        GTEST_SKIP() << "FFmpeg was built without SRT";
    }
    expectThatSignalsEndTheWait(address);
}

TEST_F(WaitingReceiver, GivingUpIsForTheInputOnly)
{
    std::string const address = tcpListener();
    e2e::RunOptions options;
    options.inputFile = file("a.ts");
    options.meanwhile = [&](int) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        std::string const from = address.substr(0, address.find('?'));
        EXPECT_EQ(std::system(("ffmpeg -v error -i " + from + " -map 0 -c copy -f mpegts " + file("o.ts")).c_str()), 0);
    };
    Result const result =
        e2e::run({"burn", "-", "-c", file("c.json"), "-o", address, "--live", "--give-up", "0.5"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(saidIn(result), Words());
    EXPECT_EQ(clip_test::packetsOf(file("o.ts")).video, 50) << result.err;
}

// Former bug: whoever had stopped reading without hanging up held the program for ever.
TEST_F(WaitingReceiver, WhoTakesNothingAnyMoreIsNotWaitedForAtTheEnd)
{
    // Noise: some hundred kilobytes a picture, of which the system keeps a few megabytes.
    ffmpeg("-y -f lavfi -i color=gray:s=640x480:r=25:d=4,noise=alls=80:allf=t -c:v mpeg2video -q:v 2 " + file("a.ts"));
    for (bool const live : {true, false}) {
        SCOPED_TRACE(live);
        int const port = live_test::freeTcpPort();
        std::string const address = "tcp://127.0.0.1:" + std::to_string(port);
        live_test::DeadReceiver const receiver(port);
        auto const [result, seconds] = burnToNobody(address, live, SIGTERM, 3500);
        EXPECT_LT(seconds, 3.0);
        EXPECT_EQ(result.exitCode, 143);
        Words const lines = e2e::linesOf(result.err);
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), "stanag-overlay: " + address +
                                    ": interrupted while nobody takes what is sent; what was sent is not whole");
    }
}

TEST_F(LiveOutput, WhoWaitsSaysForWhat)
{
    std::string const address = "tcp://127.0.0.1:" + std::to_string(live_test::freePort());
    Result const result =
        e2e::run({"burn", address, "-c", file("c.json"), "-o", file("o.ts"), "--live", "--give-up", "0.5"});
    EXPECT_EQ(result.exitCode, 1);
    Words const lines = e2e::linesOf(result.err);
    std::string const cause = "stanag-overlay: " + address +
                              ": cannot be opened: Connection refused; check the address and that video is sent there";
    ASSERT_EQ(lines.size(), 3U) << result.err;
    EXPECT_EQ(lines[0], cause + "; waiting for pictures");
    EXPECT_EQ(lines[2], cause + "; gave up after 0.500 s without a picture");
}

}  // namespace
