// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The signal handler behind interrupted(); reading, decoding and writing end early when it is set.
#include "media/interrupt.h"

#include <atomic>
#include <csignal>
#include <signal.h>

namespace media {
namespace {

// Set on whichever thread the signal meets, asked on all; a handler may use an atomic that needs no lock.
std::atomic<int> gSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onInterrupt(int signal)
{
    int none = 0;
    gSignal.compare_exchange_strong(none, signal);
}

}  // namespace

void catchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    // Waiting reads come back instead of being taken up again; the second signal acts as it always did.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction before = {};
    sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) {
        action.sa_flags = 0;
        sigaction(SIGHUP, &action, nullptr);
    }
}

bool interrupted() noexcept
{
    return gSignal != 0;
}

int interruptSignal() noexcept
{
    return gSignal;
}

void settleInterrupts() noexcept
{
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
}

}  // namespace media
