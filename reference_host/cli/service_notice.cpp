// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Datagrams to the service manager. The library for this would wait for a manager that is busy, and live pictures
// cannot.
#include "cli/service_notice.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace cli {
namespace {

constexpr auto kAliveEvery = std::chrono::seconds(1);

/// A path, or a name that begins with "@" and is none of the file system's.
std::string socketAddress()
{
    char const* const name = std::getenv("NOTIFY_SOCKET");
    bool const usable = name != nullptr && (*name == '/' || *name == '@') && name[1] != '\0' &&
                        std::strlen(name) < sizeof(sockaddr_un::sun_path);
    std::string address = usable ? name : "";
    if (usable && *name == '@') {
        address.front() = '\0';
    }
    return address;
}

}  // namespace

ServiceNotice::ServiceNotice() : address_(socketAddress())
{
    if (!address_.empty()) {
        socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    }
}

ServiceNotice::~ServiceNotice()
{
    if (socket_ >= 0) {
        close(socket_);
    }
}

void ServiceNotice::ready()
{
    if (!isReady_) {
        isReady_ = true;
        send_("READY=1");
    }
}

void ServiceNotice::alive(Time now)
{
    if (now >= next_) {
        next_ = now + kAliveEvery;
        send_("WATCHDOG=1");
    }
}

void ServiceNotice::send_(std::string const& text) const
{
    if (socket_ < 0) {
        return;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, address_.data(), address_.size());
    auto const length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address_.size());
    sendto(socket_, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT, reinterpret_cast<sockaddr const*>(&address),
           length);
}

}  // namespace cli
