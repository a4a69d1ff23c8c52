// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Quoting of cells.
#include "cli/csv_table.h"

#include "sw_utf8.h"
#include "telemetry/json_line.h"

namespace cli {
namespace {

std::string quoted(std::string const& text)
{
    std::string cell = "\"";
    for (char const c : text) {
        cell += c;
        if (c == '"') {
            cell += c;
        }
    }
    return cell + "\"";
}

std::string textOf(SwJsonValue const& value)
{
    std::string text;
    if (value.isString()) {
        text = sw_utf8::valid(value.stringRef());
    } else if (!value.isNull()) {
        telemetry::appendJson(text, value);
    }
    return text;
}

}  // namespace

void appendCell(std::string& row, SwJsonValue const& value)
{
    std::string const text = textOf(value);
    bool const needsQuotes = text.find_first_of(",\"\r\n") != std::string::npos;
    row += row.empty() ? "" : ",";
    row += needsQuotes ? quoted(text) : text;
}

}  // namespace cli
