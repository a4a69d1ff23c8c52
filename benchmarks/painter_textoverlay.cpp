// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// GStreamer's textoverlay as an opponent: one element for each block, driven without a pipeline's threads by the
// harness that GStreamer tests its elements with.
#include "painter_scene.h"

#include <gst/check/gstharness.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace painter_bench {
namespace {

class Textoverlay : public Drawer {
public:
    explicit Textoverlay(Scene const& scene) : scene_(scene)
    {
        gst_init(nullptr, nullptr);
        GstElement* const bin = gst_bin_new(nullptr);
        for (int block = 0; block < kBlocks; ++block) {
            GstElement* const overlay = gst_element_factory_make("textoverlay", nullptr);
            if (overlay == nullptr) {
                throw std::runtime_error("textoverlay: install gstreamer1.0-x");
            }
            auto const font = "DejaVu Sans " + std::to_string(scene.textSize()) + "px";
            g_object_set(overlay, "xpad", scene.left(block), "ypad", scene.top(block), "font-desc", font.c_str(),
                         "shaded-background", TRUE, "shading-value", 60U, "draw-shadow", FALSE, "draw-outline", FALSE,
                         "auto-resize", FALSE, nullptr);
            for (auto const& [option, value] : {std::pair{"halignment", "left"},
                                                {"valignment", "top"},
                                                {"line-alignment", "left"},
                                                {"wrap-mode", "none"}}) {
                gst_util_set_object_arg(G_OBJECT(overlay), option, value);
            }
            gst_bin_add(GST_BIN(bin), overlay);
            if (!overlays_.empty()) {
                gst_element_link_pads(overlays_.back(), "src", overlay, "video_sink");
            }
            overlays_.push_back(overlay);
        }
        addGhost(bin, "sink", overlays_.front(), "video_sink");
        addGhost(bin, "src", overlays_.back(), "src");
        harness_ = gst_harness_new_with_element(bin, "sink", "src");
        std::ostringstream caps;
        caps << "video/x-raw,format=NV12,framerate=30/1,width=" << scene.width() << ",height=" << scene.height();
        gst_harness_set_src_caps_str(harness_, caps.str().c_str());
        for (int block = 0; block < kBlocks; ++block) {
            setText(block, textsOf(scene, 0));
        }
    }
    ~Textoverlay() override { gst_harness_teardown(harness_); }
    Textoverlay(Textoverlay const&) = delete;
    Textoverlay& operator=(Textoverlay const&) = delete;

    void draw(MappedNV12 const& planes, Texts const& texts) override
    {
        if (scene_.isChanging) {
            for (int block = 0; block < kBlocks; ++block) {
                setText(block, texts);
            }
        }
        std::size_t const bytes = PictureRing::bytesOf(planes);
        GstBuffer* const buffer =
            gst_buffer_new_wrapped_full(GstMemoryFlags(0), planes.y, bytes, 0, bytes, nullptr, nullptr);
        gsize offsets[GST_VIDEO_MAX_PLANES] = {0, static_cast<gsize>(planes.uv - planes.y)};
        gint strides[GST_VIDEO_MAX_PLANES] = {planes.yStride, planes.uvStride};
        gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12,
                                       static_cast<guint>(planes.width), static_cast<guint>(planes.height), 2, offsets,
                                       strides);
        GST_BUFFER_PTS(buffer) = next_;
        GST_BUFFER_DURATION(buffer) = kFrame;
        next_ += kFrame;
        GstBuffer* const drawn = gst_harness_push_and_pull(harness_, buffer);
        if (drawn == nullptr) {
            throw std::runtime_error("textoverlay: no picture came back");
        }
        GstMapInfo map;
        gst_buffer_map(drawn, &map, GST_MAP_READ);
        bool const isInPlace = map.data == planes.y;
        gst_buffer_unmap(drawn, &map);
        gst_buffer_unref(drawn);
        if (!isInPlace) {
            throw std::runtime_error("textoverlay: the picture was copied");
        }
    }

private:
    static constexpr GstClockTime kFrame = GST_SECOND / 30;

    static void addGhost(GstElement* bin, char const* name, GstElement* overlay, char const* padName)
    {
        GstPad* const pad = gst_element_get_static_pad(overlay, padName);
        gst_element_add_pad(bin, gst_ghost_pad_new(name, pad));
        gst_object_unref(pad);
    }

    void setText(int block, Texts const& texts)
    {
        auto const i = static_cast<std::size_t>(block);
        g_object_set(overlays_[i], "text", texts[i].c_str(), nullptr);
    }

    Scene scene_;
    GstHarness* harness_ = nullptr;
    std::vector<GstElement*> overlays_;  // owned by the bin
    GstClockTime next_ = 0;
};

}  // namespace

std::unique_ptr<Drawer> makeTextoverlay(Scene const& scene)
{
    return std::make_unique<Textoverlay>(scene);
}

}  // namespace painter_bench
