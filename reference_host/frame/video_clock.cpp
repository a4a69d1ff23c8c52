// The C library's clock reading is taken over by the program: its definition comes before the library's
// for every module of the process, the plugin's runtime included. All calls but those within a scope are
// passed on.
#include "video_clock.h"

#include <cmath>
#include <ctime>
#include <dlfcn.h>

namespace frame {
namespace {

constexpr long long kNoScope = -1;
constexpr long long kNsPerSecond = 1000000000;

/// What the steady clock of this thread shows, in nanoseconds.
thread_local long long gScopeNs = kNoScope;

using ClockRead = int (*)(clockid_t, timespec*);

}  // namespace

VideoClockScope::VideoClockScope(double seconds) : outer_(gScopeNs)
{
    gScopeNs = std::llround(seconds * static_cast<double>(kNsPerSecond));
}

VideoClockScope::~VideoClockScope()
{
    gScopeNs = outer_;
}

}  // namespace frame

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock == CLOCK_MONOTONIC && frame::gScopeNs != frame::kNoScope) {
        time->tv_sec = static_cast<time_t>(frame::gScopeNs / frame::kNsPerSecond);
        time->tv_nsec = static_cast<long>(frame::gScopeNs % frame::kNsPerSecond);
        return 0;
    }
    static auto const library = reinterpret_cast<frame::ClockRead>(dlsym(RTLD_NEXT, "clock_gettime"));
    return library(clock, time);
}
