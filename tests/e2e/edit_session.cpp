// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The program's standard output is a pipe with a name: reading it waits for the address, or for the program's end.
#include "edit_session.h"

#include "SwJson.h"
#include "raw_http.h"
#include "telemetry/json_text.h"
#include "temp_folder.h"

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>

namespace e2e {
namespace {

std::string memberOf(std::string const& answer, char const* name)
{
    std::string error;
    return telemetry::parseJsonText(raw_http::bodyOf(answer), error).toObject()[name].stringRef();
}

}  // namespace

EditSession::EditSession(std::string address, int process) : address_(std::move(address)), process_(process)
{
    std::string const start = "http://127.0.0.1:";
    std::string const middle = "/?token=";
    std::size_t const token = address_.find(middle);
    if (address_.compare(0, start.size(), start) != 0 || token == std::string::npos) {
        throw std::runtime_error("no address: " + address_);
    }
    port_ = static_cast<unsigned short>(std::stoi(address_.substr(start.size())));
    token_ = address_.substr(token + middle.size());
}

std::string EditSession::hostLine() const
{
    return "Host: 127.0.0.1:" + std::to_string(port_) + "\r\n";
}

std::string EditSession::cookieLine() const
{
    return "Cookie: stanag_editor_" + std::to_string(port_) + "=" + token_ + "\r\n";
}

std::string EditSession::sendRaw(std::string const& request) const
{
    return raw_http::ask(port_, request);
}

std::string EditSession::ask(std::string const& method, std::string const& target, std::string const& body) const
{
    return sendRaw(method + " " + target + " HTTP/1.1\r\n" + hostLine() + cookieLine() +
                   "Content-Type: application/json\r\nOrigin: http://127.0.0.1:" + std::to_string(port_) +
                   "\r\nSec-Fetch-Site: same-origin\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
                   body);
}

std::string EditSession::save(std::string const& text, std::string const& etag) const
{
    return ask("PUT", "/api/config",
               "{\"text\": \"" + SwJsonValue::escapeString(text) + "\", \"etag\": \"" + etag + "\"}");
}

Result runEdit(std::vector<std::string> arguments, std::function<void(EditSession const&)> const& visit,
               RunOptions options, int signal)
{
    media_test::TempFolder const folder;
    arguments.insert(arguments.begin(), "edit");
    arguments.emplace_back("--no-browser");
    options.outputFile = folder.file("out");
    if (mkfifo(options.outputFile.c_str(), 0600) != 0) {
        throw std::runtime_error("no pipe");
    }
    options.meanwhile = [&](int process) {
        std::ifstream out(options.outputFile);
        std::string address;
        if (std::getline(out, address)) {
            visit(EditSession(address, process));
            kill(process, signal);
        }
    };
    return run(arguments, options);
}

std::string etagOf(std::string const& answer)
{
    return memberOf(answer, "etag");
}

std::string errorOf(std::string const& answer)
{
    return memberOf(answer, "error");
}

}  // namespace e2e
