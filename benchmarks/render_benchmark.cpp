// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's own share of a frame: render() with a painter that does nothing, against the pass written
// plainly and against what the common text filter costs for the same six blocks.
//   render_benchmark [--table=FILE] [options of Google Benchmark]
#include "FrameTime.h"
#include "StanagOverlayPlugin.h"

#include "allocation_counter.h"
#include "drawtext_opponent.h"
#include "frame_host.h"
#include "plain_overlay_pass.h"
#include "ratio_table.h"
#include "render_parts.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using stanag_overlay::OverlayConfigParser;

constexpr std::size_t kSixBlocks = 6;

/// Frames before the clock runs: maps the picture, fills memories, shows every block.
constexpr int kFirstFrames = 64;

template <typename Pass>
void runFrames(benchmark::State& state, Pass& pass, FrameHost& host)
{
    for (int i = 0; i < kFirstFrames; ++i) {
        pass.render(host.next());
    }
    std::uint64_t const before = allocationCount();
    for (auto _ : state) {
        pass.render(host.next());
    }
    state.counters["allocs"] =
        benchmark::Counter(static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
}

struct FrameCase {
    PayloadKind kind = PayloadKind::Object;
    std::size_t blocks = kSixBlocks;
    int updateEveryNFrames = 1;
    std::size_t extraKeys = 0;
    std::size_t producers = 1;
};

void renderFrames(benchmark::State& state, FrameCase const& frame)
{
    FrameHost host(frame.producers, copiesOf(frame.kind, frame.extraKeys));
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(blocksConfig(frame.blocks, frame.updateEveryNFrames));
    runFrames(state, plugin, host);
}

void renderPlainFrames(benchmark::State& state, FrameCase const& frame)
{
    FrameHost host(frame.producers, copiesOf(frame.kind, frame.extraKeys));
    stanag_overlay::plain::OverlayPass pass;
    pass.init(host.init());
    pass.overlays = OverlayConfigParser().parse(blocksConfig(frame.blocks, frame.updateEveryNFrames));
    runFrames(state, pass, host);
}

/// A host that gives each frame its time.
struct TimedPlugin {
    StanagOverlayPlugin plugin;
    std::uint64_t nowNs = 1;

    void render(RenderContext& context)
    {
        FrameTime const time(nowNs += 40000000);
        plugin.render(context);
    }
};

void renderTimedFrames(benchmark::State& state)
{
    FrameHost host(1, copiesOf(PayloadKind::Object, 0));
    TimedPlugin timed;
    timed.plugin.init(host.init());
    timed.plugin.setConfig(blocksConfig(kSixBlocks));
    runFrames(state, timed, host);
}

/// Without the copy that the host makes: what the plugin itself adds to a frame. Payloads are made in
/// advance, some frames at a time, while the clock stands; few when they are large, so that they stay as
/// close to the processor as a copy just made.
void renderMovedPayloads(benchmark::State& state, std::size_t extraKeys)
{
    std::size_t const batch = std::max<std::size_t>(2, 4096 / (46 + extraKeys));
    std::vector<SwAny> payloads(batch);
    std::size_t nextPayload = 0;
    FrameHost host(1, [&](std::size_t, std::uint64_t) { return std::move(payloads[nextPayload++]); });
    StanagOverlayPlugin plugin;
    plugin.init(host.init());
    plugin.setConfig(blocksConfig(kSixBlocks));
    FrameHost::PayloadOf const copies = copiesOf(PayloadKind::Object, extraKeys);
    auto const refill = [&] {
        for (std::size_t i = 0; i < batch; ++i) {
            payloads[i] = copies(0, i);
        }
        nextPayload = 0;
    };
    for (int i = 0; i < kFirstFrames; ++i) {
        refill();
        plugin.render(host.next());
    }
    std::uint64_t allocations = 0;
    refill();
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(batch))) {
        std::uint64_t const before = allocationCount();
        for (std::size_t i = 0; i < batch; ++i) {
            plugin.render(host.next());
        }
        allocations += allocationCount() - before;
        state.PauseTiming();
        refill();
        state.ResumeTiming();
    }
    state.counters["allocs"] = benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
}

/// The host's part of a frame that comes with an object: its copy of the payload.
void copyPayload(benchmark::State& state)
{
    FrameHost::PayloadOf const copies = copiesOf(PayloadKind::Object);
    std::uint64_t frame = 0;
    for (auto _ : state) {
        SwAny const payload = copies(0, ++frame);
        benchmark::DoNotOptimize(&payload);
    }
}

void drawWithDrawtext(benchmark::State& state)
{
    SwJsonObject const root = telemetryAt(0);
    std::vector<DrawtextBlock> blocks;
    for (auto const& cfg : OverlayConfigParser().parse(blocksConfig(kSixBlocks))) {
        stanag_overlay::OverlayRuntime runtime;
        DrawtextBlock block;
        block.text =
            stanag_overlay::OverlayTextFormatter().expandTemplate(cfg.formatString, &root, cfg, runtime, 1, {});
        block.x = static_cast<int>(1920.0F * cfg.posX);
        block.y = static_cast<int>(1080.0F * cfg.posY);
        block.fontSize = cfg.textSize;
        blocks.push_back(block);
    }
    constexpr int kWidth = 1920;
    constexpr int kHeight = 1080;
    std::vector<std::uint8_t> gray(std::size_t{kWidth} * kHeight * 3 / 2, 128);
    MappedNV12 const picture{gray.data(), gray.data() + std::size_t{kWidth} * kHeight, kWidth, kHeight, kWidth, kWidth};
    DrawtextOpponent opponent(kWidth, kHeight, blocks);
    for (auto _ : state) {
        opponent.draw(picture);
    }
}

void add(std::string const& name, FrameCase const& frame)
{
    benchmark::RegisterBenchmark(name.c_str(), [frame](benchmark::State& state) { renderFrames(state, frame); });
}

void addPlain(std::string const& name, FrameCase const& frame)
{
    benchmark::RegisterBenchmark(name.c_str(), [frame](benchmark::State& state) { renderPlainFrames(state, frame); });
}

std::vector<std::string> registerFrames()
{
    std::vector<std::string> names;
    auto const addNamed = [&names](std::string const& name, FrameCase const& frame) {
        add(name, frame);
        names.push_back(name);
    };
    addNamed("frame/object", {});
    addNamed("frame/object/every5", {PayloadKind::Object, kSixBlocks, 5});
    benchmark::RegisterBenchmark("frame/object/time given", renderTimedFrames);
    names.emplace_back("frame/object/time given");
    addNamed("frame/text", {PayloadKind::Text});
    addNamed("frame/text/every5", {PayloadKind::Text, kSixBlocks, 5});
    for (std::size_t const keys : {46U, 460U, 4600U}) {
        std::string const name = "frame/moved/keys:" + std::to_string(keys);
        benchmark::RegisterBenchmark(name.c_str(),
                                     [keys](benchmark::State& state) { renderMovedPayloads(state, keys - 46); });
        names.push_back(name);
    }
    for (std::size_t const keys : {460U, 4600U}) {
        addNamed("frame/object/keys:" + std::to_string(keys), {PayloadKind::Object, kSixBlocks, 1, keys - 46});
        addNamed("frame/text/keys:" + std::to_string(keys), {PayloadKind::Text, kSixBlocks, 1, keys - 46});
    }
    for (auto const& [prefix, kind] :
         {std::pair{"frame/object", PayloadKind::Object}, std::pair{"frame/text", PayloadKind::Text}}) {
        for (std::size_t const blocks : {1U, 2U, 4U, 8U, 16U, 32U, 64U}) {
            addNamed(prefix + ("/blocks:" + std::to_string(blocks)), {kind, blocks});
        }
        for (std::size_t const producers : {2U, 4U, 8U, 16U}) {
            addNamed(prefix + ("/producers:" + std::to_string(producers)), {kind, kSixBlocks, 1, 0, producers});
        }
    }
    benchmark::RegisterBenchmark("host/copy of the payload", copyPayload);
    names.emplace_back("host/copy of the payload");
    addPlain("plain/object", {});
    addPlain("plain/text", {PayloadKind::Text});
    addPlain("plain/object/every5", {PayloadKind::Object, kSixBlocks, 5});
    names.insert(names.end(), {"plain/object", "plain/text", "plain/object/every5"});
    benchmark::RegisterBenchmark("drawtext", drawWithDrawtext);
    return names;
}

std::vector<RatioRow> const kRows{
    {"frame, object payload, against drawtext", "frame/object", "drawtext", 100.0},
    {"frame, text payload, against drawtext", "frame/text", "drawtext", 50.0},
    {"frame, object payload, against the plain pass", "frame/object", "plain/object", 3.0},
    {"frame, text payload, against the plain pass", "frame/text", "plain/text", 0.0},
    {"frame with its time given, against the clock", "frame/object/time given", "frame/object", 0.0},
    {"frame, object, text every 5th frame, against the plain pass", "frame/object/every5", "plain/object/every5", 0.0},
    {"frame without the host's copy, against drawtext", "frame/moved/keys:46", "drawtext", 0.0},
};

std::vector<GrowthRow> const kGrowth{
    {"keys that no block names, host's copy left out", "frame/moved/keys:46", "frame/moved/keys:460", 10.0},
    {"ten times more of them", "frame/moved/keys:460", "frame/moved/keys:4600", 10.0},
    {"blocks, 1 to 8", "frame/object/blocks:1", "frame/object/blocks:8", 8.0},
    {"blocks, 8 to 64", "frame/object/blocks:8", "frame/object/blocks:64", 8.0},
    {"producers, 2 to 4", "frame/object/producers:2", "frame/object/producers:4", 2.0},
    {"producers, 4 to 16", "frame/object/producers:4", "frame/object/producers:16", 4.0},
    {"keys in a text that no block names", "frame/text", "frame/text/keys:460", 10.0},
    {"ten times more of them in a text", "frame/text/keys:460", "frame/text/keys:4600", 10.0},
    {"blocks, text payload, 1 to 8", "frame/text/blocks:1", "frame/text/blocks:8", 8.0},
    {"blocks, text payload, 8 to 64", "frame/text/blocks:8", "frame/text/blocks:64", 8.0},
    {"producers, text payload, 2 to 4", "frame/text/producers:2", "frame/text/producers:4", 2.0},
    {"producers, text payload, 4 to 16", "frame/text/producers:4", "frame/text/producers:16", 4.0},
};

}  // namespace

int main(int argc, char** argv)
{
    std::string const tableFile = takeOption(argc, argv, "--table=");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    SwAny::registerAllType();
    std::vector<std::string> names = registerFrames();
    std::vector<RatioRow> rows = kRows;
    registerParts(names, rows);
    LeastReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!tableFile.empty()) {
        std::ofstream table(tableFile);
        writeRatios(table, reporter, rows);
        table << "\n";
        writeGrowth(table, reporter, kGrowth);
        table << "\n";
        writeTimes(table, reporter, names);
    }
    return 0;
}
