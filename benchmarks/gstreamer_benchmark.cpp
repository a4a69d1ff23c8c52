// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the element adds to a pipeline: processor time per picture of 1080 lines with six changing blocks of three
// lines, against textoverlay elements with the same texts and against an element that does nothing.
//   gstreamer_benchmark [FRAMES]
#include "SwJson.h"
#include "telemetry/telemetry.h"

#include <gst/check/gstharness.h>
#include <gst/gst.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kBlocks = 6;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr char const* kCaps = "video/x-raw,format=NV12,width=1920,height=1080,framerate=30/1";
constexpr GstClockTime kFrame = GST_SECOND / 30;

std::string config()
{
    std::string blocks;
    for (int block = 0; block < kBlocks; ++block) {
        std::string const x = std::to_string((block % 2 == 0 ? 24 : 760) / static_cast<double>(kWidth));
        std::string const y = std::to_string((24 + 176 * block) / static_cast<double>(kHeight));
        blocks +=
            (block == 0 ? "" : ",") +
            (R"({"formatString":"Sensor )" + std::to_string(block + 1) +
             R"(  Lat %sensor_lat_deg N  Lon %sensor_lon_deg E  Alt %sensor_alt_m m\nHdg %heading_deg  Pitch %pitch_deg  )"
             R"(Roll %roll_deg  HFOV %hfov_deg\nTarget %frame_center_lat_deg N  %frame_center_lon_deg E  Slant range )"
             R"(%measured_slant_range_m m","textSize":28,"bgAlpha":0.5,"decimals":6,"position":{"x":)" +
             x + R"(,"y":)" + y + "}}");
    }
    return R"({"overlay":[)" + blocks + "]}";
}

std::vector<std::uint8_t> telemetryOf(int frame)
{
    double const t = frame;
    return telemetry::encodeKlv({{"sensor_lat_deg", 48.85837 + t * 1.3e-5},
                                 {"sensor_lon_deg", 2.294481 + t * 2.1e-5},
                                 {"sensor_alt_m", 1250.5 + t * 0.7},
                                 {"heading_deg", static_cast<double>(frame * 11 % 36000) / 100.0},
                                 {"pitch_deg", 1 + t / 700.0},
                                 {"roll_deg", 2 + t / 900.0},
                                 {"hfov_deg", 30 + t / 500.0},
                                 {"frame_center_lat_deg", 48.9 + t * 1.7e-5},
                                 {"frame_center_lon_deg", 2.31 + t * 1.1e-5},
                                 {"measured_slant_range_m", 4200.0 + t / 10.0}});
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

GstElement* make(char const* name)
{
    GstElement* const element = gst_element_factory_make(name, nullptr);
    if (element == nullptr) {
        throw std::runtime_error(std::string(name) + ": no such element");
    }
    return element;
}

/// An element, or several in a row, through which pictures are pushed.
class Way {
public:
    Way(GstElement* element, char const* sink) : harness_(gst_harness_new_with_element(element, sink, "src"))
    {
        gst_harness_set_src_caps_str(harness_, kCaps);
    }
    /// The picture is drawn on, again and again; a grey one would do nobody a favour but none is needed either.
    double push(int frame)
    {
        gsize const size = std::size_t{kWidth} * kHeight * 3 / 2;
        memory_.resize(size, 100);
        GstBuffer* const picture =
            gst_buffer_new_wrapped_full(GstMemoryFlags(0), memory_.data(), size, 0, size, nullptr, nullptr);
        GST_BUFFER_PTS(picture) = static_cast<GstClockTime>(frame) * kFrame;
        GST_BUFFER_DURATION(picture) = kFrame;
        double const began = processorSeconds();
        GstBuffer* const drawn = gst_harness_push_and_pull(harness_, picture);
        double const took = processorSeconds() - began;
        gst_buffer_unref(drawn);
        return took;
    }

private:
    GstHarness* harness_;  // to the end of the process
    std::vector<std::uint8_t> memory_;
};

struct Overlays {
    GstElement* bin = gst_bin_new(nullptr);
    std::vector<GstElement*> texts;

    explicit Overlays(char const* name, int count)
    {
        for (int block = 0; block < count; ++block) {
            GstElement* const overlay = make(name);
            g_object_set(overlay, "xpad", block % 2 == 0 ? 24 : 760, "ypad", 24 + 176 * block, "font-desc",
                         "DejaVu Sans 28px", "shaded-background", TRUE, "draw-shadow", FALSE, "draw-outline", FALSE,
                         "auto-resize", FALSE, nullptr);
            for (char const* const setting : {"halignment", "line-alignment"}) {
                gst_util_set_object_arg(G_OBJECT(overlay), setting, "left");
            }
            gst_util_set_object_arg(G_OBJECT(overlay), "valignment", "top");
            gst_util_set_object_arg(G_OBJECT(overlay), "wrap-mode", "none");
            gst_bin_add(GST_BIN(bin), overlay);
            if (!texts.empty()) {
                gst_element_link_pads(texts.back(), "src", overlay, "video_sink");
            }
            texts.push_back(overlay);
        }
        addGhost("sink", texts.front(), "video_sink");
        addGhost("src", texts.back(), "src");
    }
    void addGhost(char const* name, GstElement* element, char const* padName) const
    {
        GstPad* const pad = gst_element_get_static_pad(element, padName);
        gst_element_add_pad(bin, gst_ghost_pad_new(name, pad));
        gst_object_unref(pad);
    }
};

std::vector<std::string> textsOf(GstElement* element)
{
    GstStructure* all = nullptr;
    g_signal_emit_by_name(element, "get-draws", &all);
    GValue const* const draws = gst_structure_get_value(all, "draws");
    std::vector<std::string> texts;
    for (guint number = 0; number < gst_value_list_get_size(draws); ++number) {
        auto const* const draw =
            static_cast<GstStructure const*>(g_value_get_boxed(gst_value_list_get_value(draws, number)));
        texts.emplace_back(gst_structure_get_string(draw, "text"));
    }
    gst_structure_free(all);
    return texts;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void run(int frames)
{
    GstElement* const overlay = make("stanagoverlay");
    g_object_set(overlay, "config", config().c_str(), nullptr);
    GstHarness* const klv = gst_harness_new_with_element(overlay, "klv_0", nullptr);
    gst_harness_set_src_caps_str(klv, "meta/x-klv");
    Way ours(overlay, "sink");
    Overlays blocks("textoverlay", kBlocks);
    Overlays clock("timeoverlay", 1);
    Way texts(blocks.bin, "sink");
    Way time(clock.bin, "sink");
    Way nothing(make("identity"), "sink");

    std::vector<double> oursTimes;
    std::vector<double> textTimes;
    std::vector<double> clockTimes;
    std::vector<double> nothingTimes;
    for (int frame = 0; frame < frames; ++frame) {
        std::vector<std::uint8_t> bytes = telemetryOf(frame);
        GstBuffer* const packet = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
        gst_buffer_fill(packet, 0, bytes.data(), bytes.size());
        GST_BUFFER_PTS(packet) = static_cast<GstClockTime>(frame) * kFrame;
        double const began = processorSeconds();
        gst_harness_push(klv, packet);
        double const telemetry = processorSeconds() - began;
        oursTimes.push_back(telemetry + ours.push(frame));
        std::vector<std::string> const shown = textsOf(overlay);
        if (shown.size() != kBlocks) {
            throw std::runtime_error("not all blocks are drawn");
        }
        double const setting = processorSeconds();
        for (std::size_t block = 0; block < shown.size(); ++block) {
            g_object_set(blocks.texts[block], "text", shown[block].c_str(), nullptr);
        }
        double const set = processorSeconds() - setting;
        textTimes.push_back(set + texts.push(frame));
        clockTimes.push_back(time.push(frame));
        nothingTimes.push_back(nothing.push(frame));
    }
    double const base = median(nothingTimes);
    double const own = median(oursTimes);
    std::printf("| elements | ms of processor time per picture | times `stanagoverlay` |\n| --- | ---: | ---: |\n");
    auto const row = [own](char const* name, double seconds) {
        std::printf("| %s | %.4f | %.1f |\n", name, seconds * 1e3, seconds / own);
    };
    row("`stanagoverlay`, six blocks, telemetry decoded", own);
    row("six `textoverlay` with the same texts", median(textTimes));
    row("one `timeoverlay`", median(clockTimes));
    row("`identity`", base);
}

}  // namespace

int main(int argc, char** argv)
{
    setenv("GST_PLUGIN_PATH_1_0", GST_ELEMENT_FOLDER, 1);
    gst_init(nullptr, nullptr);
    try {
        run(argc > 1 ? std::atoi(argv[1]) : 300);
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "gstreamer_benchmark: %s\n", failure.what());
        return 1;
    }
    return 0;
}
