// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Recorded KLV against the values that other decoders found in it.
#include "telemetry/telemetry.h"

#include "klv_bytes.h"
#include "payload_text.h"
#include "telemetry/nested_sets.h"
#include "telemetry/st0601_table.h"
#include "telemetry/st0601_value.h"
#include "ts_klv.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

namespace telemetry {
namespace {

std::string const kFolder = OVERLAY_RECORDED_DATA;

class Recorded : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!std::filesystem::is_directory(kFolder)) {
            GTEST_SKIP() << "the folder of recorded clips is missing: " << kFolder;
        }
    }
};

std::vector<std::vector<std::string>> csvRows(std::string const& name)
{
    auto const bytes = fileBytes(kFolder + "/" + name);
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(text, line);) {
        while (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        auto& row = rows.emplace_back();
        for (std::size_t start = 0; start <= line.size();) {
            std::size_t const end = std::min(line.find(',', start), line.size());
            row.push_back(line.substr(start, end - start));
            start = end + 1;
        }
    }
    return rows;
}

struct Clip {
    std::vector<Packet> packets;
    KlvCounts counts;
};

Clip decodeClip(std::string const& name)
{
    Clip clip;
    KlvDecoder decoder;
    std::string const path = kFolder + "/" + name;
    for (auto const& unit : klvUnitsOfTransportStream(path)) {
        for (Packet& packet : decoder.decode(unit, std::nullopt)) {
            clip.packets.push_back(std::move(packet));
        }
    }
    clip.counts = decoder.counts();
    return clip;
}

void expectValue(SwJsonValue const& value, std::string const& expected, double sign = 1.0)
{
    if (value.isString()) {
        EXPECT_EQ(value.stringRef(), expected);
    } else {
        ASSERT_TRUE(value.isInt() || value.isDouble());
        double const number = value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
        EXPECT_NEAR(number, sign * std::stod(expected), 1e-9);
    }
}

/// Every row of the CSV, by its raw bytes and by the key it has in the decoded clip.
void expectKwiverValues(std::string const& clipName)
{
    Clip const clip = decodeClip(clipName);
    ASSERT_EQ(clip.packets.size(), 30U);
    EXPECT_EQ(clip.counts.badChecksums, 0U);
    auto const rows = csvRows("kwiver_klv06_nopts_expected.csv");
    ASSERT_EQ(rows.size(), 3421U);
    std::map<std::string, bool> tags;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        auto const& row = rows[i];
        ASSERT_EQ(row.size(), 6U);
        SCOPED_TRACE("packet " + row[1] + " tag " + row[2] + " " + row[4]);
        auto const tag = static_cast<std::uint32_t>(std::stoul(row[2]));
        tags[row[2]] = true;
        TableRow const* const known = findRow(tag);
        ASSERT_NE(known, nullptr);
        double const sign = tag == 51 ? -1.0 : 1.0;
        SwJsonValue const fromBytes = decodeValue(*known, fromHex(row[4]));
        expectValue(fromBytes, row[5], sign);
        // Tags 90 and 91 are there too and take the keys of 6 and 7.
        std::string const key = tag == 6   ? std::string(kShortPitchKey)
                                : tag == 7 ? std::string(kShortRollKey)
                                           : std::string(known->key);
        SwJsonObject const& payload = clip.packets[std::stoul(row[1])].payload;
        expectValue(payload[key], row[5], sign);
    }
    EXPECT_EQ(tags.size(), 114U);
}

TEST_F(Recorded, EveryListedValueOfTheSyntheticClip)
{
    expectKwiverValues("kwiver_h264_160x120_klv06_nopts.ts");
}

TEST_F(Recorded, EveryListedValueBesideAnotherCodec)
{
    expectKwiverValues("kwiver_mpeg2_160x120_klv06_nopts.ts");
}

TEST_F(Recorded, EveryListedValueOfTheSimulatedFlight)
{
    Clip const clip = decodeClip("osh_sim_640x480_h264_klv06.ts");
    auto const rows = csvRows("osh_sim_expected.csv");
    ASSERT_EQ(rows.size(), 278U);
    ASSERT_EQ(clip.packets.size(), 277U);
    EXPECT_EQ(clip.counts.badChecksums, 0U);
    std::size_t compared = 0;
    for (std::size_t packet = 0; packet < clip.packets.size(); ++packet) {
        EXPECT_EQ(clip.packets[packet].checksum, Checksum::Ok);
        for (std::size_t column = 2; column < rows[0].size(); ++column) {
            std::string const& expected = rows[packet + 1][column];
            auto const tag = static_cast<std::uint32_t>(std::stoul(rows[0][column].substr(3)));
            SCOPED_TRACE("packet " + std::to_string(packet) + " " + rows[0][column]);
            SwJsonValue const& value = clip.packets[packet].payload[findRow(tag)->key];
            if (expected.empty()) {
                EXPECT_TRUE(value.isNull());
            } else {
                expectValue(value, expected);
                ++compared;
            }
        }
    }
    EXPECT_EQ(compared, 277U * 22U);
}

TEST_F(Recorded, AccessUnitHeadersAndItemsInReverseOrder)
{
    Clip const clip = decodeClip("mp2tp_foreman_352x288_h264_klv15_aucell.ts");
    EXPECT_EQ(clip.packets.size(), 300U);
    EXPECT_EQ(clip.counts.badChecksums, 0U);
    EXPECT_EQ(clip.counts.foreignKeys, 0U);
    EXPECT_EQ(clip.counts.truncated, 0U);
    for (Packet const& packet : clip.packets) {
        EXPECT_EQ(packet.checksum, Checksum::Ok);
        EXPECT_TRUE(packet.payload.contains("frame_center_elev_m"));
    }
}

TEST_F(Recorded, TelemetryFasterThanTheVideo)
{
    Clip const clip = decodeClip("mux_car_768x432_osh_klv_30hz.ts");
    EXPECT_EQ(clip.packets.size(), 276U);
    EXPECT_EQ(clip.counts.badChecksums, 0U);
}

TEST_F(Recorded, ForeignKeysOnly)
{
    Clip const clip = decodeClip("kwiver_aphill_720x480i_h264_eg0104.ts");
    EXPECT_EQ(clip.packets.size(), 0U);
    EXPECT_EQ(clip.counts.foreignKeys, 48U);
    EXPECT_EQ(clip.counts.truncated, 0U);
}

TEST_F(Recorded, NoKlvAtAll)
{
    Clip const clip = decodeClip("kwiver_h264_160x120_no_klv.ts");
    EXPECT_EQ(clip.packets.size(), 0U);
    EXPECT_EQ(clip.counts.foreignKeys, 0U);
}

TEST_F(Recorded, RawPacketWithARightSum)
{
    KlvCounts counts;
    auto const packets = readKlvFile(kFolder + "/klvdata_misb0902_dynamic_only.klv", counts);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].checksum, Checksum::Ok);
    EXPECT_EQ(counts.badChecksums, 0U);
    SwJsonObject const& payload = packets[0].payload;
    EXPECT_EQ(payload["utc_timestamp_us"].toInt(), 1231798102000000);
    EXPECT_NEAR(payload["heading_deg"].toDouble(), 159.974364843, 1e-9);
    EXPECT_NEAR(payload["sensor_lat_deg"].toDouble(), 60.176822967, 1e-9);
}

TEST_F(Recorded, RawPacketWithAWrongSumIsUsedAndCounted)
{
    KlvCounts counts;
    auto const packets = readKlvFile(kFolder + "/klvdata_misb0902_dynamic_constant_badsum.klv", counts);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].checksum, Checksum::Bad);
    EXPECT_EQ(counts.packets, 1U);
    EXPECT_EQ(counts.badChecksums, 1U);
    EXPECT_EQ(packets[0].payload["mission_id"].stringRef(), "Mission 12");
    // The sum that the file's maker stored and the one its bytes have.
    auto const bytes = fileBytes(kFolder + "/klvdata_misb0902_dynamic_constant_badsum.klv");
    EXPECT_EQ(Bytes(bytes.end() - 2, bytes.end()), fromHex("AA43"));
    EXPECT_EQ(klvChecksum(std::span(bytes).first(bytes.size() - 2)), 0x3E1E);
}

TEST_F(Recorded, StoredSums)
{
    struct Row {
        char const* clip;
        std::uint16_t sum;
    };
    Row const rows[] = {{"kwiver_h264_160x120_klv06_nopts.ts", 0x81F7}, {"osh_sim_640x480_h264_klv06.ts", 0x72FA}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.clip);
        auto const units = klvUnitsOfTransportStream(kFolder + "/" + row.clip);
        ASSERT_FALSE(units.empty());
        KlvReader reader(units[0]);
        auto const packet = reader.next();
        ASSERT_TRUE(packet.has_value());
        EXPECT_EQ(klvChecksum(packet->bytes.first(packet->bytes.size() - 2)), row.sum);
    }
}

TEST_F(Recorded, PacketBehindAPesHeader)
{
    KlvDecoder decoder;
    auto const packets = decoder.decode(fileBytes(kFolder + "/alliance_pes_klv_skyranger.pes"), std::nullopt);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].checksum, Checksum::Ok);
    SwJsonObject const& payload = packets[0].payload;
    EXPECT_EQ(payload["utc_timestamp_us"].toInt() / 1000, 1647960583277);  // 2022-03-22 14:49:43.277
    EXPECT_TRUE(payload.contains("pitch_deg"));
    EXPECT_TRUE(payload.contains("platform_pitch_deg"));
    EXPECT_NEAR(payload["pitch_deg"].toDouble(), payload["platform_pitch_deg"].toDouble(), 0.001);
    EXPECT_NEAR(payload["roll_deg"].toDouble(), payload["platform_roll_deg"].toDouble(), 0.001);
    for (int corner = 1; corner <= 4; ++corner) {
        EXPECT_TRUE(payload.contains("corner_" + std::to_string(corner) + "_lat_deg")) << corner;
    }
}

/// The bytes of the first packet's items 73 to 142 are the worked examples of the standards.
TEST_F(Recorded, NestedItemsOfTheSyntheticClip)
{
    Clip const clip = decodeClip("kwiver_h264_160x120_klv06_nopts.ts");
    ASSERT_EQ(clip.packets.size(), 30U);
    EXPECT_EQ(clip.counts.damagedSets, 0U);
    SwJsonObject const& first = clip.packets[0].payload;
    EXPECT_EQ(first["rvt_true_airspeed_mps"].toDouble(), 500.0);
    EXPECT_EQ(first["rvt_video_format"].stringRef(), "MPEG2");
    EXPECT_EQ(first["vmti_target_count"].toInt(), 28);
    EXPECT_EQ(first["vmti_target_id"].toInt(), 1);
    EXPECT_EQ(first["vmti_target_pixel"].toInt(), 409600);
    EXPECT_FALSE(first.contains("vmti_target_lat_deg")) << "the first target has no position";
    EXPECT_EQ(first["vmti_hfov_deg"].toDouble(), 12.5);
    EXPECT_EQ(first["core_identifier"].stringRef(),
              "0170:F592-F023-7336-4AF8-AA91-62C0-0F2E-B2DA/16B7-4341-0008-41A0-BE36-5B5A-B96A-3645");
    EXPECT_EQ(first["sar_grazing_angle_deg"].toDouble(), 64.0);
    EXPECT_EQ(first["sar_squint_angle_deg"].toDouble(), -26.0);
    EXPECT_EQ(first["range_image_range_m"].toDouble(), 256.0);
    EXPECT_EQ(first["composite_source_rows"].toInt(), 720);
    EXPECT_EQ(first["command_text"].stringRef(), "Fly to Waypoint 1");
    EXPECT_EQ(first["commands_verified"].stringRef(), "3, 7");
    EXPECT_EQ(first["active_wavelengths"].stringRef(), "1, 3");
    EXPECT_EQ(first["country_coding_method_text"].stringRef(), "GENC three letter");
    EXPECT_EQ(first["overflight_country"].stringRef(), "CAN");
    EXPECT_FALSE(first.contains("operator_country"));
    EXPECT_EQ(first["manufacture_country"].stringRef(), "FRA");
    EXPECT_EQ(first["sensor_frame_rate_hz"].toDouble(), 60000.0 / 1001.0);
    EXPECT_EQ(first["wavelengths"].stringRef(), "NNIR 1000 to 2000 nm");
    EXPECT_NEAR(first["takeoff_lat_deg"].toDouble(), 38.841859, 1e-6);
    EXPECT_EQ(first["takeoff_hae_m"].toDouble(), 3.0);
    EXPECT_NEAR(first["recovery_lon_deg"].toDouble(), -77.459811, 1e-6);
    EXPECT_EQ(first["payloads"].stringRef(), "VIS Nose Camera, ACME VIS Model 123, ACME IR Model 456");
    EXPECT_EQ(first["active_payloads"].stringRef(), "0, 1, 3");
    EXPECT_EQ(first["weapons"].stringRef(), "Harpoon, Hellfire, GBU-15");
    EXPECT_EQ(first["waypoint_count"].toInt(), 4);
    EXPECT_NEAR(first["waypoint_lat_deg"].toDouble(), 38.889422, 1e-6);
    EXPECT_EQ(first["view_azimuth_start_deg"].toDouble(), 210.0);
    EXPECT_EQ(first["view_elevation_start_deg"].toDouble(), -75.0);
    EXPECT_FALSE(first.contains("view_roll_start_deg"));
    SwJsonObject const& later = clip.packets[20].payload;
    EXPECT_EQ(later["sensor_frame_rate_hz"].toDouble(), 30.0);
    EXPECT_EQ(later["payloads"].stringRef(), "Polaroid");
    EXPECT_EQ(later["operator_country"].stringRef(), "USA");
    EXPECT_EQ(later["view_roll_start_deg"].toDouble(), 320.0);
    EXPECT_FALSE(later.contains("weapons"));
}

/// Targets of an old version of their standard, which lie around the center of the picture.
TEST_F(Recorded, MovingTargetsOfAnOldVersion)
{
    std::size_t targets = 0;
    std::size_t positions = 0;
    for (Packet const& packet : decodeClip("osh_sim_640x480_h264_klv06.ts").packets) {
        SwJsonObject const& keys = packet.payload;
        targets += keys.contains("vmti_target_id") ? 1U : 0U;
        if (keys.contains("vmti_target_lat_deg")) {
            ++positions;
            EXPECT_EQ(keys["vmti_version"].toInt(), 3);
            EXPECT_NEAR(keys["vmti_target_lat_deg"].toDouble(), keys["frame_center_lat_deg"].toDouble(), 0.01);
            EXPECT_NEAR(keys["vmti_target_lon_deg"].toDouble(), keys["frame_center_lon_deg"].toDouble(), 0.01);
            EXPECT_NEAR(keys["vmti_target_hae_m"].toDouble(), 173.7, 1.0);
        }
    }
    EXPECT_EQ(targets, 17U);
    EXPECT_GE(positions, 1U) << "most packets do not tell the version";
}

TEST_F(Recorded, SecuritySets)
{
    struct Row {
        char const* clip;
        char const* line;
        char const* objectCountry;
        int version;
    };
    Row const rows[] = {
        {"kwiver_h264_160x120_klv06_nopts.ts", "UNCLASSIFIED//TEST-CAVEAT//REL TO US", "US", 12},
        {"mp2tp_foreman_352x288_h264_klv15_aucell.ts", "//CAN UNCLASSIFIED//REL TO CAN, USA", "CAN", 11},
        {"osh_sim_640x480_h264_klv06.ts", "UNCLASSIFIED", "US", 9},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.clip);
        Clip const clip = decodeClip(row.clip);
        EXPECT_EQ(clip.counts.damagedSets, 0U);
        for (Packet const& packet : clip.packets) {
            EXPECT_EQ(packet.payload["security_line"].stringRef(), row.line);
            EXPECT_EQ(packet.payload["security_object_country"].stringRef(), row.objectCountry);
            EXPECT_EQ(packet.payload["security_version"].toInt(), row.version);
        }
    }
    KlvDecoder decoder;
    auto const packets = decoder.decode(fileBytes(kFolder + "/alliance_pes_klv_skyranger.pes"), std::nullopt);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].payload["security_line"].stringRef(), "UNCLASSIFIED");
    EXPECT_FALSE(packets[0].payload.contains("security_country")) << "its text is empty";
}

TEST_F(Recorded, EncodedAgainEveryPayloadIsTheSame)
{
    for (char const* const name : {"kwiver_h264_160x120_klv06_nopts.ts", "osh_sim_640x480_h264_klv06.ts",
                                   "mp2tp_foreman_352x288_h264_klv15_aucell.ts"}) {
        SCOPED_TRACE(name);
        for (Packet const& packet : decodeClip(name).packets) {
            KlvDecoder decoder;
            auto const back = decoder.decode(encodeKlv(packet.payload), std::nullopt);
            ASSERT_EQ(back.size(), 1U);
            SwJsonObject written = packet.payload;
            for (NestedRow const& nested : nestedTable()) {
                written.erase(nested.row.key);
            }
            written.erase(countryCodingMethods().textKey);
            ASSERT_EQ(payloadText(back[0].payload), payloadText(written));
        }
    }
}

}  // namespace
}  // namespace telemetry
