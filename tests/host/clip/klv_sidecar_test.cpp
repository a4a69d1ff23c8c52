// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry beside an output: names of the files, and what stands in them.
#include "clip/klv_sidecar.h"

#include "file_bytes.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(SidecarPath, TakesThePlaceOfTheEnding)
{
    EXPECT_EQ(clip::sidecarPath("a/out.mp4", 0), "a/out.klv");
    EXPECT_EQ(clip::sidecarPath("a/out.mp4", 1), "a/out.2.klv");
    EXPECT_EQ(clip::sidecarPath("a.b/out", 2), "a.b/out.3.klv");
}

TEST(KlvSidecar, HasItsNameWhenItIsWhole)
{
    media_test::TempFolder const folder;
    std::string const path = folder.file("out.klv");
    {
        clip::KlvSidecar sidecar(path);
        sidecar.add(Bytes{6, 0x0E, 0x2B, 0x34});
        sidecar.add(Bytes{0, 1, 0xDF, 0, 2, 7, 8});
        EXPECT_FALSE(std::filesystem::exists(path));
        sidecar.finish();
    }
    EXPECT_EQ(file_test::readFile(path), std::string("\x06\x0E\x2B\x34\x07\x08"));
    {
        clip::KlvSidecar const unfinished(folder.file("other.klv"));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.file("other.klv")));
}

}  // namespace
