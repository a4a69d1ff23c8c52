// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Scheme, host and port of live addresses, as far as it takes to see what cannot work.
#include "cli/address_check.h"

#include "media/demuxer.h"

#include <charconv>
#include <stdexcept>

namespace cli {
namespace {

struct Address {
    std::string scheme;
    std::string host;
    std::string port;  ///< behind the colon
    bool hasPort = false;
};

Address parse(std::string const& text)
{
    Address address;
    std::size_t const colon = text.find("://");
    if (colon == std::string::npos || !media::isLiveAddress(text)) {
        return address;
    }
    address.scheme = text.substr(0, colon);
    std::string rest = text.substr(colon + 3);
    rest = rest.substr(0, rest.find_first_of("/?#"));
    rest = rest.substr(rest.rfind('@') + 1);  // behind a user's name, or the sign of a group to join
    std::size_t const bracket = rest.rfind(']');
    std::size_t const separator = rest.find(':', bracket == std::string::npos ? 0 : bracket);
    address.host = rest.substr(0, separator);
    address.hasPort = separator != std::string::npos;
    address.port = address.hasPort ? rest.substr(separator + 1) : "";
    return address;
}

/// Who receives on all addresses of this machine receives what is sent to it.
std::string thisMachine(std::string const& host)
{
    bool const isIt = host.empty() || host == "0.0.0.0" || host == "localhost";
    return isIt ? "127.0.0.1" : host;
}

}  // namespace

std::string addressFault(std::string const& address)
{
    Address const parsed = parse(address);
    constexpr int kLastPort = 65535;
    int port = 0;
    char const* const end = parsed.port.data() + parsed.port.size();
    auto const read = std::from_chars(parsed.port.data(), end, port);
    bool const isPort = read.ec == std::errc() && read.ptr == end && port >= 1 && port <= kLastPort;
    return isPort || !parsed.hasPort ? "" : address + ": give a port from 1 to 65535";
}

void refuseToFeedBack(std::string const& output, std::string const& input)
{
    Address const from = parse(input);
    Address const to = parse(output);
    // Servers of other protocols tell by more than host and port what is asked for and what is brought.
    bool const byPort = from.scheme == "udp" || from.scheme == "rtp" || from.scheme == "tcp";
    bool const same =
        byPort ? to.scheme == from.scheme && to.port == from.port && thisMachine(to.host) == thisMachine(from.host)
               : !from.scheme.empty() && output == input;
    if (same) {
        throw std::runtime_error(output + ": is the input itself; give another address for the output");
    }
}

}  // namespace cli
