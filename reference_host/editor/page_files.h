// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The files of the page, built into the program.
#pragma once

#include <string_view>
#include <vector>

namespace editor {

struct PageFile {
    std::string_view name;  ///< "index.html"
    std::string_view type;  ///< "text/html; charset=utf-8"
    std::string_view bytes;
};

/// All files, in the order in which the build names them.
std::vector<PageFile> const& pageFiles();

}  // namespace editor
