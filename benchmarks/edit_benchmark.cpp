// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the editor's pictures cost where somebody works on a configuration. Prints milliseconds, medians but for the
// first: opening the clip with a picture there, another text, another text of a configuration without bound, the next
// picture, a jump.
//   edit_benchmark CLIP SECONDS CONFIG
#include "editor/preview.h"
#include "media/ffmpeg_types.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

double millisecondsOf(std::function<void()> const& work)
{
    auto const begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double medianOf(int times, std::function<void(int)> const& work)
{
    std::vector<double> all;
    for (int i = 0; i < times; ++i) {
        all.push_back(millisecondsOf([&work, i] { work(i); }));
    }
    std::nth_element(all.begin(), all.begin() + times / 2, all.end());
    return all[static_cast<std::size_t>(times / 2)];
}

/// Somebody moves a block: the text differs each time.
std::string moved(std::string const& config, int step, std::string const& more = "")
{
    std::size_t const end = config.rfind(']');
    return config.substr(0, end) + R"(,{"formatString":"%heading_deg","position":{"x":)" +
           std::to_string(0.001 * step) + R"(,"y":0.5})" + more + "}" + config.substr(end);
}

void measure(std::string const& clip, double seconds, std::string const& config)
{
    clip::ClipSource source;
    source.input = clip;
    editor::Preview preview(source);
    std::uint64_t frame = 0;
    double const first =
        millisecondsOf([&] { frame = preview.show(moved(config, 0), editor::Place::at(seconds)).frame; });
    constexpr int kTimes = 15;
    editor::Place const there = editor::Place::ofFrame(frame);
    double const change = medianOf(kTimes, [&](int i) { preview.show(moved(config, i + 1), there); });
    std::string const counted = R"(,"updateEveryNFrames":5)";
    double const unbounded = medianOf(kTimes, [&](int i) { preview.show(moved(config, i + 1, counted), there); });
    preview.show(config, there);
    double const next = medianOf(kTimes, [&](int i) {
        preview.show(config, editor::Place::ofFrame(frame + 1 + static_cast<std::uint64_t>(i)));
    });
    double const jump = medianOf(kTimes, [&](int i) {
        std::uint64_t const base = i % 2 == 0 ? frame / 2 : frame;
        preview.show(config, editor::Place::ofFrame(base + 40 * static_cast<std::uint64_t>(i)));
    });
    std::printf("%.1f %.1f %.1f %.1f %.1f\n", first, change, unbounded, next, jump);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: edit_benchmark CLIP SECONDS CONFIG\n";
        return 2;
    }
    try {
        media::quietLibraries();
        std::ifstream file(argv[3], std::ios::binary);
        measure(argv[1], std::strtod(argv[2], nullptr), {std::istreambuf_iterator<char>(file), {}});
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
    return 0;
}
