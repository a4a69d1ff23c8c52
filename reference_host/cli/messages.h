// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the program says on standard error, and how commands refuse.
#pragma once

#include "media/waiting.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace cli {

/// Options that cannot be meant: exit code 2. Everything else that is thrown gives exit code 1.
struct WrongUsage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The reader of standard output has closed its end: it has seen what it wanted. Exit code 0, nothing said.
struct ReaderGone : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Called when a file has all that will be in it, before it is finished: after SIGTERM throws std::runtime_error with
/// one line, so that no cut file is taken for a whole one.
void refuseWhenTerminated(std::string const& output);
/// After Ctrl-C, or when the terminal has gone: a line that says up to which second the finished file goes. Empty when
/// there was no interrupt.
std::vector<std::string> interruptRemark(std::string const& output, double seconds);

/// Writes "stanag-overlay: " and the text as one line.
void note(std::string const& text);
/// Says that nobody has come to the address yet.
void noteWaiting(std::string const& address, media::WaitingFor whom);
/// note() for each remark.
void noteAll(std::vector<std::string> const& remarks);

}  // namespace cli
