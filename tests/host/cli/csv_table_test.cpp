// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Cells of tables.
#include "cli/csv_table.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string cell(SwJsonValue const& value)
{
    std::string row = "0";
    cli::appendCell(row, value);
    return row.substr(1);
}

TEST(CsvTable, Cells)
{
    struct Row {
        char const* name;
        SwJsonValue value;
        char const* expected;
    };
    Row const rows[] = {
        {"nothing", {}, ","},
        {"text", "EO zoom", ",EO zoom"},
        {"empty text", "", ","},
        {"comma", "a,b", ",\"a,b\""},
        {"quotes", "say \"hi\"", ",\"say \"\"hi\"\"\""},
        {"line feed", "a\nb", ",\"a\nb\""},
        {"carriage return", "a\rb", ",\"a\rb\""},
        {"beyond ASCII", "34\u00B0", ",34\u00B0"},
        {"no UTF-8", "a\xFF", ",a\xEF\xBF\xBD"},
        {"integer", -5, ",-5"},
        {"number", 2.5, ",2.5"},
        {"whole number", 90.0, ",90.0"},
        {"flag", true, ",true"},
        {"object", SwJsonObject{{"a", 1}, {"b", "c"}}, ",\"{\"\"a\"\": 1, \"\"b\"\": \"\"c\"\"}\""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(cell(row.value), row.expected);
    }
}

TEST(CsvTable, TheFirstCellHasNoComma)
{
    std::string row;
    cli::appendCell(row, "packet");
    cli::appendCell(row, "pts");
    EXPECT_EQ(row, "packet,pts");
}

}  // namespace
