// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The progress line of long work; written a few times a second, never into files and pipes.
#include "media/progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace media {
namespace {

constexpr auto kEvery = std::chrono::milliseconds(200);

std::string clockText(double seconds)
{
    auto const whole = std::lround(std::clamp(seconds, 0.0, 359999.0));
    std::array<char, 32> text{};
    if (whole >= 3600) {
        std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text.data(), text.size(), "%ld:%02ld", whole / 60, whole % 60);
    }
    return text.data();
}

}  // namespace

std::string progressLine(std::uint64_t frames, double videoSeconds, std::optional<double> totalSeconds,
                         double realSeconds)
{
    double const speed = realSeconds > 0.0 ? videoSeconds / realSeconds : 0.0;
    std::array<char, 64> text{};
    std::string line = std::to_string(frames) + (frames == 1 ? " frame" : " frames");
    if (totalSeconds && *totalSeconds > 0.0) {
        double const share = std::clamp(videoSeconds / *totalSeconds, 0.0, 1.0);
        std::snprintf(text.data(), text.size(), "  %d %%", static_cast<int>(share * 100.0));
        line += text.data();
    }
    std::snprintf(text.data(), text.size(), "  %.1fx", speed);
    line += text.data();
    if (totalSeconds && speed > 0.0) {
        line += "  " + clockText((*totalSeconds - videoSeconds) / speed) + " left";
    }
    return line;
}

Progress::Progress(bool wanted, std::optional<double> totalSeconds)
    : shown_(wanted && isatty(STDERR_FILENO) != 0)
    , totalSeconds_(totalSeconds)
    , begin_(std::chrono::steady_clock::now())
    , last_(begin_)
{
}

Progress::~Progress()
{
    if (shown_) {
        std::cerr << "\r\x1b[K" << std::flush;
    }
}

void Progress::update(std::uint64_t frames, double videoSeconds)
{
    auto const now = std::chrono::steady_clock::now();
    if (!shown_ || now - last_ < kEvery) {
        return;
    }
    last_ = now;
    double const real = std::chrono::duration<double>(now - begin_).count();
    std::cerr << "\r\x1b[K" << progressLine(frames, videoSeconds, totalSeconds_, real) << std::flush;
}

}  // namespace media
