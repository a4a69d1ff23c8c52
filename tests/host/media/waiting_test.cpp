// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// When somebody is told that nothing comes.
#include "media/waiting.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using media::Waiting;
using media::WaitingFor;

std::vector<std::string> gTold;

void tell(std::string const& address, WaitingFor whom)
{
    gTold.push_back(address + (whom == WaitingFor::Sender ? " sends" : " receives"));
}

Waiting::Clock::time_point at(int milliseconds)
{
    return Waiting::Clock::time_point(std::chrono::milliseconds(milliseconds));
}

/// Begins at half a second; is told at `told`, in milliseconds, not before and not again.
void expectToldOnce(WaitingFor whom, int told, std::string const& line)
{
    media::setTellWaiting(tell);
    gTold.clear();
    std::string const address = "udp://127.0.0.1:5000";
    Waiting waiting(address, whom, at(500));
    waiting.look(at(told - 1));
    EXPECT_EQ(gTold, std::vector<std::string>());
    waiting.look(at(told));
    waiting.look(at(told + 6500));
    EXPECT_EQ(gTold, std::vector<std::string>{line});
}

TEST(Waiting, ForASenderIsToldOnceAfterTwoSeconds)
{
    expectToldOnce(WaitingFor::Sender, 2500, "udp://127.0.0.1:5000 sends");
}

TEST(Waiting, ForAReceiverIsToldOnceAfterFourSeconds)
{
    expectToldOnce(WaitingFor::Receiver, 4500, "udp://127.0.0.1:5000 receives");
}

TEST(Waiting, NobodyNeedsToKnow)
{
    gTold.clear();
    media::setTellWaiting(nullptr);
    std::string const address = "udp://127.0.0.1:5000";
    Waiting waiting(address, WaitingFor::Receiver, at(0));
    waiting.look(at(5000));
    EXPECT_EQ(gTold, std::vector<std::string>());
}

}  // namespace
