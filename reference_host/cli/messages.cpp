// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One line per matter on standard error, however odd the names in it.
#include "cli/messages.h"

#include "media/interrupt.h"
#include "sw_number_text.h"

#include <algorithm>
#include <csignal>
#include <iostream>

namespace cli {

namespace {

/// Whoever receives a stream has had its bytes already.
bool isStream(std::string const& output)
{
    return output == "-" || output.find("://") != std::string::npos;
}

}  // namespace

void refuseWhenTerminated(std::string const& output)
{
    if (media::interruptSignal() == SIGTERM) {
        throw std::runtime_error(output + ": terminated before the end, " +
                                 (isStream(output) ? "what was sent is not whole" : "nothing was kept; start again"));
    }
}

std::vector<std::string> interruptRemark(std::string const& output, double seconds)
{
    if (!media::interrupted()) {
        return {};
    }
    return {output + ": interrupted; the file was finished up to " + sw_text::secondsText(seconds)};
}

void note(std::string const& text)
{
    std::string line = text;
    // Names of files may hold anything; the message stays one line.
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    std::cerr << "stanag-overlay: " << line << std::endl;
}

void noteWaiting(std::string const& address, media::WaitingFor whom)
{
    note(address + (whom == media::WaitingFor::Sender
                        ? ": nothing has come yet; waiting for somebody to send there"
                        : ": nobody has come yet; waiting for somebody to receive there"));
}

void noteAll(std::vector<std::string> const& remarks)
{
    for (std::string const& remark : remarks) {
        note(remark);
    }
}

}  // namespace cli
