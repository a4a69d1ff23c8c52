// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// `stanag-overlay edit` while it runs: what it prints, requests of a browser that was given the address, and its end.
#pragma once

#include "run_program.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace e2e {

/// The running editor, as a browser with the printed address sees it.
class EditSession {
public:
    EditSession(std::string address, int process);

    std::string const& address() const { return address_; }  ///< as printed
    unsigned short port() const { return port_; }
    std::string const& token() const { return token_; }
    int process() const { return process_; }
    /// "Host: 127.0.0.1:PORT", with line end; and the cookie's line.
    std::string hostLine() const;
    std::string cookieLine() const;

    /// Sends exactly these bytes; the whole answer.
    std::string sendRaw(std::string const& request) const;
    /// As the page asks: with Host, cookie, JSON type and own origin.
    std::string ask(std::string const& method, std::string const& target, std::string const& body = "") const;
    /// PUT /api/config; the whole answer.
    std::string save(std::string const& text, std::string const& etag) const;

private:
    std::string address_;
    unsigned short port_ = 0;
    std::string token_;
    int process_;
};

/// Runs `edit` with these arguments and `--no-browser`, calls `visit` as soon as the address is printed, then sends the
/// signal and waits. When the program ends without an address, `visit` is not called.
Result runEdit(std::vector<std::string> arguments, std::function<void(EditSession const&)> const& visit,
               RunOptions options = {}, int signal = 2 /* SIGINT */);

/// The member "etag" of an answer; "" without one.
std::string etagOf(std::string const& answer);
/// The member "error" of an answer; "" without one.
std::string errorOf(std::string const& answer);

}  // namespace e2e
