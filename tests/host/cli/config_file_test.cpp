// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the program says about configurations that the plugin would silently take for empty ones.
#include "cli/config_file.h"

#include "file_bytes.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using media_test::TempFolder;

/// The message without the file's name, "" when the configuration is taken.
std::string complaintAbout(std::string const& text)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    file_test::writeFile(path, text);
    try {
        cli::ConfigFile const config = cli::readConfig(path);
        EXPECT_EQ(config.text, text);
        EXPECT_EQ(config.path, path);
        EXPECT_TRUE(config.root.contains("overlay"));
        return "";
    } catch (std::runtime_error const& failure) {
        std::string const message = failure.what();
        EXPECT_EQ(message.compare(0, path.size() + 2, path + ": "), 0) << message;
        return message.substr(path.size() + 2);
    }
}

struct Row {
    char const* name;
    char const* text;
    char const* complaint;
};

class ConfigFile : public testing::TestWithParam<Row> {};

TEST_P(ConfigFile, IsTakenOrRefusedWithPlaceAndCure)
{
    EXPECT_EQ(complaintAbout(GetParam().text), GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ConfigFile,
    testing::Values(Row{"smallest", R"({"overlay":[]})", ""}, Row{"trailing_space", "{\"overlay\":[]} \n\t\n", ""},
                    Row{"trailing_commas", "{\"overlay\":[{},],}", ""},
                    Row{"empty", "", "line 1, column 1: Unexpected end of JSON input; mend the JSON there"},
                    Row{"wrong_literal", "{\"overlay\":[\n  {\"date\": tru}\n]}",
                        "line 2, column 15: Invalid boolean literal; mend the JSON there"},
                    Row{"missing_comma", "{\n\"a\":1\n\"overlay\":[]}",
                        "line 3, column 1: Expected ',' or '}' in object; mend the JSON there"},
                    Row{"unclosed", "{\"overlay\":[{}",
                        "line 1, column 15: Unterminated JSON array; mend the JSON there"},
                    Row{"rest_after_the_end", "{\"overlay\":[]}\nx",
                        "line 2, column 1: characters after the end of the JSON; remove them"},
                    Row{"array", "[1,2]", "the outermost value is no object; write {\"overlay\": [ ... ]}"},
                    Row{"number", "5", "the outermost value is no object; write {\"overlay\": [ ... ]}"},
                    Row{"no_overlay", "{}", "\"overlay\" is missing; write {\"overlay\": [ ... ]}"},
                    Row{"overlay_object", "{\"overlay\":{}}", "\"overlay\" is no array; write {\"overlay\": [ ... ]}"},
                    Row{"overlay_null", "{\"overlay\":null}", "\"overlay\" is no array; write {\"overlay\": [ ... ]}"}),
    [](auto const& row) { return row.param.name; });

TEST(ReadConfig, NamesAFileThatCannotBeRead)
{
    TempFolder const folder;
    for (auto const& [path, complaint] :
         {std::pair{folder.file("none.json"),
                    std::string(": cannot be read: No such file or directory; check the path")},
          std::pair{folder.path(), std::string(": is a folder; give a configuration file")}}) {
        try {
            cli::readConfig(path);
            FAIL() << "nothing thrown";
        } catch (std::runtime_error const& failure) {
            EXPECT_EQ(failure.what(), path + complaint);
        }
    }
}

}  // namespace
