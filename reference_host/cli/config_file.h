// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads a configuration and refuses what the plugin would silently take for an empty one.
#pragma once

#include "SwJson.h"

#include <string>

namespace cli {

/// A configuration that the plugin can use.
struct ConfigFile {
    std::string path;
    std::string text;   ///< for setConfig
    SwJsonObject root;  ///< the same, read
};

/// Reads the file ("-" is standard input). Throws std::runtime_error with one line that names file, line,
/// column and cure when it cannot be read, is not JSON, is no object or has no array "overlay".
ConfigFile readConfig(std::string const& path);

}  // namespace cli
