// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Nested sets and packs: worked bytes, missing parts, damage.
#include "telemetry/nested_sets.h"

#include "klv_bytes.h"
#include "payload_text.h"
#include "telemetry/second_keys.h"
#include "telemetry/telemetry.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace telemetry {
namespace {

std::string keysText(std::uint32_t tag, char const* hex)
{
    SwJsonObject keys;
    return readNested(tag, fromHex(hex), keys) ? payloadText(keys) : "damaged " + payloadText(keys);
}

TEST(NestedSets, WorkedBytes)
{
    struct Row {
        char const* name;
        std::uint32_t tag;
        char const* bytes;
        char const* expected;
    };
    Row const rows[] = {
        {"no nested item", 5, "01 02 03", ""},
        {"without value", 74, "", ""},
        {"unknown items only", 73, "7E 01 00", ""},
        {"set with an item past its end", 73, "08 01 04 03 02 01", "damaged "},
        {"targets without any", 74, "05 01 02 06 01 00", "vmti_reported_count=0 vmti_target_count=2"},
        {"series of nothing", 74, "05 01 02 65 00", "vmti_target_count=2"},
        {"target of nothing", 74, "65 01 00", ""},
        {"target that is only a number", 74, "65 02 01 07", "vmti_target_id=7"},
        {"target with an offset", 74, "04 01 05 65 0B 0A 89 52 0A 03 3A 66 67 04 01 01",
         "vmti_target_id=1234 vmti_target_lat_offset_deg=10d vmti_target_priority=1 vmti_version=5"},
        {"target with its position", 74, "04 01 04 65 0E 0D 01 11 0A 40 00 00 00 2D 00 00 00 03 84",
         "vmti_target_hae_m=0d vmti_target_id=1 vmti_target_lat_deg=38d vmti_target_lon_deg=0d vmti_version=4"},
        {"position with its accuracy", 74, "04 01 04 65 11 10 01 11 0D 40 00 00 00 2D 00 00 00 03 84 00 00 00",
         "vmti_target_hae_m=0d vmti_target_id=1 vmti_target_lat_deg=38d vmti_target_lon_deg=0d vmti_version=4"},
        {"position before its version", 74, "65 0E 0D 01 11 0A 40 00 00 00 2D 00 00 00 03 84 04 01 04",
         "vmti_target_hae_m=0d vmti_target_id=1 vmti_target_lat_deg=38d vmti_target_lon_deg=0d vmti_version=4"},
        {"position of an old version", 74, "04 01 03 65 0E 0D 01 11 0A FF FF FF FF 00 00 00 00 FF FF",
         "vmti_target_hae_m=19000d vmti_target_id=1 vmti_target_lat_deg=90d vmti_target_lon_deg=-180d vmti_version=3"},
        {"short offsets of an old version", 74, "04 01 03 65 0B 0A 01 0A 03 7F FF FF 0B 02 00 00",
         "vmti_target_id=1 vmti_target_lat_offset_deg=19.199999999999999d vmti_target_lon_offset_deg=0d "
         "vmti_version=3"},
        {"field of view of an old version", 74, "04 01 03 0B 02 FF FF", "vmti_hfov_deg=180d vmti_version=3"},
        {"position of who knows which version", 74, "65 0E 0D 01 11 0A 40 00 00 00 2D 00 00 00 03 84",
         "vmti_target_id=1"},
        {"target with a cut item", 74, "65 06 02 07 00 02 08 00", "damaged "},
        {"second target unread", 74, "65 08 04 07 04 01 02 02 08 00", "vmti_target_id=7 vmti_target_priority=2"},
        {"target past the series", 74, "65 02 05 07", "damaged "},
        {"half a position", 74, "65 06 05 01 11 02 40 00", "damaged "},
        {"horizon", 81, "00 24 38 64",
         "horizon_end_x_percent=56d horizon_end_y_percent=100d horizon_start_x_percent=0d horizon_start_y_percent=36d"},
        {"horizon with places", 81, "00 24 38 00 7FFFFFFF 80000001 00000000 80000000",
         "horizon_end_lat_deg=0d horizon_end_x_percent=56d horizon_end_y_percent=0d horizon_start_lat_deg=90d "
         "horizon_start_lon_deg=-180d horizon_start_x_percent=0d horizon_start_y_percent=36d"},
        {"short horizon", 81, "00 24 38", "damaged "},
        {"identifier", 94, "01 20 00112233445566778899AABBCCDDEEFF",
         "core_identifier='0120:0011-2233-4455-6677-8899-AABB-CCDD-EEFF'"},
        {"identifier of nothing", 94, "01 00", "core_identifier='0100'"},
        {"cut identifier", 94, "01 20 00112233", "damaged "},
        {"point of a range picture", 97, "0D 04 43 80 00 00 0E 04 7F 80 00 00 0F 04 7F C0 00 00 10 03 00 00 00",
         "range_image_range_m=256d"},
        {"registration", 98, "01 01 01 02 04 41 4C 47 4F 03 03 31 2E 30",
         "georegistration_algorithm='ALGO' georegistration_algorithm_version='1.0' georegistration_version=1"},
        {"command without time", 115, "05 02 47 6F", "command_id=5 command_text='Go'"},
        {"command with time", 115, "05 00 00 00 00 00 00 00 00 01", "command_id=5 command_time_us=1"},
        {"command without text", 115, "05", "damaged "},
        {"commands", 116, "03 87 69", "commands_verified='3, 1001'"},
        {"cut number", 116, "03 87", "damaged "},
        {"countries", 122, "01 0D 02 55 53 00 02 43 41",
         "country_coding_method=13 country_coding_method_text='GENC two letter' manufacture_country='CA' "
         "overflight_country='US'"},
        {"unknown coding", 122, "01 08", "country_coding_method=8"},
        {"country past the end", 122, "01 0D 03 55 53", "damaged "},
        {"frame rate", 127, "1E", "sensor_frame_rate_hz=30d"},
        {"frame rate by nothing", 127, "1E 00", ""},
        {"wavelengths", 128, "0D 15 00 00 07 D0 00 00 0F A0 4E 4E 49 52 09 16 00 00 0F A0 00 00 17 70",
         "wavelengths='NNIR 1000 to 2000 nm, 2000 to 3000 nm'"},
        {"wavelength without bounds", 128, "05 15 00 00 07 D0", "damaged "},
        {"take-off alone", 130, "0B 40 00 00 00 2D 00 00 00 07 0E 00",
         "takeoff_hae_m=3d takeoff_lat_deg=38d takeoff_lon_deg=0d"},
        {"unknown take-off", 130, "00 08 40 00 00 00 2D 00 00 00", "recovery_lat_deg=38d recovery_lon_deg=0d"},
        {"half a place", 130, "04 40 00 00 00", "damaged "},
        {"payloads", 138, "02 04 00 00 01 41 04 01 00 01 42", "payload_count=2 payloads='A, B'"},
        {"payload past its end", 138, "01 04 00 00 05 41", "damaged "},
        {"active payloads", 139, "01 0B", "active_payloads='0, 1, 3, 8'"},
        {"no active payload", 139, "00", ""},
        {"weapons", 140, "08 01 01 01 03 82 03 01 48 08 01 01 02 02 82 04 01 49", "weapon_count=2 weapons='H, I'"},
        {"cut weapon", 140, "03 01 01 01", "damaged "},
        {"waypoints", 141, "0F 07 00 01 03 40 00 00 00 2D 00 00 00 07 0E 00 04 08 00 02 02",
         "waypoint_count=2 waypoint_hae_m=3d waypoint_lat_deg=38d waypoint_lon_deg=0d waypoints='7, 8'"},
        {"cut waypoint", 141, "02 07 00", "damaged "},
        {"view", 142, "06 34 80 00 4B 00 00 00 04 50 00 2D 00",
         "view_azimuth_range_deg=300d view_azimuth_start_deg=210d view_roll_range_deg=180d view_roll_start_deg=320d"},
        {"view past its end", 142, "06 34 80 00 4B", "damaged "},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(keysText(row.tag, row.bytes), row.expected);
    }
}

TEST(NestedSets, KeysAreThereOnce)
{
    std::set<std::string> keys;
    for (NestedRow const& nested : nestedTable()) {
        EXPECT_TRUE(keys.insert(std::string(nested.row.key)).second) << nested.row.key;
        EXPECT_TRUE(findRow(nested.item) == nullptr) << nested.item;
    }
    for (TableRow const& row : st0601Table()) {
        EXPECT_EQ(keys.count(std::string(row.key)), 0U) << row.key;
    }
}

TEST(NestedSets, DamagedOnesAreCountedAndThePacketIsUsed)
{
    KlvDecoder decoder;
    auto const packets = decoder.decode(packetOf(fromHex("41 01 11 73 02 05 09 81 06 02 37 00")), std::nullopt);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(payloadText(packets[0].payload), "klv_version=17 zoom_percent=55d");
    EXPECT_EQ(decoder.counts().damagedSets, 1U);
}

TEST(NestedSets, FirstTargetFromTheFrameCenter)
{
    // 10 degrees north, and east over 180 degrees.
    Bytes const items =
        fromHex("17 04 00000000 18 04 7FFFFFFF 4A 11 04 01 05 65 0C 0B 01 0A 03 3A 66 67 0B 03 3A 66 67");
    KlvDecoder decoder;
    SwJsonObject const payload = decoder.decode(packetOf(items), std::nullopt).at(0).payload;
    EXPECT_EQ(payload["vmti_target_lat_deg"].toDouble(), 10.0);
    EXPECT_EQ(payload["vmti_target_lon_deg"].toDouble(), -170.0);
}

TEST(NestedSets, AreReadOnlyForThoseWhoWantThem)
{
    Bytes const packet = packetOf(fromHex("41 01 11 74 01 07"));
    KlvDecoder others(KeySelection::namedIn(R"({"overlay":[{"formatString":"%klv_version"}]})"));
    KlvDecoder commands(KeySelection::namedIn(R"({"overlay":[{"formatString":"%commands_verified"}]})"));
    EXPECT_EQ(payloadText(others.decode(packet, 0.0).at(0).payload), "klv_version=17");
    EXPECT_EQ(payloadText(commands.decode(packet, 0.0).at(0).payload), "commands_verified='7' klv_version=17");
}

/// What a configuration that names only this key gets, from a packet that has all that could be needed.
TEST(SecondKeys, AreMadeForThoseWhoNameOnlyThem)
{
    Bytes const items = fromHex(
        "17 04 F101A229 18 04 14BC082B 1A 02 1750 1B 02 063F 22 01 01 2F 01 31 3F 01 01 4D 01 01 7C 01 03 7D 01 01 "
        "7E 01 01 1C 02 1750 1D 02 063F 1E 02 1750 1F 02 063F 20 02 1750 21 02 063F "
        "4A 11 04 01 05 65 0C 0B 01 0A 03 3A 66 67 0B 03 3A 66 67");
    for (SecondKey const& second : secondKeys()) {
        SCOPED_TRACE(second.key);
        KlvDecoder all;
        KlvDecoder one(KeySelection::namedIn(R"({"overlay":[{"formatString":"%{)" + second.key + R"(}"}]})"));
        auto const whole = all.decode(packetOf(items), 0.0).at(0).payload;
        auto const part = one.decode(packetOf(items), 0.0).at(0).payload;
        EXPECT_TRUE(whole.contains(second.key));
        EXPECT_EQ(valueText(part[second.key]), valueText(whole[second.key]));
    }
}

}  // namespace
}  // namespace telemetry
