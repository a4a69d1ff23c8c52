// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Mends clock jumps and gives untimed telemetry its place; used by the frame reader.
#include "media/timeline.h"

#include <algorithm>
#include <cmath>

namespace media {
namespace {

/// A leap ahead of this length is a new clock, not a gap in the recording.
constexpr double kLeapSeconds = 10.0;

/// A leap ahead of the real time by this much is one in a live stream.
constexpr double kLiveLeapSeconds = 2.0;

/// A clock that runs on while nothing comes agrees with the real time but for the time that it takes to find the
/// stream.
constexpr double kOutageSeconds = 1.0;

/// A fall back up to this length is disorder within one clock.
constexpr double kDisorderSeconds = 0.2;

/// How long after a jump packets of other streams may still carry the old clock.
constexpr double kOldClockSeconds = 2.0;

/// Hostile files hold any 64-bit time; within these limits sums and differences below cannot overflow.
constexpr std::int64_t kMaxTicks = std::int64_t{1} << 60;

std::int64_t limitTicks(std::int64_t ticks)
{
    return std::clamp(ticks, -kMaxTicks, kMaxTicks);
}

}  // namespace

Timeline::Timeline(AVRational timeBase, std::int64_t intervalTicks, bool mayJump)
    : timeBase_(timeBase)
    , intervalTicks_(std::clamp<std::int64_t>(intervalTicks, 1, kMaxTicks))
    , mayJump_(mayJump)
    , jumpStep_(intervalTicks_)
    , fallSeconds_(-kDisorderSeconds)
    , leapSeconds_(kLeapSeconds)
{
}

void Timeline::setElapsed(double seconds, Since since)
{
    constexpr double kMostSeconds = 1e6;
    auto const ticks = std::llround(std::clamp(seconds, 0.0, kMostSeconds) / av_q2d(timeBase_));
    jumpStep_ = limitTicks(std::max<std::int64_t>(intervalTicks_, ticks));
    bool const outage = since == Since::Outage;
    fallSeconds_ = outage ? std::max(-kDisorderSeconds, seconds - kOutageSeconds) : -kDisorderSeconds;
    leapSeconds_ = outage ? seconds + kOutageSeconds : std::min(kLeapSeconds, seconds + kLiveLeapSeconds);
}

bool Timeline::jumped_(std::int64_t rawTicks) const
{
    double const step = secondsOf(rawTicks - lastRaw_, timeBase_);
    return step < fallSeconds_ || step > leapSeconds_;
}

Timeline::Placed Timeline::placeVideo(std::optional<std::int64_t> decodeTicks, std::optional<std::int64_t> presentTicks)
{
    if (decodeTicks) {
        decodeTicks = limitTicks(*decodeTicks);
    }
    if (presentTicks) {
        presentTicks = limitTicks(*presentTicks);
    }
    std::optional<std::int64_t> const raw = decodeTicks ? decodeTicks : presentTicks;
    std::int64_t const expected = last_ ? limitTicks(*last_ + intervalTicks_) : 0;
    std::int64_t decode = expected;
    bool newClock = false;
    if (raw) {
        if (last_ && mayJump_ && jumped_(*raw)) {
            previousOffset_ = offset_;
            std::int64_t const place = limitTicks(*last_ + jumpStep_);
            offset_ = place - *raw;
            jumpTicks_ = place;
            newClock = true;
        }
        decode = limitTicks(*raw + offset_);
        lastRaw_ = *raw;
    }
    std::int64_t const present = limitTicks(presentTicks ? *presentTicks + offset_ : decode + lead_);
    if (!last_) {
        lead_ = present - decode;
        previousSlot_ = secondsOf(present - intervalTicks_, timeBase_);
    } else {
        previousSlot_ = slotSeconds();
    }
    last_ = decode;
    return {decode, present, newClock};
}

double Timeline::placeOther(double seconds) const
{
    double const current = seconds + secondsOf(offset_, timeBase_);
    double const now = secondsOf(last_.value_or(0), timeBase_);
    double const sinceJump = now - secondsOf(jumpTicks_, timeBase_);
    if (offset_ == previousOffset_ || sinceJump > kOldClockSeconds) {
        return current;
    }
    double const old = seconds + secondsOf(previousOffset_, timeBase_);
    return std::abs(old - now) < std::abs(current - now) ? old : current;
}

double Timeline::slotSeconds() const
{
    return secondsOf(last_.value_or(0) + lead_, timeBase_);
}

double Timeline::intervalSeconds() const
{
    return secondsOf(intervalTicks_, timeBase_);
}

}  // namespace media
