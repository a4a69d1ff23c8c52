// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Runs every file of the folders and files on the command line through a fuzz target, in the order of
// their names. The ordinary tests use it where libFuzzer is not at hand.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesOf(std::filesystem::path const& place)
{
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::filesystem::path> files;
    for (auto const& entry : std::filesystem::directory_iterator(place)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + file.string());
    }
    std::vector<char> const bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    // Named before the run: the last name is the culprit when the target aborts.
    std::cerr << "replay " << file.filename().string() << '\n';
    // A copy of exactly this size, so that a read beyond the end is seen by the address sanitizer.
    std::vector<std::uint8_t> const exact(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv)
{
    std::size_t count = 0;
    try {
        for (int i = 1; i < argc; ++i) {
            for (std::filesystem::path const& file : filesOf(argv[i])) {
                replay(file);
                ++count;
            }
        }
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    std::cout << count << " files replayed\n";
    if (count == 0) {
        std::cerr << "nothing to replay\n";
        return 1;
    }
    return 0;
}
