// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a service manager is told by the service that it has started: it is ready, alive, ending.
#pragma once

#include <chrono>
#include <string>

namespace cli {

/// Speaks the protocol of sd_notify(3): datagrams of text to the socket that NOTIFY_SOCKET names. Without that variable
/// nothing happens. Nothing ever waits: what a busy manager does not take is lost, as the next notice says the same.
class ServiceNotice {
public:
    using Time = std::chrono::steady_clock::time_point;

    ServiceNotice();
    ~ServiceNotice();
    ServiceNotice(ServiceNotice const&) = delete;
    ServiceNotice& operator=(ServiceNotice const&) = delete;

    /// The service does its work from now on; says so once. "READY=1"
    void ready();
    /// The service does its work still; says so once a second at most. "WATCHDOG=1"
    void alive(Time now);
    /// One line for people. "STATUS=..."
    void status(std::string const& line) const { send_("STATUS=" + line); }
    /// The service ends. "STOPPING=1"
    void stopping() const { send_("STOPPING=1"); }

private:
    void send_(std::string const& text) const;

    std::string address_;  ///< as the system wants it; empty: nobody listens
    int socket_ = -1;
    bool isReady_ = false;
    Time next_{};
};

}  // namespace cli
