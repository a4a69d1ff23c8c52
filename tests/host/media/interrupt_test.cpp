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

// In processes of their own, which the signals may end.
TEST(InterruptDeathTest, TheFirstSignalIsNotedAndLaterOnesComeTooLate)
{
    EXPECT_EXIT(noteAndExit(false), testing::ExitedWithCode(SIGTERM), "");
}

TEST(InterruptDeathTest, OnceSettledASignalChangesNothing)
{
    EXPECT_EXIT(noteAndExit(true), testing::ExitedWithCode(0), "");
}

}  // namespace
