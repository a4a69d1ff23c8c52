// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Encoder, muxer, demuxer and decoder together: what goes in comes out again, samples, times and bytes.
#include "media/decoder.h"
#include "media/demuxer.h"
#include "media/encoder.h"
#include "media/frame_reader.h"
#include "media/muxer.h"
#include "planes.h"
#include "temp_folder.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using media_test::Planes;
using media_test::TempFolder;

constexpr AVRational kClock{1, 90000};
constexpr std::int64_t kFrameTicks = 3600;

/// A unit that begins with a KLV key.
std::vector<std::uint8_t> klvUnit(int number)
{
    auto const letter = static_cast<std::uint8_t>('A' + number % 26);
    return {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x0B, 0x01, 0x01, 0x0E, 0x01,
            0x03, 0x01, 0x01, 0x00, 0x00, 0x00, 0x03, 3,    1,    letter};
}

struct ClipSpec {
    std::string path;
    std::string codec;
    int width = 64;
    int height = 48;
    int frames = 10;
    std::int64_t firstTicks = 195030;
    int klvStreams = 0;
    /// How long before a picture's presentation its telemetry stands in the stream. The encoder sends
    /// pictures one interval ahead of their presentation.
    std::int64_t klvTicksEarly = 0;
    bool lent = false;  ///< pictures are lent to the encoder, not copied
};

void writeClip(ClipSpec const& spec)
{
    media::Muxer muxer(spec.path);
    media::EncoderSettings settings;
    settings.choice.codecName = spec.codec;
    settings.picture.width = spec.width;
    settings.picture.height = spec.height;
    settings.timeBase = kClock;
    media::Encoder encoder(settings, muxer.container());
    int const video = muxer.addVideo(encoder.context(), kClock);
    std::vector<int> klv;
    klv.reserve(static_cast<std::size_t>(spec.klvStreams));
    for (int stream = 0; stream < spec.klvStreams; ++stream) {
        klv.push_back(muxer.addKlv().value());
    }
    muxer.begin();
    auto const sink = [&](AVPacket& packet) { muxer.write(packet, video, kClock); };
    for (int number = 0; number < spec.frames; ++number) {
        auto const planes = std::make_shared<Planes>(spec.width, spec.height);
        planes->fillPattern(number);
        std::int64_t const ticks = spec.firstTicks + number * kFrameTicks;
        for (int const stream : klv) {
            muxer.write(*media::makePacket(klvUnit(number + stream), ticks - spec.klvTicksEarly), stream, kClock);
        }
        encoder.encode(planes->mapped(), ticks, sink, spec.lent ? planes : nullptr);
    }
    encoder.flush(sink);
    muxer.finish();
}

void expectPattern(AVFrame const& frame, int number)
{
    Planes expected(frame.width, frame.height);
    expected.fillPattern(number);
    Planes got(frame.width, frame.height);
    media::FrameConverter().toNv12(frame, got.mapped(), media::nv12ColorOf(frame));
    EXPECT_TRUE(got.samePicture(expected));
}

struct LosslessRow {
    char const* name;
    char const* file;
    char const* codec;
    int width;
    int height;
    bool lent = false;
};

class Lossless : public testing::TestWithParam<LosslessRow> {};

TEST_P(Lossless, GivesBackEverySampleAndTime)
{
    LosslessRow const& row = GetParam();
    TempFolder const folder;
    ClipSpec spec{folder.file(row.file), row.codec, row.width, row.height};
    spec.lent = row.lent;
    writeClip(spec);
    media::Demuxer demuxer(spec.path);
    media::FrameReader reader(demuxer);
    for (int number = 0; number < spec.frames; ++number) {
        SCOPED_TRACE("frame " + std::to_string(number));
        auto const unit = reader.next();
        ASSERT_TRUE(unit);
        EXPECT_EQ(unit->number, static_cast<std::uint64_t>(number));
        EXPECT_NEAR(unit->seconds, static_cast<double>(spec.firstTicks + number * kFrameTicks) / 90000.0, 0.0006);
        ASSERT_EQ(unit->frame->width, row.width);
        ASSERT_EQ(unit->frame->height, row.height);
        expectPattern(*unit->frame, number);
    }
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.damaged(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Rows, Lossless,
                         testing::Values(LosslessRow{"ffv1_in_mkv", "a.mkv", "ffv1", 64, 48},
                                         LosslessRow{"ffv1_odd_size", "a.mkv", "ffv1", 35, 19},
                                         LosslessRow{"ffv1_one_pixel", "a.mkv", "ffv1", 1, 1},
                                         LosslessRow{"rawvideo_in_nut", "a.nut", "rawvideo", 35, 19},
                                         LosslessRow{"rawvideo_lent", "a.nut", "rawvideo", 64, 48, true},
                                         LosslessRow{"rawvideo_lent_odd", "a.nut", "rawvideo", 35, 19, true},
                                         LosslessRow{"ffv1_lent", "a.mkv", "ffv1", 64, 48, true},
                                         LosslessRow{"huffyuv_in_mkv", "a.mkv", "ffvhuff", 64, 48}),
                         [](auto const& row) { return row.param.name; });

TEST(Encoder, HoldsLentPicturesOnlyAsLongAsItNeedsThem)
{
    media::EncoderSettings settings;
    settings.choice.codecName = "libx264";
    settings.picture.width = 64;
    settings.picture.height = 48;
    settings.timeBase = kClock;
    std::vector<std::weak_ptr<Planes>> lent;
    {
        media::Encoder encoder(settings, *av_guess_format("mpegts", nullptr, nullptr));
        ASSERT_EQ(encoder.context().pix_fmt, AV_PIX_FMT_NV12) << "else nothing is lent";
        for (int number = 0; number < 60; ++number) {
            auto const planes = std::make_shared<Planes>(64, 48);
            planes->fillPattern(number);
            lent.push_back(planes);
            encoder.encode(
                planes->mapped(), number * kFrameTicks, [](AVPacket&) {}, planes);
        }
        EXPECT_TRUE(lent.front().expired());
        encoder.flush([](AVPacket&) {});
    }
    EXPECT_TRUE(std::all_of(lent.begin(), lent.end(), [](auto const& planes) { return planes.expired(); }));
}

TEST(RoundTrip, KeepsTicksAndTelemetryBytesInATransportStream)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 10, 195030, 2};
    writeClip(spec);
    media::Demuxer demuxer(spec.path);
    std::vector<int> const streams = demuxer.streamsOf(media::StreamKind::Klv);
    ASSERT_EQ(streams.size(), 2U);
    media::FrameReader reader(demuxer);
    std::vector<media::SideUnit> units;
    int frames = 0;
    while (auto const unit = reader.next()) {
        EXPECT_EQ(unit->ticks, spec.firstTicks + frames * kFrameTicks);
        ++frames;
        for (media::SideUnit& side : reader.takeSideUnits()) {
            units.push_back(std::move(side));
        }
    }
    for (media::SideUnit& side : reader.takeSideUnits()) {
        units.push_back(std::move(side));
    }
    EXPECT_EQ(frames, spec.frames);
    ASSERT_EQ(units.size(), 20U);
    std::vector<int> counts(8, 0);
    for (media::SideUnit const& unit : units) {
        auto const stream = static_cast<std::size_t>(unit.stream);
        int const number = counts.at(stream)++;
        std::vector<std::uint8_t> const bytes(unit.packet->data, unit.packet->data + unit.packet->size);
        EXPECT_EQ(bytes, klvUnit(number + unit.stream));
        EXPECT_EQ(unit.kind, media::StreamKind::Klv);
        EXPECT_DOUBLE_EQ(unit.streamSeconds.value(),
                         static_cast<double>(spec.firstTicks + number * kFrameTicks) / 90000.0);
        EXPECT_DOUBLE_EQ(unit.seconds, unit.streamSeconds.value());
    }
}

TEST(RoundTrip, GivesTelemetryOutBeforeThePictureItBelongsTo)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 40, 90000, 1};
    writeClip(spec);
    media::Demuxer demuxer(spec.path);
    media::FrameReader reader(demuxer);
    double newest = -1.0;
    while (auto const unit = reader.next()) {
        for (media::SideUnit const& side : reader.takeSideUnits()) {
            newest = std::max(newest, side.seconds);
        }
        EXPECT_GE(newest, unit->seconds);
    }
}

constexpr std::size_t kPacketBytes = 188;

/// The payload of each transport packet of one PID that begins a unit; `change` edits it in place.
void changeUnits(std::string const& path, unsigned pid, std::function<void(std::uint8_t*, std::size_t)> const& change)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    file.close();
    for (std::size_t start = 0; start + kPacketBytes <= bytes.size(); start += kPacketBytes) {
        auto* const packet = reinterpret_cast<std::uint8_t*>(bytes.data() + start);
        bool const begins = (packet[1] & 0x40U) != 0;
        std::size_t const header = (packet[3] & 0x20U) != 0 ? 5U + packet[4] : 4U;
        if (begins && ((packet[1] & 0x1FU) << 8U | packet[2]) == pid) {
            change(packet + header, kPacketBytes - header);
        }
    }
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

unsigned pidOf(std::string const& path, media::StreamKind kind)
{
    media::Demuxer const demuxer(path);
    return static_cast<unsigned>(demuxer.stream(demuxer.streamsOf(kind).front()).id);
}

/// The telemetry of a clip, all of it.
std::vector<media::SideUnit> sideUnitsOf(std::string const& path)
{
    media::Demuxer demuxer(path);
    media::FrameReader reader(demuxer);
    while (reader.next()) {
    }
    return reader.takeSideUnits();
}

TEST(RoundTrip, GivesTelemetryWithoutTimesThePlaceOfItsPicture)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 10, 195030, 1, kFrameTicks + 100};
    writeClip(spec);
    changeUnits(spec.path, pidOf(spec.path, media::StreamKind::Klv), [](std::uint8_t* pes, std::size_t) {
        pes[7] &= 0x3FU;  // no PTS, no DTS
        std::fill(pes + 9, pes + 9 + pes[8], std::uint8_t{0xFF});
    });
    std::vector<media::SideUnit> const units = sideUnitsOf(spec.path);
    ASSERT_EQ(units.size(), 10U);
    for (std::size_t number = 0; number < units.size(); ++number) {
        EXPECT_FALSE(units[number].streamSeconds);
        EXPECT_DOUBLE_EQ(units[number].seconds,
                         static_cast<double>(spec.firstTicks + static_cast<std::int64_t>(number) * kFrameTicks) /
                             90000.0);
    }
}

TEST(RoundTrip, SpreadsTelemetryWithoutTimesBetweenPictures)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 10, 90000, 3, kFrameTicks + 100};
    writeClip(spec);
    // Three streams stand for three packets between two pictures.
    for (unsigned const pid : {0x101U, 0x102U, 0x103U}) {
        changeUnits(spec.path, pid, [](std::uint8_t* pes, std::size_t) {
            pes[7] &= 0x3FU;
            std::fill(pes + 9, pes + 9 + pes[8], std::uint8_t{0xFF});
        });
    }
    std::vector<media::SideUnit> const units = sideUnitsOf(spec.path);
    ASSERT_EQ(units.size(), 30U);
    for (std::size_t number = 0; number < units.size(); ++number) {
        std::size_t const pictureNumber = number / 3;
        double const picture = 1.0 + 0.04 * static_cast<double>(pictureNumber);
        EXPECT_NEAR(units[number].seconds, picture - 0.04 * static_cast<double>(2 - number % 3) / 3.0, 1e-9) << number;
    }
}

TEST(RoundTrip, RecognisesTelemetryThatTheStreamDoesNotName)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 10, 90000, 1};
    writeClip(spec);
    constexpr unsigned kProgramMap = 0x1000;
    changeUnits(spec.path, kProgramMap, [](std::uint8_t* section, std::size_t size) {
        std::string_view const name = "KLVA";
        std::uint8_t* const found = std::search(section, section + size, name.begin(), name.end());
        ASSERT_NE(found, section + size);
        std::fill(found, found + 4, std::uint8_t{'?'});
        // A pointer byte, the table, and its check sum over all before it.
        std::uint8_t* const table = section + 1;
        std::size_t const length = 3U + ((table[1] & 0x0FU) << 8U | table[2]) - 4U;
        std::uint32_t const sum = av_crc(av_crc_get_table(AV_CRC_32_IEEE), 0xFFFFFFFFU, table, length);
        std::memcpy(table + length, &sum, sizeof sum);
    });
    media::Demuxer const demuxer(spec.path);
    EXPECT_TRUE(demuxer.streamsOf(media::StreamKind::Klv).empty()) << "not before its first packet";
    std::vector<media::SideUnit> const units = sideUnitsOf(spec.path);
    ASSERT_EQ(units.size(), 10U);
    EXPECT_DOUBLE_EQ(units[3].streamSeconds.value(), 1.12);
}

TEST(RoundTrip, ContinuesTheTimeOfJoinedClipsOfDifferentSizes)
{
    TempFolder const folder;
    ClipSpec first{folder.file("a.ts"), "mpeg2video", 64, 48, 10, 900000, 1};
    ClipSpec second{folder.file("b.ts"), "mpeg2video", 32, 80, 10, 90000, 1};
    writeClip(first);
    writeClip(second);
    {
        std::ofstream joined(folder.file("c.ts"), std::ios::binary);
        for (std::string const& part : {first.path, second.path}) {
            joined << std::ifstream(part, std::ios::binary).rdbuf();
        }
    }
    media::Demuxer demuxer(folder.file("c.ts"));
    media::FrameReader reader(demuxer);
    std::vector<std::int64_t> ticks;
    std::vector<int> widths;
    while (auto const unit = reader.next()) {
        ticks.push_back(unit->ticks);
        widths.push_back(unit->frame->width);
    }
    std::vector<std::int64_t> expected;
    expected.reserve(20);
    for (int number = 0; number < 20; ++number) {
        expected.push_back(900000 + number * kFrameTicks);
    }
    EXPECT_EQ(ticks, expected);
    EXPECT_EQ(widths,
              (std::vector<int>{64, 64, 64, 64, 64, 64, 64, 64, 64, 64, 32, 32, 32, 32, 32, 32, 32, 32, 32, 32}));
    std::size_t count = 0;
    for (media::SideUnit const& side : reader.takeSideUnits()) {
        EXPECT_NEAR(side.seconds,
                    static_cast<double>(900000 + static_cast<std::int64_t>(count) * kFrameTicks) / 90000.0, 1e-9)
            << count;
        ++count;
    }
    EXPECT_EQ(count, 20U);
}

TEST(Encoder, RepeatsTheLastColumnAndRowForEncodersThatTakeEvenSizesOnly)
{
    TempFolder const folder;
    media::EncoderSettings settings;
    settings.choice.codecName = "libx264";
    settings.choice.crf = 0.0;  // lossless
    settings.picture.width = 35;
    settings.picture.height = 19;
    media::Muxer muxer(folder.file("a.mkv"));
    media::Encoder encoder(settings, muxer.container());
    EXPECT_TRUE(encoder.extended());
    EXPECT_EQ(encoder.context().width, 36);
    EXPECT_EQ(encoder.context().height, 20);
    int const video = muxer.addVideo(encoder.context(), kClock);
    muxer.begin();
    auto const sink = [&](AVPacket& packet) { muxer.write(packet, video, kClock); };
    Planes planes(35, 19);
    planes.fillPattern(3);
    encoder.encode(planes.mapped(), 0, sink);
    encoder.flush(sink);
    muxer.finish();

    media::Demuxer demuxer(folder.file("a.mkv"));
    media::FrameReader reader(demuxer);
    auto const unit = reader.next();
    ASSERT_TRUE(unit);
    Planes got(36, 20);
    media::FrameConverter().toNv12(*unit->frame, got.mapped(), {});
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 36; ++column) {
            ASSERT_EQ(got.y(column, row), planes.y(std::min(column, 34), std::min(row, 18))) << column << "," << row;
        }
    }
    for (int row = 0; row < 10; ++row) {
        for (int byte = 0; byte < 36; ++byte) {
            ASSERT_EQ(got.c(byte, row), planes.c(byte, row)) << byte << "," << row;
        }
    }
}

TEST(Encoder, MovesTimesThatDoNotRise)
{
    AVOutputFormat const& container = media::containerFor("a.mkv");
    media::EncoderSettings settings;
    settings.choice.codecName = "ffv1";
    settings.picture.width = 16;
    settings.picture.height = 16;
    media::Encoder encoder(settings, container);
    std::vector<std::int64_t> times;
    auto const sink = [&times](AVPacket& packet) { times.push_back(packet.pts); };
    Planes planes(16, 16);
    for (std::int64_t const ticks : {1000, 1000, 500, 2000}) {
        encoder.encode(planes.mapped(), ticks, sink);
    }
    encoder.flush(sink);
    EXPECT_EQ(times, (std::vector<std::int64_t>{1000, 1001, 1002, 2000}));
}

struct ChoiceRow {
    char const* name;
    char const* output;
    char const* codec;
    double crf;
    char const* message;
};

class WrongChoice : public testing::TestWithParam<ChoiceRow> {};

TEST_P(WrongChoice, IsSaidInOneLine)
{
    ChoiceRow const& row = GetParam();
    try {
        media::EncoderSettings settings;
        settings.choice.codecName = row.codec;
        settings.picture.width = 16;
        settings.picture.height = 16;
        if (row.crf >= 0) {
            settings.choice.crf = row.crf;
        }
        TempFolder const folder;
        std::string const output = row.output;
        AVOutputFormat const& container = media::containerFor(output);
        media::Muxer muxer(folder.file(output));
        media::Encoder const encoder(settings, container);
        muxer.addVideo(encoder.context(), kClock);
        muxer.begin();
        FAIL() << "nothing thrown";
    } catch (media::UnknownChoice const& failure) {
        std::string message = failure.what();
        std::size_t const folderEnd = message.rfind('/', message.find(':'));
        EXPECT_EQ(folderEnd == std::string::npos ? message : message.substr(folderEnd + 1), row.message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongChoice,
    testing::Values(
        ChoiceRow{"no_such_ending", "a.xyz", "", -1,
                  "a.xyz: no video container has this ending; use .ts, .mp4 or .mkv"},
        ChoiceRow{"sound_only_ending", "a.wav", "", -1,
                  "a.wav: no video container has this ending; use .ts, .mp4 or .mkv"},
        ChoiceRow{"no_such_encoder", "a.mkv", "h265turbo", -1,
                  "--video-codec h265turbo: no such video encoder; try libx264, mpeg4 or mpeg2video"},
        ChoiceRow{"sound_encoder", "a.mkv", "aac", -1,
                  "--video-codec aac: no such video encoder; try libx264, mpeg4 or mpeg2video"},
        ChoiceRow{"no_constant_quality", "a.mkv", "mpeg4", 20, "--crf: mpeg4 has no constant quality; use --bitrate"},
        ChoiceRow{"quality_out_of_range", "a.mkv", "libvpx-vp9", 900, "--crf 900: libvpx-vp9 takes 0 to 63"},
        ChoiceRow{"container_refuses_codec", "a.mp4", "huffyuv", -1,
                  "a.mp4: mp4 does not take huffyuv video; choose another ending or --video-codec"}),
    [](auto const& row) { return row.param.name; });

TEST(ContainerFor, ChoosesByEndingOrAddress)
{
    struct Row {
        char const* output;
        char const* container;
    };
    for (Row const& row :
         {Row{"a.ts", "mpegts"}, Row{"a.m2ts", "mpegts"}, Row{"a.mp4", "mp4"}, Row{"a.mkv", "matroska"},
          Row{"udp://127.0.0.1:5000", "mpegts"}, Row{"srt://host:1?mode=caller", "mpegts"},
          Row{"tcp://host:1", "mpegts"}, Row{"-", "mpegts"}, Row{"pipe:1", "mpegts"}}) {
        SCOPED_TRACE(row.output);
        EXPECT_STREQ(media::containerFor(row.output).name, row.container);
    }
}

TEST(Demuxer, NamesInputReasonAndCure)
{
    TempFolder const folder;
    std::string const text = folder.file("a.txt");
    std::ofstream(text) << "no video at all";
    struct Row {
        std::string input;
        std::string message;
    };
    for (Row const& row : {Row{folder.file("none.ts"), ": cannot be opened: No such file or directory; check the path"},
                           Row{text, ": cannot be opened: Invalid data found when processing input; give a file or an "
                                     "address that holds video"},
                           Row{folder.path(), ": cannot be opened: Is a directory; check that it can be read"}}) {
        SCOPED_TRACE(row.input);
        try {
            media::Demuxer const demuxer(row.input);
            FAIL() << "nothing thrown";
        } catch (std::runtime_error const& failure) {
            EXPECT_EQ(failure.what(), row.input + row.message);
        }
    }
}

TEST(Demuxer, ReadsATransportStreamFromMemory)
{
    TempFolder const folder;
    ClipSpec const spec{folder.file("a.ts"), "mpeg2video", 64, 48, 5, 90000, 1};
    writeClip(spec);
    std::ifstream file(spec.path, std::ios::binary);
    std::vector<char> const bytes{std::istreambuf_iterator<char>(file), {}};
    std::size_t place = 0;
    media::Demuxer demuxer("memory", [&](std::uint8_t* to, std::size_t size) {
        std::size_t const count = std::min(size, bytes.size() - place);
        std::memcpy(to, bytes.data() + place, count);
        place += count;
        return count;
    });
    EXPECT_EQ(demuxer.name(), "memory");
    EXPECT_EQ(demuxer.streamsOf(media::StreamKind::Klv).size(), 1U);
    ASSERT_NE(demuxer.video(), nullptr);
    media::PacketPtr const packet = media::makePacket();
    int klv = 0;
    while (demuxer.read(*packet)) {
        klv += demuxer.kindOf(packet->stream_index) == media::StreamKind::Klv ? 1 : 0;
        av_packet_unref(packet.get());
    }
    EXPECT_EQ(klv, 5);
    EXPECT_EQ(demuxer.readError(), "");
}

TEST(FrameReader, RefusesAClipWithoutVideo)
{
    TempFolder const folder;
    std::string const path = folder.file("a.srt");
    std::ofstream(path) << "1\n00:00:01,000 --> 00:00:02,000\nhello\n\n";
    media::Demuxer demuxer(path);
    try {
        media::FrameReader const reader(demuxer);
        FAIL() << "nothing thrown";
    } catch (std::runtime_error const& failure) {
        EXPECT_EQ(failure.what(), path + ": holds no video stream; give a clip with video");
    }
}

}  // namespace
