// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From a request to its answer: who may ask, which way it goes, what its body says. Knows no socket, no clip and no
// file.
#pragma once

#include "SwJson.h"
#include "editor/access_guard.h"
#include "editor/http_message.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace editor {

/// The largest body that is taken; a longer one is answered with 413.
inline constexpr std::size_t kMostBodyBytes = 4U << 20U;

/// Whether the body of such a request is looked at: POST and PUT.
bool takesBody(std::string const& method);

/// Thrown by what answers: a status of 400 and above, and one line.
struct RequestFailure : std::runtime_error {
    RequestFailure(int code, std::string const& line) : std::runtime_error(line), status(code) {}
    int status;
};

/// What is answered where.
struct Route {
    std::string method;  ///< "GET", "POST" or "PUT"
    std::string path;    ///< as a whole: no path of a request names a file
    /// Gets the members of the request's body, none for GET.
    std::function<Response(SwJsonObject const& body)> answer;
};

/// Several threads may use it at once, as far as the routes allow.
class RequestHandler {
public:
    RequestHandler(unsigned short port, std::string token, std::string pass, std::vector<Route> routes);

    /// The answer to a request that is refused without a look at its body; empty: answer() wants the body. Beyond what
    /// AccessGuard refuses: 404 no such path, 405 another method, 413 a length above kMostBodyBytes, 415 a body that is
    /// not declared as JSON, in this order.
    std::optional<Response> refuse(Request const& head) const;

    /// The answer to a whole request; 400 when its body is no JSON object. What a route throws is answered with
    /// the status of a RequestFailure, 507 without memory and 500 in other cases. Every answer forbids scripts and
    /// styles from elsewhere, frames, sniffing, referrers and caches.
    Response answer(Request const& request);

private:
    std::optional<Response> refuseRoute_(Request const& head) const;
    Response answerUnguarded_(Request const& request);
    Route const* find_(Request const& request) const;

    AccessGuard guard_;
    std::vector<Route> routes_;
};

/// Adds the headers that every answer carries.
Response withSafetyHeaders(Response response);

}  // namespace editor
