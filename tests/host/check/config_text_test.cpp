// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts that are no configuration, and where they go wrong. Every message of the command line stands in
// config_file_test.
#include "check/config_text.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

/// "line:column text", "text" without a place, "" when the configuration is taken.
std::string faultOf(std::string const& text)
{
    check::ConfigText const read = check::readConfigText(text);
    EXPECT_EQ(read.root.contains("overlay"), !read.fault.has_value()) << text;
    if (!read.fault) {
        return "";
    }
    std::string const place = read.fault->place ? std::to_string(read.fault->place->line) + ":" +
                                                      std::to_string(read.fault->place->column) + " "
                                                : "";
    return place + read.fault->text;
}

TEST(ReadConfigText, SaysWhereTheJsonIsWrong)
{
    EXPECT_EQ(faultOf(R"({"overlay":[],})"), "");
    EXPECT_EQ(faultOf("{\n\"a\":1\n\"overlay\":[]}"), "3:1 Expected ',' or '}' in object; mend the JSON there");
    EXPECT_EQ(faultOf("{\"overlay\":[]}\nx"), "2:1 characters after the end of the JSON; remove them");
    EXPECT_EQ(faultOf("{}"), "\"overlay\" is missing; write {\"overlay\": [ ... ]}");
}

TEST(PlaceIn, CountsLinesAndColumnsFromOne)
{
    std::string const text = "ab\ncd\n\nx";
    auto const place = [&text](std::size_t index) {
        check::TextPlace const found = check::placeIn(text, index);
        return std::to_string(found.line) + ":" + std::to_string(found.column);
    };
    EXPECT_EQ(place(0), "1:1");
    EXPECT_EQ(place(2), "1:3");
    EXPECT_EQ(place(3), "2:1");
    EXPECT_EQ(place(6), "3:1");
    EXPECT_EQ(place(8), "4:2");
    EXPECT_EQ(place(999), "4:2");
}

TEST(LineOf, IsOneLineWithItsPlaceIfItHasOne)
{
    EXPECT_EQ(check::lineOf({check::TextPlace{3, 7}, "wrong"}), "line 3, column 7: wrong");
    EXPECT_EQ(check::lineOf({{}, "wrong"}), "wrong");
}

TEST(ReadConfigFile, AFileThatCannotBeReadIsNamedWithACure)
{
    auto const messageFor = [](char const* path) -> std::string {
        try {
            check::readConfigFile(path);
            return "read";
        } catch (std::runtime_error const& failure) {
            return failure.what();
        }
    };
    EXPECT_EQ(messageFor("/"), "/: is a folder; give a configuration file");
    EXPECT_EQ(messageFor("/no/such/c.json"),
              "/no/such/c.json: cannot be read: No such file or directory; check the path");
}

}  // namespace
