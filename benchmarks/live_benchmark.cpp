// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From packet in to packet out: sends a clip over loopback through a command at the clip's pace and measures how much
// later each picture comes out than it went in.
//   live_benchmark NAME CLIP SECONDS -- COMMAND...     {in} and {out} in COMMAND become addresses
// Writes a row of a table: name, pictures, median and 95th percentile in milliseconds, pictures that did not come out.
#include "live_stream.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Connections, codecs and caches are cold before.
constexpr double kWarmUpSeconds = 3.0;

void replace(std::string& text, std::string const& from, std::string const& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

pid_t start(std::vector<std::string> words)
{
    pid_t const child = fork();
    if (child != 0) {
        return child;
    }
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    execvp(pointers.front(), pointers.data());
    _exit(127);
}

double milliseconds(std::chrono::steady_clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 6) {
        std::fputs("usage: live_benchmark NAME CLIP SECONDS -- COMMAND...\n", stderr);
        return 2;
    }
    int const in = live_test::freePort();
    int const out = live_test::freePort();
    std::vector<std::string> words(argv + 5, argv + argc);
    for (std::string& word : words) {
        replace(word, "{in}", live_test::addressOf(in));
        replace(word, "{out}", live_test::addressOf(out));
    }
    pid_t const child = start(words);
    live_test::Receiver const receiver(out);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    std::vector<live_test::Passed> sent;
    {
        live_test::Sender const sender(in, argv[2]);
        std::this_thread::sleep_for(std::chrono::duration<double>(std::atof(argv[3])));
        sent = sender.sent();
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    kill(child, SIGINT);
    waitpid(child, nullptr, 0);
    std::map<std::int64_t, live_test::Time> cameOut;
    for (live_test::Passed const& picture : receiver.pictures()) {
        cameOut.emplace(picture.ticks, picture.when);
    }
    std::vector<double> delays;
    int lost = 0;
    for (live_test::Passed const& picture : sent) {
        if (milliseconds(picture.when - sent.front().when) < kWarmUpSeconds * 1e3) {
            continue;
        }
        auto const found = cameOut.find(picture.ticks);
        if (found == cameOut.end()) {
            ++lost;
        } else {
            delays.push_back(milliseconds(found->second - picture.when));
        }
    }
    if (delays.empty()) {
        std::fprintf(stderr, "live_benchmark: no picture came out of %s\n", argv[1]);
        return 1;
    }
    std::sort(delays.begin(), delays.end());
    std::printf("| %s | %zu | %.1f | %.1f | %d |\n", argv[1], delays.size(), delays[delays.size() / 2],
                delays[delays.size() * 95 / 100], lost);
    return 0;
}
