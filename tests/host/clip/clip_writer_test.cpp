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

class Writer : public testing::Test {
protected:
    std::string file(std::string const& name) const { return folder_.file(name); }

    /// Ten frames with two streams of telemetry and sound.
    std::string makeInput(int width = 64, int height = 48) const
    {
        clip_test::ClipSpec spec{file("in.ts"), width, height, 10, "mpeg2video"};
        spec.klvStreams.resize(2);
        for (int frame = 0; frame < spec.frames; ++frame) {
            for (auto& stream : spec.klvStreams) {
                SwJsonObject payload;
                payload["heading_deg"] = 10.0 * frame;
                stream.push_back(payload);
            }
        }
        spec.sound = true;
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
    std::string const remark =
        output + ": matroska cannot carry KLV; the telemetry stream is left out (.ts carries it)";
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
