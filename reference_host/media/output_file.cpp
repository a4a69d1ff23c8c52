// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Atomic output; the muxer and the PNG writer write through it.
#include "media/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace media {
namespace {

namespace fs = std::filesystem;

std::string folderOf(std::string const& path)
{
    std::string const folder = fs::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

bool isStandardOutput(std::string const& path)
{
    return path == "-" || path.compare(0, 5, "pipe:") == 0;
}

char const* cureForStandardOutput(int errorNumber)
{
    switch (errorNumber) {
    case EPIPE:
        return "the program that reads it has ended; see why";
    case ENOSPC:
    case EDQUOT:
        return "free some space";
    case EFBIG:
        return "raise the limit on file sizes (ulimit -f)";
    default:
        return "lead it to a program or into a file";
    }
}

char const* cureForWriting(int errorNumber)
{
    switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
        return "free some space or choose another folder";
    case EFBIG:
        return "raise the limit on file sizes (ulimit -f) or choose another folder";
    default:
        return "choose a folder that can be written to";
    }
}

}  // namespace

bool isAddress(std::string const& output)
{
    return output == "-" || output.find("://") != std::string::npos || output.compare(0, 5, "pipe:") == 0;
}

std::string writeFailure(std::string const& path, std::string const& reason, int errorNumber)
{
    if (path.find("://") != std::string::npos) {
        return path + ": cannot be sent to: " + reason + "; check the address and that somebody listens there";
    }
    if (isStandardOutput(path)) {
        return "standard output cannot be written: " + reason + "; " + cureForStandardOutput(errorNumber);
    }
    return path + ": cannot be written: " + reason + "; " + cureForWriting(errorNumber);
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)), writePath_(path_)
{
    if (isAddress(path_)) {
        return;
    }
    std::error_code failure;
    fs::file_status const status = fs::status(path_, failure);
    if (fs::is_directory(status)) {
        throw std::runtime_error(path_ + ": is a folder; give the name of a file");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return;
    }
    // A link stays a link: the file that it names is the one to replace.
    if (fs::exists(status)) {
        target_ = fs::canonical(path_, failure).string();
    }
    if (target_.empty()) {
        target_ = path_;
    }
    std::string const folder = folderOf(target_);
    if (!fs::is_directory(folder, failure)) {
        throw std::runtime_error(path_ + ": folder " + folder + " does not exist; create it first");
    }
    writePath_ =
        (fs::path(folder) / ("." + fs::path(target_).filename().string() + ".part-" + std::to_string(getpid())))
            .string();
    constexpr mode_t kReadWriteAll = 0666;
    int const file = open(writePath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kReadWriteAll);
    if (file < 0) {
        int const reason = errno;
        throw std::runtime_error(writeFailure(path_, std::strerror(reason), reason));
    }
    close(file);
    temporary_ = true;
}

OutputFile::~OutputFile()
{
    if (temporary_) {
        std::error_code ignored;
        fs::remove(writePath_, ignored);
    }
}

void OutputFile::commit()
{
    if (!temporary_) {
        return;
    }
    if (std::rename(writePath_.c_str(), target_.c_str()) != 0) {
        throw std::runtime_error(writeFailure(path_, std::strerror(errno), errno));
    }
    temporary_ = false;
}

}  // namespace media
