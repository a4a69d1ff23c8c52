// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Finds the render plugin's library and keeps one instance of the plugin alive.
#pragma once

#include "IRenderPlugin.h"

#include <memory>
#include <string>
#include <vector>

namespace frame {

/// Where a program has its libraries: the library folders beside its own folder in the build tree and in an installed
/// tree, then its own folder.
std::vector<std::string> programFolders();

/// Where the plugin's library is looked for, in this order: the file that the environment variable
/// STANAG_OVERLAY_PLUGIN names (then nowhere else), else the folders.
std::vector<std::string> pluginCandidates(std::vector<std::string> const& folders = programFolders());

class LoadedPlugin {
public:
    /// Loads the first candidate that exists. Throws std::runtime_error with one line that names the
    /// places and the cure.
    explicit LoadedPlugin(std::vector<std::string> const& folders = programFolders());
    ~LoadedPlugin();
    LoadedPlugin(LoadedPlugin const&) = delete;
    LoadedPlugin& operator=(LoadedPlugin const&) = delete;

    IRenderPlugin& get();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace frame
