// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "element_harness.h"

#include "telemetry/telemetry.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace gst_test {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr std::uint8_t kGrey = 128;

}  // namespace

std::string configShowing(std::string const& text)
{
    return R"({"overlay":[{"formatString":")" + text + R"(","decimals":1,"textSize":40,"missingPlaceholder":"-"}]})";
}

void initGStreamer()
{
    static bool const done = [] {
        setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", 1);
        setenv("GST_PLUGIN_PATH_1_0", "", 1);
        setenv("GST_REGISTRY_1_0", "/dev/null", 1);
        gst_init(nullptr, nullptr);
        GError* error = nullptr;
        if (gst_plugin_load_file(GST_ELEMENT_LIBRARY, &error) == nullptr) {
            throw std::runtime_error(error->message);
        }
        return true;
    }();
    static_cast<void>(done);
}

std::vector<std::uint8_t> klvOf(SwJsonObject const& payload)
{
    return telemetry::encodeKlv(payload);
}

GstBuffer* bufferOf(std::vector<std::uint8_t> const& bytes, GstClockTime time)
{
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    GST_BUFFER_PTS(buffer) = time;
    return buffer;
}

GstBuffer* greyPicture(int width, int height, GstClockTime time)
{
    auto const size = static_cast<gsize>((width + 3) / 4 * 4) * static_cast<gsize>((height + 1) / 2 * 3);
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_memset(buffer, 0, kGrey, size);
    GST_BUFFER_PTS(buffer) = time;
    GST_BUFFER_DURATION(buffer) = kFrame;
    return buffer;
}

bool isGrey(GstBuffer* picture)
{
    GstMapInfo map;
    gst_buffer_map(picture, &map, GST_MAP_READ);
    bool const grey = std::all_of(map.data, map.data + map.size, [](std::uint8_t byte) { return byte == kGrey; });
    gst_buffer_unmap(picture, &map);
    return grey;
}

ElementHarness::ElementHarness(Feed feed, int telemetryPads, std::string const& caps)
{
    initGStreamer();
    element_ = gst_element_factory_make("stanagoverlay", nullptr);
    gst_object_ref(element_);
    bus_ = gst_bus_new();
    gst_element_set_bus(element_, bus_);
    set("config", configShowing("%heading_deg"));
    video_ = gst_harness_new_with_element(element_, "sink", "src");
    for (int pad = 0; pad < telemetryPads; ++pad) {
        klv_.push_back(gst_harness_new_with_element(element_, ("klv_" + std::to_string(pad)).c_str(), nullptr));
    }
    if (feed == Feed::Recording) {
        gst_harness_set_live(video_, FALSE);
    }
    for (GstHarness* const klv : klv_) {
        gst_harness_set_src_caps_str(klv, "meta/x-klv");
    }
    gst_harness_set_src_caps_str(video_, caps.c_str());
}

ElementHarness::~ElementHarness()
{
    gst_element_set_state(element_, GST_STATE_NULL);
    for (GstHarness* const klv : klv_) {
        gst_harness_teardown(klv);
    }
    gst_harness_teardown(video_);
    gst_element_set_bus(element_, nullptr);
    gst_object_unref(bus_);
    gst_object_unref(element_);
}

GstBuffer* ElementHarness::draw(GstClockTime time)
{
    gst_harness_push(video_, greyPicture(kWidth, kHeight, time));
    return gst_harness_pull(video_);
}

std::string ElementHarness::textsAt(GstClockTime time)
{
    GstBuffer* const picture = draw(time);
    if (picture == nullptr) {
        return "no picture";
    }
    std::string const shown = texts();
    // What is told is what is there.
    bool const untouched = isGrey(picture);
    gst_buffer_unref(picture);
    return shown.empty() == untouched ? shown : "texts and picture differ";
}

std::string ElementHarness::texts()
{
    GstStructure* all = nullptr;
    g_signal_emit_by_name(element_, "get-draws", &all);
    GValue const* const draws = gst_structure_get_value(all, "draws");
    std::string texts;
    for (guint number = 0; number < gst_value_list_get_size(draws); ++number) {
        auto const* const draw =
            static_cast<GstStructure const*>(g_value_get_boxed(gst_value_list_get_value(draws, number)));
        texts += (texts.empty() ? "" : "|") + std::string(gst_structure_get_string(draw, "text"));
    }
    gst_structure_free(all);
    return texts;
}

GstFlowReturn ElementHarness::pushKlv(SwJsonObject const& payload, GstClockTime time, std::size_t number)
{
    return gst_harness_push(klv_[number], bufferOf(klvOf(payload), time));
}

GstFlowReturn ElementHarness::pushHeading(double degrees, GstClockTime time, std::size_t number)
{
    return pushKlv({{"heading_deg", degrees}}, time, number);
}

void ElementHarness::set(char const* property, std::string const& value)
{
    gst_util_set_object_arg(G_OBJECT(element_), property, value.c_str());
}

guint64 ElementHarness::number(char const* property)
{
    guint64 value = 0;
    g_object_get(element_, property, &value, nullptr);
    return value;
}

std::string ElementHarness::text(char const* property)
{
    char* value = nullptr;
    g_object_get(element_, property, &value, nullptr);
    std::string const text = value == nullptr ? "" : value;
    g_free(value);
    return text;
}

std::string ElementHarness::takeMessage(GstMessageType types)
{
    GstMessage* const message = gst_bus_pop_filtered(bus_, types);
    if (message == nullptr) {
        return "";
    }
    GError* error = nullptr;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
        gst_message_parse_warning(message, &error, nullptr);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        gst_message_parse_error(message, &error, nullptr);
    }
    std::string const text = error == nullptr ? gst_message_type_get_name(GST_MESSAGE_TYPE(message)) : error->message;
    g_clear_error(&error);
    gst_message_unref(message);
    return text;
}

}  // namespace gst_test
