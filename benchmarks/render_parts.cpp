// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Template, condition, number and date, each alone, against the plain units and the plainest use of the
// standard streams.
#include "render_parts.h"

#include "stanag_overlay_condition.h"
#include "stanag_overlay_config.h"
#include "stanag_overlay_format.h"

#include "allocation_counter.h"
#include "frame_host.h"
#include "plain_overlay_condition.h"
#include "plain_overlay_format.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

using stanag_overlay::OverlayCfg;
using stanag_overlay::OverlayRuntime;
using stanag_overlay::Visibility;

/// The telemetry of some moments, one after the other for ever.
class Moments {
public:
    Moments()
    {
        for (std::size_t moment = 0; moment < kMoments; ++moment) {
            payloads_.push_back(telemetryAt(moment));
        }
    }
    SwJsonObject const& next() { return payloads_[++at_ % kMoments]; }

private:
    std::vector<SwJsonObject> payloads_;
    std::size_t at_ = 0;
};

/// Runs `work` on one moment after the other; `work` gives what it made.
template <typename Work>
void overMoments(benchmark::State& state, Work&& work)
{
    Moments moments;
    std::uint64_t nowNs = 1;
    benchmark::DoNotOptimize(work(moments.next(), nowNs));
    std::uint64_t const before = allocationCount();
    for (auto _ : state) {
        nowNs += 33000000;
        benchmark::DoNotOptimize(work(moments.next(), nowNs));
    }
    state.counters["allocs"] =
        benchmark::Counter(static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
}

/// The block with the longest template among the examples that users start from.
OverlayCfg largestExample()
{
    std::ifstream file(OVERLAY_SOURCE_DIR "/examples/full_screen_hud.json");
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    OverlayCfg largest;
    for (OverlayCfg& cfg : stanag_overlay::OverlayConfigParser().parse(text)) {
        if (cfg.formatString.size() > largest.formatString.size()) {
            largest = std::move(cfg);
        }
    }
    if (largest.formatString.empty()) {
        throw std::runtime_error("no block in examples/full_screen_hud.json");
    }
    return largest;
}

void expand(benchmark::State& state)
{
    OverlayCfg const cfg = largestExample();
    OverlayRuntime runtime;
    overMoments(state, [&](SwJsonObject const& root, std::uint64_t nowNs) {
        return stanag_overlay::OverlayTextFormatter().expandTemplate(cfg.formatString, &root, cfg, runtime, nowNs, {});
    });
}

void expandPlain(benchmark::State& state)
{
    OverlayCfg const cfg = largestExample();
    OverlayRuntime runtime;
    overMoments(state, [&](SwJsonObject const& root, std::uint64_t nowNs) {
        return stanag_overlay::plain::expandTemplate(cfg.formatString, &root, cfg, runtime, nowNs, {});
    });
}

/// The conditions of the six blocks, all of them.
template <typename Evaluate>
void evaluateAll(benchmark::State& state, Evaluate&& evaluate)
{
    std::vector<OverlayCfg> const blocks = stanag_overlay::OverlayConfigParser().parse(blocksConfig(6));
    std::vector<OverlayRuntime> runtimes(blocks.size());
    overMoments(state, [&](SwJsonObject const& root, std::uint64_t nowNs) {
        int shown = 0;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            shown += static_cast<int>(evaluate(blocks[i], runtimes[i], &root, nowNs));
        }
        return shown;
    });
}

void conditions(benchmark::State& state)
{
    evaluateAll(state,
                [](OverlayCfg const& cfg, OverlayRuntime& runtime, SwJsonObject const* root, std::uint64_t nowNs) {
                    return stanag_overlay::OverlayConditionEvaluator().visibility(cfg, runtime, root, nowNs);
                });
}

void conditionsPlain(benchmark::State& state)
{
    evaluateAll(state, stanag_overlay::plain::visibility);
}

/// One key through the formatter.
void oneKey(benchmark::State& state, char const* key, OverlayCfg const& cfg)
{
    OverlayRuntime runtime;
    std::string const name = key;
    overMoments(state, [&](SwJsonObject const& root, std::uint64_t nowNs) {
        return stanag_overlay::OverlayTextFormatter().lookupFormatted(&root, name, cfg, runtime, nowNs);
    });
}

void number(benchmark::State& state)
{
    OverlayCfg cfg;
    cfg.decimals = 6;
    cfg.trimTrailingZeros = false;
    oneKey(state, "sensor_lat_deg", cfg);
}

void numberByStream(benchmark::State& state)
{
    overMoments(state, [](SwJsonObject const& root, std::uint64_t) {
        std::ostringstream stream;
        stream << std::fixed << std::setprecision(6) << root["sensor_lat_deg"].toDouble();
        return stream.str();
    });
}

OverlayCfg dateBlock(char const* pattern, bool localTime)
{
    OverlayCfg cfg;
    stanag_overlay::FormatSpec& spec = cfg.formats["utc_timestamp_us"];
    spec.date = true;
    spec.timestampUnit = stanag_overlay::TimestampUnit::Microseconds;
    spec.dateFormat = pattern;
    spec.localTime = localTime;
    return cfg;
}

/// Numbers only, which need no stream, in UTC and in local time; and names of days, which do.
void date(benchmark::State& state)
{
    oneKey(state, "utc_timestamp_us", dateBlock("%H:%M:%S %d-%m-%Y", false));
}

void localDate(benchmark::State& state)
{
    oneKey(state, "utc_timestamp_us", dateBlock("%H:%M:%S %d-%m-%Y", true));
}

void dateWithNames(benchmark::State& state)
{
    oneKey(state, "utc_timestamp_us", dateBlock("%a %d %b %Y %H:%M:%S", false));
}

void streamedDate(benchmark::State& state, char const* pattern)
{
    overMoments(state, [pattern](SwJsonObject const& root, std::uint64_t) {
        auto const seconds = static_cast<std::time_t>(root["utc_timestamp_us"].toDouble() / 1e6);
        std::tm time{};
        gmtime_r(&seconds, &time);
        std::ostringstream stream;
        stream << std::put_time(&time, pattern);
        return stream.str();
    });
}

void dateByStream(benchmark::State& state)
{
    streamedDate(state, "%H:%M:%S %d-%m-%Y");
}

void dateWithNamesByStream(benchmark::State& state)
{
    streamedDate(state, "%a %d %b %Y %H:%M:%S");
}

}  // namespace

void registerParts(std::vector<std::string>& names, std::vector<RatioRow>& rows)
{
    struct Part {
        char const* title;
        char const* name;
        void (*ours)(benchmark::State&);
        char const* opponentName;
        void (*opponent)(benchmark::State&);
    };
    for (Part const& part : {
             Part{"expandTemplate, the largest example, against the plain one", "part/expand", expand,
                  "plain part/expand", expandPlain},
             Part{"visibility of six blocks, against the plain one", "part/conditions", conditions,
                  "plain part/conditions", conditionsPlain},
             Part{"one number, lookup included, against a stream alone", "part/number", number, "stream/number",
                  numberByStream},
             Part{"one date in UTC, lookup included, against a stream alone", "part/date", date, "stream/date",
                  dateByStream},
             Part{"one date in local time, against a stream in UTC", "part/local date", localDate, "stream/date",
                  nullptr},
             Part{"one date with names, against a stream alone", "part/date with names", dateWithNames,
                  "stream/date with names", dateWithNamesByStream},
         }) {
        benchmark::RegisterBenchmark(part.name, part.ours);
        names.emplace_back(part.name);
        if (part.opponent != nullptr) {
            benchmark::RegisterBenchmark(part.opponentName, part.opponent);
            names.emplace_back(part.opponentName);
        }
        rows.push_back({part.title, part.name, part.opponentName, 0.0});
    }
}
