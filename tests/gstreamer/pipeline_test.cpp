// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element in real pipelines, beside the plugins of the system: recorded clips file to file, equal to what the
// program burns.
#include "Picture.h"
#include "clips.h"
#include "imaging/imaging_access.h"
#include "recorded_clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr char const* kConfig = OVERLAY_SOURCE_DIR "/examples/full_screen_hud.json";

void initGStreamer()
{
    static bool const done = [] {
        std::string const registry = GST_ELEMENT_FOLDER "/test_registry.bin";
        setenv("GST_PLUGIN_PATH_1_0", GST_ELEMENT_FOLDER, 1);
        setenv("GST_REGISTRY_1_0", registry.c_str(), 1);
        gst_init(nullptr, nullptr);
        return true;
    }();
    static_cast<void>(done);
}

constexpr int kFlightPictures = 150;

/// Five seconds with telemetry for every picture.
std::string madeFlight(media_test::TempFolder const& folder)
{
    std::string path = folder.file("flight.ts");
    EXPECT_EQ(e2e::run({"sample", path, "--seconds", "5", "--fps", "30", "--size", "320x240"}).exitCode, 0);
    return path;
}

/// A pipeline as it is described to gst-launch-1.0.
class Pipeline {
public:
    explicit Pipeline(std::string const& description)
    {
        initGStreamer();
        GError* error = nullptr;
        pipeline_ = gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error);
        if (pipeline_ == nullptr) {
            ADD_FAILURE() << error->message;
            g_error_free(error);
            return;
        }
        gst_element_set_state(pipeline_, GST_STATE_PLAYING);
    }
    ~Pipeline()
    {
        if (pipeline_ != nullptr) {
            gst_element_set_state(pipeline_, GST_STATE_NULL);
            gst_object_unref(pipeline_);
        }
    }
    Pipeline(Pipeline const&) = delete;
    Pipeline& operator=(Pipeline const&) = delete;

    GstElement* get() { return pipeline_; }
    GstElement* element(char const* name)
    {
        GstElement* const element = gst_bin_get_by_name(GST_BIN(pipeline_), name);
        gst_object_unref(element);  // the pipeline keeps it
        return element;
    }
    /// "eos", or what went wrong.
    std::string finish(GstClockTime patience = 60 * GST_SECOND)
    {
        GstBus* const bus = gst_element_get_bus(pipeline_);
        auto const types = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
        GstMessage* const message = gst_bus_timed_pop_filtered(bus, patience, types);
        gst_object_unref(bus);
        if (message == nullptr) {
            return "stalled";
        }
        std::string text = "eos";
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
            GError* error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            text = error->message;
            g_error_free(error);
        }
        gst_message_unref(message);
        return text;
    }

private:
    GstElement* pipeline_ = nullptr;
};

struct Clip {
    char const* name;
    char const* decode;
    std::size_t pictures;
};

class RecordedClip : public testing::TestWithParam<Clip> {};

/// Whether a sample's picture is that of the program.
bool isSame(GstSample* sample, zelvo::ZelvoPicture& picture)
{
    GstVideoInfo info;
    GstVideoFrame frame;
    gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
    gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ);
    MappedNV12 const planes = imaging::planesOf(picture);
    bool same = info.width == planes.width && info.height == planes.height;
    for (int row = 0; same && row < planes.height; ++row) {
        same = std::memcmp(static_cast<std::uint8_t*>(frame.data[0]) + row * info.stride[0],
                           planes.y + std::ptrdiff_t{row} * planes.yStride, static_cast<std::size_t>(info.width)) == 0;
    }
    for (int row = 0; same && row < (planes.height + 1) / 2; ++row) {
        same =
            std::memcmp(static_cast<std::uint8_t*>(frame.data[1]) + row * info.stride[1],
                        planes.uv + std::ptrdiff_t{row} * planes.uvStride, static_cast<std::size_t>(info.width)) == 0;
    }
    gst_video_frame_unmap(&frame);
    return same;
}

TEST_P(RecordedClip, LooksAsTheProgramBurnsIt)
{
    Clip const& clip = GetParam();
    std::string const input = e2e::recordedClip(clip.name);
    if (!std::filesystem::exists(input)) {
        GTEST_SKIP() << "recorded data is missing: " << input << " (set OVERLAY_RECORDED_DATA)";
    }
    media_test::TempFolder const folder;
    std::string const burnt = folder.file("burnt.nut");
    e2e::Result const result = e2e::run({"burn", input, "-c", kConfig, "-o", burnt, "--video-codec", "rawvideo"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    auto const expected = clip_test::picturesOf(burnt);
    ASSERT_EQ(expected.size(), clip.pictures);

    Pipeline pipeline("filesrc location=" + input + " ! tsdemux name=d  d. ! " + clip.decode +
                      " ! videoconvert ! queue ! stanagoverlay name=o telemetry-timeout=20000000000 config-file=" +
                      kConfig + " ! appsink name=s sync=false  d. ! meta/x-klv ! queue ! o.");
    auto* const sink = GST_APP_SINK(pipeline.element("s"));
    for (std::size_t number = 0; number < expected.size(); ++number) {
        GstSample* const sample = gst_app_sink_try_pull_sample(sink, 30 * GST_SECOND);
        ASSERT_NE(sample, nullptr) << number;
        EXPECT_TRUE(isSame(sample, *expected[number])) << number;
        gst_sample_unref(sample);
    }
    EXPECT_EQ(gst_app_sink_try_pull_sample(sink, 30 * GST_SECOND), nullptr);
    EXPECT_TRUE(gst_app_sink_is_eos(sink));
}

INSTANTIATE_TEST_SUITE_P(Clips, RecordedClip,
                         testing::Values(Clip{"osh_sim_640x480_h264_klv06.ts", "h264parse ! avdec_h264", 277},
                                         Clip{"mux_car_768x432_osh_klv_30hz.ts", "h264parse ! avdec_h264", 115},
                                         Clip{"kwiver_aphill_720x480i_h264_eg0104.ts", "h264parse ! avdec_h264", 48}),
                         [](auto const& row) {
                             return std::string(row.param.name).substr(0, std::string(row.param.name).find('_'));
                         });

TEST(Pipeline, GoesFromFileToFileWithoutQueueBeforeTheElement)
{
    media_test::TempFolder const folder;
    std::string const input = madeFlight(folder);
    std::string const output = folder.file("out.mkv");
    {
        Pipeline pipeline("filesrc location=" + input +
                          " ! tsdemux name=d  d. ! h264parse ! avdec_h264 ! videoconvert ! stanagoverlay name=o "
                          "config-file=" +
                          kConfig + " ! videoconvert ! jpegenc ! matroskamux ! filesink location=" + output +
                          "  d. ! meta/x-klv ! queue ! o.");
        EXPECT_EQ(pipeline.finish(), "eos");
        guint64 drawn = 0;
        g_object_get(pipeline.element("o"), "frames-drawn", &drawn, nullptr);
        EXPECT_GT(drawn, 100U);
    }
    EXPECT_EQ(clip_test::packetsOf(output).video, kFlightPictures);
}

TEST(Pipeline, TelemetryThatNeverComesAndNeverEndsDoesNotStall)
{
    Pipeline pipeline(
        "videotestsrc num-buffers=50 ! video/x-raw,format=NV12,width=64,height=48 ! stanagoverlay name=o ! "
        "fakesink sync=true  appsrc caps=meta/x-klv ! o.");
    EXPECT_EQ(pipeline.finish(20 * GST_SECOND), "eos");
}

TEST(Pipeline, LivePicturesGoOnTimeWithoutTelemetry)
{
    Pipeline pipeline(
        "videotestsrc is-live=true num-buffers=50 ! video/x-raw,format=NV12,width=64,height=48 ! "
        "stanagoverlay name=o ! fakesink name=s sync=true qos=true  appsrc is-live=true caps=meta/x-klv ! o.");
    EXPECT_EQ(pipeline.finish(20 * GST_SECOND), "eos");
    GstStructure* stats = nullptr;
    g_object_get(pipeline.element("s"), "stats", &stats, nullptr);
    guint64 dropped = 1;
    gst_structure_get_uint64(stats, "dropped", &dropped);
    EXPECT_EQ(dropped, 0U);
    gst_structure_free(stats);
}

TEST(Pipeline, GoesUpAndDownAgainAndAgain)
{
    Pipeline pipeline(
        "videotestsrc num-buffers=30 ! video/x-raw,format=NV12,width=64,height=48 ! stanagoverlay name=o ! "
        "fakesink sync=true  fakesrc num-buffers=9 sizetype=fixed filltype=zero ! meta/x-klv ! queue ! o.");
    for (GstState const state : {GST_STATE_PAUSED, GST_STATE_PLAYING, GST_STATE_NULL, GST_STATE_PLAYING,
                                 GST_STATE_READY, GST_STATE_PAUSED, GST_STATE_NULL, GST_STATE_PLAYING}) {
        gst_element_set_state(pipeline.get(), state);
        EXPECT_EQ(gst_element_get_state(pipeline.get(), nullptr, nullptr, 20 * GST_SECOND), GST_STATE_CHANGE_SUCCESS);
    }
    EXPECT_EQ(pipeline.finish(), "eos");
}

TEST(Pipeline, SeeksWhileItPlays)
{
    media_test::TempFolder const folder;
    Pipeline pipeline("filesrc location=" + madeFlight(folder) +
                      " ! tsdemux name=d  d. ! queue ! h264parse ! avdec_h264 ! videoconvert ! stanagoverlay name=o "
                      "config-file=" +
                      kConfig + " ! fakesink sync=true  d. ! meta/x-klv ! queue ! o.");
    for (gint64 const time : {2 * GST_SECOND, GST_SECOND, 4 * GST_SECOND}) {
        EXPECT_EQ(gst_element_get_state(pipeline.get(), nullptr, nullptr, 20 * GST_SECOND), GST_STATE_CHANGE_SUCCESS);
        EXPECT_TRUE(gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, time));
    }
    EXPECT_EQ(pipeline.finish(), "eos");
    guint64 drawn = 0;
    g_object_get(pipeline.element("o"), "frames-drawn", &drawn, nullptr);
    EXPECT_GT(drawn, 10U);
}

}  // namespace
