// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A clip cut off at every single byte: read as far as it goes or refused in one line, never more than there was.
#include "media/demuxer.h"
#include "media/ffmpeg_types.h"
#include "media/frame_reader.h"
#include "telemetry/telemetry.h"

#include "file_bytes.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/cpu.h>
}

#include <algorithm>
#include <map>
#include <span>
#include <stdexcept>
#include <string>

namespace {

struct Outcome {
    std::size_t pictures = 0;
    std::size_t packets = 0;  ///< of telemetry
    std::string refusal;
};

Outcome readClip(std::string const& bytes)
{
    Outcome outcome;
    std::size_t place = 0;
    std::map<int, telemetry::KlvDecoder> decoders;
    auto const takeSide = [&](media::FrameReader& reader) {
        for (media::SideUnit const& unit : reader.takeSideUnits()) {
            if (unit.kind == media::StreamKind::Klv && unit.packet->data != nullptr) {
                std::span const data(unit.packet->data, static_cast<std::size_t>(unit.packet->size));
                outcome.packets += decoders[unit.stream].decode(data, unit.seconds).size();
            }
        }
    };
    try {
        media::Demuxer demuxer("clip", [&](std::uint8_t* to, std::size_t room) {
            std::size_t const count = std::min(room, bytes.size() - place);
            std::copy_n(bytes.data() + place, count, to);
            place += count;
            return count;
        });
        media::FrameReader reader(demuxer);
        while (auto const picture = reader.next()) {
            EXPECT_EQ(picture->number, outcome.pictures);
            ++outcome.pictures;
            takeSide(reader);
        }
        takeSide(reader);
    } catch (std::runtime_error const& refusal) {
        outcome.refusal = refusal.what();
    }
    return outcome;
}

class Truncated : public testing::TestWithParam<char const*> {};

TEST_P(Truncated, AtEveryByte)
{
    media::quietLibraries();
    av_cpu_force_count(1);
    std::string const whole =
        file_test::readFile(std::string(OVERLAY_SOURCE_DIR "/fuzz/corpus/demux_fuzz/") + GetParam());
    Outcome const best = readClip(whole);
    ASSERT_EQ(best.refusal, "");
    ASSERT_GT(best.pictures, 0U);
    ASSERT_GT(best.packets, 0U);
    std::size_t refused = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Outcome const cut = readClip(whole.substr(0, size));
        ASSERT_LE(cut.pictures, best.pictures) << size;
        ASSERT_LE(cut.packets, best.packets) << size;
        if (!cut.refusal.empty()) {
            ++refused;
            ASSERT_EQ(cut.refusal.rfind("clip: ", 0), 0U) << size << ": " << cut.refusal;
            ASSERT_EQ(cut.refusal.find('\n'), std::string::npos) << size << ": " << cut.refusal;
            ASSERT_NE(cut.refusal.find("; "), std::string::npos) << "the cure: " << cut.refusal;
            ASSERT_EQ(cut.pictures, 0U) << size;
        }
    }
    EXPECT_GT(refused, 0U);
    EXPECT_LT(refused, whole.size());
}

INSTANTIATE_TEST_SUITE_P(Clips, Truncated, testing::Values("flight_h264", "flight_mpeg2"),
                         [](auto const& row) { return std::string(row.param); });

}  // namespace
