// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A file that appears under its name only when it is whole: it is written beside its place and renamed
// at the end. Devices, pipes and addresses are written straight to.
#pragma once

#include <string>

namespace media {

class OutputFile {
public:
    /// Creates the temporary file, so that a missing or locked folder is reported before any work. Throws
    /// std::runtime_error with one line that names the place and the cure.
    explicit OutputFile(std::string path);
    /// Removes what was written when commit() was not reached.
    ~OutputFile();
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    /// The name people gave.
    std::string const& path() const { return path_; }
    /// Where to write: the temporary file, or the path itself for what is no ordinary file.
    std::string const& writePath() const { return writePath_; }
    /// Puts the finished file under its name, over an older one. Throws std::runtime_error.
    void commit();

private:
    std::string path_;
    std::string writePath_;
    std::string target_;  ///< path_ with links followed
    bool temporary_ = false;
};

/// Whether the text is an address ("udp://...", "-" for standard output) rather than a path.
bool isAddress(std::string const& output);

/// One line for a write that failed with this errno (0: of another cause); knows the cures for full disks and
/// limited files, and others for addresses and for standard output.
std::string writeFailure(std::string const& path, std::string const& reason, int errorNumber);

}  // namespace media
