// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A client that sends any bytes to a port of this machine and reads whatever comes back.
#pragma once

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace raw_http {

class Connection {
public:
    explicit Connection(unsigned short port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        constexpr timeval kPatience{30, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            int const error = errno;
            close(socket_);
            throw std::runtime_error(std::string("no connection: ") + std::strerror(error));
        }
    }
    ~Connection() { close(socket_); }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    /// False when the other end has closed.
    bool send(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            ssize_t const count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }
    /// Nothing more will be sent.
    void finish() const { shutdown(socket_, SHUT_WR); }
    /// Everything up to the other end's close.
    std::string readAll() const
    {
        std::string bytes;
        while (readSome(bytes)) {
        }
        return bytes;
    }
    /// One answer: its head and as much body as that announces.
    std::string readAnswer() const
    {
        constexpr std::string_view kEnd = "\r\n\r\n";
        constexpr std::string_view kLength = "Content-Length: ";
        std::string bytes;
        std::size_t end = std::string::npos;
        while ((end = bytes.find(kEnd)) == std::string::npos) {
            if (!readSome(bytes)) {
                return bytes;
            }
        }
        std::size_t const length = bytes.find(kLength);
        std::size_t const body = length < end ? std::stoul(bytes.substr(length + kLength.size())) : 0;
        while (bytes.size() < end + kEnd.size() + body && readSome(bytes)) {
        }
        return bytes;
    }

private:
    bool readSome(std::string& bytes) const
    {
        char buffer[65536];
        ssize_t const count = recv(socket_, buffer, sizeof buffer, 0);
        bytes.append(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }

    int socket_;
};

/// The status of an answer; 0 when there is none.
inline int statusOf(std::string const& answer)
{
    return answer.compare(0, 9, "HTTP/1.1 ") == 0 ? std::stoi(answer.substr(9, 3)) : 0;
}

/// What follows an answer's head.
inline std::string bodyOf(std::string const& answer)
{
    std::size_t const end = answer.find("\r\n\r\n");
    return end == std::string::npos ? "" : answer.substr(end + 4);
}

/// Sends one request and gives its answer.
inline std::string ask(unsigned short port, std::string const& request)
{
    Connection const connection(port);
    connection.send(request);
    return connection.readAnswer();
}

}  // namespace raw_http
