// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a file of telemetry holds: by its ending, or by a look into it.
#pragma once

#include <string>
#include <string_view>

namespace telemetry {

enum class FileKind {
    JsonLines,
    Klv,   ///< raw KLV
    Other  ///< most likely a clip
};

/// The kind of a file that begins with `head`: raw KLV when a universal key stands within its first bytes (a packet
/// header may stand before it), JSON Lines when its first character is an opening brace.
FileKind kindOfHead(std::string_view head);

/// The kind of a file: .jsonl and .klv say it, in any letter case; every other file is looked into. Other for what
/// is no regular file or cannot be read.
FileKind kindOfFile(std::string const& path);

}  // namespace telemetry
