// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// As much of the two protocols as it takes to bring a transport stream to who asks for it.
#include "live_relays.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace live_test {
namespace {

constexpr int kPollMs = 20;

/// A socket at a port of this machine; 0: any.
int boundTo(int port, int type)
{
    int const made = socket(AF_INET, type, 0);
    int const yes = 1;
    setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (bind(made, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("port " + std::to_string(port) + " cannot be used");
    }
    return made;
}

bool isReadable(int descriptor)
{
    pollfd asked{descriptor, POLLIN, 0};
    return poll(&asked, 1, kPollMs) > 0;
}

/// The next datagram; empty when none comes for a moment.
std::string datagramFrom(int source)
{
    std::array<char, 2048> bytes{};
    ssize_t const got = isReadable(source) ? recv(source, bytes.data(), bytes.size(), 0) : 0;
    return {bytes.data(), got > 0 ? static_cast<std::size_t>(got) : 0U};
}

/// All of it; false when nobody takes it any more.
bool sendAll(int connection, std::string const& bytes)
{
    for (std::size_t at = 0; at < bytes.size();) {
        ssize_t const sent = send(connection, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        at += static_cast<std::size_t>(sent);
    }
    return true;
}

std::string headerOf(std::string const& request, std::string const& name)
{
    std::size_t const begin = request.find("\r\n" + name + ": ");
    if (begin == std::string::npos) {
        return "";
    }
    std::size_t const value = begin + name.size() + 4;
    return request.substr(value, request.find("\r\n", value) - value);
}

}  // namespace

int freeTcpPort()
{
    int const made = boundTo(0, SOCK_STREAM);
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    getsockname(made, reinterpret_cast<sockaddr*>(&address), &size);
    close(made);
    return ntohs(address.sin_port);
}

RtspServer::RtspServer(int tcpPort, int udpPort)
    : listener_(boundTo(tcpPort, SOCK_STREAM))
    , source_(boundTo(udpPort, SOCK_DGRAM))
    , thread_([this] { run_(); })
{
}

RtspServer::~RtspServer()
{
    stop_ = true;
    thread_.join();
    close(listener_);
    close(source_);
}

void RtspServer::run_()
{
    listen(listener_, 1);
    while (!stop_) {
        if (isReadable(listener_)) {
            int const connection = accept(listener_, nullptr, nullptr);
            serve_(connection);
            close(connection);
        }
    }
}

void RtspServer::serve_(int connection)
{
    std::string asked;
    while (!stop_) {
        std::array<char, 4096> some{};
        ssize_t const got = isReadable(connection) ? recv(connection, some.data(), some.size(), 0) : -1;
        if (got == 0) {
            return;
        }
        asked.append(some.data(), got > 0 ? static_cast<std::size_t>(got) : 0U);
        std::size_t const end = asked.find("\r\n\r\n");
        if (end == std::string::npos) {
            continue;
        }
        std::string const request = asked.substr(0, end + 2);
        asked.erase(0, end + 4);
        if (!answer_(connection, request)) {
            return;
        }
        if (request.rfind("PLAY ", 0) == 0) {
            stream_(connection);
            return;
        }
    }
}

bool RtspServer::answer_(int connection, std::string const& request)
{
    std::string const description = "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=camera\r\nt=0 0\r\n"
                                    "m=video 0 RTP/AVP 33\r\na=control:track0\r\n";
    std::string status = "200 OK";
    std::string headers;
    std::string body;
    if (request.rfind("DESCRIBE ", 0) == 0) {
        body = description;
        headers = "Content-Type: application/sdp\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    } else if (request.rfind("SETUP ", 0) == 0) {
        bool const isInterleaved = headerOf(request, "Transport").find("RTP/AVP/TCP") != std::string::npos;
        status = isInterleaved ? status : "461 Unsupported Transport";
        headers = isInterleaved ? "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\nSession: 1\r\n" : "";
    } else {
        headers = "Session: 1\r\n";
    }
    return sendAll(connection,
                   "RTSP/1.0 " + status + "\r\nCSeq: " + headerOf(request, "CSeq") + "\r\n" + headers + "\r\n" + body);
}

void RtspServer::stream_(int connection)
{
    unsigned number = 0;
    bool taken = true;
    while (!stop_ && taken) {
        std::string const datagram = datagramFrom(source_);
        if (datagram.empty()) {
            continue;
        }
        constexpr std::size_t kRtpHeader = 12;
        std::size_t const size = kRtpHeader + datagram.size();
        std::string packet = {'$', 0, static_cast<char>(size >> 8U), static_cast<char>(size & 0xFFU)};
        packet += {'\x80', 33, static_cast<char>(number >> 8U & 0xFFU), static_cast<char>(number & 0xFFU)};
        packet.append(8, '\0');  // a time of its own the stream has within
        ++number;
        taken = sendAll(connection, packet + datagram);
    }
}

SrtCaller::SrtCaller(std::string address, int udpPort)
    : address_(std::move(address))
    , source_(boundTo(udpPort, SOCK_DGRAM))
    , thread_([this] { run_(); })
{
}

SrtCaller::~SrtCaller()
{
    stop_ = true;
    thread_.join();
    close(source_);
}

void SrtCaller::run_()
{
    AVIOContext* output = nullptr;
    while (!stop_ && avio_open(&output, address_.c_str(), AVIO_FLAG_WRITE) < 0) {
    }
    while (!stop_) {
        std::string const datagram = datagramFrom(source_);
        avio_write(output, reinterpret_cast<unsigned char const*>(datagram.data()), static_cast<int>(datagram.size()));
        avio_flush(output);
    }
    avio_closep(&output);
}

DeadReceiver::DeadReceiver(int tcpPort) : listener_(boundTo(tcpPort, SOCK_STREAM))
{
    int const fewBytes = 4096;
    setsockopt(listener_, SOL_SOCKET, SO_RCVBUF, &fewBytes, sizeof(fewBytes));
    listen(listener_, 1);  // the system connects who calls, nobody reads what he sends
}

DeadReceiver::~DeadReceiver()
{
    close(listener_);
}

}  // namespace live_test
