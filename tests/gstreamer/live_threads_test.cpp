// A live pipeline whose every part has a thread of its own: video, two streams of telemetry, properties, the sink,
// seeks and states. For ThreadSanitizer.
#include "element_harness.h"

#include <gst/app/gstappsrc.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using gst_test::configShowing;

constexpr int kPictures = 60;

GstElement* described(std::string const& description)
{
    GError* error = nullptr;
    GstElement* const pipeline = gst_parse_launch(description.c_str(), &error);
    EXPECT_EQ(error, nullptr) << error->message;
    return pipeline;
}

void sendTelemetry(GstElement* pipeline, char const* name)
{
    GstElement* const source = gst_bin_get_by_name(GST_BIN(pipeline), name);
    for (int packet = 0; packet < kPictures; ++packet) {
        GstBuffer* const buffer = gst_test::bufferOf(gst_test::klvOf({{"heading_deg", 1.0 * packet}}),
                                                     static_cast<GstClockTime>(packet) * gst_test::kFrame);
        gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
        g_usleep(5000);
    }
    gst_app_src_end_of_stream(GST_APP_SRC(source));
    gst_object_unref(source);
}

TEST(LiveThreads, VideoTelemetryPropertiesAndStatesAtOnce)
{
    gst_test::initGStreamer();
    for (char const* const name : {"coreelements", "app", "videotestsrc"}) {
        GError* error = nullptr;
        std::string const file = std::string(GST_SYSTEM_PLUGINS "/libgst") + name + ".so";
        ASSERT_NE(gst_plugin_load_file(file.c_str(), &error), nullptr) << error->message;
    }
    GstElement* const pipeline = described(
        "videotestsrc is-live=true num-buffers=" + std::to_string(kPictures) +
        " ! video/x-raw,format=NV12,width=320,height=240,framerate=100/1 ! queue ! stanagoverlay name=o ! queue ! "
        "fakesink sync=true  appsrc name=a is-live=true format=time caps=meta/x-klv ! o.  "
        "appsrc name=b is-live=true format=time caps=meta/x-klv ! queue ! o.");
    ASSERT_NE(pipeline, nullptr);
    GstElement* const overlay = gst_bin_get_by_name(GST_BIN(pipeline), "o");
    GstBus* const bus = gst_element_get_bus(pipeline);
    for (int run = 0; run < 2; ++run) {
        g_object_set(overlay, "config", configShowing("%heading_deg").c_str(), nullptr);
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        std::vector<std::thread> threads;
        threads.emplace_back(sendTelemetry, pipeline, "a");
        threads.emplace_back(sendTelemetry, pipeline, "b");
        threads.emplace_back([overlay] {
            for (unsigned change = 0; change < kPictures; ++change) {
                std::string const text = configShowing("%heading_deg" + std::string(change % 3, '.'));
                GstStructure* draws = nullptr;
                char* schema = nullptr;
                g_object_set(overlay, "config", text.c_str(), "max-age", guint64{change}, nullptr);
                g_object_get(overlay, "schema", &schema, nullptr);
                g_signal_emit_by_name(overlay, "get-draws", &draws);
                gst_structure_free(draws);
                g_free(schema);
                g_usleep(5000);
            }
        });
        GstMessage* const message = gst_bus_timed_pop_filtered(
            bus, 60 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(GST_MESSAGE_TYPE(message), GST_MESSAGE_EOS);
        gst_message_unref(message);
        for (std::thread& thread : threads) {
            thread.join();
        }
        guint64 drawn = 0;
        g_object_get(overlay, "frames-drawn", &drawn, nullptr);
        EXPECT_GT(drawn, 0U);
        gst_element_set_state(pipeline, GST_STATE_NULL);
    }
    gst_object_unref(bus);
    gst_object_unref(overlay);
    gst_object_unref(pipeline);
}

}  // namespace
