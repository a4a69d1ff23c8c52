// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The time of the frame that a host renders. Render plugins measure holds and delays by it; a host that gives none
// leaves them the steady clock, which suits live pictures. A host that works on recordings gives each frame its
// presentation time, so that the same clip gives the same picture however long the work takes:
//
//     FrameTime const time(presentationNs + kOneHourNs);
//     plugin->render(context);
#pragma once

#include "SwThreadTime.h"

#include <cstdint>

class FrameTime {
public:
    /// From now on `nanoseconds` is the time of frames rendered on this thread, until the object ends; then what was
    /// before counts again. Other threads have their own. 0 counts as 1: plugins keep 0 for "never".
    ///
    /// Only differences count, so times may start anywhere above 0, best well above. For one plugin instance they
    /// must not fall: after a jump back give it its configuration anew. An instance takes its times either all from
    /// here or all from the clock.
    explicit FrameTime(std::uint64_t nanoseconds) noexcept
        : before_(SwThreadTime::exchange(nanoseconds == 0 ? 1 : nanoseconds))
    {
    }
    ~FrameTime() { SwThreadTime::exchange(before_); }
    FrameTime(FrameTime const&) = delete;
    FrameTime& operator=(FrameTime const&) = delete;

    /// For plugins: what the host has given for the frame that this thread renders; 0 when nothing.
    static std::uint64_t given() noexcept { return SwThreadTime::get(); }

private:
    std::uint64_t before_;
};
