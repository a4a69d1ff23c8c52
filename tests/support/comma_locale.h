// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The process under a language that writes "2,5": what a desktop host may set before it loads the plugin.
#pragma once

#include <string>

/// Makes German the C locale of the process (setlocale, all categories) while an object lives. Its files are made by
/// localedef in the build folder, so the machine needs no such locale. Throws std::runtime_error where the C library
/// does not take it: a test must fail then, not pass untested.
class CommaCLocale {
public:
    CommaCLocale();
    ~CommaCLocale();
    CommaCLocale(CommaCLocale const&) = delete;
    CommaCLocale& operator=(CommaCLocale const&) = delete;

private:
    std::string before_;
};
