// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A request and its answer as plain records, so that everything but the sockets can be tested without them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace editor {

struct Header {
    std::string name;
    std::string value;
};

struct Request {
    std::string method;  ///< "GET"
    std::string target;  ///< as it was sent: "/?token=1f", nothing decoded
    std::vector<Header> headers;
    std::string body;
};

struct Response {
    int status = 200;
    std::vector<Header> headers;
    std::string body;
};

/// All values of a header, in order; names are compared without regard to letter case.
std::vector<std::string_view> valuesOf(Request const& request, std::string_view name);

/// The target up to its query: "/api/clip" of "/api/clip?x".
std::string_view pathOf(Request const& request);

/// A value of the query as it was sent, nothing decoded; empty when it is not there.
std::string_view queryValue(Request const& request, std::string_view name);

/// The same text but for the case of ASCII letters.
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// An answer with one body of this media type.
Response contentResponse(int status, std::string type, std::string body);

/// {"error": "one line"}
Response errorResponse(int status, std::string_view line);

}  // namespace editor
