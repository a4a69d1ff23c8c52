// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Output that appears under its name only when it is whole.
#include "file_bytes.h"
#include "media/output_file.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;
using file_test::readFile;
using file_test::writeFile;
using media::OutputFile;
using media_test::TempFolder;

std::string messageOf(std::string const& path)
{
    try {
        OutputFile const file(path);
    } catch (std::runtime_error const& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

TEST(OutputFile, AppearsAtCommitOnly)
{
    TempFolder const folder;
    std::string const path = folder.file("out.ts");
    OutputFile file(path);
    EXPECT_EQ(file.path(), path);
    EXPECT_NE(file.writePath(), path);
    EXPECT_EQ(fs::path(file.writePath()).parent_path(), folder.path());
    writeFile(file.writePath(), "whole");
    EXPECT_FALSE(fs::exists(path));
    file.commit();
    EXPECT_EQ(readFile(path), "whole");
    EXPECT_EQ(folder.count(), 1U);
}

TEST(OutputFile, LeavesNothingWhenItWasNotCommitted)
{
    TempFolder const folder;
    {
        OutputFile const file(folder.file("out.ts"));
        writeFile(file.writePath(), "half");
    }
    EXPECT_EQ(folder.count(), 0U);
}

TEST(OutputFile, KeepsTheOlderFileUntilCommit)
{
    TempFolder const folder;
    std::string const path = folder.file("out.ts");
    writeFile(path, "old");
    {
        OutputFile const file(path);
        writeFile(file.writePath(), "half");
    }
    EXPECT_EQ(readFile(path), "old");
    OutputFile file(path);
    writeFile(file.writePath(), "new");
    file.commit();
    EXPECT_EQ(readFile(path), "new");
}

TEST(OutputFile, FollowsALinkInsteadOfReplacingIt)
{
    TempFolder const folder;
    writeFile(folder.file("real.ts"), "old");
    fs::create_symlink("real.ts", folder.file("link.ts"));
    OutputFile file(folder.file("link.ts"));
    writeFile(file.writePath(), "new");
    file.commit();
    EXPECT_TRUE(fs::is_symlink(folder.file("link.ts")));
    EXPECT_EQ(readFile(folder.file("real.ts")), "new");
}

TEST(OutputFile, WritesStraightToWhatIsNoOrdinaryFile)
{
    for (std::string const path : {"/dev/null", "udp://127.0.0.1:1", "-", "pipe:1"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(OutputFile(path).writePath(), path);
    }
}

TEST(OutputFile, NamesPlaceAndCure)
{
    TempFolder const folder;
    EXPECT_EQ(messageOf(folder.file("none/out.ts")),
              folder.file("none/out.ts") + ": folder " + folder.file("none") + " does not exist; create it first");
    EXPECT_EQ(messageOf(folder.path()), folder.path() + ": is a folder; give the name of a file");
    EXPECT_EQ(messageOf("/proc/out.ts"),
              "/proc/out.ts: cannot be written: No such file or directory; choose a folder that can be written to");
}

TEST(OutputFile, KnowsTheCures)
{
    EXPECT_EQ(media::writeFailure("a.ts", "No space left on device", ENOSPC),
              "a.ts: cannot be written: No space left on device; free some space or choose another folder");
    EXPECT_EQ(media::writeFailure("a.ts", "Disk quota exceeded", EDQUOT),
              "a.ts: cannot be written: Disk quota exceeded; free some space or choose another folder");
    EXPECT_EQ(media::writeFailure("a.ts", "File too large", EFBIG),
              "a.ts: cannot be written: File too large; raise the limit on file sizes (ulimit -f) or choose another "
              "folder");
    EXPECT_EQ(media::writeFailure("a.ts", "Permission denied", EACCES),
              "a.ts: cannot be written: Permission denied; choose a folder that can be written to");
}

TEST(OutputFile, KnowsTheCuresForStandardOutput)
{
    EXPECT_EQ(media::writeFailure("-", "Broken pipe", EPIPE),
              "standard output cannot be written: Broken pipe; the program that reads it has ended; see why");
    EXPECT_EQ(media::writeFailure("pipe:1", "Disk quota exceeded", EDQUOT),
              "standard output cannot be written: Disk quota exceeded; free some space");
    EXPECT_EQ(media::writeFailure("-", "File too large", EFBIG),
              "standard output cannot be written: File too large; raise the limit on file sizes (ulimit -f)");
    EXPECT_EQ(media::writeFailure("-", "Bad file descriptor", EBADF),
              "standard output cannot be written: Bad file descriptor; lead it to a program or into a file");
}

}  // namespace
