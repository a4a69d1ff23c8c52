// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Every line on standard error is flushed with its end: a host that is killed has said what it had to say.
#include "SwAny.h"
#include "SwCrypto.h"
#include "SwJson.h"
#include "SwString.h"

#include "flushed_cerr.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

TEST(Diagnostic, EveryLineIsFlushed)
{
    SwAny::registerAllType();
    struct Row {
        std::function<void()> action;
        char const* line;
    };
    Row const rows[] = {
        {[] { SwString(" one ").toInt(); }, "Invalid int conversion in SwString:  one \n"},
        {[] { SwAny(SwString("one")).convert<float>(); }, "Invalid float conversion in SwString: one\n"},
        {[] { SwAny(SwString("one")).convert<double>(); }, "Invalid double conversion in SwString: one\n"},
        {[] { SwAny(1).convert("X"); }, "No conversion rule registered from i to X\n"},
        {[] { SwString().decryptAES("key"); }, "Decryption error: Invalid data: empty.\n"},
        {[] { SwCrypto::decryptAES("", "key"); }, "Decryption error: Invalid data: empty.\n"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.line);
        FlushedCerr const flushed;
        row.action();
        EXPECT_EQ(flushed.text(), row.line);
    }
}
