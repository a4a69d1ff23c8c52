// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Outputs that would replace what is read, by whatever name.
#include "cli/output_check.h"

#include "file_bytes.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

class OutputCheck : public testing::Test {
protected:
    OutputCheck()
    {
        for (char const* const name : {"a.ts", "c.json", "t.jsonl", "other.ts"}) {
            file_test::writeFile(file(name), name);
        }
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    /// "" when the output is taken.
    static std::string refusalOf(std::string const& output, std::string const& input, std::string const& config,
                                 std::string const& telemetry)
    {
        try {
            cli::refuseToReplace(output, input, config, telemetry);
        } catch (std::runtime_error const& refusal) {
            return refusal.what();
        }
        return "";
    }
    std::string refusalOf(std::string const& output) const
    {
        return refusalOf(output, file("a.ts"), file("c.json"), file("t.jsonl"));
    }
    std::string isThe(std::string const& role, std::string const& output) const
    {
        return output + ": is the " + role + " itself; give another name for the output";
    }

private:
    media_test::TempFolder folder_;
};

TEST_F(OutputCheck, OtherNamesAreTaken)
{
    for (char const* const name : {"out.ts", "other.ts", "a.ts.ts", "folder/a.ts"}) {
        EXPECT_EQ(refusalOf(file(name)), "") << name;
    }
}

TEST_F(OutputCheck, SameNameIsRefused)
{
    EXPECT_EQ(refusalOf(file("a.ts")), isThe("input", file("a.ts")));
    EXPECT_EQ(refusalOf(file("c.json")), isThe("configuration", file("c.json")));
    EXPECT_EQ(refusalOf(file("t.jsonl")), isThe("telemetry file", file("t.jsonl")));
}

TEST_F(OutputCheck, OtherSpellingIsRefused)
{
    fs::create_directory(file("sub"));
    for (char const* const name : {"./a.ts", "sub/../a.ts", "//a.ts"}) {
        EXPECT_EQ(refusalOf(file(name)), isThe("input", file(name)));
    }
    EXPECT_EQ(refusalOf(fs::relative(file("a.ts")).string()), isThe("input", fs::relative(file("a.ts")).string()));
}

TEST_F(OutputCheck, LinksAreFollowed)
{
    fs::create_symlink(file("a.ts"), file("link.ts"));
    fs::create_symlink(file("link.ts"), file("linktolink.ts"));
    fs::create_symlink("c.json", file("relative"));
    fs::create_hard_link(file("t.jsonl"), file("same.jsonl"));
    fs::create_symlink(file("other.ts"), file("harmless.ts"));
    EXPECT_EQ(refusalOf(file("link.ts")), isThe("input", file("link.ts")));
    EXPECT_EQ(refusalOf(file("linktolink.ts")), isThe("input", file("linktolink.ts")));
    EXPECT_EQ(refusalOf(file("relative")), isThe("configuration", file("relative")));
    EXPECT_EQ(refusalOf(file("same.jsonl")), isThe("telemetry file", file("same.jsonl")));
    EXPECT_EQ(refusalOf(file("harmless.ts")), "");
}

TEST_F(OutputCheck, LinkAmongWhatIsReadIsFollowedToo)
{
    fs::create_symlink(file("a.ts"), file("in.ts"));
    EXPECT_EQ(refusalOf(file("a.ts"), file("in.ts"), file("c.json"), ""), isThe("input", file("a.ts")));
}

TEST_F(OutputCheck, LinkToNowhereIsTaken)
{
    fs::create_symlink(file("gone.ts"), file("dangling.ts"));
    EXPECT_EQ(refusalOf(file("dangling.ts")), "");
}

TEST_F(OutputCheck, WithoutTelemetryFileOnlyTheOthersCount)
{
    EXPECT_EQ(refusalOf(file("t.jsonl"), file("a.ts"), file("c.json"), ""), "");
    EXPECT_EQ(refusalOf(file("a.ts"), file("a.ts"), file("c.json"), ""), isThe("input", file("a.ts")));
}

TEST_F(OutputCheck, InputThatIsNoFileIsNeverTheOutput)
{
    EXPECT_EQ(refusalOf(file("out.ts"), "-", "-", ""), "");
    EXPECT_EQ(refusalOf(file("out.ts"), "udp://127.0.0.1:5000", file("c.json"), ""), "");
    EXPECT_EQ(refusalOf(file("out.ts"), file("missing.ts"), file("c.json"), ""), "");
    EXPECT_EQ(refusalOf(file("missing.ts"), file("missing.ts"), file("c.json"), ""), "") << "nothing is lost";
}

TEST_F(OutputCheck, AddressIsNoFile)
{
    EXPECT_EQ(refusalOf("-", "-", file("c.json"), ""), "");
    EXPECT_EQ(refusalOf("udp://127.0.0.1:5000", "udp://127.0.0.1:5000", file("c.json"), ""), "");
}

TEST_F(OutputCheck, FirstRoleIsNamed)
{
    EXPECT_EQ(refusalOf(file("a.ts"), file("a.ts"), file("a.ts"), file("a.ts")), isThe("input", file("a.ts")));
}

}  // namespace
