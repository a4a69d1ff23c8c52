// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Who may ask: only the browser to which the printed address was given, and only pages of this server.
//
// A page of another site can make a browser send requests here, under any name that its owner makes point to
// 127.0.0.1; a cookie does not tell ports apart. So the name in Host, a random token and the origin of the request all
// have to be right.
#pragma once

#include "editor/http_message.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace editor {

/// 32 hexadecimal digits from the system's source of random bytes. Throws std::runtime_error when there are none.
std::string randomToken();

class AccessGuard {
public:
    /// `pass` works like the token, but once: it is for the command line of the browser, which other users of the
    /// machine can read. Empty: there is none.
    AccessGuard(unsigned short port, std::string token, std::string pass);

    /// The answer to a request that may not come in; empty for one that may. Of the request the head counts.
    /// 400: no or several Host headers, a target that is no path. 403: a foreign Host, a page of another origin, no
    /// cookie with the token.
    std::optional<Response> refuse(Request const& request) const;

    /// The answer to the address with a token, GET "/?token=...": 303 to "/" with the cookie, or 400 or 403. Empty for
    /// any other request. A used pass does not work again.
    std::optional<Response> letIn(Request const& request);

private:
    std::optional<Response> refuseSender_(Request const& request) const;
    bool isOwn_(std::string_view host) const;
    bool hasCookie_(Request const& request) const;
    bool takeToken_(std::string_view token);

    unsigned short port_;
    std::string token_;
    std::string cookieName_;
    std::mutex passMutex_;
    std::string pass_;
};

}  // namespace editor
