// buffer -> drawtext -> ... -> drawtext -> buffersink, and one frame that passes through again and again.
#include "drawtext_opponent.h"

#include <cstring>
#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

void check(int result, char const* what)
{
    if (result < 0) {
        throw std::runtime_error(std::string("drawtext opponent: ") + what + " failed");
    }
}

struct GraphDeleter {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};

struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

void setOption(AVFilterContext* filter, char const* name, std::string const& value)
{
    check(av_opt_set(filter, name, value.c_str(), AV_OPT_SEARCH_CHILDREN), name);
}

std::unique_ptr<AVFrame, FrameDeleter> grayFrame()
{
    std::unique_ptr<AVFrame, FrameDeleter> frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_NV12;
    frame->width = kWidth;
    frame->height = kHeight;
    check(av_frame_get_buffer(frame.get(), 0), "allocating the picture");
    std::memset(frame->data[0], 128, static_cast<std::size_t>(frame->linesize[0]) * kHeight);
    std::memset(frame->data[1], 128, static_cast<std::size_t>(frame->linesize[1]) * kHeight / 2);
    return frame;
}

}  // namespace

struct DrawtextOpponent::Graph {
    AVFilterContext* add(char const* filterName, char const* name) const
    {
        AVFilterContext* const context =
            avfilter_graph_alloc_filter(graph.get(), avfilter_get_by_name(filterName), name);
        check(context == nullptr ? -1 : 0, filterName);
        return context;
    }

    std::unique_ptr<AVFilterGraph, GraphDeleter> graph{avfilter_graph_alloc()};
    std::unique_ptr<AVFrame, FrameDeleter> frame = grayFrame();
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;
};

DrawtextOpponent::DrawtextOpponent(std::vector<DrawtextBlock> const& blocks, std::string const& font)
    : graph_(std::make_unique<Graph>())
{
    av_log_set_level(AV_LOG_ERROR);
    graph_->graph->nb_threads = 1;
    graph_->source = graph_->add("buffer", "source");
    std::string const size = std::to_string(kWidth) + "x" + std::to_string(kHeight);
    check(avfilter_init_str(graph_->source, ("video_size=" + size + ":pix_fmt=nv12:time_base=1/30").c_str()), "buffer");
    AVFilterContext* last = graph_->source;
    for (DrawtextBlock const& block : blocks) {
        AVFilterContext* const filter = graph_->add("drawtext", nullptr);
        setOption(filter, "text", block.text);
        setOption(filter, "expansion", "none");
        setOption(filter, "font", font);
        setOption(filter, "fontsize", std::to_string(block.fontSize));
        setOption(filter, "fontcolor", "white");
        setOption(filter, "x", std::to_string(block.x));
        setOption(filter, "y", std::to_string(block.y));
        setOption(filter, "box", "1");
        setOption(filter, "boxcolor", "black@0.5");
        setOption(filter, "boxborderw", "5");
        check(avfilter_init_str(filter, nullptr), "drawtext");
        check(avfilter_link(last, 0, filter, 0), "linking drawtext");
        last = filter;
    }
    graph_->sink = graph_->add("buffersink", "sink");
    check(avfilter_init_str(graph_->sink, nullptr), "buffersink");
    check(avfilter_link(last, 0, graph_->sink, 0), "linking the sink");
    check(avfilter_graph_config(graph_->graph.get(), nullptr), "configuring the filters");
}

DrawtextOpponent::~DrawtextOpponent() = default;

void DrawtextOpponent::drawFrame()
{
    // The graph takes the only reference to the picture and gives it back: it stays writable throughout.
    ++graph_->frame->pts;
    check(av_buffersrc_add_frame_flags(graph_->source, graph_->frame.get(), 0), "sending the picture");
    check(av_buffersink_get_frame(graph_->sink, graph_->frame.get()), "taking the picture back");
}
