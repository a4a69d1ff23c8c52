// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Whole files read and written in one call.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace file_test {

/// Empty when the file cannot be read.
inline std::string readFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace file_test
