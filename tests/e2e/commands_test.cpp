// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Each command as a person types it: what it gives, what it says, its exit code.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;
using e2e::Result;
using e2e::run;

constexpr char const* kConfig = R"({"overlay":[{"formatString":"N %heading_deg","textSize":100,"decimals":1}]})";

SwJsonObject telemetryOf(int number)
{
    return {{"utc_timestamp_us", SwJsonValue(std::int64_t{1700000000000000} + std::int64_t{number} * 40000)},
            {"heading_deg", SwJsonValue(static_cast<double>(number))},
            {"camera_name", SwJsonValue("EO")}};
}

/// Clips and configurations that all tests of this file share, in a folder of their own.
class Commands : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = new media_test::TempFolder;
        e2e::writeFile(file("c.json"), kConfig);
        e2e::writeFile(file("bad.json"), "{\"overlay\":[\n {\"a\":tru}]}");
        e2e::writeFile(file("t.jsonl"), "{\"t\":0,\"heading_deg\":7.25}\n\n{\"t\":0.2,\"heading_deg\":8.75}\n");
        clip_test::ClipSpec clip{file("a.ts")};
        clip.sound = true;
        clip.klvStreams.emplace_back();
        for (int number = 0; number < clip.frames; ++number) {
            clip.klvStreams.front().push_back(telemetryOf(number));
        }
        clip_test::makeClip(clip);
        clip_test::makeClip({file("plain.mkv"), 64, 48, 10, "ffv1"});
        clip_test::makeClip({file("odd.mkv"), 35, 19, 5, "ffv1"});
        std::string noise(100000, '\0');
        std::mt19937 random(1);
        std::generate(noise.begin(), noise.end(), [&random] { return static_cast<char>(random() & 0xFFU); });
        e2e::writeFile(file("noise.bin"), noise);
    }
    static void TearDownTestSuite()
    {
        delete folder_;
        folder_ = nullptr;
    }

    static std::string file(std::string const& name) { return folder_->file(name); }

    /// "@" at the start of a word stands for the folder.
    static Words inFolder(Words words)
    {
        for (std::string& word : words) {
            if (word.rfind('@', 0) == 0) {
                word = file(word.substr(1));
            }
        }
        return words;
    }
    static std::string named(std::string text)
    {
        for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@')) {
            text.replace(at, 1, folder_->path() + "/");
        }
        return text;
    }

    static Result call(Words const& words, e2e::RunOptions const& options = {})
    {
        return run(inFolder(words), options);
    }

private:
    inline static media_test::TempFolder* folder_ = nullptr;
};

struct RefusalRow {
    char const* name;
    Words words;
    int exitCode;
    char const* message;
};

class Refusals : public Commands, public testing::WithParamInterface<RefusalRow> {};

TEST_P(Refusals, AreOneLineThatNamesPlaceAndCure)
{
    RefusalRow const& row = GetParam();
    Result const result = call(row.words);
    EXPECT_EQ(result.exitCode, row.exitCode);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, named(std::string("stanag-overlay: ") + row.message + "\n"));
    EXPECT_FALSE(std::filesystem::exists(file("o.ts")));
    EXPECT_FALSE(std::filesystem::exists(file("o.png")));
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, Refusals,
    testing::Values(
        RefusalRow{"no_input",
                   {"burn", "@none.ts", "-c", "@c.json", "-o", "@o.ts"},
                   1,
                   "@none.ts: cannot be opened: No such file or directory; check the path"},
        RefusalRow{"input_is_text",
                   {"burn", "@c.json", "-c", "@c.json", "-o", "@o.ts"},
                   1,
                   "@c.json: cannot be opened: Invalid data found when processing input; give a file or an address "
                   "that holds video"},
        RefusalRow{"input_is_noise",
                   {"burn", "@noise.bin", "-c", "@c.json", "-o", "@o.ts"},
                   1,
                   "@noise.bin: cannot be opened: Invalid data found when processing input; give a file or an address "
                   "that holds video"},
        RefusalRow{"nobody_sends",
                   {"burn", "tcp://127.0.0.1:9", "-c", "@c.json", "-o", "@o.ts"},
                   1,
                   "tcp://127.0.0.1:9: cannot be opened: Connection refused; check the address and that video is sent "
                   "there"},
        RefusalRow{"nobody_listens",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "srt://127.0.0.1:9"},
                   1,
                   "srt://127.0.0.1:9: cannot be sent to: Input/output error; check the address and that somebody "
                   "listens there"},
        RefusalRow{"no_device_for_the_encoder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--video-codec", "h264_v4l2m2m"},
                   1,
                   "h264_v4l2m2m: no device or driver that encodes pictures of 320x240 was found here (Invalid "
                   "argument); choose a software encoder with --video-codec, such as libx264"},
        RefusalRow{"no_config",
                   {"burn", "@a.ts", "-c", "@none.json", "-o", "@o.ts"},
                   1,
                   "@none.json: cannot be read: No such file or directory; check the path"},
        RefusalRow{"config_not_json",
                   {"burn", "@a.ts", "-c", "@bad.json", "-o", "@o.ts"},
                   1,
                   "@bad.json: line 2, column 10: Invalid boolean literal; mend the JSON there"},
        RefusalRow{"config_not_json_in_text",
                   {"text", "@a.ts", "-c", "@bad.json"},
                   1,
                   "@bad.json: line 2, column 10: Invalid boolean literal; mend the JSON there"},
        RefusalRow{"config_not_json_in_frame",
                   {"frame", "@a.ts", "-c", "@bad.json", "--at", "0", "-o", "@o.png"},
                   1,
                   "@bad.json: line 2, column 10: Invalid boolean literal; mend the JSON there"},
        RefusalRow{"config_not_json_in_check",
                   {"check", "@bad.json"},
                   1,
                   "@bad.json: line 2, column 10: Invalid boolean literal; mend the JSON there"},
        RefusalRow{"no_output_folder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@none/o.ts"},
                   1,
                   "@none/o.ts: folder @none does not exist; create it first"},
        RefusalRow{"no_output_folder_for_a_picture",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "0", "-o", "@none/o.png"},
                   1,
                   "@none/o.png: folder @none does not exist; create it first"},
        RefusalRow{"locked_output_folder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "/proc/o.ts"},
                   1,
                   "/proc/o.ts: cannot be written: No such file or directory; choose a folder that can be written to"},
        RefusalRow{"output_is_input",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@a.ts"},
                   1,
                   "@a.ts: is the input itself; give another name for the output"},
        RefusalRow{"no_picture_at",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "0.8", "-o", "@o.png"},
                   1,
                   "@a.ts: has no picture at 0.800 s: it ends at 0.800 s; give an earlier time"},
        RefusalRow{"no_telemetry_file",
                   {"keys", "@a.ts", "--telemetry", "@none.jsonl"},
                   1,
                   "@none.jsonl: cannot open the telemetry file (No such file or directory); check the name and its "
                   "permissions"},
        RefusalRow{"keys_of_nothing",
                   {"keys", "@none.ts"},
                   1,
                   "@none.ts: cannot be opened: No such file or directory; check the path"},
        RefusalRow{"schema_of_nothing",
                   {"schema", "@none.ts"},
                   1,
                   "@none.ts: cannot be opened: No such file or directory; check the path"}),
    [](auto const& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Usage, Refusals,
    testing::Values(
        RefusalRow{"unknown_ending",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.xyz"},
                   2,
                   "@o.xyz: no video container has this ending; use .ts, .mp4 or .mkv"},
        RefusalRow{"unknown_command", {"brun", "@a.ts"}, 2, "brun: no such command; stanag-overlay --help lists them"},
        RefusalRow{"unknown_encoder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--video-codec", "h265turbo"},
                   2,
                   "--video-codec h265turbo: no such video encoder; try libx264, mpeg4 or mpeg2video"},
        RefusalRow{"picture_as_clip",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.png"},
                   2,
                   "@o.png: is a single picture by its ending, which the command frame makes; use .ts, .mp4 or .mkv"},
        RefusalRow{"address_that_takes_nothing",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "rtsp://127.0.0.1:9/x"},
                   2,
                   "rtsp://127.0.0.1:9/x: nothing can be sent to such an address; use udp://, srt:// or tcp://"},
        RefusalRow{"unknown_preset",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--preset", "fastest"},
                   2,
                   "--preset fastest: libx264 does not take this; try ultrafast, superfast, veryfast, faster, fast, "
                   "medium, slow, slower, veryslow or placebo"},
        RefusalRow{
            "no_presets",
            {"burn", "@none.ts", "-c", "@none.json", "-o", "@o.mkv", "--video-codec", "ffv1", "--preset", "fast"},
            2,
            "--preset fast: ffv1 has no presets; leave it out"},
        RefusalRow{"no_constant_quality",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.mkv", "--video-codec", "ffv1", "--crf", "3"},
                   2,
                   "--crf: ffv1 has no constant quality; use --bitrate"},
        RefusalRow{"quality_beyond_the_encoder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--crf", "52"},
                   2,
                   "--crf 52: libx264 takes 0 to 51"},
        RefusalRow{"quality_beyond_all",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--crf", "64"},
                   2,
                   "burn: --crf: give a number from 0 to 63; see stanag-overlay burn --help"},
        RefusalRow{"quality_not_a_number",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--crf", "nan"},
                   2,
                   "burn: --crf: give a number from 0 to 63; see stanag-overlay burn --help"},
        RefusalRow{"no_threads",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--threads", "0"},
                   2,
                   "burn: --threads: give a number from 1 to 256; see stanag-overlay burn --help"},
        RefusalRow{"half_a_thread",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--threads", "1.5"},
                   2,
                   "burn: --threads: give a number from 1 to 256; see stanag-overlay burn --help"},
        RefusalRow{"outline_of_a_thousand_pixels",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--outline", "1000"},
                   2,
                   "burn: --outline: give a number from 0 to 32; see stanag-overlay burn --help"},
        RefusalRow{"outline_that_is_no_number",
                   {"text", "@a.ts", "-c", "@c.json", "--outline", "nan"},
                   2,
                   "text: --outline: give a number from 0 to 32; see stanag-overlay text --help"},
        RefusalRow{"nothing", {}, 2, "give a command; stanag-overlay --help lists them"},
        RefusalRow{"burn_without_config",
                   {"burn", "@a.ts", "-o", "@o.ts"},
                   2,
                   "burn: --config is required; see stanag-overlay burn --help"},
        RefusalRow{"burn_without_output",
                   {"burn", "@a.ts", "-c", "@c.json"},
                   2,
                   "burn: --output is required; see stanag-overlay burn --help"},
        RefusalRow{"frame_without_moment",
                   {"frame", "@a.ts", "-c", "@c.json", "-o", "@o.png"},
                   2,
                   "frame: --at is required; see stanag-overlay frame --help"},
        RefusalRow{"two_qualities",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--bitrate", "4M", "--crf", "20"},
                   2,
                   "burn: --bitrate excludes --crf; see stanag-overlay burn --help"},
        RefusalRow{"unknown_option",
                   {"keys", "@a.ts", "--fast"},
                   2,
                   "keys: there is no option --fast; see stanag-overlay keys --help"},
        RefusalRow{
            "misspelt_option",
            {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--telemetri", "3"},
            2,
            "burn: there is no option --telemetri; did you mean \"--telemetry\"?; see stanag-overlay burn --help"},
        RefusalRow{"one_word_too_many",
                   {"keys", "@a.ts", "@c.json"},
                   2,
                   "keys: @c.json: nothing is expected here; see stanag-overlay keys --help"},
        RefusalRow{"option_without_value",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--crf"},
                   2,
                   "burn: --crf: give a value; see stanag-overlay burn --help"},
        RefusalRow{"misspelt_option_of_the_program",
                   {"--versoin"},
                   2,
                   "there is no option --versoin; did you mean \"--version\"?; stanag-overlay --help lists them"},
        RefusalRow{
            "option_without_command", {"--live"}, 2, "there is no option --live; stanag-overlay --help lists them"},
        RefusalRow{"bit_rate_word",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--bitrate", "fast"},
                   2,
                   "--bitrate fast: give bits per second from 1000 to 10000000000, for example 2500k or 4M"},
        RefusalRow{"negative_moment",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "-1", "-o", "@o.png"},
                   2,
                   "--at: give a number from 0 to 1000000000"},
        RefusalRow{"moment_not_a_number",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "nan", "-o", "@o.png"},
                   2,
                   "--at: give a number from 0 to 1000000000"},
        RefusalRow{"sample_size",
                   {"sample", "@o.ts", "--size", "640"},
                   2,
                   "--size 640: give width and height, for example 1280x720"},
        RefusalRow{"sample_size_zero",
                   {"sample", "@o.ts", "--size", "0x10"},
                   2,
                   "--size 0x10: give width and height, for example 1280x720"},
        RefusalRow{"sample_rate", {"sample", "@o.ts", "--fps", "0"}, 2, "--fps: give a number from 0.1 to 240"},
        RefusalRow{
            "sample_length", {"sample", "@o.ts", "--seconds", "-3"}, 2, "--seconds: give a number from 0.01 to 86400"},
        RefusalRow{"sample_container",
                   {"sample", "@o.mp4"},
                   2,
                   "@o.mp4: this container cannot carry KLV; use an output that ends in .ts"}),
    [](auto const& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    FormerBugs, Refusals,
    testing::Values(
        RefusalRow{"video_that_transport_streams_do_not_carry",
                   {"burn", "@none.ts", "-c", "@none.json", "-o", "@o.ts", "--video-codec", "ffv1"},
                   2,
                   "--video-codec ffv1: transport streams carry no ffv1 video; try libx264, mpeg4 or mpeg2video, or an "
                   "output that ends in .mkv"},
        RefusalRow{"video_that_addresses_do_not_carry",
                   {"burn", "@none.ts", "-c", "@none.json", "-o", "udp://127.0.0.1:9", "--video-codec", "libvpx-vp9"},
                   2,
                   "--video-codec libvpx-vp9: transport streams carry no vp9 video; try libx264, mpeg4 or mpeg2video, "
                   "or an output that ends in .mkv"},
        RefusalRow{"a_flight_that_transport_streams_do_not_carry",
                   {"sample", "@o.ts", "--video-codec", "mjpeg"},
                   2,
                   "--video-codec mjpeg: transport streams carry no mjpeg video; try libx264, mpeg4 or mpeg2video, or "
                   "an output that ends in .mkv"},
        RefusalRow{"codec_for_encoder",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--video-codec", "theora"},
                   2,
                   "--video-codec theora: is a codec, not an encoder; name one of its encoders: libtheora"},
        RefusalRow{"quality_of_another_scale",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--crf", "52", "--video-codec", "libx265"},
                   2,
                   "--crf 52: libx265 takes 0 to 51"},
        RefusalRow{"bit_rate_too_low",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--bitrate", "999"},
                   2,
                   "--bitrate 999: give bits per second from 1000 to 10000000000, for example 2500k or 4M"},
        RefusalRow{"empty_bit_rate",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--bitrate", ""},
                   2,
                   "--bitrate : give bits per second from 1000 to 10000000000, for example 2500k or 4M"},
        RefusalRow{"empty_begin",
                   {"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--from", ""},
                   2,
                   "--from : give seconds or [HH:]MM:SS[.fff], for example 90.5 or 00:01:30.5"},
        RefusalRow{"empty_end",
                   {"text", "@a.ts", "-c", "@c.json", "--to", ""},
                   2,
                   "--to : give seconds or [HH:]MM:SS[.fff], for example 90.5 or 00:01:30.5"},
        RefusalRow{"empty_moment",
                   {"check", "@c.json", "@a.ts", "--at", ""},
                   2,
                   "--at : give seconds or [HH:]MM:SS[.fff], for example 90.5 or 00:01:30.5"},
        RefusalRow{"clip_as_picture",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "0", "-o", "@o.mp4"},
                   2,
                   "@o.mp4: the picture is written as PNG; give a name that ends in .png"},
        RefusalRow{"picture_of_another_format",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "0", "-o", "@o.jpg"},
                   2,
                   "@o.jpg: the picture is written as PNG; give a name that ends in .png"},
        RefusalRow{"picture_under_the_name_of_standard_output",
                   {"frame", "@a.ts", "-c", "@c.json", "--at", "0", "-o", "-"},
                   2,
                   "-: the picture is written as PNG; give a name that ends in .png"}),
    [](auto const& row) { return row.param.name; });

TEST_F(Commands, AStandardOutputThatCannotBeWrittenGetsACureOfItsOwn)
{
    Result const full = call({"burn", "@a.ts", "-c", "@c.json", "-o", "-"}, {"", "/dev/full"});
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_EQ(full.err,
              "stanag-overlay: standard output cannot be written: No space left on device; free some space\n");
}

TEST_F(Commands, ACodecIsToldWithItsEncoders)
{
    Result const result = call({"burn", "@a.ts", "-c", "@c.json", "-o", "@o.ts", "--video-codec", "h264"});
    EXPECT_EQ(result.exitCode, 2);
    std::string const start =
        "stanag-overlay: --video-codec h264: is a codec, not an encoder; name one of its encoders: ";
    EXPECT_EQ(result.err.rfind(start, 0), 0U) << result.err;
    EXPECT_NE(result.err.find(" libx264, ", start.size() - 1), std::string::npos) << result.err;
}

TEST_F(Commands, HelpGoesToStandardOutput)
{
    Result const result = call({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    for (char const* const command : {"burn", "frame", "keys", "text", "schema", "check", "sample"}) {
        EXPECT_NE(result.out.find(std::string("  ") + command + " "), std::string::npos) << command;
        EXPECT_EQ(call({command, "--help"}).exitCode, 0) << command;
    }
}

TEST_F(Commands, KeysPrintsOneLinePerPacket)
{
    Result const result = call({"keys", "@a.ts"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 20U);
    EXPECT_EQ(lines[0],
              R"({"packet": 0, "pts": 1.0, "checksum": "ok", "payload": {"camera_name": "EO", "heading_deg": 0.0, )"
              R"("utc_timestamp_us": 1700000000000000, "yaw_deg": 0.0}, "stream": "0x101", "t": 0.0})");
    EXPECT_EQ(lines[19].rfind(R"({"packet": 19, "pts": 1.76, "checksum": "ok", "payload": {"camera_name": "EO", )", 0),
              0U)
        << lines[19];
}

TEST_F(Commands, KeysReadsATelemetryFileInstead)
{
    Result const result = call({"keys", "@a.ts", "--telemetry", "@t.jsonl"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "{\"packet\": 0, \"pts\": 0.0, \"checksum\": \"absent\", \"payload\": {\"heading_deg\": 7.25}}\n"
              "{\"packet\": 1, \"pts\": 0.2, \"checksum\": \"absent\", \"payload\": {\"heading_deg\": 8.75}}\n");
}

TEST_F(Commands, TextPrintsWhatWouldBeDrawn)
{
    Result const result = call({"text", "@a.ts", "-c", "@c.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 20U);
    EXPECT_EQ(lines[0], R"({"frame": 0, "pts": 1.0, "draws": [{"text": "N 0", "x": 2, "y": 2, "size": 22}]})");
    EXPECT_EQ(lines[12], R"({"frame": 12, "pts": 1.48, "draws": [{"text": "N 12", "x": 2, "y": 2, "size": 22}]})");
}

TEST_F(Commands, TelemetryFileMeetsFramesByTimeSinceTheFirstPicture)
{
    Result const result = call({"text", "@a.ts", "-c", "@c.json", "--telemetry", "@t.jsonl"});
    EXPECT_EQ(result.exitCode, 0);
    std::vector<std::string> const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 20U);
    for (std::size_t number = 0; number < lines.size(); ++number) {
        EXPECT_NE(lines[number].find(number < 5 ? "\"N 7.2\"" : "\"N 8.8\""), std::string::npos) << lines[number];
    }
}

TEST_F(Commands, SchemaListsTheKeysOfTheInput)
{
    Result const plain = call({"schema"});
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_EQ(plain.err, "");
    EXPECT_NE(plain.out.find("\"default\": []"), std::string::npos);
    EXPECT_EQ(plain.out.size(), 368U + 2U + 5549U + 1U) << "fixed text, an empty list, a line feed";
    Result const listed = call({"schema", "@a.ts"});
    EXPECT_EQ(listed.exitCode, 0);
    EXPECT_NE(
        listed.out.find(R"("default": ["camera_name","frame_index","heading_3digits","heading_compass","heading_deg",)"
                        R"("telemetry_age_s","utc_clock_ms","utc_date","utc_dtg","utc_iso_ms","utc_timestamp_us",)"
                        R"("video_time_s","video_time_text","yaw_3digits","yaw_compass","yaw_deg"])"),
        std::string::npos);
    SwJsonObject const schema = clip_test::parseLine(listed.out);
    EXPECT_EQ(schema["title"].toString(), "StanagOverlayPlugin configuration");
}

TEST_F(Commands, CheckTellsWhatWouldBeChanged)
{
    Result const clean = call({"check", "@c.json", "@a.ts"});
    EXPECT_EQ(clean.exitCode, 0);
    EXPECT_EQ(clean.out,
              named("@c.json: overlay[0]: box 2,2 to 42,30 of 320x240 (0.0063,0.0083 to 0.1313,0.125); centred \"x\": "
                    "0.4375, \"y\": 0.4417; flush right \"x\": 0.8688; at the bottom \"y\": 0.875\n"
                    "@c.json: everything is taken as it stands\n"));
    e2e::writeFile(file("odd.json"), R"({"overlay":[{"formatString":"%heading","textsize":5,"bgAlpha":3}]})");
    Result const odd = call({"check", "@odd.json", "@a.ts"});
    EXPECT_EQ(odd.exitCode, 1);
    EXPECT_EQ(odd.err, "");
    EXPECT_EQ(odd.out, named("@odd.json: overlay[0]: box 2,2 to 6,8 of 320x240 (0.0063,0.0083 to 0.0188,0.0333); "
                             "centred \"x\": 0.4938, \"y\": 0.4875; flush right \"x\": 0.9813; at the bottom \"y\": "
                             "0.9667\n"
                             "@odd.json: overlay[0].bgAlpha: 3 becomes 1 (allowed: 0 to 1)\n"
                             "@odd.json: overlay[0].textsize: unknown key, ignored; did you mean \"textSize\"?\n"
                             "@odd.json: overlay[0].formatString: the input never delivers \"heading\"; did you mean "
                             "\"heading_deg\"?\n"
                             "@odd.json: overlay[0]: the text is 3 pixels high on 240 lines, too small to read; "
                             "\"textSize\" 41 makes it 9\n"));
}

/// The number after `name` in a line, behind `from`.
double numberAfter(std::string const& line, std::string const& name, std::string const& from)
{
    std::size_t const at = line.find(name, line.find(from));
    return at == std::string::npos ? -1.0 : std::stod(line.substr(at + name.size()));
}

TEST_F(Commands, PositionsThatCheckPrintsDoWhatTheySay)
{
    auto const lineOf = [this](double x, double y) {
        e2e::writeFile(file("p.json"),
                       R"({"overlay":[{"formatString":"%heading_deg m","textSize":90,"position":{"x":)" +
                           std::to_string(x) + R"(,"y":)" + std::to_string(y) + "}}]}");
        Result const result = call({"check", "@p.json", "@a.ts", "--at", "0.5"});
        EXPECT_EQ(result.exitCode, 0);
        return result.out.substr(result.out.find("overlay[0]: box "));
    };
    auto const box = [](std::string const& line) {
        std::array<int, 4> edges{};
        EXPECT_EQ(std::sscanf(line.c_str(), "overlay[0]: box %d,%d to %d,%d of 320x240", &edges[0], &edges[1],
                              &edges[2], &edges[3]),
                  4)
            << line;
        return edges;
    };
    std::string const before = lineOf(0.08, 0.08);
    auto const [left, top, right, bottom] = box(before);
    auto const centred =
        box(lineOf(numberAfter(before, "\"x\": ", "centred"), numberAfter(before, "\"y\": ", "centred")));
    EXPECT_NEAR(centred[0], 320 - centred[2], 2);
    EXPECT_NEAR(centred[1], 240 - centred[3], 2);
    EXPECT_EQ(centred[2] - centred[0], right - left);
    auto const corner =
        box(lineOf(numberAfter(before, "\"x\": ", "flush right"), numberAfter(before, "\"y\": ", "at the bottom")));
    EXPECT_NEAR(320 - corner[2], left, 1);
    EXPECT_NEAR(240 - corner[3], top, 1);
}

TEST_F(Commands, CheckPlacesBlocksOnThePictureThatIsAskedFor)
{
    Result const late = call({"check", "@c.json", "@a.ts", "--at", "99"});
    EXPECT_EQ(late.exitCode, 1);
    EXPECT_EQ(e2e::linesOf(late.err).size(), 1U);
    EXPECT_NE(late.err.find("has no picture at 99.000 s"), std::string::npos) << late.err;
    e2e::writeFile(file("two.json"), R"({"overlay":[{"formatString":"%heading_deg","textSize":80},)"
                                     R"({"formatString":"never","condition":{"key":"heading_deg","operator":"lt",)"
                                     R"("value":-1}}]})");
    Result const hidden = call({"check", "@two.json", "@a.ts", "--at", "0.2"});
    EXPECT_EQ(hidden.exitCode, 0);
    EXPECT_NE(hidden.out.find("two.json: overlay[1]: is not drawn at 0.2"), std::string::npos) << hidden.out;
    Result const lines = call({"check", "@c.json", "@t.jsonl", "--at", "1"});
    EXPECT_EQ(lines.exitCode, 2);
}

TEST_F(Commands, CheckGuardsByItsExitCode)
{
    e2e::writeFile(file("found.json"), R"({"overlay":[{"textSize":999}]})");
    e2e::writeFile(file("undelivered.json"), R"({"overlay":[{"formatString":"%laser_prf_code"}]})");
    EXPECT_EQ(call({"check", "@c.json"}).exitCode, 0);
    EXPECT_EQ(call({"check", "@found.json"}).exitCode, 1);
    EXPECT_EQ(call({"check", "@undelivered.json"}).exitCode, 0) << "without an input no key is expected";
    Result const undelivered = call({"check", "@undelivered.json", "@a.ts"});
    EXPECT_EQ(undelivered.exitCode, 1);
    EXPECT_EQ(
        undelivered.out,
        named("@undelivered.json: overlay[0]: box 2,2 to 6,8 of 320x240 (0.0063,0.0083 to 0.0188,0.0333); centred "
              "\"x\": 0.4938, \"y\": 0.4875; flush right \"x\": 0.9813; at the bottom \"y\": 0.9667\n"
              "@undelivered.json: overlay[0].formatString: the input never delivers \"laser_prf_code\"\n"
              "@undelivered.json: overlay[0]: the text is 3 pixels high on 240 lines, too small to read; "
              "\"textSize\" 41 makes it 9\n"));
    Result const noTelemetry = call({"check", "@c.json", "@plain.mkv"});
    EXPECT_EQ(noTelemetry.exitCode, 1);
    EXPECT_EQ(noTelemetry.out, named("@c.json: no block is drawn on the first pictures; --at chooses another one\n"
                                     "@c.json: overlay[0].formatString: the input never delivers \"heading_deg\"\n"));
    Result const unreadable = call({"check", "@bad.json"});
    EXPECT_EQ(unreadable.exitCode, 1);
    EXPECT_EQ(unreadable.out, "");
    EXPECT_EQ(e2e::linesOf(unreadable.err).size(), 1U);
    EXPECT_EQ(call({"check"}).exitCode, 2);
    EXPECT_EQ(call({"check", "@c.json", "@a.ts", "more"}).exitCode, 2);
    EXPECT_NE(call({"check", "--help"}).out.find("Exit code: 0 when everything is taken as it stands"),
              std::string::npos);
}

TEST_F(Commands, FrameWritesOnePicture)
{
    Result const result = call({"frame", "@a.ts", "-c", "@c.json", "--at", "0.5", "-o", "@f.png"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(e2e::readFile(file("f.png")).substr(1, 3), "PNG");
    Result const other = call({"frame", "@a.ts", "-c", "@c.json", "--at", "0.519", "-o", "@g.png"});
    EXPECT_EQ(other.exitCode, 0);
    EXPECT_EQ(e2e::readFile(file("g.png")), e2e::readFile(file("f.png"))) << "shown until the next one at 0.52 s";
    Result const next = call({"frame", "@a.ts", "-c", "@c.json", "--at", "0.52", "-o", "@g.png"});
    EXPECT_EQ(next.exitCode, 0);
    EXPECT_NE(e2e::readFile(file("g.png")), e2e::readFile(file("f.png")));
}

struct ContainerRow {
    char const* output;
    int klv;
    char const* remark;
};

class Containers : public Commands, public testing::WithParamInterface<ContainerRow> {};

TEST_P(Containers, CarryPicturesSoundAndTelemetryWhereTheyCan)
{
    ContainerRow const& row = GetParam();
    Result const result = call({"burn", "@a.ts", "-c", "@c.json", "-o", std::string("@") + row.output});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, named(row.remark));
    clip_test::StreamCounts const before = clip_test::packetsOf(file("a.ts"));
    clip_test::StreamCounts const after = clip_test::packetsOf(file(row.output));
    EXPECT_EQ(after.video, 20);
    EXPECT_EQ(after.klv, row.klv);
    EXPECT_EQ(after.sound, before.sound);
    EXPECT_GT(after.sound, 20);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Containers,
    testing::Values(ContainerRow{"k.ts", 20, ""},
                    ContainerRow{"k.mp4", 0,
                                 "stanag-overlay: @k.mp4: mp4 cannot carry KLV; the telemetry stream is left out (.ts "
                                 "carries it, --sidecar writes it to a .klv file)\n"},
                    ContainerRow{"k.mkv", 0,
                                 "stanag-overlay: @k.mkv: matroska cannot carry KLV; the telemetry stream is left out "
                                 "(.ts carries it, --sidecar writes it to a .klv file)\n"}),
    [](auto const& row) { return std::string(row.param.output).substr(2); });

TEST_F(Commands, BurnCopiesTelemetryByteForByteWithItsTimes)
{
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@copy.ts", "--video-codec", "mpeg2video"}).exitCode, 0);
    EXPECT_EQ(call({"keys", "@copy.ts"}).out, call({"keys", "@a.ts"}).out);
    EXPECT_EQ(call({"text", "@copy.ts", "-c", "@c.json"}).out, call({"text", "@a.ts", "-c", "@c.json"}).out);
}

TEST_F(Commands, BurnReplacesAnOlderFileAndLeavesNothingElse)
{
    std::filesystem::create_directory(file("sub"));
    e2e::writeFile(file("sub/o.ts"), "old");
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@sub/o.ts"}).exitCode, 0);
    EXPECT_EQ(clip_test::packetsOf(file("sub/o.ts")).video, 20);
    std::filesystem::directory_iterator const entries(file("sub"));
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST_F(Commands, BurnReadsStandardInputAndWritesStandardOutput)
{
    Result const result = run(inFolder({"burn", "-", "-c", "@c.json", "-o", "-"}), {file("a.ts"), file("piped.ts")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(clip_test::packetsOf(file("piped.ts")).video, 20);
    EXPECT_EQ(clip_test::packetsOf(file("piped.ts")).klv, 20);
}

TEST_F(Commands, BurnSaysWhenThereIsNoTelemetry)
{
    Result const result =
        call({"burn", "@plain.mkv", "-c", "@c.json", "-o", "@plain_out.mkv", "--video-codec", "ffv1"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, named("stanag-overlay: @plain.mkv: no usable telemetry was found: there is no KLV stream\n"));
    EXPECT_EQ(clip_test::packetsOf(file("plain_out.mkv")).video, 10);
}

TEST_F(Commands, BurnStoresOddPicturesInEvenOnesWhereTheEncoderNeedsIt)
{
    Result const result = call(
        {"burn", "@odd.mkv", "-c", "@c.json", "-o", "@odd.mp4", "--telemetry", "@t.jsonl", "--video-codec", "libx264"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, named("stanag-overlay: @odd.mp4: pictures of 35x19 are stored as 36x20, as the encoder takes "
                                "even sizes only\n"));
    auto const pictures = clip_test::picturesOf(file("odd.mp4"));
    ASSERT_EQ(pictures.size(), 5U);
    EXPECT_EQ(pictures.front()->width(), 36U);
    EXPECT_EQ(pictures.front()->height(), 20U);
}

TEST_F(Commands, BurnTakesAQuality)
{
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@fine.mkv", "--crf", "1"}).exitCode, 0);
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@coarse.mkv", "--crf", "45"}).exitCode, 0);
    EXPECT_GT(std::filesystem::file_size(file("fine.mkv")), std::filesystem::file_size(file("coarse.mkv")));
    EXPECT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@rate.mkv", "--bitrate", "500k"}).exitCode, 0);
}

TEST_F(Commands, BurnTakesAPresetAndThreads)
{
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@default.mkv", "--threads", "1"}).exitCode, 0);
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@named.mkv", "--threads", "1", "--preset", "veryfast",
                    "--crf", "20", "--video-codec", "libx264"})
                  .exitCode,
              0);
    ASSERT_EQ(call({"burn", "@a.ts", "-c", "@c.json", "-o", "@ultra.mkv", "--threads", "1", "--preset", "ultrafast"})
                  .exitCode,
              0);
    EXPECT_TRUE(clip_test::samePicture(*clip_test::picturesOf(file("default.mkv")).back(),
                                       *clip_test::picturesOf(file("named.mkv")).back()))
        << "these are the defaults";
    EXPECT_GT(std::filesystem::file_size(file("ultra.mkv")), std::filesystem::file_size(file("default.mkv")));
    Result const other = call(
        {"burn", "@a.ts", "-c", "@c.json", "-o", "@hevc.mkv", "--video-codec", "libx265", "--preset", "ultrafast"});
    EXPECT_EQ(other.exitCode, 0);
    EXPECT_EQ(e2e::linesOf(other.err).size(), 1U) << "the encoder is silent; the telemetry is left out\n" << other.err;
}

TEST_F(Commands, VersionIsOneLine)
{
    Result const result = call({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "stanag-overlay " OVERLAY_VERSION "\n");
}

TEST_F(Commands, HelpNamesTheDefaults)
{
    std::string const help = call({"burn", "--help"}).out;
    for (char const* const text :
         {"libx264 (default)", "veryfast", "(default: 20)", "as many as there are processors"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text;
    }
}

TEST_F(Commands, SampleIsTheSameEveryTimeAndGoesThroughEveryCommand)
{
    Words const sample = {"sample", "@s.ts", "--seconds", "0.4", "--size", "160x90", "--fps", "10"};
    ASSERT_EQ(call(sample).exitCode, 0);
    std::string const first = e2e::readFile(file("s.ts"));
    ASSERT_EQ(call(sample).exitCode, 0);
    EXPECT_EQ(e2e::readFile(file("s.ts")), first);
    Result const keys = call({"keys", "@s.ts"});
    EXPECT_EQ(keys.err, "");
    EXPECT_EQ(e2e::linesOf(keys.out).size(), 4U);
    EXPECT_EQ(clip_test::packetsOf(file("s.ts")).video, 4);
    for (char const* const size : {"1x1", "3x2", "17x9"}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(call({"sample", "@tiny.ts", "--seconds", "0.2", "--size", size, "--fps", "10"}).exitCode, 0);
        EXPECT_EQ(call({"burn", "@tiny.ts", "-c", "@c.json", "-o", "@tiny.mkv", "--video-codec", "ffv1"}).exitCode, 0);
        EXPECT_EQ(clip_test::packetsOf(file("tiny.mkv")).video, 2);
    }
}

}  // namespace
