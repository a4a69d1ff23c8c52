// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A person who has given a live address to which nobody sends wants to know that this is what the program waits for.
#pragma once

#include <chrono>
#include <string>

namespace media {

using TellWaiting = void (*)(std::string const& address);

/// From now on `tell` is called for an address from which nothing has come in two seconds, once for each opening; null:
/// nobody wants to know. To be called before anything is opened.
void setTellWaiting(TellWaiting tell);

/// The opening of one live address.
class Waiting {
public:
    using Clock = std::chrono::steady_clock;

    Waiting(std::string const& address, Clock::time_point begin) : address_(address), begin_(begin) {}

    /// Looked at now and then until something has come.
    void look(Clock::time_point now);

private:
    std::string const& address_;
    Clock::time_point begin_;
    bool told_ = false;
};

}  // namespace media
