// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Checked writing to standard output: a result that is cut short must not look like a success.
#include "cli/standard_output.h"

#include "cli/messages.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace cli {
namespace {

[[noreturn]] void failOutput()
{
    int const reason = errno;
    if (reason == EPIPE) {
        throw ReaderGone("standard output is closed");
    }
    throw std::runtime_error(std::string("standard output cannot be written: ") + std::strerror(reason) +
                             "; free some space");
}

}  // namespace

void writeLine(std::string const& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fputc('\n', stdout) == EOF) {
        failOutput();
    }
}

void flushOutput()
{
    if (std::fflush(stdout) != 0) {
        failOutput();
    }
}

}  // namespace cli
