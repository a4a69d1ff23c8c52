// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures with their telemetry and sound on the way into a file: order, what is left out, and how it ends.
#include "clip/clip_writer.h"

#include "clips.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr char const* kConfig = R"({"overlay":[{"formatString":"H %heading_deg"}]})";

/// Ticks by which the sound encoder's first packet comes early, and a little more.
constexpr std::int64_t kRunIn = 960;

class Writer : public testing::Test {
protected:
    std::string file(std::string const& name) const { return folder_.file(name); }

    /// Ten frames with two streams of telemetry and sound.
    std::string makeInput(std::int64_t firstTicks = 90000) const
    {
        clip_test::ClipSpec spec{file("in.ts"), 64, 48, 10, "mpeg2video", firstTicks};
        spec.klvStreams.resize(2);
        for (int frame = 0; frame < spec.frames; ++frame) {
            for (auto& stream : spec.klvStreams) {
                SwJsonObject payload;
                payload["heading_deg"] = 10.0 * frame;
                stream.push_back(payload);
            }
        }
        spec.sound = true;
        spec.soundLead = -kRunIn;
        clip_test::makeClip(spec);
        return spec.path;
    }
    /// Copies at most `most` pictures; the remarks.
    static std::vector<std::string> copy(std::string const& input, std::string const& output, std::string const& codec,
                                         bool whole = true, int most = 1000)
    {
        clip::AnnotatedClip source({input, {}, kConfig});
        media::EncoderChoice choice;
        choice.codecName = codec;
        clip::ClipWriter writer(output, choice, source);
        source.setSideObserver([&](media::SideUnit& unit) { writer.addSide(unit); });
        for (int count = 0; count < most; ++count) {
            auto const frame = source.next();
            if (!frame) {
                break;
            }
            writer.addPicture(*frame, source.annotate(*frame));
        }
        writer.finish(whole);
        return writer.remarks();
    }

private:
    media_test::TempFolder folder_;
};

TEST_F(Writer, KeepsAllTelemetryAndSound)
{
    auto const input = makeInput();
    EXPECT_EQ(copy(input, file("out.ts"), "mpeg2video"), std::vector<std::string>());
    auto const before = clip_test::packetsOf(input);
    auto const after = clip_test::packetsOf(file("out.ts"));
    EXPECT_EQ(after.video, 10);
    EXPECT_EQ(after.klv, 20);
    EXPECT_EQ(after.sound, before.sound);
    EXPECT_GT(after.sound, 5);
}

/// The first time of the streams of this kind, in seconds.
double startOf(std::string const& path, media::StreamKind kind)
{
    media::Demuxer const demuxer(path);
    AVStream const& stream = demuxer.stream(demuxer.streamsOf(kind).at(0));
    return media::secondsOf(stream.start_time, stream.time_base);
}

struct StartRow {
    char const* name;
    std::int64_t firstTicks;  ///< of the input, at 90 kHz
    char const* output;
    char const* codec;
    double expected;  ///< first picture of the output, seconds
};

class StartTime : public Writer, public testing::WithParamInterface<StartRow> {};

TEST_P(StartTime, IsThatOfThePicturesAndSoundKeepsItsDistance)
{
    StartRow const& row = GetParam();
    std::string const input = makeInput(row.firstTicks);
    copy(input, file(row.output), row.codec);
    EXPECT_DOUBLE_EQ(startOf(file(row.output), media::StreamKind::Video), row.expected);
    double const before = startOf(input, media::StreamKind::Audio) - startOf(input, media::StreamKind::Video);
    double const after = startOf(file(row.output), media::StreamKind::Audio) - row.expected;
    constexpr double kMatroskaTick = 0.001;
    EXPECT_NEAR(after, before, kMatroskaTick);
    EXPECT_EQ(clip_test::packetsOf(file(row.output)).sound, clip_test::packetsOf(input).sound);
}

// libx264 sends pictures before those that are shown before them.
INSTANTIATE_TEST_SUITE_P(Rows, StartTime,
                         testing::Values(StartRow{"mp4_from_0", 3600, "out.mp4", "libx264", 0.0},
                                         StartRow{"mp4_from_later", 195030, "out.mp4", "libx264", 0.0},
                                         StartRow{"mkv_from_0", 3600, "out.mkv", "libx264", 0.0},
                                         StartRow{"mkv_from_later", 195030, "out.mkv", "libx264", 0.0},
                                         StartRow{"ts_near_0", 3600, "out.ts", "libx264", 0.04},
                                         StartRow{"ts_later", 195030, "out.ts", "libx264", 2.167},
                                         StartRow{"ts_plain", 3600, "out.ts", "mpeg2video", 0.04}),
                         [](auto const& row) { return row.param.name; });

TEST_F(Writer, SoundBeforeTheFirstPictureIsKeptOrTold)
{
    clip_test::ClipSpec spec{file("in.ts"), 64, 48, 10, "mpeg2video", 90000};
    spec.sound = true;
    spec.soundLead = 7200 - 902;
    clip_test::makeClip(spec);
    int const all = clip_test::packetsOf(spec.path).sound;
    // With the encoder's run-in, four packets of 24 ms begin before the picture: 80, 56, 32 and 8 ms. The last
    // one goes on with the picture.
    std::string const mkv = file("out.mkv");
    EXPECT_EQ(copy(spec.path, mkv, "ffv1"),
              (std::vector<std::string>{
                  mkv + ": 0.072 s of sound before the first picture are left out (.mp4 carries them)"}));
    EXPECT_DOUBLE_EQ(startOf(mkv, media::StreamKind::Video), 0.0);
    EXPECT_EQ(clip_test::packetsOf(mkv).sound, all - 3);
    std::string const mp4 = file("out.mp4");
    EXPECT_EQ(copy(spec.path, mp4, "libx264"), std::vector<std::string>());
    EXPECT_DOUBLE_EQ(startOf(mp4, media::StreamKind::Video), 0.0);
    EXPECT_EQ(clip_test::packetsOf(mp4).sound, all);
    std::string const ts = file("out.ts");
    EXPECT_EQ(copy(spec.path, ts, "mpeg2video"), std::vector<std::string>());
    EXPECT_NEAR(startOf(ts, media::StreamKind::Audio), 0.92, 1e-4);
    EXPECT_DOUBLE_EQ(startOf(ts, media::StreamKind::Video), 1.0);
}

TEST_F(Writer, WithoutTheClipsEndWritesWhatBelongsToThePictures)
{
    copy(makeInput(), file("out.ts"), "mpeg2video", false, 4);
    auto const after = clip_test::packetsOf(file("out.ts"));
    EXPECT_EQ(after.video, 4);
    EXPECT_EQ(after.klv, 8) << "each stream's packet is shown with its picture";
}

TEST_F(Writer, SaysWhatTheContainerCannotCarry)
{
    std::string const output = file("out.mkv");
    std::string const remark = output + ": matroska cannot carry KLV; the telemetry stream is left out (.ts carries "
                                        "it, --sidecar writes it to a .klv file)";
    EXPECT_EQ(copy(makeInput(), output, "ffv1"), (std::vector<std::string>{remark, remark}));
    EXPECT_EQ(clip_test::packetsOf(output).klv, 0);
    EXPECT_GT(clip_test::packetsOf(output).sound, 5);
}

TEST_F(Writer, SaysWhenPicturesAreStoredLarger)
{
    std::string const input = file("odd.mkv");
    clip_test::makeClip({input, 35, 19, 3, "ffv1"});
    std::string const output = file("out.ts");
    EXPECT_EQ(copy(input, output, "libx264"),
              (std::vector<std::string>{output + ": pictures of 35x19 are stored as 36x20, as the encoder takes even "
                                                 "sizes only"}));
}

TEST_F(Writer, NothingStandsUnderTheNameBeforeTheEnd)
{
    std::string const output = file("out.ts");
    clip::AnnotatedClip source({makeInput(), {}, kConfig});
    clip::ClipWriter writer(output, {"mpeg2video", {}, {}}, source);
    auto const frame = source.next();
    ASSERT_TRUE(frame.has_value());
    writer.addPicture(*frame, frame->picture);
    EXPECT_FALSE(std::filesystem::exists(output));
    writer.finish(false);
    EXPECT_TRUE(std::filesystem::exists(output));
}

TEST_F(Writer, TheLastLookComesWhenAllIsWrittenAndMayRefuseTheName)
{
    std::string const output = file("out.ts");
    clip::AnnotatedClip source({makeInput(), {}, kConfig});
    {
        clip::ClipWriter writer(output, {"mpeg2video", {}, {}}, source);
        auto const frame = source.next();
        ASSERT_TRUE(frame.has_value());
        writer.addPicture(*frame, frame->picture);
        bool looked = false;
        EXPECT_THROW(writer.finish(true,
                                   [&] {
                                       looked = true;
                                       EXPECT_FALSE(std::filesystem::exists(output));
                                       throw std::runtime_error("terminated");
                                   }),
                     std::runtime_error);
        EXPECT_TRUE(looked);
    }
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Writer, WithoutAPictureThereIsNoFile)
{
    std::string const input = makeInput();
    std::string const output = file("out.ts");
    clip::AnnotatedClip source({input, {}, kConfig});
    {
        clip::ClipWriter writer(output, {"mpeg2video", {}, {}}, source);
        try {
            writer.finish(true);
            FAIL() << "nothing thrown";
        } catch (std::runtime_error const& failure) {
            EXPECT_EQ(std::string(failure.what()),
                      input + ": holds no picture that can be decoded; give a clip with video");
        }
    }
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Writer, CodecThatDoesNotExistIsRefusedWithTheFirstPicture)
{
    EXPECT_THROW(copy(makeInput(), file("out.ts"), "nosuchcodec"), media::UnknownChoice);
    EXPECT_FALSE(std::filesystem::exists(file("out.ts")));
}

}  // namespace
