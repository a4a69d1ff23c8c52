// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The small members that hosts use and the framework itself does not.
#include "SwAny.h"
#include "SwJson.h"
#include "SwString.h"

#include <gtest/gtest.h>

#include <string>

TEST(PlainMembers, AStringIsReadAndEmptiedInPlace)
{
    SwString text("abc");
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text[1], 'b');
    EXPECT_STREQ(text.data(), "abc");
    text.reserve(1000);
    EXPECT_EQ(text.toStdString(), "abc");
    text.clear();
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.toStdString(), "");
}

TEST(PlainMembers, ContainersDiffer)
{
    EXPECT_TRUE((SwJsonObject{{"a", 1}}) != (SwJsonObject{{"a", 2}}));
    EXPECT_FALSE((SwJsonObject{{"a", 1}}) != (SwJsonObject{{"a", 1}}));
    EXPECT_TRUE((SwJsonArray{1}) != (SwJsonArray{1, 2}));
    EXPECT_FALSE((SwJsonArray{1}) != (SwJsonArray{1}));
}

TEST(PlainMembers, AVariantCopiedOntoItselfKeepsItsValue)
{
    SwAny any(std::string("a text beyond the short form"));
    any.copyFrom(any);
    EXPECT_EQ(any.get<std::string>(), "a text beyond the short form");
}
