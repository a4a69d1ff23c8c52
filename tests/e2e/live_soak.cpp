// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Live work for a long time: the sender dies, comes back with another clock, size or program, and packets are damaged,
// again and again. The program's memory must not grow.
//   live_soak SECONDS     writes "seconds,resident bytes" lines; ends with 1 when memory grew or times did not rise
#include "live_clips.h"
#include "live_stream.h"
#include "run_program.h"
#include "temp_folder.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kEvery = 2.0;
/// Codecs, caches and all sizes of pictures have been there by then.
constexpr double kWarmUpSeconds = 20.0;
constexpr double kMayGrow = 1.05;

long residentBytes(int process)
{
    std::istringstream words(e2e::readFile("/proc/" + std::to_string(process) + "/statm"));
    long size = 0;
    long resident = 0;
    words >> size >> resident;
    return resident * 4096;
}

/// What happens next to the sender; each round of five is like the one before.
class Troubles {
public:
    Troubles(int port, std::vector<std::string> clips) : port_(port), clips_(std::move(clips)) {}

    void next()
    {
        std::size_t const round = number_++;
        if (round % 5 == 3) {
            sender_->damageEach(300);
            return;
        }
        sender_.reset();
        std::this_thread::sleep_for(Seconds(round % 5 == 2 ? 3.5 : 0.3));
        sender_ = std::make_unique<live_test::Sender>(port_, clips_[round % clips_.size()]);
    }

private:
    int port_;
    std::vector<std::string> clips_;
    std::size_t number_ = 0;
    std::unique_ptr<live_test::Sender> sender_;
};

}  // namespace

int main(int argc, char** argv)
{
    double const length = argc > 1 ? std::atof(argv[1]) : 40.0;
    media_test::TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[{"textSize":100}]})");
    live_test::makeLiveClip({folder.file("a.ts"), 320, 240, 90000, 500});
    live_test::makeLiveClip({folder.file("b.ts"), 480, 270, std::int64_t{90000} * 7000, 500});
    live_test::makeOtherProgram(folder.file("a.ts"), folder.file("c.ts"));
    int const in = live_test::freePort();
    int const out = live_test::freePort();
    live_test::Receiver const receiver(out);
    std::vector<long> memory;
    e2e::RunOptions options;
    options.meanwhile = [&](int program) {
        Troubles troubles(in, {folder.file("a.ts"), folder.file("b.ts"), folder.file("c.ts")});
        auto const begin = Clock::now();
        for (double told = 0.0; told < length;) {
            troubles.next();
            std::this_thread::sleep_for(Seconds(kEvery));
            told = Seconds(Clock::now() - begin).count();
            memory.push_back(told < kWarmUpSeconds ? 0 : residentBytes(program));
            std::printf("%.1f,%ld\n", told, residentBytes(program));
            std::fflush(stdout);
        }
        kill(program, SIGTERM);
    };
    options.watchdogSeconds = static_cast<unsigned>(length) + 60U;
    e2e::Result const result = e2e::run({"burn", live_test::addressOf(in), "-c", folder.file("c.json"), "-o",
                                         live_test::addressOf(out), "--live", "--preset", "ultrafast"},
                                        options);
    std::fputs(result.err.c_str(), stderr);
    std::vector<live_test::Passed> const pictures = receiver.pictures();
    bool const rises = std::adjacent_find(pictures.begin(), pictures.end(), [](auto const& a, auto const& b) {
                           return b.ticks <= a.ticks;
                       }) == pictures.end();
    auto const first = std::find_if(memory.begin(), memory.end(), [](long bytes) { return bytes > 0; });
    bool const flat =
        first != memory.end() && static_cast<double>(memory.back()) <= static_cast<double>(*first) * kMayGrow;
    std::fprintf(stderr, "%zu pictures, exit code %d, times %s, memory %s\n", pictures.size(), result.exitCode,
                 rises ? "rise" : "do NOT rise", flat ? "flat" : "GROWS");
    return result.exitCode == 0 && rises && flat && pictures.size() > static_cast<std::size_t>(length * 5) ? 0 : 1;
}
