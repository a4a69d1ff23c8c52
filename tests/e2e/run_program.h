// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Runs the built program as a person would and keeps what it said.
#pragma once

#include "file_bytes.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace e2e {

struct Result {
    int exitCode = -1;  ///< 128 + signal when a signal ended it
    std::string out;
    std::string err;
};

struct RunOptions {
    std::string inputFile;                 ///< standard input; empty: nothing to read
    std::string outputFile;                ///< standard output; empty: kept in Result::out
    std::uint64_t fileLimit = 0;           ///< bytes that a file may grow to; 0: any number
    bool obeysPermissions = false;         ///< locked files and folders hold for root too
    bool slowed = false;                   ///< stopped again and again while it runs
    unsigned watchdogSeconds = 120;        ///< a program that hangs must not hang the test run
    std::function<void(int)> meanwhile{};  ///< called with the process's number while it runs
};

/// Runs `stanag-overlay` with these arguments to its end.
Result run(std::vector<std::string> const& arguments, RunOptions const& options = {});

/// Feeds `bytes` to the program's standard input, keeps that open, sends the signal and waits for the end.
Result runInterrupted(std::vector<std::string> const& arguments, std::string const& bytes, int signal);

/// The lines of a text without their line feeds.
std::vector<std::string> linesOf(std::string const& text);

using file_test::readFile;
using file_test::writeFile;

}  // namespace e2e
