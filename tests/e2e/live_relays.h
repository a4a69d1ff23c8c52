// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Hand on to other protocols what a sender sends to a port of this machine, so that its pace and its clips serve them
// too.
#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace live_test {

/// A TCP port of this machine that nobody uses.
int freeTcpPort();

/// A camera: whoever asks for it gets the transport stream that comes to the UDP port as RTP, in the connection in
/// which he asked. Dies when it is destroyed.
class RtspServer {
public:
    RtspServer(int tcpPort, int udpPort);
    ~RtspServer();
    RtspServer(RtspServer const&) = delete;
    RtspServer& operator=(RtspServer const&) = delete;

private:
    void run_();
    void serve_(int connection);
    bool answer_(int connection, std::string const& request);
    void stream_(int connection);

    int listener_;
    int source_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

/// Calls an address of SRT until somebody listens there, and hands on what comes to the UDP port.
class SrtCaller {
public:
    SrtCaller(std::string address, int udpPort);
    ~SrtCaller();
    SrtCaller(SrtCaller const&) = delete;
    SrtCaller& operator=(SrtCaller const&) = delete;

private:
    void run_();

    std::string address_;
    int source_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

/// Can be called at the TCP port, but takes next to nothing of what is sent there.
class DeadReceiver {
public:
    explicit DeadReceiver(int tcpPort);
    ~DeadReceiver();
    DeadReceiver(DeadReceiver const&) = delete;
    DeadReceiver& operator=(DeadReceiver const&) = delete;

private:
    int listener_;
};

}  // namespace live_test
