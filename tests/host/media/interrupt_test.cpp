// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Signals that are noted, and those that come too late.
#include "media/interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

/// Exits with the signal that was noted.
void noteAndExit(bool settledBefore)
{
    media::catchInterrupts();
    if (settledBefore) {
        media::settleInterrupts();
    }
    std::raise(SIGTERM);
    if (!settledBefore) {
        media::settleInterrupts();
        std::raise(SIGINT);
        std::raise(SIGTERM);
    }
    std::_Exit(media::interrupted() ? media::interruptSignal() : 0);
}

/// A terminal goes away, and says so twice.
void loseTerminalAndExit(bool ignored)
{
    std::signal(SIGHUP, ignored ? SIG_IGN : SIG_DFL);
    media::catchInterrupts();
    std::raise(SIGHUP);
    std::raise(SIGHUP);
    std::_Exit(media::interrupted() ? media::interruptSignal() : 0);
}

// In processes of their own, which the signals may end.
TEST(InterruptDeathTest, TheFirstSignalIsNotedAndLaterOnesComeTooLate)
{
    EXPECT_EXIT(noteAndExit(false), testing::ExitedWithCode(SIGTERM), "");
}

TEST(InterruptDeathTest, OnceSettledASignalChangesNothing)
{
    EXPECT_EXIT(noteAndExit(true), testing::ExitedWithCode(0), "");
}

// Former bug: it ended the program, and with it a recording that had run for hours.
TEST(InterruptDeathTest, ATerminalThatGoesAwayIsNotedUnlessThatIsIgnored)
{
    EXPECT_EXIT(loseTerminalAndExit(false), testing::ExitedWithCode(SIGHUP), "");
    EXPECT_EXIT(loseTerminalAndExit(true), testing::ExitedWithCode(0), "");
}

}  // namespace
