// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads and writes the same JSON with the framework and with three well-known libraries in one run, so that
// the numbers may be compared as ratios: a telemetry payload of 46 members, and a configuration of 1 MB.
// What each library writes from its own tree of the same text is as compact as it can.
//   json_benchmark [--table=FILE] [options of Google Benchmark]
#include "Picture.h"
#include "SwJson.h"

#include "rapid_exact.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using Keys = zelvo::ZelvoPicture::BaseMetadata::Keys;

/// In the order in which the host declares them and fills its payloads.
std::array<std::string const*, 46> const kKeys{{
    &Keys::sourceNs,
    &Keys::cameraIndex,
    &Keys::cameraName,
    &Keys::cameraModelName,
    &Keys::cameraType,
    &Keys::utcTimestampUs,
    &Keys::hfovDeg,
    &Keys::vfovDeg,
    &Keys::zoomRatio,
    &Keys::panDeg,
    &Keys::tiltDeg,
    &Keys::rollDeg,
    &Keys::pitchDeg,
    &Keys::yawDeg,
    &Keys::headingDeg,
    &Keys::sensorLatDeg,
    &Keys::sensorLonDeg,
    &Keys::sensorAltM,
    &Keys::frameCenterLatDeg,
    &Keys::frameCenterLonDeg,
    &Keys::frameCenterElevM,
    &Keys::targetLrfLatDeg,
    &Keys::targetLrfLonDeg,
    &Keys::targetLrfElevM,
    &Keys::measuredSlantRangeM,
    &Keys::laserRangeEnabled,
    &Keys::velocityNorthMps,
    &Keys::velocityEastMps,
    &Keys::velocityDownMps,
    &Keys::azimuthRateDps,
    &Keys::elevationRateDps,
    &Keys::rollRateDps,
    &Keys::navSatCount,
    &Keys::positioningMethodSource,
    &Keys::platformStatus,
    &Keys::gimbalModeRaw,
    &Keys::laserPrfCode,
    &Keys::quatX,
    &Keys::quatY,
    &Keys::quatZ,
    &Keys::quatW,
    &Keys::gimbalModelCode,
    &Keys::partNumber,
    &Keys::serialNumber,
    &Keys::softwareVersion,
    &Keys::followMeEnabledCommand,
}};

/// One flat payload in the order in which a host fills it: mostly decimal numbers, some codes and texts.
std::string payloadText()
{
    std::mt19937 random(46);
    std::string text = "{";
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        std::string const& key = *kKeys[i];
        char value[64];
        if (key.find("name") != std::string::npos || key.find("number") != std::string::npos ||
            key.find("version") != std::string::npos) {
            std::snprintf(value, sizeof value, "\"unit %u-A\"", static_cast<unsigned>(random() % 100000));
        } else if (key.find("enabled") != std::string::npos) {
            std::snprintf(value, sizeof value, "%s", random() % 2 == 0 ? "true" : "false");
        } else if (key.find("_ns") != std::string::npos || key.find("_us") != std::string::npos) {
            std::snprintf(value, sizeof value, "17000000%08u", static_cast<unsigned>(random() % 100000000));
        } else if (key.find("code") != std::string::npos || key.find("count") != std::string::npos ||
                   key.find("index") != std::string::npos || key.find("status") != std::string::npos) {
            std::snprintf(value, sizeof value, "%u", static_cast<unsigned>(random() % 100));
        } else if (key.find("_lat_") != std::string::npos || key.find("quat") != std::string::npos) {
            // As many digits as a double needs.
            std::snprintf(value, sizeof value, "%.17g", static_cast<double>(random()) / 4294967296.0 * 50.0);
        } else {
            std::snprintf(value, sizeof value, "%.6f", static_cast<double>(random()) / 4294967296.0 * 360.0 - 180.0);
        }
        text += (i == 0 ? "\"" : ",\"") + key + "\":" + value;
    }
    return text + "}";
}

/// A configuration of about 1 MB, indented as people write them.
std::string configurationText()
{
    std::mt19937 random(1);
    std::string text = "{\n  \"overlay\": [";
    for (int block = 0; text.size() < 1000000; ++block) {
        std::string const& key = *kKeys[random() % kKeys.size()];
        text += block == 0 ? "\n" : ",\n";
        text += "    {\n      \"formatString\": \"Bloc " + std::to_string(block) + "\\nvaleur %{" + key + "} m\",\n";
        text += "      \"textColor\": \"#FFCC" + std::to_string(10 + random() % 90) + "\",\n";
        text += "      \"fontSize\": " + std::to_string(random() % 60) + ",\n";
        text += "      \"x\": 0." + std::to_string(random() % 1000) + ",\n      \"y\": 0." +
                std::to_string(random() % 1000) + ",\n";
        text += "      \"backgroundOpacity\": 0.5,\n      \"enabled\": true,\n";
        text += "      \"condition\": {\"key\": \"" + key +
                "\", \"operator\": \">=\", \"value\": " + std::to_string(random() % 500) +
                ".25, \"showAfterMs\": 500},\n";
        text += "      \"formats\": {\n        \"" + key +
                "\": {\"decimals\": 2, \"trimZeros\": false, \"invalidValues\": [-1, 0, 9999.5], \"min\": null}\n";
        text += "      }\n    }";
    }
    return text + "\n  ]\n}\n";
}

std::string const& textOf(int which)
{
    static std::string const payload = payloadText();
    static std::string const configuration = configurationText();
    return which == 0 ? payload : configuration;
}

void setBytes(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void readFramework(benchmark::State& state, int which)
{
    SwString const text = textOf(which);
    for (auto _ : state) {
        SwString error;
        SwJsonDocument document = SwJsonDocument::fromJson(text, SwString(), error);
        benchmark::DoNotOptimize(document);
    }
    setBytes(state, text.toStdString().size());
}

void readNlohmann(benchmark::State& state, int which)
{
    std::string const& text = textOf(which);
    for (auto _ : state) {
        nlohmann::json document = nlohmann::json::parse(text);
        benchmark::DoNotOptimize(document);
    }
    setBytes(state, text.size());
}

void readRapid(benchmark::State& state, int which)
{
    std::string const& text = textOf(which);
    for (auto _ : state) {
        rapidjson::Document document;
        document.Parse(text.data(), text.size());
        benchmark::DoNotOptimize(document);
    }
    setBytes(state, text.size());
}

void readRapidExactly(benchmark::State& state, int which)
{
    std::string const& text = textOf(which);
    for (auto _ : state) {
        parseWithRapidExactly(text);
    }
    setBytes(state, text.size());
}

void readSimd(benchmark::State& state, int which)
{
    simdjson::padded_string const text(textOf(which));
    for (auto _ : state) {
        // A parser of its own each time, since its document lives in it: the others keep theirs too.
        simdjson::dom::parser parser;
        simdjson::dom::element document = parser.parse(text);
        benchmark::DoNotOptimize(document);
    }
    setBytes(state, text.size());
}

void writeFramework(benchmark::State& state, int which)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(textOf(which), SwString(), error);
    std::size_t size = 0;
    for (auto _ : state) {
        SwString text;
        SwJsonDocument::generateJson(document.root(), text, false, 0, SwString());
        benchmark::DoNotOptimize(text);
        size = text.toStdString().size();
    }
    setBytes(state, size);
}

void writeNlohmann(benchmark::State& state, int which)
{
    nlohmann::json const document = nlohmann::json::parse(textOf(which));
    std::size_t size = 0;
    for (auto _ : state) {
        std::string text = document.dump();
        benchmark::DoNotOptimize(text);
        size = text.size();
    }
    setBytes(state, size);
}

void writeRapid(benchmark::State& state, int which)
{
    rapidjson::Document document;
    document.Parse(textOf(which).data(), textOf(which).size());
    std::size_t size = 0;
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer);
        size = buffer.GetSize();
    }
    setBytes(state, size);
}

void copyFramework(benchmark::State& state, int which)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(textOf(which), SwString(), error);
    for (auto _ : state) {
        SwJsonValue copy = document.root();
        benchmark::DoNotOptimize(copy);
    }
}

void copyNlohmann(benchmark::State& state, int which)
{
    nlohmann::json const document = nlohmann::json::parse(textOf(which));
    for (auto _ : state) {
        nlohmann::json copy = document;
        benchmark::DoNotOptimize(copy);
    }
}

/// 0 iterations: as many as the time allows.
void registerAll(std::int64_t iterations)
{
    char const* const texts[] = {"payload", "configuration"};
    for (int which = 0; which < 2; ++which) {
        auto const add = [&](std::string name, void (*run)(benchmark::State&, int)) {
            name.append("/").append(texts[which]);
            auto* const registered = benchmark::RegisterBenchmark(name.c_str(), run, which);
            if (iterations > 0) {
                registered->Iterations(iterations);
            }
        };
        add("read/framework", readFramework);
        add("read/nlohmann", readNlohmann);
        add("read/rapidjson_dom", readRapid);
        add("read/rapidjson_dom_exact", readRapidExactly);
        add("read/simdjson_dom", readSimd);
        add("write/framework", writeFramework);
        add("write/nlohmann", writeNlohmann);
        add("write/rapidjson", writeRapid);
        add("copy/framework", copyFramework);
        add("copy/nlohmann", copyNlohmann);
    }
}

/// `what` of both texts against the opponent.
void addRows(std::vector<RatioRow>& rows, std::string const& what, std::string const& opponent,
             double payloadAtLeast = 0.0, double configurationAtLeast = 0.0)
{
    for (std::string const text : {"/payload", "/configuration"}) {
        RatioRow row;
        row.title.append(what).append(" the ").append(text, 1).append(", against ").append(opponent);
        row.ours.append(what).append("/framework").append(text);
        row.opponent.append(what).append("/").append(opponent).append(text);
        row.atLeast = text == "/payload" ? payloadAtLeast : configurationAtLeast;
        rows.push_back(row);
    }
}

std::vector<RatioRow> ratioRows()
{
    std::vector<RatioRow> rows;
    addRows(rows, "read", "nlohmann", 0.0, 3.0);
    addRows(rows, "read", "rapidjson_dom", 1.0);
    addRows(rows, "read", "rapidjson_dom_exact");
    addRows(rows, "read", "simdjson_dom");
    addRows(rows, "write", "nlohmann");
    addRows(rows, "write", "rapidjson");
    addRows(rows, "copy", "nlohmann");
    return rows;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string const tableFile = takeOption(argc, argv, "--table=");
    // For tools that count instructions.
    std::string const iterations = takeOption(argc, argv, "--iterations=");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    registerAll(iterations.empty() ? 0 : std::stoll(iterations));
    LeastReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!tableFile.empty()) {
        std::ofstream table(tableFile);
        writeRatios(table, reporter, ratioRows());
    }
    return 0;
}
