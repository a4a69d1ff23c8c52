// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration's file: what is opened, what is saved, and what is left when it cannot be.
#include "editor/config_store.h"

#include "file_bytes.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using editor::ConfigStore;
using editor::etagOf;
using editor::StoredText;
using editor::StoreFailure;
using file_test::readFile;
using file_test::writeFile;
using media_test::TempFolder;
using Kind = StoreFailure::Kind;

constexpr char const* kOld = "{\"overlay\": [ ]}\r\n";
constexpr char const* kNew = "{\"overlay\": [{}]}";
constexpr char const* kEmpty = "{\n  \"overlay\": []\n}\n";

unsigned modeOf(std::string const& path)
{
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

/// The line of a failure of this kind.
std::string failureOf(Kind kind, std::function<void()> const& run)
{
    try {
        run();
    } catch (StoreFailure const& failure) {
        EXPECT_EQ(failure.kind, kind) << failure.what();
        return failure.what();
    }
    return "nothing thrown";
}

TEST(EtagOf, IsTheHashOfTheText)
{
    EXPECT_EQ(etagOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(ConfigStore, LoadsTheBytesAsTheyAre)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    std::string const text = "\xEF\xBB\xBF{\"overlay\":\t[\"\xC3\xA4\"]}\r\n\r\n";
    writeFile(path, text);
    StoredText const stored = ConfigStore(path).load();
    EXPECT_EQ(stored.text, text);
    EXPECT_EQ(stored.etag, etagOf(text));
}

TEST(ConfigStore, BeginsWithAnEmptyConfigurationAndMakesNoFile)
{
    TempFolder const folder;
    StoredText const stored = ConfigStore(folder.file("c.json")).load();
    EXPECT_EQ(stored.text, kEmpty);
    EXPECT_EQ(stored.etag, "");
    EXPECT_EQ(folder.count(), 0U);
}

TEST(ConfigStore, SavesANewFile)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    EXPECT_FALSE(ConfigStore(path).save(kNew, "").has_value());
    EXPECT_EQ(readFile(path), kNew);
    EXPECT_EQ(folder.count(), 1U);
    mode_t const mask = umask(0);
    umask(mask);
    EXPECT_EQ(modeOf(path), 0666U & ~mask);
}

TEST(ConfigStore, ReplacesTheFileAndKeepsItsMode)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    for (mode_t const mode : {0600U, 0644U, 0664U, 0755U}) {
        writeFile(path, kOld);
        chmod(path.c_str(), mode);
        EXPECT_FALSE(ConfigStore(path).save(kNew, etagOf(kOld)).has_value());
        EXPECT_EQ(readFile(path), kNew);
        EXPECT_EQ(modeOf(path), mode);
        EXPECT_EQ(folder.count(), 1U);
    }
}

TEST(ConfigStore, NeverShowsHalfAFile)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, kOld);
    fs::create_hard_link(path, folder.file("as_it_was"));
    ConfigStore(path).save(kNew, etagOf(kOld));
    // The old file itself is untouched: whoever reads it just now reads all of it.
    EXPECT_EQ(readFile(folder.file("as_it_was")), kOld);
    EXPECT_EQ(readFile(path), kNew);
}

TEST(ConfigStore, LeavesAFileThatHoldsTheTextAlone)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, kOld);
    fs::create_hard_link(path, folder.file("the_same"));
    EXPECT_FALSE(ConfigStore(path).save(kOld, etagOf(kOld)).has_value());
    // An answer that got lost on its way: the page saves once more.
    EXPECT_FALSE(ConfigStore(path).save(kOld, etagOf("before")).has_value());
    EXPECT_TRUE(fs::equivalent(path, folder.file("the_same")));
}

TEST(ConfigStore, KeepsLinksAndReplacesWhatTheyNameInItsOwnFolder)
{
    TempFolder const folder;
    fs::create_directory(folder.file("real"));
    std::string const goal = folder.file("real/c.json");
    writeFile(goal, kOld);
    fs::create_symlink("real/c.json", folder.file("inner.json"));
    fs::create_symlink(folder.file("inner.json"), folder.file("outer.json"));
    EXPECT_FALSE(ConfigStore(folder.file("outer.json")).save(kNew, etagOf(kOld)).has_value());
    EXPECT_TRUE(fs::is_symlink(folder.file("outer.json")));
    EXPECT_TRUE(fs::is_symlink(folder.file("inner.json")));
    EXPECT_EQ(readFile(goal), kNew);
    EXPECT_EQ(folder.count(), 3U);
}

TEST(ConfigStore, MakesTheFileThatALinkNames)
{
    TempFolder const folder;
    fs::create_symlink("later.json", folder.file("c.json"));
    ConfigStore store(folder.file("c.json"));
    EXPECT_EQ(store.load().etag, "");
    EXPECT_FALSE(store.save(kNew, "").has_value());
    EXPECT_TRUE(fs::is_symlink(folder.file("c.json")));
    EXPECT_EQ(readFile(folder.file("later.json")), kNew);
}

TEST(ConfigStore, LosesNothingThatWasChangedMeanwhile)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, "theirs");
    auto const other = ConfigStore(path).save(kNew, etagOf(kOld));
    ASSERT_TRUE(other.has_value());
    EXPECT_EQ(other->text, "theirs");
    EXPECT_EQ(other->etag, etagOf("theirs"));
    EXPECT_EQ(readFile(path), "theirs");
    EXPECT_EQ(folder.count(), 1U);
    // Seen and wanted all the same.
    EXPECT_FALSE(ConfigStore(path).save(kNew, other->etag).has_value());
    EXPECT_EQ(readFile(path), kNew);
}

TEST(ConfigStore, TellsOfAFileThatCameOrWent)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    auto const gone = ConfigStore(path).save(kNew, etagOf(kOld));
    ASSERT_TRUE(gone.has_value());
    EXPECT_EQ(gone->text, kEmpty);
    EXPECT_EQ(gone->etag, "");
    EXPECT_EQ(folder.count(), 0U);
    writeFile(path, kOld);
    auto const came = ConfigStore(path).save(kNew, "");
    ASSERT_TRUE(came.has_value());
    EXPECT_EQ(came->text, kOld);
    EXPECT_EQ(readFile(path), kOld);
}

TEST(ConfigStore, SaysThatAFileIsReadOnly)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, kOld);
    chmod(path.c_str(), 0444);  // holds for root too
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(path).save(kNew, etagOf(kOld)); }),
              path + ": cannot be saved: the file is read-only; make it writable and save again");
    EXPECT_EQ(readFile(path), kOld);
    EXPECT_EQ(folder.count(), 1U);
}

TEST(ConfigStore, SaysThatTheFolderIsGone)
{
    TempFolder const folder;
    std::string const sub = folder.file("sub");
    fs::create_directory(sub);
    writeFile(sub + "/c.json", kOld);
    ConfigStore store(sub + "/c.json");
    fs::remove_all(sub);
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { store.save(kNew, etagOf(kOld)); }),
              sub + "/c.json: folder " + sub + " does not exist; create it first");
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { store.load(); }),
              sub + "/c.json: folder " + sub + " does not exist; create it first");
    EXPECT_EQ(folder.count(), 0U);
    fs::create_directory(sub);
    EXPECT_FALSE(store.save(kNew, "").has_value());
}

TEST(ConfigStore, SaysThatThereIsNoSpaceAndLeavesNothing)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, kOld);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit const small{8, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    std::string const line = failureOf(Kind::Full, [&] { ConfigStore(path).save(kNew, etagOf(kOld)); });
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(line, path + ": cannot be saved: File too large; raise the limit on file sizes (ulimit -f)");
    EXPECT_EQ(readFile(path), kOld);
    EXPECT_EQ(folder.count(), 1U);
}

TEST(ConfigStore, OpensOnlyWhatItCanGiveBackUnchanged)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, "{\"overlay\":\xFF[]}");
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(path).load(); }),
              path + ": is no UTF-8 text; convert it first");
    writeFile(path, std::string(editor::kMostConfigBytes + 1, ' '));
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(path).load(); }),
              path + ": is larger than 1048576 bytes; give a configuration file");
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(folder.path()).load(); }),
              folder.path() + ": is no ordinary file; give a configuration file");
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(folder.file("pipe")).load(); }),
              folder.file("pipe") + ": is no ordinary file; give a configuration file");
    fs::create_symlink("loop", folder.file("loop"));
    EXPECT_EQ(failureOf(Kind::Blocked, [&] { ConfigStore(folder.file("loop")).load(); }),
              folder.file("loop") + ": cannot be read: Too many levels of symbolic links; check the path");
}

TEST(ConfigStore, TwoPagesOneWins)
{
    TempFolder const folder;
    std::string const path = folder.file("c.json");
    writeFile(path, kOld);
    ConfigStore store(path);
    constexpr int kPages = 8;
    std::vector<int> won(kPages);
    std::vector<std::thread> pages;
    for (int i = 0; i < kPages; ++i) {
        pages.emplace_back([&store, &won, i] {
            won[static_cast<std::size_t>(i)] = store.save("page " + std::to_string(i), etagOf(kOld)) ? 0 : 1;
        });
    }
    int winners = 0;
    for (int i = 0; i < kPages; ++i) {
        pages[static_cast<std::size_t>(i)].join();
        winners += won[static_cast<std::size_t>(i)];
    }
    EXPECT_EQ(winners, 1);
    EXPECT_EQ(readFile(path).substr(0, 5), "page ");
    EXPECT_EQ(folder.count(), 1U);
}

}  // namespace
