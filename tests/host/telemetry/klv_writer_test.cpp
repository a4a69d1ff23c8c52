// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Payloads to packets and back.
#include "telemetry/telemetry.h"

#include "klv_bytes.h"
#include "payload_text.h"
#include "telemetry/st0601_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace telemetry {
namespace {

/// The payload of a packet that encodeKlv wrote; fails the test unless it is one packet with a right sum.
SwJsonObject decodeBack(Bytes const& bytes)
{
    KlvDecoder decoder;
    auto packets = decoder.decode(bytes, std::nullopt);
    EXPECT_EQ(packets.size(), 1U);
    if (packets.empty()) {
        return {};
    }
    EXPECT_EQ(packets[0].checksum, Checksum::Ok);
    return std::move(packets[0].payload);
}

/// What the keys of fullPayload() give beside themselves.
void addSecondKeysOfFullPayload(SwJsonObject& payload)
{
    for (char const* const key : {"icing_detected_text", "sensor_fov_name_text", "operational_mode_text",
                                  "platform_status_text", "sensor_control_mode_text"}) {
        payload.insertOrAssign(key, "42");
    }
    payload.insertOrAssign("positioning_method_source_text", "GPS+QZSS+GLONASS");
    for (char const* const key : {"auto_track", "icing", "image_invalid"}) {
        payload.insertOrAssign(key, true);
    }
    for (char const* const key : {"laser_range_enabled", "ir_polarity_black", "slant_range_measured"}) {
        payload.insertOrAssign(key, false);
    }
    for (char const* const corner : {"1", "2", "3", "4"}) {
        for (char const* const half : {"_lat_deg", "_lon_deg"}) {
            payload.insertOrAssign(std::string("corner") + corner + half,
                                   payload[std::string("corner_") + corner + half]);
        }
    }
}

/// Every row of the table with a value of its kind, the two tags of pitch and roll apart.
SwJsonObject fullPayload()
{
    SwJsonObject payload;
    for (TableRow const& row : st0601Table()) {
        std::string const key(row.key);
        switch (row.rule) {
        case Rule::Text:
            payload.insertOrAssign(key, "text of " + key);
            break;
        case Rule::Count:
        case Rule::TwiceCount:
            payload.insertOrAssign(key, 42);
            break;
        case Rule::SignedCount:
            payload.insertOrAssign(key, -1234567);
            break;
        default:
            payload.insertOrAssign(key, row.low + (row.high - row.low) * 0.371);
        }
    }
    payload.insertOrAssign("pitch_deg", -33.25);
    payload.insertOrAssign("roll_deg", 61.5);
    payload.insertOrAssign("platform_pitch_deg", -19.5);
    payload.insertOrAssign("platform_roll_deg", 49.5);
    payload.insertOrAssign("yaw_deg", payload["heading_deg"]);
    addSecondKeysOfFullPayload(payload);
    return payload;
}

TEST(KlvWriter, WorkedPacket)
{
    SwJsonObject const payload{{"utc_timestamp_us", std::int64_t{1224807209913000}},
                               {"heading_deg", 159.974364843},
                               {"camera_name", "EO"},
                               {"zoom_percent", 55},
                               {"klv_version", 17}};
    Bytes const expected =
        packetWithSum(fromHex("02 08 000459F4A6AA4AA8  05 02 71C2  0B 02 454F  41 01 11  8106 02 3700"));
    EXPECT_EQ(encodeKlv(payload), expected);
}

TEST(KlvWriter, NothingGivesAPacketOfTheChecksumOnly)
{
    EXPECT_EQ(encodeKlv({}), packetWithSum({}));
    EXPECT_EQ(payloadText(decodeBack(encodeKlv({}))), "");
}

TEST(KlvWriter, LongPacketsTakeTheLongForm)
{
    Bytes const medium = encodeKlv({{"mission_id", std::string(130, 'm')}});
    EXPECT_EQ(Bytes(medium.begin() + 16, medium.begin() + 21), fromHex("81 89 03 81 82"));
    EXPECT_EQ(medium.size(), 18U + 137U);
    Bytes const large = encodeKlv({{"mission_id", std::string(70000, 'm')}});
    EXPECT_EQ(Bytes(large.begin() + 16, large.begin() + 25), fromHex("83 01 11 79 03 83 01 11 70"));
    EXPECT_EQ(decodeBack(large)["mission_id"].stringRef().size(), 70000U);
}

TEST(KlvWriter, EveryTagComesBack)
{
    SwJsonObject const payload = fullPayload();
    SwJsonObject const back = decodeBack(encodeKlv(payload));
    EXPECT_EQ(back.keys(), payload.keys());
    for (auto const& [key, value] : payload) {
        SCOPED_TRACE(key);
        SwJsonValue const& held = back[key];
        ASSERT_EQ(held.type(), value.type());
        if (!value.isDouble()) {
            EXPECT_EQ(valueText(held), valueText(value));
        }
    }
    // Half a code step each, for a few of every rule; st0601_value_test holds it for every row.
    EXPECT_NEAR(back["heading_deg"].toDouble(), payload["heading_deg"].toDouble(), 180.0 / 65535);
    EXPECT_NEAR(back["pitch_deg"].toDouble(), -33.25, 45.0 / 2147483647);
    EXPECT_NEAR(back["platform_pitch_deg"].toDouble(), -19.5, 10.0 / 32767);
    EXPECT_NEAR(back["velocity_down_mps"].toDouble(), payload["velocity_down_mps"].toDouble(), 90.0 / 32767);
    EXPECT_NEAR(back["altitude_agl_m"].toDouble(), payload["altitude_agl_m"].toDouble(), 0.5 / 128);
}

TEST(KlvWriter, WhatWasWrittenComesBackToTheLastBit)
{
    Bytes const written = encodeKlv(fullPayload());
    SwJsonObject const once = decodeBack(written);
    Bytes const again = encodeKlv(once);
    EXPECT_EQ(again, written) << "the same items in the same bytes";
    EXPECT_EQ(payloadText(decodeBack(again)), payloadText(once));
}

TEST(KlvWriter, KeysThatTwoTagsShare)
{
    struct Row {
        char const* name;
        SwJsonObject payload;
        char const* items;
    };
    Row const rows[] = {
        {"yaw alone is the heading", {{"yaw_deg", 360.0}}, "05 02 FFFF"},
        {"heading wins over yaw", {{"yaw_deg", 0.0}, {"heading_deg", 360.0}}, "05 02 FFFF"},
        {"pitch that tag 6 holds exactly", {{"pitch_deg", 20.0}}, "06 02 7FFF"},
        {"pitch of zero, an integer", {{"pitch_deg", 0}}, "06 02 0000"},
        {"pitch that needs tag 90", {{"pitch_deg", 90.0}}, "5A 04 7FFFFFFF"},
        {"pitch beside its short form",
         {{"pitch_deg", 0.0}, {"platform_pitch_deg", 20.0}},
         "06 02 7FFF 5A 04 00000000"},
        {"roll that tag 7 holds exactly", {{"roll_deg", -50.0}}, "07 02 8001"},
        {"roll that needs tag 91", {{"roll_deg", -90.0}}, "5B 04 80000001"},
        {"laser alone", {{"laser_range_enabled", true}}, "2F 01 01"},
        {"laser off alone", {{"laser_range_enabled", false}}, "2F 01 00"},
        {"laser over the flags", {{"laser_range_enabled", false}, {"generic_flags", 0x31}}, "2F 01 30"},
        {"laser into the flags", {{"laser_range_enabled", true}, {"generic_flags", 0x30}}, "2F 01 31"},
        {"flags alone", {{"generic_flags", 0x31}}, "2F 01 31"},
        {"laser that is no boolean", {{"laser_range_enabled", 1}, {"generic_flags", 0x30}}, "2F 01 30"},
        {"a flag into the flags", {{"image_invalid", true}, {"generic_flags", 0x11}}, "2F 01 31"},
        {"a flag over the flags", {{"slant_range_measured", false}, {"generic_flags", 0x31}}, "2F 01 21"},
        {"flags alone, one by one",
         {{"auto_track", true}, {"ir_polarity_black", true}, {"icing", true}, {"laser_range_enabled", false}},
         "2F 01 0E"},
        {"what no flag stands for stays", {{"generic_flags", 0xC0}, {"icing", true}}, "2F 01 C8"},
        {"speed down", {{"velocity_down_mps", -180.0}}, "33 02 7FFF"},
        {"unknown keys and wrong kinds",
         {{"nonsense", 1}, {"heading_deg", "north"}, {"mission_id", SwJsonValue()}},
         ""},
        {"out of range", {{"sensor_alt_m", 1e9}, {"sensor_lat_deg", -1e9}}, "0D 04 80000001 0F 02 FFFF"},
        {"not a number", {{"sensor_alt_m", std::numeric_limits<double>::quiet_NaN()}}, ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(encodeKlv(row.payload), packetWithSum(fromHex(row.items)));
    }
}

}  // namespace
}  // namespace telemetry
