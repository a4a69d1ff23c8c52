// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One rewritten line on the terminal during long work.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace media {

/// The progress line: frames done, percent and time left when the clip's length is known, and speed as
/// video time per real time: "300 frames  42 %  3.1x  0:05 left".
std::string progressLine(std::uint64_t frames, double videoSeconds, std::optional<double> totalSeconds,
                         double realSeconds);

class Progress {
public:
    /// Shows nothing unless `wanted` and standard error is a terminal.
    Progress(bool wanted, std::optional<double> totalSeconds);
    /// Clears the line.
    ~Progress();
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void update(std::uint64_t frames, double videoSeconds);

private:
    bool shown_;
    std::optional<double> totalSeconds_;
    std::chrono::steady_clock::time_point begin_;
    std::chrono::steady_clock::time_point last_;
};

}  // namespace media
