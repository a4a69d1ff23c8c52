// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A sender and a receiver of transport streams over loopback, for tests and measurements of live work. Both work on
// threads of their own and note when each picture passed.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace live_test {

using Time = std::chrono::steady_clock::time_point;

/// A UDP port of this machine that nobody uses.
int freePort();
/// Returns when somebody has opened the UDP port, after ten seconds in any case.
void waitForListener(int port);
/// udp://127.0.0.1:PORT
std::string addressOf(int port);

/// A picture that passed: the time in its stream (90 kHz) and that on the clock.
struct Passed {
    std::int64_t ticks;
    Time when;
};

/// Finds the pictures and the telemetry of a transport stream by its tables, packet by packet.
class StreamEar {
public:
    void hear(std::uint8_t const* packet, Time when);

    std::vector<Passed> const& pictures() const { return pictures_; }
    std::vector<Passed> const& telemetry() const { return telemetry_; }

private:
    void hearTable_(std::uint8_t const* section, std::uint8_t const* end, bool isMap);

    std::set<int> mapPids_;
    std::set<int> videoPids_;
    std::set<int> telemetryPids_;
    std::vector<Passed> pictures_;
    std::vector<Passed> telemetry_;
};

enum class Repeat { Always, Never };

/// Sends a clip, again and again unless told otherwise, at the pace of its clock until it is destroyed, which is how it
/// dies.
class Sender {
public:
    Sender(int port, std::string const& clip, Repeat repeat = Repeat::Always);
    ~Sender();
    Sender(Sender const&) = delete;
    Sender& operator=(Sender const&) = delete;

    void pause() { paused_ = true; }
    void resume() { paused_ = false; }
    /// From now on one byte of each n-th packet is another; 0: none is.
    void damageEach(unsigned n) { damageEach_ = n; }
    /// Pictures sent so far.
    std::vector<Passed> sent() const;

private:
    void run_();
    void sendPacket_(std::size_t number);
    void flush_();

    int port_;
    Repeat repeat_;
    int socket_;
    std::string bytes_;
    std::string datagram_;
    std::atomic<bool> stop_ = false;
    std::atomic<bool> paused_ = false;
    std::atomic<unsigned> damageEach_ = 0;
    mutable std::mutex mutex_;
    StreamEar ear_;
    std::thread thread_;
};

/// Receives on a port until it is destroyed.
class Receiver {
public:
    /// With `recordTo` all that comes stands in a file of this name.
    explicit Receiver(int port, std::string const& recordTo = "");
    ~Receiver();
    Receiver(Receiver const&) = delete;
    Receiver& operator=(Receiver const&) = delete;

    std::vector<Passed> pictures() const;
    std::vector<Passed> telemetry() const;

private:
    void run_();

    int socket_;
    std::ofstream record_;
    std::atomic<bool> stop_ = false;
    mutable std::mutex mutex_;
    StreamEar ear_;
    std::thread thread_;
};

}  // namespace live_test
