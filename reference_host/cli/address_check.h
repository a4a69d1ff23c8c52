// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Addresses that cannot be meant; asked before anything is opened.
#pragma once

#include <string>

namespace cli {

/// What is wrong with an input or output: a live address whose port is none. "udp://127.0.0.1:70000" gives
/// "udp://127.0.0.1:70000: give a port from 1 to 65535"; empty for all else, also for files and without a port.
std::string addressFault(std::string const& address);

/// Throws std::runtime_error with one line when what is sent to `output` would come back as `input`.
void refuseToFeedBack(std::string const& output, std::string const& input);

}  // namespace cli
