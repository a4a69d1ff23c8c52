// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Sockets, the pace by the stream's own clock, and as much of a transport stream as it takes to see pictures pass.
#include "live_stream.h"

#include "file_bytes.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace live_test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPacket = 188;
constexpr std::size_t kDatagram = 7 * kPacket;
constexpr auto kStep = std::chrono::milliseconds(1);

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int bound(int port)
{
    int const socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in const address = loopback(port);
    if (bind(socket, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("port " + std::to_string(port) + " cannot be used");
    }
    return socket;
}

int pidOf(std::uint8_t const* packet)
{
    return (packet[1] & 0x1F) << 8 | packet[2];
}

/// Where the contents of a packet begin; its end when it has none.
std::uint8_t const* contentsOf(std::uint8_t const* packet)
{
    std::size_t const skip = 4 + ((packet[3] & 0x20) != 0 ? 1U + packet[4] : 0U);
    return (packet[3] & 0x10) == 0 || skip > kPacket ? packet + kPacket : packet + skip;
}

std::int64_t timestampAt(std::uint8_t const* bytes)
{
    return (std::int64_t{bytes[0]} >> 1 & 7) << 30 | std::int64_t{bytes[1]} << 22 |
           (std::int64_t{bytes[2]} >> 1) << 15 | std::int64_t{bytes[3]} << 7 | bytes[4] >> 1;
}

/// The presentation time of a PES packet that begins here.
std::optional<std::int64_t> presentationAt(std::uint8_t const* pes, std::uint8_t const* end)
{
    bool const begins = end - pes >= 14 && pes[0] == 0 && pes[1] == 0 && pes[2] == 1;
    return begins && (pes[7] & 0x80) != 0 ? std::optional(timestampAt(pes + 9)) : std::nullopt;
}

/// The program clock in 90 kHz ticks, where the packet carries it.
std::optional<std::int64_t> clockOf(std::uint8_t const* packet)
{
    bool const carries = (packet[3] & 0x20) != 0 && packet[4] >= 7 && (packet[5] & 0x10) != 0;
    if (!carries) {
        return std::nullopt;
    }
    return std::int64_t{packet[6]} << 25 | std::int64_t{packet[7]} << 17 | std::int64_t{packet[8]} << 9 |
           std::int64_t{packet[9]} << 1 | packet[10] >> 7;
}

}  // namespace

int freePort()
{
    int const socket = bound(0);
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    close(socket);
    return ntohs(address.sin_port);
}

void waitForListener(int port)
{
    std::array<char, 8> ending{};
    std::snprintf(ending.data(), ending.size(), ":%04X", static_cast<unsigned>(port));
    auto const isListed = [&ending] {
        std::ifstream list("/proc/net/udp");  // number, local address, ...
        std::string line;
        std::string word;
        while (std::getline(list, line)) {
            std::istringstream(line) >> word >> word;
            if (word.size() > 5 && word.substr(word.size() - 5) == ending.data()) {
                return true;
            }
        }
        return false;
    };
    Time const end = Clock::now() + std::chrono::seconds(10);
    while (Clock::now() < end && !isListed()) {
        std::this_thread::sleep_for(kStep);
    }
}

std::string addressOf(int port)
{
    return "udp://127.0.0.1:" + std::to_string(port);
}

void StreamEar::hear(std::uint8_t const* packet, Time when)
{
    if (packet[0] != 0x47 || (packet[1] & 0x40) == 0) {
        return;
    }
    int const pid = pidOf(packet);
    std::uint8_t const* const contents = contentsOf(packet);
    std::uint8_t const* const end = packet + kPacket;
    if (pid == 0 || mapPids_.count(pid) != 0) {
        std::uint8_t const* const section = contents + 1 + (contents < end ? contents[0] : 0);
        hearTable_(section, end, pid != 0);
        return;
    }
    std::optional<std::int64_t> const ticks = presentationAt(contents, end);
    if (ticks && videoPids_.count(pid) != 0) {
        pictures_.push_back({*ticks, when});
    } else if (ticks && telemetryPids_.count(pid) != 0) {
        telemetry_.push_back({*ticks, when});
    }
}

void StreamEar::hearTable_(std::uint8_t const* section, std::uint8_t const* end, bool isMap)
{
    if (end - section < 12) {
        return;
    }
    std::uint8_t const* const sectionEnd = std::min(end, section + 3 + ((section[1] & 0x0F) << 8 | section[2]) - 4);
    std::uint8_t const* next = section + 8;
    if (!isMap) {
        for (; next + 4 <= sectionEnd; next += 4) {
            mapPids_.insert((next[2] & 0x1F) << 8 | next[3]);
        }
        return;
    }
    next += 4 + ((next[2] & 0x0F) << 8 | next[3]);
    while (next + 5 <= sectionEnd) {
        int const pid = (next[1] & 0x1F) << 8 | next[2];
        bool const isTelemetry = next[0] == 0x06 || next[0] == 0x15;
        (isTelemetry ? telemetryPids_ : videoPids_).insert(pid);
        next += 5 + ((next[3] & 0x0F) << 8 | next[4]);
    }
}

Sender::Sender(int port, std::string const& clip, Repeat repeat)
    : port_(port)
    , repeat_(repeat)
    , socket_(socket(AF_INET, SOCK_DGRAM, 0))
    , bytes_(file_test::readFile(clip))
    , thread_([this] { run_(); })
{
}

Sender::~Sender()
{
    stop_ = true;
    thread_.join();
    close(socket_);
}

std::vector<Passed> Sender::sent() const
{
    std::lock_guard const lock(mutex_);
    return ear_.pictures();
}

void Sender::run_()
{
    while (!stop_ && bytes_.size() >= kPacket) {
        std::optional<std::int64_t> firstClock;
        Time begin = Clock::now();
        for (std::size_t number = 0; number < bytes_.size() / kPacket && !stop_; ++number) {
            auto const* const packet = reinterpret_cast<std::uint8_t const*>(bytes_.data()) + number * kPacket;
            if (std::optional<std::int64_t> const clock = clockOf(packet)) {
                flush_();
                firstClock = firstClock.value_or(*clock);
                auto const due = std::chrono::microseconds((*clock - *firstClock) * 100 / 9);
                while (!stop_ && (paused_ || Clock::now() < begin + due)) {
                    Time const before = Clock::now();
                    std::this_thread::sleep_for(kStep);
                    begin += paused_ ? Clock::now() - before : Clock::duration(0);
                }
            }
            sendPacket_(number);
        }
        flush_();
        if (repeat_ == Repeat::Never) {
            return;
        }
    }
}

void Sender::sendPacket_(std::size_t number)
{
    std::string packet = bytes_.substr(number * kPacket, kPacket);
    {
        std::lock_guard const lock(mutex_);
        ear_.hear(reinterpret_cast<std::uint8_t const*>(packet.data()), Clock::now());
    }
    unsigned const each = damageEach_;
    if (each != 0 && number % each == 0) {
        std::size_t const at = 4 + number * 31 % (kPacket - 4);
        packet[at] = static_cast<char>(packet[at] ^ 0x5A);
    }
    datagram_ += packet;
    if (datagram_.size() >= kDatagram) {
        flush_();
    }
}

void Sender::flush_()
{
    sockaddr_in const address = loopback(port_);
    sendto(socket_, datagram_.data(), datagram_.size(), 0, reinterpret_cast<sockaddr const*>(&address),
           sizeof(address));
    datagram_.clear();
}

Receiver::Receiver(int port, std::string const& recordTo)
    : socket_(bound(port))
    , record_(recordTo, std::ios::binary)
    , thread_([this] { run_(); })
{
}

Receiver::~Receiver()
{
    stop_ = true;
    thread_.join();
    close(socket_);
}

void Receiver::run_()
{
    timeval const wait{0, 50000};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof(wait));
    std::array<std::uint8_t, 65536> datagram{};
    while (!stop_) {
        ssize_t const got = recv(socket_, datagram.data(), datagram.size(), 0);
        Time const now = Clock::now();
        if (got > 0 && record_.is_open()) {
            record_.write(reinterpret_cast<char const*>(datagram.data()), got);
        }
        std::lock_guard const lock(mutex_);
        for (std::size_t at = 0; got > 0 && at + kPacket <= static_cast<std::size_t>(got); at += kPacket) {
            ear_.hear(datagram.data() + at, now);
        }
    }
}

std::vector<Passed> Receiver::pictures() const
{
    std::lock_guard const lock(mutex_);
    return ear_.pictures();
}

std::vector<Passed> Receiver::telemetry() const
{
    std::lock_guard const lock(mutex_);
    return ear_.telemetry();
}

}  // namespace live_test
