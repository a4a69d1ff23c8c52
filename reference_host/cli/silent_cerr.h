// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Keeps texts that the framework writes to standard error from the terminal for a while.
#pragma once

#include <iostream>
#include <sstream>
#include <streambuf>

namespace cli {

class SilentCerr {
public:
    SilentCerr() : usual_(std::cerr.rdbuf(swallowed_.rdbuf())) {}
    ~SilentCerr() { std::cerr.rdbuf(usual_); }
    SilentCerr(SilentCerr const&) = delete;
    SilentCerr& operator=(SilentCerr const&) = delete;

private:
    std::ostringstream swallowed_;
    std::streambuf* usual_;
};

}  // namespace cli
