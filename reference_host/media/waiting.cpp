// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Asked by whoever opens an address.
#include "media/waiting.h"

namespace media {
namespace {

constexpr auto kTellAfter = std::chrono::seconds(2);

TellWaiting gTell = nullptr;

}  // namespace

void setTellWaiting(TellWaiting tell)
{
    gTell = tell;
}

void Waiting::look(Clock::time_point now)
{
    if (gTell != nullptr && !told_ && now - begin_ >= kTellAfter) {
        told_ = true;
        gTell(address_, whom_);
    }
}

}  // namespace media
