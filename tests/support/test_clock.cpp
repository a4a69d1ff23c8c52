// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Counts how often the plugin asks for the time, beside giving it.
#include "test_clock.h"

#include "steady_time.h"

namespace {

std::uint64_t g_nowNs = 0;
int g_readings = 0;

}  // namespace

namespace test_clock {

void setNowNs(std::uint64_t nowNs)
{
    g_nowNs = nowNs;
    g_readings = 0;
}

void advanceNs(std::uint64_t byNs)
{
    g_nowNs += byNs;
}

std::uint64_t nowNs()
{
    return g_nowNs;
}

int readings()
{
    return g_readings;
}

}  // namespace test_clock

namespace stanag_overlay {

std::uint64_t steadyNowNs()
{
    ++g_readings;
    return g_nowNs;
}

}  // namespace stanag_overlay
