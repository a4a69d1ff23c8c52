// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The checks of a request's head, before anything else looks at it.
#include "editor/access_guard.h"

#include "editor/hex_text.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

namespace editor {
namespace {

constexpr std::string_view kScheme = "http://";
constexpr unsigned short kUsualPort = 80;

constexpr char const* kOpenAddress =
    "this address is not open to you; open the address that stanag-overlay edit has printed";

/// Takes as long for a nearly right token as for a wrong one.
bool isSameSecret(std::string_view given, std::string_view secret)
{
    return !secret.empty() && given.size() == secret.size() &&
           CRYPTO_memcmp(given.data(), secret.data(), secret.size()) == 0;
}

/// A path with or without a query, in the characters that may stand there.
bool isPath(std::string_view target)
{
    return !target.empty() && target.front() == '/' &&
           std::all_of(target.begin(), target.end(), [](char c) { return c > ' ' && c <= '~'; });
}

/// The values of the cookies of this name, in all Cookie headers.
std::vector<std::string_view> cookies(Request const& request, std::string_view name)
{
    std::vector<std::string_view> values;
    for (std::string_view header : valuesOf(request, "Cookie")) {
        while (!header.empty()) {
            std::size_t const end = std::min(header.find(';'), header.size());
            std::string_view pair = header.substr(0, end);
            header.remove_prefix(std::min(end + 1, header.size()));
            pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
            if (pair.size() > name.size() && pair.substr(0, name.size()) == name && pair[name.size()] == '=') {
                values.push_back(pair.substr(name.size() + 1));
            }
        }
    }
    return values;
}

}  // namespace

std::string randomToken()
{
    std::array<unsigned char, 16> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw std::runtime_error("the system gives no random bytes for the address of the page");
    }
    return hexText(bytes);
}

// Browsers send a host's cookies to all of its ports: with the port in its name, the cookies of two editors stand side
// by side.
AccessGuard::AccessGuard(unsigned short port, std::string token, std::string pass)
    : port_(port)
    , token_(std::move(token))
    , cookieName_("stanag_editor_" + std::to_string(port))
    , pass_(std::move(pass))
{
}

bool AccessGuard::isOwn_(std::string_view host) const
{
    std::string const port = ":" + std::to_string(port_);
    for (char const* const name : {"127.0.0.1", "localhost"}) {
        bool const isUsual = port_ == kUsualPort && equalIgnoringCase(host, name);
        if (isUsual || equalIgnoringCase(host, name + port)) {
            return true;
        }
    }
    return false;
}

bool AccessGuard::hasCookie_(Request const& request) const
{
    std::vector<std::string_view> const values = cookies(request, cookieName_);
    return std::any_of(values.begin(), values.end(),
                       [this](std::string_view value) { return isSameSecret(value, token_); });
}

bool AccessGuard::takeToken_(std::string_view token)
{
    if (isSameSecret(token, token_)) {
        return true;
    }
    std::scoped_lock const lock(passMutex_);
    bool const passes = isSameSecret(token, pass_);
    if (passes) {
        pass_.clear();
    }
    return passes;
}

std::optional<Response> AccessGuard::refuseSender_(Request const& request) const
{
    if (!isPath(request.target)) {
        return errorResponse(400, "the target of the request is no path");
    }
    std::vector<std::string_view> const hosts = valuesOf(request, "Host");
    if (hosts.size() != 1) {
        return errorResponse(400, "a request has one Host");
    }
    if (!isOwn_(hosts.front())) {
        return errorResponse(403, "this server is asked for as 127.0.0.1 or localhost with its port only");
    }
    return std::nullopt;
}

std::optional<Response> AccessGuard::refuse(Request const& request) const
{
    if (auto refusal = refuseSender_(request)) {
        return refusal;
    }
    for (std::string_view const origin : valuesOf(request, "Origin")) {
        if (origin.substr(0, kScheme.size()) != kScheme || !isOwn_(origin.substr(kScheme.size()))) {
            return errorResponse(403, "pages of other origins may not ask here");
        }
    }
    // "none" is a person who types or clicks an address outside of any page; that reads and does not write.
    bool const reads = request.method == "GET" || request.method == "HEAD";
    for (std::string_view const site : valuesOf(request, "Sec-Fetch-Site")) {
        if (site != "same-origin" && !(reads && site == "none")) {
            return errorResponse(403, "pages of other origins may not ask here");
        }
    }
    if (!hasCookie_(request)) {
        return errorResponse(403, kOpenAddress);
    }
    return std::nullopt;
}

std::optional<Response> AccessGuard::letIn(Request const& request)
{
    std::string_view const token = queryValue(request, "token");
    if (request.method != "GET" || pathOf(request) != "/" || token.empty()) {
        return std::nullopt;
    }
    if (auto refusal = refuseSender_(request)) {
        return refusal;
    }
    if (!takeToken_(token)) {
        return errorResponse(403, kOpenAddress);
    }
    return Response{
        303,
        {{"Location", "/"}, {"Set-Cookie", cookieName_ + "=" + token_ + "; HttpOnly; SameSite=Strict; Path=/"}},
        ""};
}

}  // namespace editor
