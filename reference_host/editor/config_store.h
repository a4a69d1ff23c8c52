// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration's file, read and replaced as a whole. Nobody ever sees half of it, and what somebody else has
// written to it meanwhile is not lost.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

namespace editor {

/// A file of this size at most is taken: even with every byte escaped its text fits a request.
inline constexpr std::size_t kMostConfigBytes = 1U << 20U;

struct StoredText {
    std::string text;
    std::string etag;  ///< stands for the text; empty: there is no file, the text is that of a new configuration
};

/// One line that names file, reason and cure.
struct StoreFailure : std::runtime_error {
    enum class Kind {
        Blocked,  ///< a file or folder is gone, locked or of another kind
        Full,     ///< no space, or a limit
        Other,
    };
    StoreFailure(Kind why, std::string const& line) : std::runtime_error(line), kind(why) {}
    Kind kind;
};

class ConfigStore {
public:
    /// Does not touch the file. A relative path is taken from the present folder, also later.
    explicit ConfigStore(std::string path);

    /// As it was given.
    std::string const& path() const { return path_; }

    /// What the file holds now; a configuration without blocks when there is none yet in its folder. Throws
    /// StoreFailure when it cannot be read, is no ordinary file, too large or no UTF-8 text, or when the folder does
    /// not exist.
    StoredText load() const;

    /// Replaces the file's content, if it is still the one that `etag` stands for: a new file beside it gets its mode
    /// and, if possible, its owner, and then its name. A link stays a link to the file that is replaced. Gives what the
    /// file holds instead when it is another text, and writes nothing then; empty when the file holds `text` now.
    /// Throws StoreFailure when it cannot be saved; the file is as it was then and nothing stands beside it.
    ///
    /// Between the last look at the file and its replacement another program can still write; that moment is not
    /// closed. Several threads may call this at once.
    std::optional<StoredText> save(std::string const& text, std::string const& etag);

private:
    std::string path_;
    std::string absolute_;
    std::mutex mutex_;
};

/// SHA-256 of the text in hexadecimal digits.
std::string etagOf(std::string const& text);

}  // namespace editor
