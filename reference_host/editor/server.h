// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The sockets of the editor, on 127.0.0.1 only. HTTP is spoken by libmicrohttpd: Debian maintains it with its security
// fixes, it is C with hardly any dependencies, and it has the threads, limits and time-outs that are needed here.
#pragma once

#include "editor/http_message.h"

#include <functional>
#include <memory>
#include <optional>

namespace editor {

struct ServerLimits {
    unsigned connections = 400;    ///< at once; more of them wait until one ends
    unsigned timeoutSeconds = 30;  ///< a connection on which nothing moves is closed
};

/// What the server asks; several threads do so at once.
struct ServerCallbacks {
    /// By a request's head: the answer when its body is not wanted. The rest of the request is then read and dropped.
    std::function<std::optional<Response>(Request const& head)> refuse;
    std::function<Response(Request const& request)> answer;
};

class Server {
public:
    /// Takes the port, 0 for any free one, without serving yet. Throws std::runtime_error with one line when it is busy
    /// or may not be taken.
    explicit Server(unsigned short port, ServerLimits limits = {});
    /// Stops.
    ~Server();
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    unsigned short port() const;
    /// Serves from now on, each connection on its own thread, so that no client waits for another one.
    void start(ServerCallbacks callbacks);
    /// Ends all connections; waits for answers that are being made. What the callbacks use has to live until then.
    void stop();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace editor
