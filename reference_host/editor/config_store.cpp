// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Plain POSIX calls: what matters here is which of them failed, and why.
#include "editor/config_store.h"

#include "editor/access_guard.h"
#include "editor/hex_text.h"
#include "sw_utf8.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <openssl/sha.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace editor {
namespace {

namespace fs = std::filesystem;
using Kind = StoreFailure::Kind;

constexpr char const* kNewConfiguration = "{\n  \"overlay\": []\n}\n";

Kind kindOf(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return Kind::Full;
    case EACCES:
    case EPERM:
    case EROFS:
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case EISDIR:
        return Kind::Blocked;
    default:
        return Kind::Other;
    }
}

char const* cureFor(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "; free some space and save again";
    case EFBIG:
        return "; raise the limit on file sizes (ulimit -f)";
    case EACCES:
    case EPERM:
    case EROFS:
        return "; make file and folder writable and save again";
    default:
        return "; check the path and save again";
    }
}

[[noreturn]] void failToSave(std::string const& path, int error)
{
    throw StoreFailure(kindOf(error), path + ": cannot be saved: " + std::strerror(error) + cureFor(error));
}

/// A descriptor that is closed at its end.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    /// False when what was written is not kept.
    bool close()
    {
        int const number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int number_;
};

/// The file that a name leads to, links followed; the last link's goal when there is no file there yet.
fs::path goalOf(std::string const& path)
{
    constexpr int kMostLinks = 40;
    fs::path goal = path;
    std::error_code failure;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(goal, failure)); ++i) {
        goal = goal.parent_path() / fs::read_symlink(goal, failure);
    }
    return goal;
}

/// Up to one byte more than is taken. `error` is that of the system, 0 without one.
std::string readSome(int file, int& error)
{
    std::string text(kMostConfigBytes + 1, '\0');
    std::size_t length = 0;
    while (length < text.size()) {
        ssize_t const count = read(file, text.data() + length, text.size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        error = count < 0 ? errno : 0;
        if (count <= 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    return text;
}

bool isUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        sw_utf8::CodePoint const point = sw_utf8::codePointAt(text, at);
        if (!point.isWellFormed) {
            return false;
        }
        at += point.bytes;
    }
    return true;
}

/// What the page could not give back unchanged is not opened.
void refuseUnfit(std::string const& path, std::string const& text)
{
    if (text.size() > kMostConfigBytes) {
        throw StoreFailure(Kind::Blocked, path + ": is larger than " + std::to_string(kMostConfigBytes) +
                                              " bytes; give a configuration file");
    }
    if (!isUtf8(text)) {
        throw StoreFailure(Kind::Blocked, path + ": is no UTF-8 text; convert it first");
    }
}

void refuseMissingFolder(std::string const& path, fs::path const& goal)
{
    std::error_code ignored;
    if (!fs::is_directory(goal.parent_path(), ignored)) {
        throw StoreFailure(Kind::Blocked,
                           path + ": folder " + goal.parent_path().string() + " does not exist; create it first");
    }
}

/// What the file holds.
StoredText readStored(std::string const& path, fs::path const& goal)
{
    // Not waiting: a pipe would only open when somebody writes to it.
    Descriptor const file(open(goal.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    int error = file.isOpen() ? 0 : errno;
    struct stat status {};
    if (error == 0 && fstat(file.number(), &status) != 0) {
        error = errno;
    }
    if (error == ENOENT || error == ENOTDIR) {
        refuseMissingFolder(path, goal);
        return {kNewConfiguration, ""};
    }
    if (error == 0 && !S_ISREG(status.st_mode)) {
        throw StoreFailure(Kind::Blocked, path + ": is no ordinary file; give a configuration file");
    }
    std::string text = error == 0 ? readSome(file.number(), error) : "";
    if (error != 0) {
        throw StoreFailure(kindOf(error), path + ": cannot be read: " + std::strerror(error) +
                                              (error == EACCES ? "; make it readable" : "; check the path"));
    }
    refuseUnfit(path, text);
    std::string etag = etagOf(text);
    return {std::move(text), std::move(etag)};
}

/// A new file beside its goal, removed at its end unless it got its name.
class NewFile {
public:
    NewFile(std::string const& path, fs::path const& goal, bool replaces) : path_(path), goal_(goal)
    {
        name_ = (goal.parent_path() / ("." + goal.filename().string() + "." + randomToken())).string();
        // The mode of the old one comes later: nobody may read the new one before who may not read the old one.
        constexpr mode_t kOwnOnly = 0600;
        constexpr mode_t kUsual = 0666;
        file_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, replaces ? kOwnOnly : kUsual);
        if (file_ < 0) {
            failToSave(path_, errno);
        }
    }
    ~NewFile()
    {
        if (file_ >= 0) {
            close(file_);
        }
        if (!name_.empty()) {
            unlink(name_.c_str());
        }
    }
    NewFile(NewFile const&) = delete;
    NewFile& operator=(NewFile const&) = delete;

    void takeModeOf(struct stat const& old) const
    {
        // Only root may give a file away; who may not keeps it. The mode comes last, as a new owner clears bits of it.
        if (fchown(file_, old.st_uid, old.st_gid) != 0 && fchown(file_, static_cast<uid_t>(-1), old.st_gid) != 0) {
            errno = 0;
        }
        constexpr mode_t kModeBits = 07777;
        if (fchmod(file_, old.st_mode & kModeBits) != 0) {
            failToSave(path_, errno);
        }
    }

    /// Writes the text and makes sure that it is on the disk.
    void write(std::string_view text)
    {
        while (!text.empty()) {
            ssize_t const count = ::write(file_, text.data(), text.size());
            if (count < 0 && errno != EINTR) {
                failToSave(path_, errno);
            }
            text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
        }
        if (fsync(file_) != 0 || ::close(std::exchange(file_, -1)) != 0) {
            failToSave(path_, errno);
        }
    }

    void giveName()
    {
        if (std::rename(name_.c_str(), goal_.c_str()) != 0) {
            failToSave(path_, errno);
        }
        name_.clear();
        // The name, too, outlives a power cut; where folders cannot be synchronised it is there all the same.
        Descriptor const folder(open(goal_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.isOpen() && fsync(folder.number()) != 0) {
            errno = 0;
        }
    }

private:
    std::string path_;
    fs::path goal_;
    std::string name_;
    int file_ = -1;
};

/// A file that nobody may write to is not replaced either, though its folder would allow it; root may write to any.
void refuseReadOnly(std::string const& path, fs::path const& goal, struct stat const& status)
{
    constexpr mode_t kAnyWrite = 0222;
    bool const locked = (status.st_mode & kAnyWrite) == 0;
    if (locked || faccessat(AT_FDCWD, goal.c_str(), W_OK, AT_EACCESS) != 0) {
        throw StoreFailure(Kind::Blocked, path + ": cannot be saved: the file is read-only; make it writable "
                                                 "and save again");
    }
}

}  // namespace

std::string etagOf(std::string const& text)
{
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<unsigned char const*>(text.data()), text.size(), digest.data());
    return hexText(digest);
}

ConfigStore::ConfigStore(std::string path) : path_(std::move(path)), absolute_(fs::absolute(path_).string()) {}

StoredText ConfigStore::load() const
{
    return readStored(path_, goalOf(absolute_));
}

std::optional<StoredText> ConfigStore::save(std::string const& text, std::string const& etag)
{
    std::scoped_lock const lock(mutex_);
    refuseUnfit("the new text of " + path_, text);
    fs::path const goal = goalOf(absolute_);
    StoredText found = readStored(path_, goal);
    bool const exists = !found.etag.empty();
    if (exists && found.text == text) {
        return std::nullopt;
    }
    if (found.etag != etag) {
        return found;
    }
    struct stat status {};
    if (exists && stat(goal.c_str(), &status) != 0) {
        failToSave(path_, errno);
    }
    if (exists) {
        refuseReadOnly(path_, goal, status);
    }
    NewFile file(path_, goal, exists);
    if (exists) {
        file.takeModeOf(status);
    }
    file.write(text);
    found = readStored(path_, goal);
    if (found.etag != etag) {
        return found;
    }
    file.giveName();
    return std::nullopt;
}

}  // namespace editor
