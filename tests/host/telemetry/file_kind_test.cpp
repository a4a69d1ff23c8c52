// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a telemetry file is, by its name and by its first bytes.
#include "telemetry/file_kind.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace telemetry {
namespace {

using namespace std::string_literals;

std::string const kKey = "\x06\x0E\x2B\x34\x02\x0B\x01\x01\x0E\x01\x03\x01\x01\x00\x00\x00"s;

/// Transport stream packets whose first one carries `payload`.
std::string transportStream(std::string const& payload)
{
    std::string first = "\x47\x41\x01\x10" + payload;
    first.resize(188, '\xFF');
    return first + "\x47" + std::string(187, '\xFF');
}

TEST(FileKind, OfTheFirstBytes)
{
    struct Row {
        char const* name;
        std::string head;
        FileKind kind;
    };
    Row const rows[] = {
        {"nothing", "", FileKind::Other},
        {"a key at once", kKey + "\x05", FileKind::Klv},
        {"a key of another set", "\x06\x0E\x2B\x34\x02\x01\x01\x01", FileKind::Klv},
        {"a key behind a packet header", "\x00\x00\x01\xBD\x01\x35\x84\x00\x00"s + kKey, FileKind::Klv},
        {"a key too far inside", std::string(64, '\x00') + kKey, FileKind::Other},
        {"a key cut short", "\x06\x0E\x2B", FileKind::Other},
        {"a transport stream", transportStream(""), FileKind::Other},
        {"a transport stream that begins with telemetry", transportStream(kKey), FileKind::Other},
        {"a partition of a video file", "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01", FileKind::Other},
        {"an object", "{\"t\":0}", FileKind::JsonLines},
        {"an object behind blanks and a mark", "\xEF\xBB\xBF \t\r\n{", FileKind::JsonLines},
        {"a list", "[1]", FileKind::Other},
        {"blanks", " \n", FileKind::Other},
        {"other text", "t;heading_deg\n0;90\n", FileKind::Other},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(kindOfHead(row.head), row.kind);
    }
}

TEST(FileKind, OfAFile)
{
    media_test::TempFolder const folder;
    struct Row {
        char const* name;
        std::string bytes;
        FileKind kind;
    };
    Row const rows[] = {
        {"a.jsonl", kKey, FileKind::JsonLines}, {"a.JSONL", "", FileKind::JsonLines},
        {"a.klv", "{}", FileKind::Klv},         {"a.KLV", "", FileKind::Klv},
        {"a.bin", kKey, FileKind::Klv},         {"a.txt", "{}", FileKind::JsonLines},
        {"plain", "{}", FileKind::JsonLines},   {"b.ts", "video", FileKind::Other},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        std::ofstream(folder.file(row.name), std::ios::binary) << row.bytes;
        EXPECT_EQ(kindOfFile(folder.file(row.name)), row.kind);
    }
    EXPECT_EQ(kindOfFile(folder.path()), FileKind::Other);
    EXPECT_EQ(kindOfFile(folder.file("none")), FileKind::Other);
    EXPECT_EQ(kindOfFile("udp://127.0.0.1:5000"), FileKind::Other);
    EXPECT_EQ(kindOfFile("-"), FileKind::Other);
}

}  // namespace
}  // namespace telemetry
