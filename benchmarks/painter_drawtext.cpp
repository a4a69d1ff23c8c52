// FFmpeg's drawtext as an opponent: one filter for each block in a graph of one thread, drawing in place. The texts
// come in as the frame's metadata, the way that needs no new filter when they change.
#include "painter_scene.h"

#include <array>
#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

namespace painter_bench {
namespace {

struct GraphFree {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

void check(int result, char const* what)
{
    if (result < 0) {
        throw std::runtime_error(std::string("drawtext: ") + what + " failed");
    }
}

class Drawtext : public Drawer {
public:
    explicit Drawtext(Scene const& scene)
    {
        av_log_set_level(AV_LOG_ERROR);
        graph_->nb_threads = 1;
        source_ = add("buffer");
        auto const size = std::to_string(scene.width()) + "x" + std::to_string(scene.height());
        check(avfilter_init_str(source_, ("video_size=" + size + ":pix_fmt=nv12:time_base=1/30").c_str()), "buffer");
        AVFilterContext* last = source_;
        for (int block = 0; block < kBlocks; ++block) {
            AVFilterContext* const filter = add("drawtext");
            set(filter, "text", "%{metadata:" + keyOf(block) + "}");
            set(filter, "font", "DejaVu Sans");
            set(filter, "fontsize", std::to_string(scene.textSize()));
            set(filter, "fontcolor", "white");
            set(filter, "x", std::to_string(scene.left(block)));
            set(filter, "y", std::to_string(scene.top(block)));
            set(filter, "box", "1");
            set(filter, "boxcolor", "black@0.5");
            set(filter, "boxborderw", std::to_string(scene.margin()));
            check(avfilter_init_str(filter, nullptr), "drawtext");
            check(avfilter_link(last, 0, filter, 0), "linking drawtext");
            last = filter;
        }
        sink_ = add("buffersink");
        check(avfilter_init_str(sink_, nullptr), "buffersink");
        check(avfilter_link(last, 0, sink_, 0), "linking the sink");
        check(avfilter_graph_config(graph_.get(), nullptr), "configuring the graph");
    }

    void draw(MappedNV12 const& planes, Texts const& texts) override
    {
        std::unique_ptr<AVFrame, FrameFree> const picture(av_frame_alloc());
        picture->format = AV_PIX_FMT_NV12;
        picture->width = planes.width;
        picture->height = planes.height;
        picture->pts = next_++;
        picture->data[0] = planes.y;
        picture->data[1] = planes.uv;
        picture->linesize[0] = planes.yStride;
        picture->linesize[1] = planes.uvStride;
        picture->buf[0] = av_buffer_create(
            planes.y, PictureRing::bytesOf(planes), [](void*, std::uint8_t*) {}, nullptr, 0);
        for (int block = 0; block < kBlocks; ++block) {
            av_dict_set(&picture->metadata, keyOf(block).c_str(), texts[static_cast<std::size_t>(block)].c_str(), 0);
        }
        check(av_buffersrc_add_frame_flags(source_, picture.get(), 0), "sending the picture");
        check(av_buffersink_get_frame(sink_, picture.get()), "taking the picture back");
        if (picture->data[0] != planes.y) {
            throw std::runtime_error("drawtext: the picture was copied");
        }
    }

private:
    static std::string keyOf(int block) { return "block" + std::to_string(block); }

    AVFilterContext* add(char const* name)
    {
        AVFilterContext* const filter = avfilter_graph_alloc_filter(graph_.get(), avfilter_get_by_name(name), nullptr);
        check(filter == nullptr ? -1 : 0, name);
        return filter;
    }
    static void set(AVFilterContext* filter, char const* option, std::string const& value)
    {
        check(av_opt_set(filter, option, value.c_str(), AV_OPT_SEARCH_CHILDREN), option);
    }

    std::unique_ptr<AVFilterGraph, GraphFree> graph_{avfilter_graph_alloc()};
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    std::int64_t next_ = 0;
};

}  // namespace

std::unique_ptr<Drawer> makeDrawtext(Scene const& scene)
{
    return std::make_unique<Drawtext>(scene);
}

}  // namespace painter_bench
