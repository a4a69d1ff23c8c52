// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Settles by which reader a telemetry file is read.
#include "telemetry/file_kind.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace telemetry {
namespace {

/// The size of a transport stream's packets: each begins with the same byte.
constexpr std::size_t kTransportPacket = 188;
constexpr std::size_t kHeadBytes = kTransportPacket + 1;
/// How far into a raw file a first key is looked for.
constexpr std::size_t kKeyReach = 64;

std::string lowerEnding(std::string const& path)
{
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

bool isTransportStream(std::string_view head)
{
    constexpr char kSync = 0x47;
    return head.size() >= kHeadBytes && head[0] == kSync && head[kTransportPacket] == kSync;
}

/// Every universal key of the KLV standards begins with the same bytes (SMPTE ST 336). So do video files of the MXF
/// kind, whose first key is that of a partition (SMPTE ST 377).
bool isKlv(std::string_view head)
{
    constexpr std::string_view kKeyPrefix = "\x06\x0E\x2B\x34";
    constexpr std::string_view kPartition = "\x06\x0E\x2B\x34\x02\x05";
    std::string_view const reach = head.substr(0, kKeyReach);
    return reach.find(kKeyPrefix) != std::string_view::npos && reach.find(kPartition) == std::string_view::npos;
}

bool isJson(std::string_view head)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (head.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        head.remove_prefix(kByteOrderMark.size());
    }
    std::size_t const first = head.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && head[first] == '{';
}

}  // namespace

FileKind kindOfHead(std::string_view head)
{
    if (isTransportStream(head)) {
        return FileKind::Other;
    }
    if (isKlv(head)) {
        return FileKind::Klv;
    }
    return isJson(head) ? FileKind::JsonLines : FileKind::Other;
}

FileKind kindOfFile(std::string const& path)
{
    std::string const ending = lowerEnding(path);
    if (ending == ".jsonl") {
        return FileKind::JsonLines;
    }
    if (ending == ".klv") {
        return FileKind::Klv;
    }
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) {
        return FileKind::Other;
    }
    std::ifstream file(path, std::ios::binary);
    std::string head(kHeadBytes, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return kindOfHead(head);
}

}  // namespace telemetry
