// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The page as it is built in: everything that it names is served, and nothing comes from elsewhere or stands inline,
// which the content security policy would forbid.
#include "editor/page_files.h"

#include "file_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

std::string const kFolder = OVERLAY_SOURCE_DIR "/reference_host/editor/page/";

std::set<std::string> served()
{
    std::set<std::string> names;
    for (editor::PageFile const& file : editor::pageFiles()) {
        names.insert(std::string(file.name));
    }
    return names;
}

std::vector<std::string> matches(std::string const& text, std::string const& pattern)
{
    std::regex const expression(pattern);
    std::vector<std::string> found;
    std::transform(std::sregex_iterator(text.begin(), text.end(), expression), std::sregex_iterator(),
                   std::back_inserter(found), [](std::smatch const& match) { return match[1].str(); });
    return found;
}

TEST(PageFiles, AreTheFilesOfTheFolder)
{
    std::set<std::string> there;
    for (auto const& entry : std::filesystem::directory_iterator(kFolder)) {
        there.insert(entry.path().filename().string());
    }
    EXPECT_EQ(served(), there);
    for (editor::PageFile const& file : editor::pageFiles()) {
        EXPECT_EQ(file.bytes, file_test::readFile(kFolder + std::string(file.name))) << file.name;
    }
}

TEST(PageFiles, HaveTheirMediaTypes)
{
    for (editor::PageFile const& file : editor::pageFiles()) {
        std::string const ending(file.name.substr(file.name.rfind('.')));
        std::string const type = ending == ".html"  ? "text/html; charset=utf-8"
                                 : ending == ".css" ? "text/css; charset=utf-8"
                                 : ending == ".js"  ? "text/javascript; charset=utf-8"
                                                    : "image/svg+xml";
        EXPECT_EQ(file.type, type) << file.name;
    }
}

TEST(PageFiles, NameOnlyWhatIsServed)
{
    std::set<std::string> const names = served();
    for (editor::PageFile const& file : editor::pageFiles()) {
        std::string const text(file.bytes);
        std::vector<std::string> named;
        if (file.type.substr(0, 9) == "text/html") {
            named = matches(text, R"re((?:src|href)="([^"]*)")re");
        } else if (file.type.substr(0, 15) == "text/javascript") {
            named = matches(text, R"re((?:from|import)\s+'([^']*)')re");
        } else {
            named = matches(text, R"re(url\(['"]?([^)'"]*))re");
        }
        for (std::string const& name : named) {
            bool const isHere = name.substr(0, 5) == "data:" || name.substr(0, 1) == "#";
            std::string const plain =
                name.substr(0, 2) == "./" ? name.substr(2) : name.substr(name.find_first_not_of('/'));
            EXPECT_TRUE(isHere || names.count(plain) == 1) << file.name << " names " << name;
        }
    }
}

TEST(PageFiles, HaveNothingInline)
{
    for (editor::PageFile const& file : editor::pageFiles()) {
        if (file.type.substr(0, 9) == "text/html") {
            std::string const text(file.bytes);
            EXPECT_EQ(matches(text, R"re((\son[a-z]+=|\sstyle=|<style|javascript:))re"), std::vector<std::string>());
            EXPECT_EQ(matches(text, R"re((<script[^>]*>)[^<])re"), std::vector<std::string>());
        }
    }
}

}  // namespace
