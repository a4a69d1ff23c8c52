// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Holds the key tables and the options of docs/telemetry.md to the code.
#include "clip/host_keys.h"
#include "telemetry/derived_keys.h"
#include "telemetry/nested_sets.h"
#include "telemetry/second_keys.h"
#include "telemetry/security_set.h"
#include "telemetry/st0601_table.h"
#include "ts_klv.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace telemetry {
namespace {

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::string form(TableRow const& row)
{
    std::string const bytes =
        row.width == 0 ? "any length" : std::to_string(row.width) + (row.width == 1 ? " byte" : " bytes");
    std::string const range = number(std::min(row.low, row.high)) + " to " + number(std::max(row.low, row.high)) + ", ";
    switch (row.rule) {
    case Rule::Text:
        return "text";
    case Rule::WideText:
        return "text, two bytes a character";
    case Rule::Count:
    case Rule::SignedCount:
        return "integer, " + bytes;
    case Rule::TwiceCount:
        return "integer, even, " + bytes;
    case Rule::Imapb:
        return "number, " + range + "any length";
    case Rule::Float:
        return "number";
    default:
        return "number, " + range + bytes;
    }
}

std::string keysOf(TableRow const& row)
{
    std::string keys = "`" + std::string(row.key) + "`";
    switch (row.tag) {
    case tag::kHeading:
        return keys + " and `" + std::string(kYawKey) + "`";
    case tag::kPitch:
        return keys + ", beside tag 90 `" + std::string(kShortPitchKey) + "`";
    case tag::kRoll:
        return keys + ", beside tag 91 `" + std::string(kShortRollKey) + "`";
    case tag::kGenericFlags:
        return keys + " and the flags below";
    default:
        return keys;
    }
}

std::string page()
{
    auto const bytes = fileBytes(OVERLAY_SOURCE_DIR "/docs/telemetry.md");
    return {bytes.begin(), bytes.end()};
}

TEST(TelemetryDocs, KeyTableIsTheTableOfTheCode)
{
    std::string table = "| tag | key | item | value |\n| --- | --- | --- | --- |\n";
    for (TableRow const& row : st0601Table()) {
        table += "| " + std::to_string(row.tag) + " | " + keysOf(row) + " | " + std::string(row.item) + " | " +
                 form(row) + " |\n";
    }
    EXPECT_NE(page().find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold this table:\n"
                                                                     << table;
}

TEST(TelemetryDocs, SecurityTableIsTheTableOfTheCode)
{
    std::string table = "| tag | key | item | value |\n| --- | --- | --- | --- |\n";
    for (TableRow const& row : securityTable()) {
        table += "| " + std::to_string(row.tag) + " | `" + std::string(row.key) + "` | " + std::string(row.item) +
                 " | " + form(row) + " |\n";
    }
    std::string const text = page();
    EXPECT_NE(text.find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold this table:\n"
                                                                   << table;
    for (CodeRow const& row : securityCodes()) {
        EXPECT_NE(text.find("`" + std::string(row.textKey) + "`"), std::string::npos) << row.textKey;
    }
    EXPECT_NE(text.find("`" + std::string(kSecurityLineKey) + "`"), std::string::npos);
}

/// "74, first target, item 10"; "74, item 5"; "122".
std::string placeOf(NestedRow const& nested)
{
    return std::to_string(nested.item) + (nested.part.empty() ? "" : ", " + std::string(nested.part)) +
           (nested.row.tag == 0 ? "" : ", item " + std::to_string(nested.row.tag));
}

TEST(TelemetryDocs, NestedTableIsTheTableOfTheCode)
{
    std::string table = "| tag | key | item | value |\n| --- | --- | --- | --- |\n";
    for (NestedRow const& nested : nestedTable()) {
        table += "| " + placeOf(nested) + " | `" + std::string(nested.row.key) + "` | " + std::string(nested.row.item) +
                 " | " + form(nested.row) + " |\n";
    }
    EXPECT_NE(page().find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold this table:\n"
                                                                     << table;
    EXPECT_NE(page().find("`" + std::string(countryCodingMethods().textKey) + "`"), std::string::npos);
}

TEST(TelemetryDocs, SecondKeysAreThoseOfTheCode)
{
    std::string table = "| bit | key | set when |\n| --- | --- | --- |\n";
    for (FlagRow const& row : genericFlagRows()) {
        table +=
            "| " + std::to_string(row.bit) + " | `" + std::string(row.key) + "` | " + std::string(row.meaning) + " |\n";
    }
    table += "\n| key | names, from code 0 on |\n| --- | --- |\n";
    for (CodeRow const& row : st0601Codes()) {
        std::string names;
        for (std::string_view const name : row.names) {
            names += (names.empty() ? "" : "; ") + std::string(name);
        }
        table += "| `" + std::string(row.textKey) + "` | " + names + " |\n";
    }
    EXPECT_NE(page().find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold these tables:\n"
                                                                     << table;
    for (SecondKey const& second : secondKeys()) {
        EXPECT_NE(page().find("`" + second.key + "`"), std::string::npos) << second.key;
    }
}

TEST(TelemetryDocs, DerivedTableIsTheTableOfTheCode)
{
    std::string table = "| key | made of | what it is |\n| --- | --- | --- |\n";
    for (DerivedRow const& row : derivedTable()) {
        table += "| `" + std::string(row.key) + "` | `" + std::string(row.sources) + "` | " + std::string(row.meaning) +
                 " |\n";
    }
    EXPECT_NE(page().find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold this table:\n"
                                                                     << table;
}

TEST(TelemetryDocs, HostKeysAreThoseOfTheCode)
{
    std::string const text = page();
    std::size_t const begin = text.find("### Keys of the host");
    ASSERT_NE(begin, std::string::npos);
    std::string const section = text.substr(begin, text.find("\n## ", begin) - begin);
    std::size_t rows = 0;
    for (std::size_t at = section.find("\n| `"); at != std::string::npos; at = section.find("\n| `", at + 1)) {
        ++rows;
    }
    SwJsonObject const keys = clip::hostKeys(0.0, 0.0, 0);
    EXPECT_EQ(rows, keys.size());
    for (auto const& [key, value] : keys) {
        std::size_t const row = section.find("\n| `" + std::string(key) + "` | ");
        ASSERT_NE(row, std::string::npos) << std::string(key);
        std::string const line = section.substr(row + 1, section.find('\n', row + 1) - row - 1);
        EXPECT_TRUE(line.ends_with(value.isInt() ? "| integer |" : "| number, whole microseconds |")) << line;
    }
}

TEST(TelemetryDocs, NameEveryOptionOfTelemetry)
{
    std::string const text = page();
    for (char const* const option : {"--telemetry FILE", "--telemetry-offset SECONDS", "--max-age SECONDS",
                                     "--klv STREAM", "--derived", "--csv"}) {
        EXPECT_NE(text.find("`" + std::string(option) + "`"), std::string::npos) << option;
    }
}

}  // namespace
}  // namespace telemetry
