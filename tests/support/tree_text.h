// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A JSON tree as text that shows every kind: null, true, i12, d1.5 (the shortest digits that read back), 'text',
// {a:i1,b:[]}.
#pragma once

#include "SwJson.h"

#include <gtest/gtest.h>

#include <charconv>
#include <string>
#include <vector>

namespace framework_test {

inline std::string treeText(SwJsonValue const& value)
{
    char number[40];
    std::string text;
    switch (value.type()) {
    case SwJsonValue::Null:
        return "null";
    case SwJsonValue::Bool:
        return value.toBool() ? "true" : "false";
    case SwJsonValue::Int:
        return "i" + std::to_string(value.toInt());
    case SwJsonValue::Double:
        return "d" + std::string(number, std::to_chars(number, number + sizeof number, value.toDouble()).ptr);
    case SwJsonValue::String:
        return "'" + value.stringRef() + "'";
    case SwJsonValue::Object:
        for (auto const& [key, member] : value.toObject()) {
            text += (text.empty() ? "" : ",") + key + ":" + treeText(member);
        }
        return "{" + text + "}";
    case SwJsonValue::Array:
        for (SwJsonValue const& item : value.toArray()) {
            text += (text.empty() ? "" : ",") + treeText(item);
        }
        return "[" + text + "]";
    }
    return "unknown kind";
}

/// What reading `text` as a document gives: the tree, or "error: " and the message.
inline std::string readText(std::string const& text, std::string const& key = "")
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(text, key, error);
    if (!error.isEmpty()) {
        return (document.isNull() ? "error: " : "error with a tree: ") + error.toStdString();
    }
    return treeText(document.root());
}

/// A text to read and the tree that comes of it, or its error.
struct ReadRow {
    std::string input;
    std::string expected;
};

inline void expectRows(std::vector<ReadRow> const& rows, std::string const& key = "")
{
    for (ReadRow const& row : rows) {
        SCOPED_TRACE(row.input);
        EXPECT_EQ(readText(row.input, key), row.expected);
    }
}

}  // namespace framework_test
