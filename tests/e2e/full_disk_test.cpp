// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A disk that fills up while a clip or a configuration is written: one line that names place and cure, and nothing left
// on the disk. A program of its own, so that it is seen when it was skipped.
#include "clips.h"
#include "edit_session.h"
#include "raw_http.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <sys/mount.h>

namespace {

/// A file system of 64 kB in a folder.
class SmallDisk {
public:
    explicit SmallDisk(std::string path) : path_(std::move(path))
    {
        std::filesystem::create_directory(path_);
        error_ = mount("tmpfs", path_.c_str(), "tmpfs", 0, "size=64k") == 0 ? 0 : errno;
    }
    ~SmallDisk()
    {
        if (error_ == 0) {
            umount2(path_.c_str(), MNT_DETACH);
        }
    }
    SmallDisk(SmallDisk const&) = delete;
    SmallDisk& operator=(SmallDisk const&) = delete;

    /// Why there is no small disk; 0 when there is one.
    int error() const { return error_; }
    std::string file(std::string const& name) const { return path_ + "/" + name; }
    bool empty() const { return count() == 0; }
    std::size_t count() const
    {
        std::filesystem::directory_iterator const entries(path_);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

private:
    std::string path_;
    int error_ = 0;
};

/// Mounting needs root and a machine that lets it; elsewhere files that may not grow stand for the full disk, in
/// e2e_hard_files_test and e2e_edit_test.
class FullDisk : public testing::Test {
protected:
    void SetUp() override
    {
        if (disk.error() != 0) {
            GTEST_SKIP() << "no small disk can be mounted here: " << std::strerror(disk.error()) << "; run as root";
        }
    }

    media_test::TempFolder const folder;
    SmallDisk const disk{folder.file("disk")};
};

TEST_F(FullDisk, LeavesNoHalfFile)
{
    clip_test::makeClip({folder.file("a.ts"), 320, 240, 200, "mpeg2video"});
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[]})");
    for (char const* const name : {"o.ts", "o.mp4", "o.mkv"}) {
        SCOPED_TRACE(name);
        std::string const output = disk.file(name);
        e2e::Result const result = e2e::run(
            {"burn", folder.file("a.ts"), "-c", folder.file("c.json"), "-o", output, "--video-codec", "mpeg2video"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, "stanag-overlay: " + output +
                                  ": cannot be written: No space left on device; free some space or choose another "
                                  "folder\n");
        EXPECT_TRUE(disk.empty());
    }
}

TEST_F(FullDisk, KeepsTheConfigurationThatIsThere)
{
    clip_test::makeClip({folder.file("a.ts"), 320, 240, 10, "mpeg2video"});
    std::string const config = disk.file("c.json");
    std::string const text = R"({"overlay":[]})";
    e2e::writeFile(config, text);
    e2e::Result const result = e2e::runEdit({folder.file("a.ts"), "-c", config}, [&](e2e::EditSession const& session) {
        std::string const etag = e2e::etagOf(session.ask("GET", "/api/config"));
        std::string const large = text + std::string(100000, ' ');
        std::string const answer = session.save(large, etag);
        EXPECT_EQ(raw_http::statusOf(answer), 507);
        EXPECT_EQ(e2e::errorOf(answer),
                  config + ": cannot be saved: No space left on device; free some space and save again");
        EXPECT_EQ(e2e::readFile(config), text);
        EXPECT_EQ(disk.count(), 1U);
        // What fits is saved.
        EXPECT_EQ(raw_http::statusOf(session.save(text + "\n", etag)), 200);
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(e2e::readFile(config), text + "\n");
}

}  // namespace
