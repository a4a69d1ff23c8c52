// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Guard, then route, then body.
#include "editor/request_handler.h"

#include "telemetry/json_text.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <new>
#include <utility>

namespace editor {
namespace {

constexpr char const* kPolicy = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
                                "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/// HEAD asks for the head of what GET gives.
std::string routeMethod(std::string const& method)
{
    return method == "HEAD" ? "GET" : method;
}

/// "application/json", also with parameters.
bool isJson(std::string_view type)
{
    std::string_view name = type.substr(0, type.find(';'));
    while (!name.empty() && name.back() == ' ') {
        name.remove_suffix(1);
    }
    return equalIgnoringCase(name, "application/json");
}

bool isTooLong(std::string_view length)
{
    std::size_t bytes = 0;
    auto const read = std::from_chars(length.data(), length.data() + length.size(), bytes);
    return read.ec == std::errc::result_out_of_range || (read.ec == std::errc() && bytes > kMostBodyBytes);
}

Response tooLong()
{
    return errorResponse(413, "the body of the request is longer than " + std::to_string(kMostBodyBytes) + " bytes");
}

SwJsonObject membersOf(std::string const& body)
{
    std::string error;
    SwJsonValue const value = telemetry::parseJsonText(body, error);
    if (!error.empty()) {
        throw RequestFailure(400, "the body of the request is no JSON: " + error);
    }
    if (!value.isObject()) {
        throw RequestFailure(400, "the body of the request is no JSON object");
    }
    return value.toObject();
}

}  // namespace

bool takesBody(std::string const& method)
{
    return method == "POST" || method == "PUT";
}

RequestHandler::RequestHandler(unsigned short port, std::string token, std::string pass, std::vector<Route> routes)
    : guard_(port, std::move(token), std::move(pass))
    , routes_(std::move(routes))
{
}

Route const* RequestHandler::find_(Request const& request) const
{
    auto const found = std::find_if(routes_.begin(), routes_.end(), [&request](Route const& route) {
        return route.path == pathOf(request) && route.method == routeMethod(request.method);
    });
    return found == routes_.end() ? nullptr : &*found;
}

std::optional<Response> RequestHandler::refuseRoute_(Request const& head) const
{
    if (find_(head) != nullptr) {
        return std::nullopt;
    }
    std::string allowed;
    for (Route const& route : routes_) {
        if (route.path == pathOf(head)) {
            allowed += (allowed.empty() ? "" : ", ") + (route.method == "GET" ? "GET, HEAD" : route.method);
        }
    }
    if (allowed.empty()) {
        return errorResponse(404, "there is nothing at this address");
    }
    Response refusal = errorResponse(405, "this address takes " + allowed);
    refusal.headers.push_back({"Allow", allowed});
    return refusal;
}

std::optional<Response> RequestHandler::refuse(Request const& head) const
{
    if (head.method == "GET" && pathOf(head) == "/" && !queryValue(head, "token").empty()) {
        return std::nullopt;  // the guard decides when the whole request is there: a pass works once
    }
    auto refusal = guard_.refuse(head);
    if (!refusal) {
        refusal = refuseRoute_(head);
    }
    if (!refusal && takesBody(head.method)) {
        auto const lengths = valuesOf(head, "Content-Length");
        auto const types = valuesOf(head, "Content-Type");
        if (std::any_of(lengths.begin(), lengths.end(), isTooLong)) {
            refusal = tooLong();
        } else if (types.size() != 1 || !isJson(types.front())) {
            refusal = errorResponse(415, "the body of the request is declared as application/json");
        }
    }
    return refusal ? std::optional(withSafetyHeaders(*std::move(refusal))) : std::nullopt;
}

Response RequestHandler::answerUnguarded_(Request const& request)
{
    try {
        Route const& route = *find_(request);
        return route.answer(takesBody(request.method) ? membersOf(request.body) : SwJsonObject());
    } catch (RequestFailure const& failure) {
        return errorResponse(failure.status, failure.what());
    } catch (std::bad_alloc const&) {
        return errorResponse(507, "there is not enough memory for this");
    } catch (std::exception const& failure) {
        return errorResponse(500, failure.what());
    }
}

Response RequestHandler::answer(Request const& request)
{
    if (auto entry = guard_.letIn(request)) {
        return withSafetyHeaders(*std::move(entry));
    }
    if (auto refusal = refuse(request)) {
        return *std::move(refusal);
    }
    if (takesBody(request.method) && request.body.size() > kMostBodyBytes) {
        return withSafetyHeaders(tooLong());
    }
    return withSafetyHeaders(answerUnguarded_(request));
}

Response withSafetyHeaders(Response response)
{
    for (auto const& [name, value] :
         {std::pair{"Content-Security-Policy", kPolicy}, std::pair{"X-Content-Type-Options", "nosniff"},
          std::pair{"Referrer-Policy", "no-referrer"}, std::pair{"Cross-Origin-Resource-Policy", "same-origin"},
          std::pair{"Cache-Control", "no-store"}}) {
        response.headers.push_back({name, value});
    }
    return response;
}

}  // namespace editor
