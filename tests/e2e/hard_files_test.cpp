// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Places that cannot be read or written, outputs that would replace an input, fonts that are not there: one line
// that names the place and the cure, exit code 1, and every file as it was.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;
using e2e::Result;
using e2e::run;

class HardFiles : public testing::Test {
protected:
    HardFiles()
    {
        clip_test::makeClip({file("a.ts"), 96, 64, 30, "mpeg2video"});
        e2e::writeFile(file("c.json"), R"({"overlay":[{"formatString":"H %heading_deg","textSize":200}]})");
        e2e::writeFile(file("t.jsonl"), "{\"t\":0,\"heading_deg\":1}\n");
    }

    std::string file(std::string const& name) const { return folder_.file(name); }
    std::size_t fileCount() const { return folder_.count(); }

    Words burn(std::string const& output) const
    {
        return {"burn", file("a.ts"), "-c", file("c.json"), "-o", output, "--video-codec", "mpeg2video"};
    }
    Words frame(std::string const& output) const
    {
        return {"frame", file("a.ts"), "-c", file("c.json"), "--at", "0", "-o", output};
    }

    /// Exit code 1, this one line, and no file more or less than before.
    void expectRefusal(Words const& words, std::string const& line, e2e::RunOptions const& options = {}) const
    {
        std::size_t const before = fileCount();
        Result const result = run(words, options);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "stanag-overlay: " + line + "\n");
        EXPECT_EQ(fileCount(), before);
    }

private:
    media_test::TempFolder folder_;
};

TEST_F(HardFiles, NoOutputReplacesWhatIsRead)
{
    fs::create_symlink(file("a.ts"), file("link.ts"));
    fs::create_hard_link(file("a.ts"), file("same.ts"));
    fs::create_symlink(file("c.json"), file("link.png"));
    std::string const clip = e2e::readFile(file("a.ts"));
    std::string const config = e2e::readFile(file("c.json"));
    for (char const* const name : {"a.ts", "link.ts", "same.ts", "./a.ts"}) {
        SCOPED_TRACE(name);
        std::string const line = file(name) + ": is the input itself; give another name for the output";
        expectRefusal(burn(file(name)), line);
        expectRefusal(frame(file(name)), line);
    }
    for (char const* const name : {"c.json", "link.png"}) {
        SCOPED_TRACE(name);
        expectRefusal(frame(file(name)),
                      file(name) + ": is the configuration itself; give another name for the output");
    }
    Words withTelemetry = frame(file("t.jsonl"));
    withTelemetry.insert(withTelemetry.end(), {"--telemetry", file("t.jsonl")});
    expectRefusal(withTelemetry, file("t.jsonl") + ": is the telemetry file itself; give another name for the output");
    EXPECT_TRUE(e2e::readFile(file("a.ts")) == clip);
    EXPECT_EQ(e2e::readFile(file("c.json")), config);
}

TEST_F(HardFiles, AFolderThatIsLockedIsNamed)
{
    fs::create_directory(file("locked"));
    fs::permissions(file("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    e2e::RunOptions const options{"", "", 0, true};
    for (Words const& words : {burn(file("locked/o.ts")), frame(file("locked/o.png"))}) {
        SCOPED_TRACE(words.front());
        expectRefusal(words,
                      words[words.front() == "burn" ? 5 : 7] +
                          ": cannot be written: Permission denied; choose a folder "
                          "that can be written to",
                      options);
    }
    EXPECT_TRUE(fs::is_empty(file("locked")));
}

TEST_F(HardFiles, FilesThatAreLockedAreNamed)
{
    e2e::RunOptions const options{"", "", 0, true};
    struct Row {
        char const* locked;
        char const* message;
    };
    for (Row const& row :
         {Row{"a.ts", ": cannot be opened: Permission denied; make it readable"},
          Row{"c.json", ": cannot be read: Permission denied; make it readable"},
          Row{"t.jsonl", ": cannot open the telemetry file (Permission denied); check the name and its "
                         "permissions"}}) {
        SCOPED_TRACE(row.locked);
        fs::permissions(file(row.locked), fs::perms::none);
        Words words = burn(file("o.ts"));
        words.insert(words.end(), {"--telemetry", file("t.jsonl")});
        expectRefusal(words, file(row.locked) + row.message, options);
        fs::permissions(file(row.locked), fs::perms::owner_all);
    }
}

TEST_F(HardFiles, AFileThatMayNotGrowLeavesNothing)
{
    constexpr std::uint64_t kLimit = 2048;
    for (char const* const name : {"o.ts", "o.mkv", "o.mp4"}) {
        SCOPED_TRACE(name);
        expectRefusal(burn(file(name)),
                      file(name) + ": cannot be written: File too large; raise the limit on file sizes (ulimit -f) or "
                                   "choose another folder",
                      {"", "", kLimit, false});
    }
}

TEST_F(HardFiles, WithoutFontsTheCureIsNamed)
{
    fs::create_directory(file("fonts"));
    e2e::writeFile(file("fonts/DejaVuSans.ttf"), "no font at all");
    e2e::writeFile(file("fonts.conf"),
                   "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig><dir>" +
                       file("fonts") + "</dir><cachedir>" + file("cache") + "</cachedir></fontconfig>");
    fs::create_directory(file("cache"));
    setenv("FONTCONFIG_FILE", file("fonts.conf").c_str(), 1);
    std::string const line =
        "no font can be opened for family 'DejaVu Sans'; install it (Debian: fonts-dejavu-core) or name another one";
    expectRefusal(burn(file("o.ts")), line);
    expectRefusal(frame(file("o.png")), line);
    unsetenv("FONTCONFIG_FILE");
}

}  // namespace
