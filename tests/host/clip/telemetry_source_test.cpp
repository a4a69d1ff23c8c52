// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry without pictures: raw KLV by its ending and by its contents, clips, telemetry files, and what is refused.
#include "clip/telemetry_source.h"

#include "clips.h"
#include "file_bytes.h"
#include "klv_bytes.h"
#include "media/ffmpeg_types.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using clip::TelemetrySummary;

/// An ST 0601 packet with this heading (tag 5: the whole circle in 65535 steps).
std::string packetWithHeading(double degrees)
{
    auto const code = static_cast<unsigned>(degrees / 360 * 65535 + 0.5);
    auto const bytes = telemetry::packetWithSum(
        {5, 2, static_cast<std::uint8_t>(code >> 8U), static_cast<std::uint8_t>(code & 0xFFU)});
    return {bytes.begin(), bytes.end()};
}

class TelemetrySource : public testing::Test {
protected:
    TelemetrySource() { media::quietLibraries(); }

    std::string file(std::string const& name) const { return folder_.file(name); }
    std::string fileOf(std::string const& name, std::string const& bytes) const
    {
        file_test::writeFile(file(name), bytes);
        return file(name);
    }
    TelemetrySummary read(std::string const& input, std::string const& telemetryFile = "")
    {
        packets_.clear();
        places_.clear();
        clip::TelemetryOptions options;
        options.file = telemetryFile;
        return clip::forEachPacket(input, options, [&](clip::FoundPacket const& found) {
            packets_.push_back(found.packet);
            places_.push_back(found.placeSeconds);
        });
    }
    /// The headings of the packets read last, to the nearest degree.
    std::vector<int> headings() const
    {
        std::vector<int> degrees;
        for (auto const& packet : packets_) {
            degrees.push_back(static_cast<int>(packet.payload["heading_deg"].toDouble() + 0.5));
        }
        return degrees;
    }
    std::string refusalOf(std::string const& input, std::string const& telemetryFile = "")
    {
        try {
            read(input, telemetryFile);
        } catch (std::runtime_error const& refusal) {
            return refusal.what();
        }
        return "nothing thrown";
    }
    /// Five frames, 40 ms apart from second 1 on; the third has no telemetry.
    std::string clipOf(std::string const& name, int streams = 1) const
    {
        clip_test::ClipSpec spec{file(name), 64, 48, 5, "mpeg2video"};
        for (int stream = 0; stream < streams; ++stream) {
            spec.klvStreams.emplace_back();
            for (int frame = 0; frame < spec.frames; ++frame) {
                SwJsonObject payload;
                if (frame != 2) {
                    payload["heading_deg"] = 100.0 * stream + frame;
                }
                spec.klvStreams.back().push_back(payload);
            }
        }
        clip_test::makeClip(spec);
        return spec.path;
    }

    std::vector<telemetry::Packet> packets_;
    std::vector<std::optional<double>> places_;

private:
    media_test::TempFolder folder_;
};

TEST_F(TelemetrySource, RawKlvIsKnownByItsEnding)
{
    // No key within the first 64 bytes: the contents alone would not tell.
    auto const summary = read(fileOf("a.klv", std::string(100, '\0') + packetWithHeading(7) + packetWithHeading(8)));
    EXPECT_EQ(headings(), (std::vector<int>{7, 8}));
    EXPECT_EQ(packets_[0].timeSeconds, std::nullopt);
    EXPECT_EQ(packets_[0].checksum, telemetry::Checksum::Ok);
    EXPECT_TRUE(summary.anyStream);
    EXPECT_TRUE(summary.fromFile);
    EXPECT_EQ(summary.usable, 2U);
    EXPECT_EQ(summary.counts.packets, 2U);
    EXPECT_EQ(summary.readError, "");
}

TEST_F(TelemetrySource, RawKlvIsKnownByAKeyAtItsBeginning)
{
    for (char const* const name : {"a.bin", "noending", "a.ts", "a.KLV"}) {
        auto const summary = read(fileOf(name, packetWithHeading(7)));
        EXPECT_EQ(headings(), (std::vector<int>{7})) << name;
        EXPECT_TRUE(summary.fromFile) << name;
    }
}

TEST_F(TelemetrySource, HeaderMayStandBeforeTheFirstKey)
{
    // The key's first four bytes are the last of the 64 that are looked at.
    read(fileOf("a.bin", std::string(60, '\x47') + packetWithHeading(7)));
    EXPECT_EQ(headings(), (std::vector<int>{7}));
    // One byte further on it is no raw KLV any more, and no clip either.
    std::string const far = fileOf("b.bin", std::string(61, '\0') + packetWithHeading(7));
    EXPECT_EQ(refusalOf(far).substr(0, far.size() + 19), far + ": cannot be opened:");
}

TEST_F(TelemetrySource, LinkToRawKlvIsAFileLikeAnyOther)
{
    std::filesystem::create_symlink(fileOf("a.klv", packetWithHeading(7)), file("link"));
    EXPECT_TRUE(read(file("link")).fromFile);
    EXPECT_EQ(headings(), (std::vector<int>{7}));
}

TEST_F(TelemetrySource, CountsWhatTheFileHeld)
{
    std::string wrongSum = packetWithHeading(8);
    wrongSum.back() = static_cast<char>(wrongSum.back() ^ 1);
    std::string foreign = packetWithHeading(9);
    foreign[15] = 0x55;
    std::string cut = packetWithHeading(9);
    cut.resize(cut.size() - 3);
    auto const summary = read(fileOf("a.klv", packetWithHeading(7) + wrongSum + foreign + cut));
    EXPECT_EQ(headings(), (std::vector<int>{7, 8}));
    EXPECT_EQ(packets_[1].checksum, telemetry::Checksum::Bad);
    EXPECT_EQ(summary.usable, 2U);
    EXPECT_EQ(summary.counts.packets, 2U);
    EXPECT_EQ(summary.counts.badChecksums, 1U);
    EXPECT_EQ(summary.counts.foreignKeys, 1U);
    EXPECT_EQ(summary.counts.truncated, 1U);
}

TEST_F(TelemetrySource, PacketWithoutKeysIsGivenButNotUsable)
{
    // An item of length 0 leaves its key out.
    auto const empty = telemetry::packetWithSum({5, 0});
    auto const summary = read(fileOf("a.klv", std::string(empty.begin(), empty.end()) + packetWithHeading(7)));
    EXPECT_EQ(packets_.size(), 2U);
    EXPECT_EQ(summary.usable, 1U);
}

TEST_F(TelemetrySource, ClipGivesItsPacketsWithTheirTimes)
{
    auto const summary = read(clipOf("a.ts"));
    EXPECT_EQ(headings(), (std::vector<int>{0, 1, 3, 4}));
    ASSERT_EQ(packets_.size(), 4U);
    ASSERT_TRUE(packets_[0].timeSeconds && packets_[2].timeSeconds);
    EXPECT_NEAR(*packets_[2].timeSeconds - *packets_[0].timeSeconds, 0.12, 1e-4);
    EXPECT_NEAR(places_[2].value_or(-1.0), 0.12, 1e-9) << "after the first picture";
    EXPECT_EQ(packets_[2].stream, "0x101");
    EXPECT_EQ(summary.streams, std::vector<std::string>{"0x101"});
    EXPECT_TRUE(summary.anyStream);
    EXPECT_FALSE(summary.fromFile);
    EXPECT_EQ(summary.usable, 4U);
    EXPECT_EQ(summary.counts.packets, 4U);
    EXPECT_EQ(summary.readError, "");
}

TEST_F(TelemetrySource, StreamsOfAClipAreReadSideBySide)
{
    auto const summary = read(clipOf("a.ts", 2));
    auto found = headings();
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (std::vector<int>{0, 1, 3, 4, 100, 101, 103, 104}));
    EXPECT_EQ(summary.counts.packets, 8U);
}

TEST_F(TelemetrySource, ClipWithoutTelemetryHasNoStream)
{
    auto const summary = read(clipOf("a.ts", 0));
    EXPECT_TRUE(packets_.empty());
    EXPECT_FALSE(summary.anyStream);
    EXPECT_FALSE(summary.fromFile);
    EXPECT_EQ(summary.usable, 0U);
}

TEST_F(TelemetrySource, TransportStreamThatNamesItselfRawKlvIsReadAsSuch)
{
    // The packets are found between the others' headers, without their times.
    std::filesystem::rename(clipOf("a.ts"), file("a.klv"));
    auto const summary = read(file("a.klv"));
    EXPECT_TRUE(summary.fromFile);
    ASSERT_FALSE(packets_.empty());
    EXPECT_EQ(packets_[0].timeSeconds, std::nullopt);
}

TEST_F(TelemetrySource, TelemetryFileIsReadInsteadOfTheInput)
{
    std::string const lines =
        fileOf("t.jsonl", "{\"t\":1.5,\"heading_deg\":42.25}\n{\"heading_deg\":43.25}\n{\"t\":2}\n");
    for (std::string const& input : {clipOf("a.ts"), fileOf("b.klv", packetWithHeading(7)), file("missing.ts")}) {
        auto const summary = read(input, lines);
        EXPECT_EQ(headings(), (std::vector<int>{42, 43, 0})) << input;
        EXPECT_EQ(packets_[0].timeSeconds, 1.5);
        EXPECT_EQ(packets_[1].timeSeconds, std::nullopt);
        EXPECT_TRUE(summary.anyStream);
        EXPECT_TRUE(summary.fromFile);
        EXPECT_EQ(summary.usable, 2U);
        EXPECT_EQ(summary.counts.packets, 0U);
    }
    EXPECT_EQ(read(file("missing.ts"), fileOf("t.klv", packetWithHeading(9))).counts.packets, 1U);
    EXPECT_EQ(headings(), (std::vector<int>{9}));
}

TEST_F(TelemetrySource, WhatCannotBeReadIsRefusedInOneLine)
{
    std::filesystem::create_directory(file("folder"));
    std::filesystem::create_directory(file("folder.klv"));
    EXPECT_EQ(refusalOf(file("missing.ts")),
              file("missing.ts") + ": cannot be opened: No such file or directory; check the path");
    EXPECT_EQ(refusalOf(file("missing.klv")),
              file("missing.klv") + ": cannot be opened: No such file or directory; check the path");
    EXPECT_EQ(refusalOf(file("folder")),
              file("folder") + ": cannot be opened: Is a directory; check that it can be read");
    EXPECT_EQ(refusalOf(file("folder.klv")),
              file("folder.klv") + ": cannot be opened: Is a directory; check that it can be read");
    EXPECT_EQ(refusalOf(fileOf("empty", "")).substr(0, file("empty").size() + 18),
              file("empty") + ": cannot be opened");
    EXPECT_EQ(refusalOf(fileOf("empty.klv", "")),
              file("empty.klv") + ": no ST 0601 packet in the file; give raw KLV that holds some");
    EXPECT_EQ(refusalOf(fileOf("a.ts", packetWithHeading(7)), file("t.jsonl")),
              file("t.jsonl") +
                  ": cannot open the telemetry file (No such file or directory); check the name and its permissions");
    EXPECT_EQ(refusalOf(file("a.ts"), fileOf("t.csv", "")),
              file("t.csv") + ": holds no telemetry that can be read; give raw KLV, JSON Lines or a clip with KLV");
}

}  // namespace
