// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers are read and written with a point in a process whose C library writes a comma.
#include "SwAny.h"
#include "SwJson.h"
#include "SwString.h"

#include "any_text.h"
#include "comma_locale.h"
#include "tree_text.h"

#include <gtest/gtest.h>

using framework_test::converted;
using framework_test::textOf;

TEST(CommaLocale, StringsAreReadWithAPoint)
{
    CommaCLocale const comma;
    double number = 0.0;
    EXPECT_TRUE(SwString("1.5").parseNumericDouble(number));
    EXPECT_EQ(number, 1.5);
    EXPECT_TRUE(SwString("1,5e1").parseNumericDouble(number));
    EXPECT_EQ(number, 1.0);
    EXPECT_FALSE(SwString(",5e1").parseNumericDouble(number));
    EXPECT_EQ(SwString("1.234").toInt(), 1);
}

TEST(CommaLocale, VariantsAreConvertedWithAPoint)
{
    CommaCLocale const comma;
    EXPECT_EQ(converted<double>(SwString("1.5")), 1.5);
    EXPECT_EQ(converted<float>(SwString("1.5")), 1.5F);
    EXPECT_EQ(textOf(1234.5), "1234.5");
    EXPECT_EQ(textOf(1234.5F), "1234.5");
    EXPECT_EQ(SwAny(1234.5).toString().toStdString(), "1234.5");
    EXPECT_EQ(textOf(SwJsonValue(1234.5)), "1234.500000");
    EXPECT_EQ(textOf(SwJsonArray{1234.5}), "[1234.500000]");
}

TEST(CommaLocale, DocumentsAreReadWithAPoint)
{
    CommaCLocale const comma;
    std::string const cipherText = SwString("2.5").encryptAES("key");
    struct Row {
        std::string text;
        char const* key;
        double expected;
    };
    Row const rows[] = {
        {"[1.5]", "", 1.5},
        {"[0.0]", "", 0.0},
        {"[2.2250738585072014e-308]", "", 2.2250738585072014e-308},
        {"[1.00000000000000000000000000000000000000005]", "", 1.0},
        {"[\"1.5\"]", "", 1.5},
        {"[\"" + cipherText + "\"]", "key", 2.5},
        {"[" + cipherText + "]", "key", 2.5},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.text);
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(row.text, row.key, error);
        EXPECT_EQ(error.toStdString(), "");
        ASSERT_EQ(document.array().size(), 1U);
        EXPECT_TRUE(document.array()[0].isDouble());
        EXPECT_EQ(document.array()[0].toDouble(), row.expected);
    }
}
