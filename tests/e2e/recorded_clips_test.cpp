// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The recorded clips through the program. Rows that need them name the folder when it is not there.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"
#include "ts_klv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;
using media_test::TempFolder;

std::string recorded(std::string const& name)
{
    return std::string(OVERLAY_RECORDED_DATA) + "/" + name;
}

#define NEED_RECORDED(name)                                                                                            \
    if (!std::filesystem::exists(recorded(name))) {                                                                    \
        GTEST_SKIP() << "recorded data is missing: " << recorded(name) << " (set OVERLAY_RECORDED_DATA)";              \
    }

constexpr char const* kConfig = R"({"overlay":[{"formatString":"LAT %sensor_lat_deg LON %sensor_lon_deg HDG %heading_deg
RNG %measured_slant_range_m","decimals":6,"trimTrailingZeros":false,"textSize":48},
{"formatString":"UTC %utc_timestamp_us","position":{"x":0,"y":0.5},"textSize":48,
 "formats":{"utc_timestamp_us":{"date":true,"timestampUnit":"us","dateFormat":"%Y-%m-%d %H:%M:%S"}}}]})";

/// The configuration as one line of JSON.
std::string configText()
{
    std::string text = kConfig;
    std::size_t const feed = text.find('\n');
    return text.substr(0, feed) + "\\n" + text.substr(feed + 1);
}

std::vector<std::vector<std::string>> readCsv(std::string const& path)
{
    std::vector<std::vector<std::string>> rows;
    for (std::string const& line : e2e::linesOf(e2e::readFile(path))) {
        std::vector<std::string> cells;
        std::istringstream stream(line.substr(0, line.find('\r')));
        for (std::string cell; std::getline(stream, cell, ',');) {
            cells.push_back(cell);
        }
        rows.push_back(std::move(cells));
    }
    return rows;
}

/// Numbers to 1e-9 of their size, texts byte for byte.
void expectValue(SwJsonValue const& value, std::string const& expected)
{
    if (value.isInt()) {
        EXPECT_EQ(std::to_string(value.toInt()), expected);
    } else if (value.isDouble()) {
        EXPECT_NEAR(value.toDouble(), std::stod(expected), 1e-9);
    } else {
        EXPECT_EQ(value.toString(), expected);
    }
}

struct ClipRow {
    char const* name;
    char const* file;
    int frames;
    int packets;         ///< lines of keys
    int klvUnits;        ///< telemetry packets in the burnt clip
    char const* remark;  ///< "" or what is said after the file's name
    bool fullChroma = false;
};

class RecordedClip : public testing::TestWithParam<ClipRow> {};

TEST_P(RecordedClip, GoesThroughKeysAndBurn)
{
    ClipRow const& row = GetParam();
    NEED_RECORDED(row.file);
    TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), configText());
    std::string const remark =
        *row.remark == '\0' ? "" : "stanag-overlay: " + recorded(row.file) + row.remark + std::string("\n");
    Result const keys = run({"keys", recorded(row.file)});
    EXPECT_EQ(keys.exitCode, 0);
    EXPECT_EQ(keys.err, remark);
    EXPECT_EQ(e2e::linesOf(keys.out).size(), static_cast<std::size_t>(row.packets));
    Result const burnt = run({"burn", recorded(row.file), "-c", folder.file("c.json"), "-o", folder.file("o.ts")});
    EXPECT_EQ(burnt.exitCode, 0);
    std::string const loss = "stanag-overlay: " + folder.file("o.ts") +
                             ": pictures of yuv444p (chroma 4:4:4) are stored with 8 bits, chroma 4:2:0\n";
    EXPECT_EQ(burnt.err, (row.fullChroma ? loss : "") + remark);
    clip_test::StreamCounts const counts = clip_test::packetsOf(folder.file("o.ts"));
    EXPECT_EQ(counts.video, row.frames);
    EXPECT_EQ(counts.klv, row.klvUnits);
}

TEST_P(RecordedClip, ShowsTheSameByEveryWayOfItsTelemetry)
{
    ClipRow const& row = GetParam();
    NEED_RECORDED(row.file);
    TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[{"formatString":
        "%utc_timestamp_us %telemetry_age_s %video_time_s %frame_index","decimals":6,"textSize":256}]})");
    std::string const clip = recorded(row.file);
    e2e::writeFile(folder.file("keys.jsonl"), run({"keys", clip}).out);
    std::string const own = run({"text", clip, "-c", folder.file("c.json")}).out;
    ASSERT_EQ(e2e::linesOf(own).size(), static_cast<std::size_t>(row.frames));
    for (std::vector<std::string> const& way : std::vector<std::vector<std::string>>{
             {"--telemetry", clip}, {"--telemetry", folder.file("keys.jsonl")}, {"--telemetry-offset", "-0.0000001"}}) {
        SCOPED_TRACE(way.back());
        std::vector<std::string> words = {"text", clip, "-c", folder.file("c.json"), "--max-age", "5"};
        words.insert(words.end(), way.begin(), way.end());
        EXPECT_EQ(run(words).out, own);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RecordedClip,
    testing::Values(ClipRow{"osh", "osh_sim_640x480_h264_klv06.ts", 277, 277, 277, ""},
                    ClipRow{"kwiver_h264", "kwiver_h264_160x120_klv06_nopts.ts", 30, 30, 30, "", true},
                    ClipRow{"kwiver_mpeg2", "kwiver_mpeg2_160x120_klv06_nopts.ts", 30, 30, 30, ""},
                    ClipRow{"no_klv", "kwiver_h264_160x120_no_klv.ts", 30, 0, 0,
                            ": no usable telemetry was found: there is no KLV stream", true},
                    ClipRow{"foreign_klv", "kwiver_aphill_720x480i_h264_eg0104.ts", 48, 0, 48,
                            ": no usable telemetry was found: 48 KLV packets are not MISB ST 0601"},
                    ClipRow{"access_units", "mp2tp_foreman_352x288_h264_klv15_aucell.ts", 300, 300, 300, ""},
                    ClipRow{"faster_than_video", "mux_car_768x432_osh_klv_30hz.ts", 115, 276, 276, ""}),
    [](auto const& row) { return row.param.name; });

TEST(RecordedKeys, OfTheSimulatedFlightAreThoseOfItsTable)
{
    NEED_RECORDED("osh_sim_640x480_h264_klv06.ts");
    auto const rows = readCsv(recorded("osh_sim_expected.csv"));
    auto const lines = e2e::linesOf(run({"keys", recorded("osh_sim_640x480_h264_klv06.ts")}).out);
    ASSERT_EQ(rows.size(), 278U);
    ASSERT_EQ(lines.size(), 277U);
    // The columns after packet number and time, in their order.
    std::vector<std::string> const keys = {"utc_timestamp_us",
                                           "mission_id",
                                           "heading_deg",
                                           "pitch_deg",
                                           "roll_deg",
                                           "platform_designation",
                                           "camera_name",
                                           "image_coordinate_system",
                                           "sensor_lat_deg",
                                           "sensor_lon_deg",
                                           "sensor_alt_m",
                                           "hfov_deg",
                                           "vfov_deg",
                                           "pan_deg",
                                           "tilt_deg",
                                           "sensor_rel_roll_deg",
                                           "measured_slant_range_m",
                                           "target_width_m",
                                           "frame_center_lat_deg",
                                           "frame_center_lon_deg",
                                           "frame_center_elev_m",
                                           "klv_version"};
    for (std::size_t number = 0; number < lines.size(); ++number) {
        SCOPED_TRACE("packet " + std::to_string(number));
        std::vector<std::string> const& cells = rows[number + 1];
        SwJsonObject const line = clip_test::parseLine(lines[number]);
        EXPECT_EQ(line["packet"].toInt(), std::stoll(cells[0]));
        EXPECT_EQ(std::llround(line["pts"].toDouble() * 90000.0), std::stoll(cells[1]));
        EXPECT_EQ(line["checksum"].toString(), "ok");
        SwJsonObject const& payload = line["payload"].toObject();
        for (std::size_t key = 0; key < keys.size(); ++key) {
            SCOPED_TRACE(keys[key]);
            if (cells.size() > key + 2 && !cells[key + 2].empty()) {
                ASSERT_TRUE(payload.contains(keys[key]));
                expectValue(payload[keys[key]], cells[key + 2]);
            }
        }
    }
}

TEST(RecordedKeys, OfTheTaggedClipAreThoseOfItsTable)
{
    NEED_RECORDED("kwiver_h264_160x120_klv06_nopts.ts");
    std::map<std::string, std::string> const keyOfTag = {{"2", "utc_timestamp_us"},
                                                         {"3", "mission_id"},
                                                         {"4", "platform_tail_number"},
                                                         {"5", "heading_deg"},
                                                         {"10", "platform_designation"},
                                                         {"11", "camera_name"},
                                                         {"12", "image_coordinate_system"},
                                                         {"13", "sensor_lat_deg"},
                                                         {"14", "sensor_lon_deg"},
                                                         {"15", "sensor_alt_m"},
                                                         {"16", "hfov_deg"},
                                                         {"17", "vfov_deg"},
                                                         {"18", "pan_deg"},
                                                         {"19", "tilt_deg"},
                                                         {"20", "sensor_rel_roll_deg"},
                                                         {"21", "measured_slant_range_m"},
                                                         {"22", "target_width_m"},
                                                         {"23", "frame_center_lat_deg"},
                                                         {"24", "frame_center_lon_deg"},
                                                         {"25", "frame_center_elev_m"},
                                                         {"40", "target_lrf_lat_deg"},
                                                         {"41", "target_lrf_lon_deg"},
                                                         {"42", "target_lrf_elev_m"},
                                                         {"56", "ground_speed_mps"},
                                                         {"57", "ground_range_m"},
                                                         {"59", "platform_call_sign"},
                                                         {"62", "laser_prf_code"},
                                                         {"65", "klv_version"},
                                                         {"79", "velocity_north_mps"},
                                                         {"80", "velocity_east_mps"},
                                                         {"90", "pitch_deg"},
                                                         {"91", "roll_deg"},
                                                         {"117", "azimuth_rate_dps"},
                                                         {"118", "elevation_rate_dps"},
                                                         {"119", "roll_rate_dps"},
                                                         {"123", "nav_sat_count"},
                                                         {"125", "platform_status"}};
    auto const rows = readCsv(recorded("kwiver_klv06_nopts_expected.csv"));
    for (char const* const clip : {"kwiver_h264_160x120_klv06_nopts.ts", "kwiver_mpeg2_160x120_klv06_nopts.ts"}) {
        SCOPED_TRACE(clip);
        auto const lines = e2e::linesOf(run({"keys", recorded(clip)}).out);
        ASSERT_EQ(lines.size(), 30U);
        std::vector<SwJsonObject> packets;
        for (std::string const& line : lines) {
            packets.push_back(clip_test::parseLine(line));
            EXPECT_TRUE(packets.back()["pts"].isNull());
            EXPECT_EQ(packets.back()["checksum"].toString(), "ok");
        }
        int compared = 0;
        for (std::size_t row = 1; row < rows.size(); ++row) {
            std::vector<std::string> const& cells = rows[row];
            auto const key = keyOfTag.find(cells[2]);
            if (key == keyOfTag.end()) {
                continue;
            }
            SCOPED_TRACE("packet " + cells[1] + " " + key->second);
            SwJsonObject const& payload = std::as_const(packets)[std::stoul(cells[1])]["payload"].toObject();
            ASSERT_TRUE(payload.contains(key->second));
            expectValue(payload[key->second], cells[5]);
            ++compared;
        }
        EXPECT_EQ(compared, 30 * static_cast<int>(keyOfTag.size()));
    }
}

TEST(RecordedText, OfEveryFrameIsThatOfItsOwnPacket)
{
    NEED_RECORDED("osh_sim_640x480_h264_klv06.ts");
    TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), configText());
    auto const rows = readCsv(recorded("osh_sim_expected.csv"));
    Result const result = run({"text", recorded("osh_sim_640x480_h264_klv06.ts"), "-c", folder.file("c.json")});
    auto const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 277U);
    for (std::size_t number = 0; number < lines.size(); ++number) {
        SCOPED_TRACE("frame " + std::to_string(number));
        std::vector<std::string> const& cells = rows[number + 1];
        SwJsonObject const line = clip_test::parseLine(lines[number]);
        std::array<char, 256> expected{};
        std::snprintf(expected.data(), expected.size(), "LAT %.6f LON %.6f HDG %.6f\nRNG %.6f", std::stod(cells[10]),
                      std::stod(cells[11]), std::stod(cells[4]), std::stod(cells[18]));
        SwJsonArray const& draws = line["draws"].toArray();
        ASSERT_EQ(draws.size(), 2U);
        EXPECT_EQ(draws[0].toObject()["text"].toString(), expected.data());
        time_t const seconds = std::stoll(cells[2]) / 1000000;
        std::strftime(expected.data(), expected.size(), "UTC %Y-%m-%d %H:%M:%S", std::gmtime(&seconds));
        EXPECT_EQ(draws[1].toObject()["text"].toString(), expected.data());
    }
}

TEST(RecordedText, FollowsTelemetryInDecodingOrderAndWithoutTimes)
{
    NEED_RECORDED("mp2tp_foreman_352x288_h264_klv15_aucell.ts");
    NEED_RECORDED("kwiver_h264_160x120_klv06_nopts.ts");
    TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[{"formatString":"T%utc_timestamp_us","textSize":256}]})");
    for (char const* const clip :
         {"mp2tp_foreman_352x288_h264_klv15_aucell.ts", "kwiver_h264_160x120_klv06_nopts.ts"}) {
        SCOPED_TRACE(clip);
        // Each frame has a packet of its own: shown in the order of the frames, the packets' own times rise.
        std::vector<std::pair<double, std::string>> packets;
        for (std::string const& line : e2e::linesOf(run({"keys", recorded(clip)}).out)) {
            SwJsonObject const packet = clip_test::parseLine(line);
            double const seconds = packet["pts"].isNull() ? 0.0 : packet["pts"].toDouble();
            packets.emplace_back(seconds, "T" + packet["payload"].toObject()["utc_timestamp_us"].toString());
        }
        std::stable_sort(packets.begin(), packets.end(),
                         [](auto const& a, auto const& b) { return a.first < b.first; });
        auto const lines = e2e::linesOf(run({"text", recorded(clip), "-c", folder.file("c.json")}).out);
        ASSERT_EQ(lines.size(), packets.size());
        for (std::size_t number = 0; number < lines.size(); ++number) {
            SwJsonObject const line = clip_test::parseLine(lines[number]);
            ASSERT_EQ(line["draws"].toArray().size(), 1U) << number;
            EXPECT_EQ(line["draws"].toArray()[0].toObject()["text"].toString(), packets[number].second) << number;
        }
    }
}

TEST(RecordedKeys, WithAWrongChecksumAreUsedAndReported)
{
    std::string const file = "klvdata_misb0902_dynamic_constant_badsum.klv";
    NEED_RECORDED(file);
    Result const result = run({"keys", recorded(file)});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "stanag-overlay: " + recorded(file) +
                              ": 1 of 1 telemetry packet has a wrong checksum and was used all the same\n");
    auto const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 1U);
    SwJsonObject const line = clip_test::parseLine(lines[0]);
    EXPECT_EQ(line["checksum"].toString(), "bad");
    EXPECT_TRUE(line["payload"].toObject().contains("sensor_lat_deg"));
}

TEST(RecordedKeys, OfRawFilesAreRead)
{
    for (char const* const file : {"klvdata_misb0902_dynamic_only.klv", "alliance_pes_klv_skyranger.pes"}) {
        NEED_RECORDED(file);
        SCOPED_TRACE(file);
        Result const result = run({"keys", recorded(file)});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        auto const lines = e2e::linesOf(result.out);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].rfind(R"({"packet": 0, "pts": null, "checksum": "ok", "payload": {)", 0), 0U) << lines[0];
    }
}

TEST(RecordedTelemetryFile, OfRawKlvStandsWhereTheStreamStood)
{
    NEED_RECORDED("osh_sim_640x480_h264_klv06.ts");
    std::string const clip = recorded("osh_sim_640x480_h264_klv06.ts");
    TempFolder const folder;
    std::string bytes;
    for (std::vector<std::uint8_t> const& unit : telemetry::klvUnitsOfTransportStream(clip)) {
        bytes.append(unit.begin(), unit.end());
    }
    e2e::writeFile(folder.file("raw"), bytes);
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[{"formatString":"%utc_timestamp_us","textSize":256}]})");
    Result const raw = run({"text", clip, "-c", folder.file("c.json"), "--telemetry", folder.file("raw")});
    EXPECT_EQ(raw.exitCode, 0);
    EXPECT_EQ(raw.err, "");
    EXPECT_EQ(raw.out, run({"text", clip, "-c", folder.file("c.json")}).out) << "its stamps rise as its pictures do";
    EXPECT_EQ(e2e::linesOf(raw.out).size(), 277U);
}

TEST(RecordedTelemetryFile, ReplacesTheClipsOwn)
{
    NEED_RECORDED("kwiver_h264_160x120_no_klv.ts");
    NEED_RECORDED("klvdata_misb0902_dynamic_only.klv");
    TempFolder const folder;
    e2e::writeFile(folder.file("c.json"), R"({"overlay":[{"formatString":"A %heading_deg","textSize":256}]})");
    Result const result = run({"text", recorded("kwiver_h264_160x120_no_klv.ts"), "-c", folder.file("c.json"),
                               "--telemetry", recorded("klvdata_misb0902_dynamic_only.klv")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    auto const lines = e2e::linesOf(result.out);
    ASSERT_EQ(lines.size(), 30U);
    for (std::string const& line : lines) {
        EXPECT_NE(line.find("\"A "), std::string::npos) << line;
    }
}

}  // namespace
