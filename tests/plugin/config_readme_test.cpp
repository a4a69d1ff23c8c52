// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// README's tables of the configuration and the reference in docs/configuration.md against the parser: every member has
// its row and its section, every default is what the parser takes without the member, every range is where it clamps,
// every example has an effect.
#include "stanag_overlay_config.h"

#include "config_changes.h"
#include "file_bytes.h"

#include "SwJson.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace stanag_overlay {
namespace {

struct Row {
    std::vector<std::string> keys;  ///< most rows have one
    std::string usual;              ///< the cell "default"; empty in a table without it
    std::string meaning;
    std::string example;
};

std::string fileText(std::string const& path)
{
    return file_test::readFile(OVERLAY_SOURCE_DIR "/" + path);
}

/// Everything between backquotes.
std::vector<std::string> codeOf(std::string const& text)
{
    static std::regex const kCode("`([^`]*)`");
    std::vector<std::string> pieces;
    for (std::sregex_iterator match(text.begin(), text.end(), kCode), end; match != end; ++match) {
        pieces.push_back((*match)[1]);
    }
    return pieces;
}

std::vector<std::string> cellsOf(std::string const& line)
{
    std::vector<std::string> cells;
    std::istringstream rest(line.substr(2));
    for (std::string cell; std::getline(rest, cell, '|');) {
        std::size_t const last = cell.find_last_not_of(' ');
        std::size_t const first = cell.find_first_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return cells;
}

/// The rows of the table that comes first after a line that begins with `heading`.
std::vector<Row> tableAfter(std::string const& heading)
{
    std::istringstream readme(fileText("README.md"));
    std::string line;
    while (std::getline(readme, line) && line.rfind(heading, 0) != 0) {
    }
    while (std::getline(readme, line) && line.rfind("| key |", 0) != 0) {
    }
    bool const hasDefaults = line.find("| default |") != std::string::npos;
    std::getline(readme, line);
    std::vector<Row> rows;
    while (std::getline(readme, line) && line.rfind("| ", 0) == 0) {
        std::vector<std::string> cells = cellsOf(line);
        if (!hasDefaults) {
            cells.insert(cells.begin() + 1, "");
        }
        EXPECT_EQ(cells.size(), 4U) << line;
        cells.resize(4);
        std::vector<std::string> const example = codeOf(cells[3]);
        EXPECT_EQ(example.size(), 1U) << line;
        rows.push_back({codeOf(cells[0]), cells[1], cells[2], example.empty() ? "" : example.front()});
    }
    return rows;
}

/// A table with the place in a block at which its members stand.
struct Table {
    char const* heading;
    char const* before;
    char const* after;
    char const* schemaPath;  ///< of the published schema's properties for that place
};

Table const kTables[] = {
    {"## Configuration", "", "", ""},
    {"**`condition`**", R"("condition": {"key": "k", )", "}", "condition properties"},
    {"**`formats`**", R"("formats": {"k": {)", "}}", "formats additionalProperties properties"},
};

/// What one block with these members becomes.
std::string readAs(Table const& table, std::string const& members)
{
    std::string inner = members;
    if (inner.empty()) {
        inner = R"("unknown": 0)";
    }
    std::vector<OverlayCfg> const blocks =
        OverlayConfigParser().parse(R"({"overlay": [{)" + (table.before + inner) + table.after + "}]}");
    EXPECT_EQ(blocks.size(), 1U) << inner;
    return blocks.size() == 1 ? changes(blocks.front()) : "";
}

std::string member(std::string const& key, std::string const& value)
{
    return '"' + key + "\": " + value;
}

/// The cell "default" of one key as JSON; nothing when it says that there is none.
std::optional<std::string> defaultOf(Row const& row, std::size_t index)
{
    static std::regex const kPosition("x ([0-9.]+), y ([0-9.]+)");
    std::smatch place;
    if (std::regex_match(row.usual, place, kPosition)) {
        return R"({"x": )" + place.str(1) + R"(, "y": )" + place.str(2) + "}";
    }
    std::string cell = row.usual;
    // Two keys of a row have a default each, or share the one that stands there.
    if (std::size_t const comma = cell.find(", "); index == 1 && comma != std::string::npos) {
        cell = cell.substr(comma + 2);
    }
    if (cell.front() == '`') {
        return '"' + codeOf(cell).front() + '"';
    }
    std::string const word = cell.substr(0, cell.find_first_of(":,"));
    if (word == "none" || word == "always shown") {
        return std::nullopt;
    }
    return word == "empty" ? R"("")" : word;
}

/// The limits that the meaning names: "6 to 256" or "up to 120".
struct Range {
    std::optional<int> least;
    int most = 0;
};

std::optional<Range> rangeOf(std::string const& meaning)
{
    std::smatch found;
    if (std::regex_search(meaning, found, std::regex("([0-9]+) to ([0-9]+)"))) {
        return Range{std::stoi(found[1]), std::stoi(found[2])};
    }
    if (std::regex_search(meaning, found, std::regex("up to ([0-9]+)"))) {
        return Range{std::nullopt, std::stoi(found[1])};
    }
    return std::nullopt;
}

TEST(ConfigReadme, EveryMemberHasItsRow)
{
    SwString error;
    SwJsonDocument const schema =
        SwJsonDocument::fromJson(SwString(fileText("tests/golden/config_schema.json")), SwString(), error);
    ASSERT_TRUE(schema.isObject()) << error.toStdString();
    for (Table const& table : kTables) {
        SwJsonValue place = schema.object()["properties"].toObject()["overlay"].toObject()["items"];
        place = SwJsonValue(place.toObject()["properties"]);
        std::istringstream path(table.schemaPath);
        for (std::string step; path >> step;) {
            place = SwJsonValue(place.toObject()[step]);
        }
        std::set<std::string> members;
        for (auto const& entry : place.toObject()) {
            members.insert(std::string(entry.first));
        }
        std::set<std::string> rows;
        for (Row const& row : tableAfter(table.heading)) {
            for (std::string const& key : row.keys) {
                EXPECT_TRUE(rows.insert(key).second) << table.heading << ": twice: " << key;
            }
        }
        EXPECT_EQ(rows, members) << table.heading;
    }
}

TEST(ConfigReadme, DefaultsAreWhatIsTakenWithoutTheMember)
{
    for (Table const& table : kTables) {
        for (Row const& row : tableAfter(table.heading)) {
            for (std::size_t i = 0; i < row.keys.size() && !row.usual.empty(); ++i) {
                if (std::optional<std::string> const usual = defaultOf(row, i)) {
                    EXPECT_EQ(readAs(table, member(row.keys[i], *usual)), readAs(table, "")) << row.keys[i];
                }
            }
        }
    }
}

TEST(ConfigReadme, NumbersAreClampedWhereTheMeaningSays)
{
    std::size_t ranges = 0;
    for (Table const& table : kTables) {
        for (Row const& row : tableAfter(table.heading)) {
            std::optional<Range> const range = rangeOf(row.meaning);
            if (!range) {
                continue;
            }
            ++ranges;
            auto const read = [&](int number) {
                return readAs(table, member(row.keys.back(), std::to_string(number)));
            };
            std::string const& key = row.keys.back();
            EXPECT_EQ(read(range->most + 1), read(range->most)) << key;
            EXPECT_NE(read(range->most - 1), read(range->most)) << key;
            if (range->least) {
                EXPECT_EQ(read(*range->least - 1), read(*range->least)) << key;
                EXPECT_NE(read(*range->least + 1), read(*range->least)) << key;
            }
        }
    }
    EXPECT_EQ(ranges, 9U);
}

TEST(ConfigReadme, ExamplesHaveAnEffect)
{
    for (Table const& table : kTables) {
        for (Row const& row : tableAfter(table.heading)) {
            EXPECT_NE(row.example.find('"' + row.keys.front() + '"'), std::string::npos) << row.example;
            EXPECT_NE(readAs(table, row.example), readAs(table, "")) << row.example;
        }
    }
}

TEST(ConfigReadme, OperatorsHaveTheirOtherNames)
{
    std::map<std::string, std::string> wordOf;  // what is read, and the name that gave it
    for (Row const& row : tableAfter("**`condition`**")) {
        if (row.keys.front() != "operator") {
            continue;
        }
        std::regex const kGroup("`(\\w+)`(?: \\((`[^)]*`)\\))?");
        for (std::sregex_iterator match(row.meaning.begin(), row.meaning.end(), kGroup), end; match != end; ++match) {
            std::string const name = (*match)[1];
            auto const read = [](std::string const& word) {
                return readAs(kTables[1], member("operator", '"' + word + '"') + R"(, "value": 1)");
            };
            EXPECT_TRUE(wordOf.emplace(read(name), name).second) << name;
            for (std::string const& other : codeOf((*match)[2])) {
                EXPECT_EQ(read(other), read(name)) << other;
            }
        }
    }
    EXPECT_EQ(wordOf.size(), 7U);
}

/// A section of docs/configuration.md whose heading is a member: "### `condition.key`".
struct Section {
    std::string path;
    std::string text;
};

std::vector<Section> sectionsOfReference()
{
    std::vector<Section> sections;
    std::istringstream page(fileText("docs/configuration.md"));
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.rfind("#", 0) == 0) {
            inside = line.rfind("### `", 0) == 0;
            if (inside) {
                sections.push_back({codeOf(line).front(), {}});
            }
        } else if (inside) {
            sections.back().text += line + " ";
        }
    }
    return sections;
}

/// "formatString", "position", "position.x", "formats.date": all members of the schema below `properties`.
void addMembers(SwJsonObject const& properties, std::string const& before, std::set<std::string>& members)
{
    for (auto const& [name, schema] : properties) {
        std::string const path = before + std::string(name);
        members.insert(path);
        SwJsonObject const& inner = schema.toObject();
        addMembers(inner["properties"].toObject(), path + ".", members);
        addMembers(inner["additionalProperties"].toObject()["properties"].toObject(), path + ".", members);
    }
}

/// What one block becomes with the member of this path.
std::string readAt(std::string const& path, std::string const& value)
{
    std::size_t const dot = path.find('.');
    if (dot == std::string::npos) {
        return readAs(kTables[0], member(path, value));
    }
    std::string const outer = path.substr(0, dot);
    Table const position{"", R"("position": {)", "}", ""};
    return readAs(outer == "condition" ? kTables[1]
                  : outer == "formats" ? kTables[2]
                                       : position,
                  member(path.substr(dot + 1), value));
}

/// What one block becomes with everything around that member, but without it.
std::string readWithout(std::string const& path)
{
    return readAt(path.substr(0, path.find('.') + 1) + "unknown", "0");
}

TEST(ConfigReference, EveryMemberHasItsSection)
{
    SwString error;
    SwJsonDocument const schema =
        SwJsonDocument::fromJson(SwString(fileText("tests/golden/config_schema.json")), SwString(), error);
    ASSERT_TRUE(schema.isObject()) << error.toStdString();
    SwJsonObject const& root = schema.object()["properties"].toObject();
    std::set<std::string> members;
    addMembers(root["overlay"].toObject()["items"].toObject()["properties"].toObject(), "", members);
    EXPECT_EQ(members.size(), 35U);
    for (auto const& entry : root) {
        members.insert(std::string(entry.first));
    }
    std::set<std::string> sections;
    for (Section const& section : sectionsOfReference()) {
        EXPECT_TRUE(sections.insert(section.path).second) << "twice: " << section.path;
    }
    EXPECT_EQ(sections, members);
}

TEST(ConfigReference, DefaultsAreWhatIsTakenWithoutTheMember)
{
    std::set<std::string> const ofTheRoot{"overlay", "availableKeys"};
    std::size_t defaults = 0;
    for (Section const& section : sectionsOfReference()) {
        std::smatch found;
        ASSERT_TRUE(std::regex_search(section.text, found, std::regex("Default: (?:`([^`]*)`|none)"))) << section.path;
        if (found[1].matched && ofTheRoot.count(section.path) == 0) {
            ++defaults;
            EXPECT_EQ(readAt(section.path, found[1]), readWithout(section.path)) << section.path;
        }
    }
    EXPECT_EQ(defaults, 25U);
}

TEST(ConfigReference, NumbersAreClampedWhereTheValuesEnd)
{
    std::size_t ranges = 0;
    std::regex const kValues("Values: (-?[0-9]+) to ([0-9]+)");
    for (Section const& section : sectionsOfReference()) {
        std::smatch found;
        if (!std::regex_search(section.text, found, kValues)) {
            continue;
        }
        ++ranges;
        auto const read = [&section](int number) { return readAt(section.path, std::to_string(number)); };
        int const least = std::stoi(found[1]);
        int const most = std::stoi(found[2]);
        EXPECT_EQ(read(least - 1), read(least)) << section.path;
        EXPECT_NE(read(least + 1), read(least)) << section.path;
        EXPECT_EQ(read(most + 1), read(most)) << section.path;
        EXPECT_NE(read(most - 1), read(most)) << section.path;
    }
    EXPECT_EQ(ranges, 11U);
}

}  // namespace
}  // namespace stanag_overlay
