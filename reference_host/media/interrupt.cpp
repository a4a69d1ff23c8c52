// The signal handler behind interrupted(); reading, decoding and writing end early when it is set.
#include "interrupt.h"

#include <csignal>

namespace media {
namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void onInterrupt(int signalNumber)
{
    gInterrupted = 1;
    std::signal(signalNumber, SIG_DFL);
}

}  // namespace

void catchInterrupts()
{
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
}

bool interrupted() noexcept
{
    return gInterrupted != 0;
}

}  // namespace media
