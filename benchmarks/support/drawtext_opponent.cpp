// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// buffer -> drawtext -> ... -> drawtext -> buffersink, and the pictures that pass through.
#include "drawtext_opponent.h"

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

/// The metadata that holds the text of a block.
std::string keyOf(std::size_t block)
{
    return "block" + std::to_string(block);
}

/// A reference to memory that somebody else owns and frees.
AVBufferRef* borrowed(std::uint8_t* bytes, std::size_t count)
{
    return av_buffer_create(
        bytes, count, [](void*, std::uint8_t*) {}, nullptr, 0);
}

std::unique_ptr<AVFrame, FrameDeleter> frameOf(MappedNV12 const& picture)
{
    std::unique_ptr<AVFrame, FrameDeleter> frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_NV12;
    frame->width = picture.width;
    frame->height = picture.height;
    frame->data[0] = picture.y;
    frame->data[1] = picture.uv;
    frame->linesize[0] = picture.yStride;
    frame->linesize[1] = picture.uvStride;
    auto const rows = static_cast<std::size_t>(picture.height);
    frame->buf[0] = borrowed(picture.y, static_cast<std::size_t>(picture.yStride) * rows);
    frame->buf[1] = borrowed(picture.uv, static_cast<std::size_t>(picture.uvStride) * ((rows + 1) / 2));
    return frame;
}

}  // namespace

struct DrawtextOpponent::Graph {
    AVFilterContext* add(char const* filterName) const
    {
        AVFilterContext* const context =
            avfilter_graph_alloc_filter(graph.get(), avfilter_get_by_name(filterName), nullptr);
        check(context == nullptr ? -1 : 0, filterName);
        return context;
    }

    std::unique_ptr<AVFilterGraph, GraphDeleter> graph{avfilter_graph_alloc()};
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;
    std::int64_t nextPts = 0;
};

DrawtextOpponent::DrawtextOpponent(int width, int height, std::vector<DrawtextBlock> const& blocks)
    : graph_(std::make_unique<Graph>())
{
    av_log_set_level(AV_LOG_ERROR);
    graph_->graph->nb_threads = 1;
    graph_->source = graph_->add("buffer");
    std::string const size = std::to_string(width) + "x" + std::to_string(height);
    check(avfilter_init_str(graph_->source, ("video_size=" + size + ":pix_fmt=nv12:time_base=1/30").c_str()), "buffer");
    AVFilterContext* last = graph_->source;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        DrawtextBlock const& block = blocks[i];
        AVFilterContext* const filter = graph_->add("drawtext");
        setOption(filter, "text", block.text.empty() ? "%{metadata:" + keyOf(i) + "}" : block.text);
        setOption(filter, "expansion", block.text.empty() ? "normal" : "none");
        setOption(filter, "font", "DejaVu Sans");
        setOption(filter, "fontsize", std::to_string(block.fontSize));
        setOption(filter, "fontcolor", "white");
        setOption(filter, "x", std::to_string(block.x));
        setOption(filter, "y", std::to_string(block.y));
        setOption(filter, "box", "1");
        setOption(filter, "boxcolor", "black@0.5");
        setOption(filter, "boxborderw", std::to_string(block.margin));
        setOption(filter, "borderw", std::to_string(block.outline));
        check(avfilter_init_str(filter, nullptr), "drawtext");
        check(avfilter_link(last, 0, filter, 0), "linking drawtext");
        last = filter;
    }
    graph_->sink = graph_->add("buffersink");
    check(avfilter_init_str(graph_->sink, nullptr), "buffersink");
    check(avfilter_link(last, 0, graph_->sink, 0), "linking the sink");
    check(avfilter_graph_config(graph_->graph.get(), nullptr), "configuring the filters");
}

DrawtextOpponent::~DrawtextOpponent() = default;

void DrawtextOpponent::draw(MappedNV12 const& picture, std::span<std::string const> texts)
{
    // The graph takes the only reference to the picture and gives it back: it stays writable throughout.
    auto const frame = frameOf(picture);
    frame->pts = graph_->nextPts++;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        av_dict_set(&frame->metadata, keyOf(i).c_str(), texts[i].c_str(), 0);
    }
    check(av_buffersrc_add_frame_flags(graph_->source, frame.get(), 0), "sending the picture");
    check(av_buffersink_get_frame(graph_->sink, frame.get()), "taking the picture back");
    if (frame->data[0] != picture.y) {
        throw std::runtime_error("drawtext opponent: the picture was copied");
    }
}
