// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Stream units to payloads: key rules that go beyond one item, checksum verdicts, counts, files.
#include "telemetry/telemetry.h"

#include "klv_bytes.h"
#include "payload_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace telemetry {
namespace {

std::string decodeText(Bytes const& items)
{
    KlvDecoder decoder;
    auto const packets = decoder.decode(packetOf(items), std::nullopt);
    return packets.size() == 1 ? payloadText(packets[0].payload) : "no packet";
}

TEST(Mapping, KeyRules)
{
    struct Row {
        char const* name;
        char const* items;
        char const* expected;
    };
    Row const rows[] = {
        {"no item", "", ""},
        {"heading gives yaw too", "05 02 00 00", "heading_deg=0d yaw_deg=0d"},
        {"pitch and roll from the short tags", "06 02 7F FF 07 02 80 01", "pitch_deg=20d roll_deg=-50d"},
        {"pitch and roll from the full tags", "5A 04 7F FF FF FF 5B 04 80 00 00 01", "pitch_deg=90d roll_deg=-90d"},
        {"full pitch first keeps the short one apart", "06 02 7F FF 5A 04 7F FF FF FF",
         "pitch_deg=90d platform_pitch_deg=20d"},
        {"whatever the order", "5B 04 7F FF FF FF 07 02 80 01", "platform_roll_deg=-50d roll_deg=90d"},
        {"reserved full pitch leaves the short one", "06 02 7F FF 5A 04 80 00 00 00", "pitch_deg=20d"},
        {"reserved short pitch leaves the full one", "06 02 80 00 5A 04 7F FF FF FF", "pitch_deg=90d"},
        {"full roll without value leaves the short one", "07 02 7F FF 5B 00", "roll_deg=50d"},
        {"vertical speed is down", "33 02 7F FF", "velocity_down_mps=-180d"},
        {"laser off", "2F 01 30",
         "auto_track=false generic_flags=48 icing=false image_invalid=true ir_polarity_black=false "
         "laser_range_enabled=false slant_range_measured=true"},
        {"laser on", "2F 01 31",
         "auto_track=false generic_flags=49 icing=false image_invalid=true ir_polarity_black=false "
         "laser_range_enabled=true slant_range_measured=true"},
        {"the other flags", "2F 01 0E",
         "auto_track=true generic_flags=14 icing=true image_invalid=false ir_polarity_black=true "
         "laser_range_enabled=false slant_range_measured=false"},
        {"flags without value", "2F 00", ""},
        {"flags in two bytes", "2F 02 00 01",
         "auto_track=false generic_flags=1 icing=false image_invalid=false ir_polarity_black=false "
         "laser_range_enabled=true slant_range_measured=false"},
        {"text", "0B 02 45 4F", "camera_name='EO'"},
        {"malformed text", "0B 03 45 FF 4F", "camera_name='E\xEF\xBF\xBDO'"},
        {"empty texts", "0B 00 0C 00 41 01 11", "klv_version=17"},
        {"unknown tags are skipped", "7E 01 05 81 20 02 AA BB 41 01 11",
         "klv_version=17 sensor_control_mode=5 sensor_control_mode_text='auto, holding position'"},
        {"security set", "30 03 01 01 01 41 01 11",
         "klv_version=17 security_classification='UNCLASSIFIED' security_classification_code=1 "
         "security_line='UNCLASSIFIED'"},
        {"damaged security set", "30 03 01 02 01 41 01 11",
         "klv_version=17 security_classification='UNKNOWN' security_line='UNKNOWN'"},
        {"huge tag", "FF FF FF FF FF FF FF 7F 01 00 41 01 11", "klv_version=17"},
        {"two-byte tag", "81 06 02 37 00", "zoom_percent=55d"},
        {"the last of a repeated item counts", "41 01 10 41 01 11", "klv_version=17"},
        {"unless it has no value", "41 01 10 41 00", "klv_version=16"},
        {"target width in four bytes", "16 04 00 00 FF FF", "target_width_m=10000d"},
        {"start time of zero", "48 08 00 00 00 00 00 00 00 00", "event_start_time_us=0"},
        {"reverse order", "19 02 00 00 18 04 00 00 00 00 17 04 00 00 00 00",
         "frame_center_elev_m=-900d frame_center_lat_deg=0d frame_center_lon_deg=0d"},
        {"counts of the platform", "7B 01 07 7C 01 03 7D 01 09",
         "nav_sat_count=7 platform_status=9 platform_status_text='egress' positioning_method_source=3 "
         "positioning_method_source_text='INS+GPS'"},
        {"rates", "75 02 3E 90 76 03 3E 80 00 77 02 3B 60",
         "azimuth_rate_dps=1d elevation_rate_dps=0d roll_rate_dps=-50d"},
        {"laser code", "3E 02 06 CF", "laser_prf_code=1743"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(decodeText(fromHex(row.items)), row.expected);
    }
}

TEST(Mapping, NamesOfCodes)
{
    struct Row {
        char const* items;
        char const* key;
        char const* text;
    };
    Row const rows[] = {
        {"22 01 00", "icing_detected_text", "detector off"},
        {"22 01 02", "icing_detected_text", "icing detected"},
        {"22 01 03", "icing_detected_text", "3"},
        {"3F 01 00", "sensor_fov_name_text", "ultranarrow"},
        {"3F 01 05", "sensor_fov_name_text", "narrow medium"},
        {"3F 01 08", "sensor_fov_name_text", "continuous zoom"},
        {"3F 01 09", "sensor_fov_name_text", "9"},
        {"4D 01 00", "operational_mode_text", "other"},
        {"4D 01 05", "operational_mode_text", "test"},
        {"4D 01 FF", "operational_mode_text", "255"},
        {"7D 01 00", "platform_status_text", "active"},
        {"7D 01 07", "platform_status_text", "automated orbit"},
        {"7D 01 0C", "platform_status_text", "landed, parked"},
        {"7D 01 0D", "platform_status_text", "13"},
        {"7E 01 00", "sensor_control_mode_text", "off"},
        {"7E 01 06", "sensor_control_mode_text", "auto, tracking"},
        {"7C 01 80", "positioning_method_source_text", "BeiDou-2"},
        {"7C 01 FF", "positioning_method_source_text", "INS+GPS+Galileo+QZSS+NAVIC+GLONASS+BeiDou-1+BeiDou-2"},
        {"7C 01 00", "positioning_method_source_text", ""},
        {"22 00", "icing_detected_text", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.items);
        KlvDecoder decoder;
        auto const packets = decoder.decode(packetOf(fromHex(row.items)), std::nullopt);
        ASSERT_EQ(packets.size(), 1U);
        EXPECT_EQ(packets[0].payload[row.key].stringRef(), row.text);
    }
}

/// "lat lon" of a position to nine decimals; "none" when it is missing.
std::string placeOf(Bytes const& items, std::string const& name)
{
    KlvDecoder decoder;
    SwJsonObject const payload = decoder.decode(packetOf(items), std::nullopt).at(0).payload;
    if (!payload.contains(name + "_lat_deg") && !payload.contains(name + "_lon_deg")) {
        return "none";
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.9f %.9f", payload[name + "_lat_deg"].toDouble(),
                  payload[name + "_lon_deg"].toDouble());
    return text;
}

TEST(Mapping, CornersOnTheGround)
{
    // The center at 10.542388633 S, 29.157890123 E; corner 1 lies 0.013660085 north and 0.003659932 east of it.
    std::string const center = "17 04 F101A229 18 04 14BC082B ";
    std::string const offset = "1A 02 1750 1B 02 063F ";
    std::string const full = "52 04 F1069B63 53 04 14BCB2C0 ";
    struct Row {
        char const* name;
        std::string items;
        char const* corner1;
    };
    Row const rows[] = {
        {"its own position", full, "-10.528728394 29.161550416"},
        {"offset", center + offset, "-10.528728548 29.161550055"},
        {"the own position is preferred", center + offset + full, "-10.528728394 29.161550416"},
        {"offset before the center", offset + center, "-10.528728548 29.161550055"},
        {"half of its own position", center + offset + "52 04 F1069B63", "-10.528728548 29.161550055"},
        {"own position off the earth", center + offset + "52 04 80000000 53 04 14BCB2C0", "-10.528728548 29.161550055"},
        {"offset off the earth", center + "1A 02 8000 1B 02 063F", "none"},
        {"no center", offset, "none"},
        {"half of the center", "17 04 F101A229" + offset, "none"},
        {"half of the offset", center + "1A 02 1750", "none"},
        {"beyond the pole", "17 04 7FFFFFFF 18 04 00000000 1A 02 7FFF 1B 02 0000", "none"},
        {"over 180 degrees east", "17 04 00000000 18 04 7FFFFFFF 1A 02 0000 1B 02 7FFF", "0.000000000 -179.925000000"},
        {"over 180 degrees west", "17 04 00000000 18 04 80000001 1A 02 0000 1B 02 8001", "0.000000000 179.925000000"},
        {"to 180 degrees", "17 04 00000000 18 04 7FFFFFFF 1A 02 0000 1B 02 0000", "0.000000000 180.000000000"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(placeOf(fromHex(row.items), "corner1"), row.corner1);
        EXPECT_EQ(placeOf(fromHex(row.items), "corner2"), "none");
    }
    EXPECT_EQ(placeOf(fromHex(center + "20 02 1750 21 02 063F"), "corner4"), "-10.528728548 29.161550055");
}

TEST(KlvDecoder, ChecksumVerdicts)
{
    Bytes const items = fromHex("05 02 71 C2");
    Bytes const good = packetWithSum(items);
    Bytes wrong = good;
    wrong.at(wrong.size() - 1) ^= 0x01U;
    Bytes corrupt = good;
    corrupt.at(19) ^= 0x40U;
    Bytes longForm = packetOf(fromHex("05 02 71 C2 01 81 02 00 00"));
    std::uint16_t const sum = klvChecksum(std::span(longForm).first(longForm.size() - 2));
    longForm[longForm.size() - 2] = static_cast<std::uint8_t>(sum >> 8U);
    longForm[longForm.size() - 1] = static_cast<std::uint8_t>(sum & 0xFFU);
    struct Row {
        char const* name;
        Bytes unit;
        char const* verdict;
    };
    Row const rows[] = {
        {"right", good, "ok"},
        {"wrong sum", wrong, "bad"},
        {"wrong data", corrupt, "bad"},
        {"none", packetOf(items), "absent"},
        {"no value", packetOf(fromHex("05 02 71 C2 01 00")), "absent"},
        {"of another length", packetOf(fromHex("05 02 71 C2 01 03 00 00 00")), "absent"},
        {"length in the long form", longForm, "ok"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        KlvDecoder decoder;
        auto const packets = decoder.decode(row.unit, 2.5);
        ASSERT_EQ(packets.size(), 1U);
        EXPECT_STREQ(toText(packets[0].checksum), row.verdict);
        EXPECT_TRUE(packets[0].payload.contains("heading_deg")) << "used whatever the verdict";
        EXPECT_EQ(packets[0].timeSeconds, 2.5);
        EXPECT_EQ(decoder.counts().badChecksums, row.verdict == std::string("bad") ? 1U : 0U);
    }
}

TEST(KlvDecoder, ChecksumInTheMiddleCoversWhatStandsBeforeIt)
{
    Bytes const good = packetWithSum(fromHex("05 02 71 C2"));
    Bytes items(good.begin() + 17, good.end());
    items = join(items, fromHex("41 01 11"));
    Bytes packet = packetOf(items);
    // The length byte changed with the item behind the sum: correct the sum by the difference, in the high half.
    packet[23] = static_cast<std::uint8_t>(packet[23] + (items.size() - 8) * 1U);
    KlvDecoder decoder;
    auto const packets = decoder.decode(packet, std::nullopt);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].checksum, Checksum::Ok);
}

TEST(KlvDecoder, CountsOverUnits)
{
    Bytes const packet = packetWithSum(fromHex("41 01 11"));
    Bytes bad = packet;
    bad.at(bad.size() - 1) ^= 0xFFU;
    Bytes const foreign = fromHex("060E2B34 02010101 0E010102 01010000 02 AA BB");
    KlvDecoder decoder;
    EXPECT_EQ(decoder.decode(join(join(packet, foreign), bad), std::nullopt).size(), 2U);
    EXPECT_EQ(decoder.decode(Bytes(packet.begin(), packet.end() - 1), std::nullopt).size(), 0U);
    EXPECT_EQ(decoder.decode(packetOf(fromHex("41 01 11 05 09")), std::nullopt).size(), 0U);
    EXPECT_EQ(decoder.decode(foreign, std::nullopt).size(), 0U);
    EXPECT_EQ(decoder.decode({}, std::nullopt).size(), 0U);
    EXPECT_EQ(decoder.counts().packets, 2U);
    EXPECT_EQ(decoder.counts().badChecksums, 1U);
    EXPECT_EQ(decoder.counts().foreignKeys, 2U);
    EXPECT_EQ(decoder.counts().truncated, 2U);
}

TEST(KlvDecoder, SurvivesEveryCutAndEveryFlippedByte)
{
    Bytes const unit =
        join(fromHex("00 00 DF 00 20"), packetWithSum(fromHex("05 02 71 C2 81 06 02 37 00 0B 02 45 4F")));
    for (std::size_t length = 0; length < unit.size(); ++length) {
        KlvDecoder decoder;
        EXPECT_TRUE(decoder.decode(std::span(unit).first(length), std::nullopt).empty()) << length;
    }
    for (std::size_t place = 0; place < unit.size(); ++place) {
        for (unsigned bits = 1; bits < 256; ++bits) {
            Bytes damaged = unit;
            damaged[place] = static_cast<std::uint8_t>(damaged[place] ^ bits);
            KlvDecoder decoder;
            EXPECT_LE(decoder.decode(damaged, std::nullopt).size(), 1U) << place;
        }
    }
}

/// A file that is gone when the test ends.
class ScratchFile {
public:
    ScratchFile(std::string const& name, Bytes const& bytes)
        : path_(std::filesystem::temp_directory_path() /
                ("telemetry_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
                 name))
    {
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~ScratchFile() { std::filesystem::remove(path_); }
    ScratchFile(ScratchFile const&) = delete;
    ScratchFile& operator=(ScratchFile const&) = delete;
    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

std::string failureOfKlv(std::string const& path)
{
    KlvCounts counts;
    try {
        readKlvFile(path, counts);
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "no failure";
}

TEST(TelemetryFile, OfRawKlv)
{
    ScratchFile const file("a.KLV", join(packetWithSum(fromHex("41 01 11")), packetOf(fromHex("41 01 12"))));
    KlvCounts counts;
    auto const packets = readKlvFile(file.path(), counts);
    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(payloadText(packets[1].payload), "klv_version=18");
    EXPECT_FALSE(packets[0].timeSeconds.has_value());
    EXPECT_EQ(counts.packets, 2U);
}

TEST(TelemetryFile, OfJsonLines)
{
    std::string const text = "{\"t\":0.5,\"heading_deg\":90}\n";
    ScratchFile const file("a.jsonl", Bytes(text.begin(), text.end()));
    auto const packets = readJsonLinesFile(file.path());
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].timeSeconds, 0.5);
    EXPECT_EQ(payloadText(packets[0].payload), "heading_deg=90");
    EXPECT_EQ(packets[0].checksum, Checksum::Absent);
}

TEST(TelemetryFile, FailuresNameTheFileAndTheCure)
{
    ScratchFile const noPacket("b.klv", fromHex("01 02 03"));
    ScratchFile const broken("b.jsonl", {'{', '\n'});
    EXPECT_EQ(failureOfKlv("nowhere/x.klv"),
              "nowhere/x.klv: cannot open the telemetry file (No such file or directory); check the name and its "
              "permissions");
    EXPECT_EQ(failureOfKlv(noPacket.path()),
              noPacket.path() + ": no ST 0601 packet in the file; give raw KLV that holds some");
    try {
        readJsonLinesFile(broken.path());
        ADD_FAILURE() << "a broken line is taken";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(std::string(error.what()).find(broken.path() + ":1: not a JSON object: "), 0U) << error.what();
    }
}

}  // namespace
}  // namespace telemetry
