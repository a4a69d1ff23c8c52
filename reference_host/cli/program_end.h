// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How the program ends: exit codes, and what they say of a failure.
#pragma once

#include <string>

namespace cli {

inline constexpr int kDone = 0;
inline constexpr int kUnusable = 1;  ///< input, configuration or output
inline constexpr int kFound = 1;     ///< something that check tells
inline constexpr int kUsage = 2;

/// The exit code of a command that ended early or not; after a signal it tells which: 128 and its number.
int codeAfter(int code);

/// What ended a command.
struct Failure {
    int exitCode = kUnusable;
    std::string text{};  ///< one line for people; empty when there is nothing to say
};

/// Of the exception that is being handled: to be called within a handler only.
Failure currentFailure();

}  // namespace cli
