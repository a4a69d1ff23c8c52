// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What an output must not replace; asked before a command that writes begins its work.
#pragma once

#include <string>

namespace cli {

/// Throws std::runtime_error with one line when `output` is a file that the command reads, by whatever name.
/// `telemetry` may be empty.
void refuseToReplace(std::string const& output, std::string const& input, std::string const& config,
                     std::string const& telemetry);

/// Throws std::runtime_error when both name one file, be it there already or not.
void refuseSameOutputs(std::string const& summary, std::string const& output);

}  // namespace cli
