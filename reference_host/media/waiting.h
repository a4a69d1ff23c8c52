// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A person who has given an address to which nobody sends, or from which nobody takes, wants to know that this is what
// the program waits for.
#pragma once

#include <chrono>
#include <string>

namespace media {

enum class WaitingFor {
    Sender,    ///< of an input
    Receiver,  ///< of an output
};

using TellWaiting = void (*)(std::string const& address, WaitingFor whom);

/// From now on `tell` is called for an address at which no sender has come in two seconds, or no receiver in four, once
/// for each opening; null: nobody wants to know. To be called while nothing is being opened.
void setTellWaiting(TellWaiting tell);

/// The opening of one address.
class Waiting {
public:
    using Clock = std::chrono::steady_clock;

    Waiting(std::string const& address, WaitingFor whom, Clock::time_point begin)
        : address_(address)
        , whom_(whom)
        , begin_(begin)
    {
    }

    /// Looked at now and then until somebody has come.
    void look(Clock::time_point now);

private:
    std::string const& address_;
    WaitingFor whom_;
    Clock::time_point begin_;
    bool told_ = false;
};

}  // namespace media
