// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Live work from servers and callers instead of datagrams, and from senders whose telemetry comes late.
#include "clips.h"
#include "imaging/imaging_access.h"
#include "live_clips.h"
#include "live_relays.h"
#include "live_stream.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using e2e::Result;
using live_test::Sender;
using Seconds = std::chrono::duration<double>;

void pass(double seconds)
{
    std::this_thread::sleep_for(Seconds(seconds));
}

class LiveSources : public testing::Test {
protected:
    LiveSources()
    {
        e2e::writeFile(file("c.json"),
                       R"({"overlay":[{"formatString":"N %heading_deg","textSize":300,"decimals":0}]})");
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    /// Burns into o.ts until `meanwhile` is over.
    Result burn(std::string const& input, std::vector<std::string> const& more,
                std::function<void()> const& meanwhile) const
    {
        std::vector<std::string> words = {"burn",   input,      "-c",        file("c.json"), "-o", file("o.ts"),
                                          "--live", "--preset", "ultrafast", "--crf",        "1"};
        words.insert(words.end(), more.begin(), more.end());
        e2e::RunOptions options;
        options.meanwhile = [&meanwhile](int program) {
            meanwhile();
            kill(program, SIGTERM);
        };
        return e2e::run(words, options);
    }

    /// The same while what makes the stream there is killed and comes back; nothing but the pause may be lost.
    void expectToOutlive(std::string const& address, std::function<std::shared_ptr<void>(int)> const& make) const
    {
        live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, 500});
        int const port = live_test::freePort();
        Result const result = burn(address, {}, [&] {
            Sender const sender(port, file("a.ts"));
            std::shared_ptr<void> source = make(port);
            pass(2.5);
            source.reset();
            pass(0.3);
            source = make(port);
            pass(3.5);
        });
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_NE(result.err.find(": is back after "), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(" 0 dropped, 1 reopened, "), std::string::npos) << result.err;
        clip_test::StreamTimes const times = clip_test::timesOf(file("o.ts"));
        EXPECT_GT(times.video.size(), 75U) << "three seconds of six" << result.err;
        EXPECT_GT(times.klv.size() + 5, times.video.size());
        EXPECT_TRUE(std::is_sorted(times.video.begin(), times.video.end()));
    }

private:
    media_test::TempFolder folder_;
};

TEST_F(LiveSources, ACameraThatIsAskedByRtsp)
{
    int const port = live_test::freeTcpPort();
    expectToOutlive("rtsp://127.0.0.1:" + std::to_string(port) + "/live",
                    [port](int udpPort) { return std::make_shared<live_test::RtspServer>(port, udpPort); });
}

TEST_F(LiveSources, ACallerBySrt)
{
    std::string const address = "srt://127.0.0.1:" + std::to_string(live_test::freePort());
    expectToOutlive(address + "?mode=listener", [address](int udpPort) {
        return std::make_shared<live_test::SrtCaller>(address + "?mode=caller", udpPort);
    });
}

/// The greatest difference of brightness between two pictures.
int worstBetween(zelvo::ZelvoPicture& one, zelvo::ZelvoPicture& other)
{
    MappedNV12 const a = imaging::planesOf(one);
    MappedNV12 const b = imaging::planesOf(other);
    int worst = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            worst = std::max(worst, std::abs(a.y[y * a.yStride + x] - b.y[y * b.yStride + x]));
        }
    }
    return worst;
}

TEST_F(LiveSources, PicturesWaitForTheirTelemetryButNotTooLong)
{
    constexpr int kLatePictures = 6;  // 240 ms
    constexpr std::size_t kPictures = 50;
    constexpr std::size_t kSettled = 15;  // by then it is known how the telemetry comes
    live_test::makeLiveClip({file("a.ts"), 96, 64, 90000, kPictures});
    live_test::makeTelemetryLate(file("a.ts"), file("late.ts"), kLatePictures);
    ASSERT_EQ(e2e::run({"burn", file("a.ts"), "-c", file("c.json"), "-o", file("burnt.ts"), "--crf", "1", "--preset",
                        "ultrafast"})
                  .exitCode,
              0);
    auto const own = clip_test::picturesOf(file("burnt.ts"));
    ASSERT_EQ(own.size(), kPictures);
    for (bool const waitsLongEnough : {true, false}) {
        SCOPED_TRACE(waitsLongEnough);
        int const port = live_test::freePort();
        Result const result =
            burn(live_test::addressOf(port), {"--telemetry-wait", waitsLongEnough ? "400" : "60"}, [&] {
                live_test::waitForListener(port);
                Sender const sender(port, file("late.ts"), live_test::Repeat::Never);
                pass(3.0);
            });
        auto const shown = clip_test::picturesOf(file("o.ts"));
        ASSERT_EQ(shown.size(), kPictures) << result.err;
        for (std::size_t number = kSettled; number < kPictures - kLatePictures; ++number) {
            bool const isOwn = worstBetween(*shown[number], *own[number]) < 40;
            EXPECT_EQ(isOwn, waitsLongEnough) << number;
        }
    }
}

}  // namespace
