// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// For tests of any folder: captured diagnostics, a global locale for one scope, a small thread.
#pragma once

#include "small_stack.h"

#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <string>

namespace framework_test {

/// What `action` writes to standard error.
inline std::string standardErrorOf(std::function<void()> const& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

/// Decimal comma and "." between groups of three digits: what a number looks like when a stream follows it.
class CommaPunctuation : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Makes a locale with a decimal comma the global C++ locale while it lives.
class CommaLocale {
public:
    CommaLocale() : previous_(std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation))) {}
    CommaLocale(CommaLocale const&) = delete;
    CommaLocale& operator=(CommaLocale const&) = delete;
    ~CommaLocale() { std::locale::global(previous_); }

private:
    std::locale previous_;
};

using ::runOnSmallStack;

}  // namespace framework_test
