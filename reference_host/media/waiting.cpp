// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Asked by whoever opens an address.
#include "media/waiting.h"

namespace media {
namespace {

/// An attempt to reach a receiver over SRT ends by itself after three seconds, with a line of its own.
constexpr std::chrono::seconds tellAfter(WaitingFor whom)
{
    return std::chrono::seconds(whom == WaitingFor::Sender ? 2 : 4);
}

TellWaiting gTell = nullptr;

}  // namespace

void setTellWaiting(TellWaiting tell)
{
    gTell = tell;
}

void Waiting::look(Clock::time_point now)
{
    if (gTell != nullptr && !told_ && now - begin_ >= tellAfter(whom_)) {
        told_ = true;
        gTell(address_, whom_);
    }
}

}  // namespace media
