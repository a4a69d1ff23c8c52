// Holds the key table of docs/telemetry.md to the table of the code.
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
    case Rule::Count:
    case Rule::SignedCount:
        return "integer, " + bytes;
    case Rule::TwiceCount:
        return "integer, even, " + bytes;
    case Rule::Imapb:
        return "number, " + range + "any length";
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
        return keys + "; bit 0 as a flag: `" + std::string(kLaserKey) + "`";
    default:
        return keys;
    }
}

TEST(TelemetryDocs, KeyTableIsTheTableOfTheCode)
{
    std::string table = "| tag | key | item | value |\n| --- | --- | --- | --- |\n";
    for (TableRow const& row : st0601Table()) {
        table += "| " + std::to_string(row.tag) + " | " + keysOf(row) + " | " + std::string(row.item) + " | " +
                 form(row) + " |\n";
    }
    auto const bytes = fileBytes(OVERLAY_SOURCE_DIR "/docs/telemetry.md");
    std::string const page(bytes.begin(), bytes.end());
    EXPECT_NE(page.find("\n\n" + table + "\n"), std::string::npos) << "docs/telemetry.md should hold this table:\n"
                                                                   << table;
}

}  // namespace
}  // namespace telemetry
