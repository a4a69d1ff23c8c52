// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Derived keys: each computation by rows, which of them are made, what a missing one would need.
#include "telemetry/derived_keys.h"

#include "payload_text.h"
#include "telemetry/nested_sets.h"
#include "telemetry/position_text.h"
#include "telemetry/st0601_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace telemetry {
namespace {

/// What becomes of `payload` when all derived keys are wanted: the text of one of them, "none" when it is missing.
std::string derived(SwJsonObject payload, std::string const& key)
{
    DerivedKeyMaker maker(KeySelection::withDerived());
    maker.addTo(payload);
    return payload.contains(key) ? valueText(std::as_const(payload)[key]) : "none";
}

struct Row {
    char const* name;
    SwJsonObject payload;
    char const* key;
    char const* expected;
};

void expectRows(std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(derived(row.payload, row.key), row.expected);
    }
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(DerivedKeys, DegreesMinutesSeconds)
{
    expectRows({
        {"north", {{"a_lat_deg", 60.176822967}}, "a_lat_dms", "'60\u00B010'36.56\"N'"},
        {"east", {{"a_lon_deg", 128.426759042}}, "a_lon_dms", "'128\u00B025'36.33\"E'"},
        {"south", {{"a_lat_deg", -10.542388633}}, "a_lat_dms", "'10\u00B032'32.60\"S'"},
        {"two digits", {{"a_lon_deg", 29.157890123}}, "a_lon_dms", "'029\u00B009'28.40\"E'"},
        {"west", {{"a_lon_deg", -86.672039985}}, "a_lon_dms", "'086\u00B040'19.34\"W'"},
        {"just below", {{"a_lat_deg", 34.99999}}, "a_lat_dms", "'34\u00B059'59.96\"N'"},
        {"seconds are carried", {{"a_lat_deg", 34.999999}}, "a_lat_dms", "'35\u00B000'00.00\"N'"},
        {"minutes are carried",
         {{"a_lat_deg", 34.0 + 59.999 / 60.0 + 0.94 / 3600.0}},
         "a_lat_dms",
         "'35\u00B000'00.88\"N'"},
        {"59.999 minutes", {{"a_lat_deg", 34.0 + 59.999 / 60.0}}, "a_lat_dms", "'34\u00B059'59.94\"N'"},
        {"59.996 seconds", {{"a_lat_deg", 10.0 + 59.996 / 3600.0}}, "a_lat_dms", "'10\u00B001'00.00\"N'"},
        {"59.994 seconds", {{"a_lat_deg", 10.0 + 59.994 / 3600.0}}, "a_lat_dms", "'10\u00B000'59.99\"N'"},
        {"carried to the pole", {{"a_lat_deg", 89.9999999}}, "a_lat_dms", "'90\u00B000'00.00\"N'"},
        {"carried to the date line", {{"a_lon_deg", -179.9999999}}, "a_lon_dms", "'180\u00B000'00.00\"W'"},
        {"a little south", {{"a_lat_deg", -0.00001}}, "a_lat_dms", "'00\u00B000'00.04\"S'"},
        {"zero from below", {{"a_lat_deg", -0.000001}}, "a_lat_dms", "'00\u00B000'00.00\"N'"},
        {"zero from the west", {{"a_lon_deg", -0.000001}}, "a_lon_dms", "'000\u00B000'00.00\"E'"},
        {"negative zero", {{"a_lat_deg", -0.0}}, "a_lat_dms", "'00\u00B000'00.00\"N'"},
        {"an integer", {{"a_lat_deg", -34}}, "a_lat_dms", "'34\u00B000'00.00\"S'"},
        {"beyond the pole", {{"a_lat_deg", 90.0000001}}, "a_lat_dms", "none"},
        {"beyond the date line", {{"a_lon_deg", -180.0000001}}, "a_lon_dms", "none"},
        {"not a number", {{"a_lat_deg", kNaN}}, "a_lat_dms", "none"},
        {"a text", {{"a_lat_deg", "34"}}, "a_lat_dms", "none"},
        {"an offset is no position", {{"a_lat_offset_deg", 1.0}}, "a_lat_offset_dms", "none"},
    });
}

TEST(DerivedKeys, Mgrs)
{
    auto const at = [](double lat, double lon) { return SwJsonObject{{"a_lat_deg", lat}, {"a_lon_deg", lon}}; };
    expectRows({
        {"a published pair", at(21.0 + 18.0 / 60 + 34.0 / 3600, -(157.0 + 55.0 / 60 + 0.7 / 3600)), "a_mgrs",
         "'4Q FJ 12340 56781'"},
        {"two digits of a zone", at(38.8977, -77.0365), "a_mgrs", "'18S UJ 23394 07395'"},
        {"east", at(60.176822967, 128.426759042), "a_mgrs", "'52V DM 68196 71241'"},
        {"south", at(-10.542388633, 29.157890123), "a_mgrs", "'35L QJ 36144 33804'"},
        {"far south", at(-79.163850052, 166.400812960), "a_mgrs", "'58C ET 29397 11385'"},
        {"Norway", at(60.39, 5.32), "a_mgrs", "'32V KN 97230 00510'"},
        {"Svalbard", at(78.22, 15.65), "a_mgrs", "'33X WG 14813 83004'"},
        {"north pole", at(90.0, 0.0), "a_mgrs", "'Z AH 00000 00000'"},
        {"south pole", at(-90.0, 0.0), "a_mgrs", "'B AN 00000 00000'"},
        {"date line from the east", at(0.0, 180.0), "a_mgrs", "'1N AA 66021 00000'"},
        {"date line from the west", at(0.0, -180.0), "a_mgrs", "'1N AA 66021 00000'"},
        {"beyond the pole", at(-90.0000001, 0.0), "a_mgrs", "none"},
        {"beyond the date line", at(0.0, 180.0000001), "a_mgrs", "none"},
        {"not a number", at(0.0, kNaN), "a_mgrs", "none"},
        {"half a pair", {{"a_lat_deg", 1.0}}, "a_mgrs", "none"},
        {"halves of two pairs", {{"a_lat_deg", 1.0}, {"b_lon_deg", 1.0}}, "a_mgrs", "none"},
    });
}

TEST(DerivedKeys, LengthsAndSpeeds)
{
    expectRows({
        {"feet", {{"a_m", 0.3048}}, "a_ft", "1d"},
        {"feet of an altitude", {{"sensor_alt_m", 14190.6}}, "sensor_alt_ft", "46557.086614173226d"},
        {"feet below", {{"a_m", -304.8}}, "a_ft", "-1000d"},
        {"kilometres", {{"a_m", 1500}}, "a_km", "1.5d"},
        {"nautical miles", {{"a_m", 18520.0}}, "a_nmi", "10d"},
        {"knots", {{"a_mps", 463.0}}, "a_kt", "900d"},
        {"kilometres per hour", {{"a_mps", 10.0}}, "a_kmh", "36d"},
        {"none below zero", {{"a_mps", -0.0}}, "a_kmh", "0d"},
        {"too large", {{"a_mps", 1e308}}, "a_kmh", "none"},
        {"infinite", {{"a_m", kInfinity}}, "a_ft", "none"},
        {"a flag", {{"a_m", true}}, "a_ft", "none"},
        {"the ending alone is no key", {{"_m", 1.0}}, "_ft", "none"},
        {"other endings", {{"a_km", 1.0}, {"b_mbar", 1.0}}, "a_ft", "none"},
        {"what is there stays", {{"a_m", 1.0}, {"a_ft", 5.0}}, "a_ft", "5d"},
    });
}

TEST(DerivedKeys, Directions)
{
    auto const heading = [](double degrees) { return SwJsonObject{{"heading_deg", degrees}}; };
    expectRows({
        {"north", heading(0.0), "heading_compass", "'N'"},
        {"below the border", heading(11.2499), "heading_compass", "'N'"},
        {"on the border", heading(11.25), "heading_compass", "'NNE'"},
        {"east", heading(90.0), "heading_compass", "'E'"},
        {"south-west", heading(225.0), "heading_compass", "'SW'"},
        {"last point", heading(348.7499), "heading_compass", "'NNW'"},
        {"north again", heading(348.75), "heading_compass", "'N'"},
        {"full circle", heading(360.0), "heading_compass", "'N'"},
        {"west of north", heading(-22.5), "heading_compass", "'NNW'"},
        {"beyond the circle", heading(360.01), "heading_compass", "none"},
        {"beyond half of it", heading(-180.01), "heading_compass", "none"},
        {"seven", heading(6.5), "heading_3digits", "'007'"},
        {"two digits", heading(42.4), "heading_3digits", "'042'"},
        {"three digits", heading(311.868162051), "heading_3digits", "'312'"},
        {"rounded to the circle", heading(359.6), "heading_3digits", "'000'"},
        {"below it", heading(359.4), "heading_3digits", "'359'"},
        {"the circle", heading(360.0), "heading_3digits", "'000'"},
        {"a little west", heading(-0.2), "heading_3digits", "'000'"},
        {"not a number", heading(kNaN), "heading_3digits", "none"},
        {"a longer name", {{"wind_direction_deg", 270.0}}, "wind_direction_3digits", "'270'"},
        {"no direction", {{"pitch_deg", 5.0}}, "pitch_3digits", "none"},
        {"no direction but for its end", {{"subheading_deg", 5.0}}, "subheading_3digits", "none"},
    });
}

TEST(DerivedKeys, EveryFullCircleOfTheTablesIsADirection)
{
    std::set<std::string> keys;
    auto const take = [&keys](TableRow const& row) {
        bool const isReach = row.key.ends_with("_range_deg") || row.key.ends_with("_layover_deg");
        if (row.low == 0.0 && row.high == 360.0 && row.key.ends_with("_deg") && !isReach) {
            keys.emplace(row.key.substr(0, row.key.size() - 4));
        }
    };
    for (TableRow const& row : st0601Table()) {
        take(row);
    }
    for (NestedRow const& nested : nestedTable()) {
        take(nested.row);
    }
    EXPECT_GE(keys.size(), 8U);
    for (std::string const& key : keys) {
        EXPECT_EQ(derived({{key + "_deg", 90.0}}, key + "_compass"), "'E'") << key;
        EXPECT_EQ(derived({{key + "_deg", 90.0}}, key + "_3digits"), "'090'") << key;
    }
}

TEST(DerivedKeys, CourseAndSpeed)
{
    auto const moving = [](double north, double east) {
        return SwJsonObject{{"velocity_north_mps", north}, {"velocity_east_mps", east}};
    };
    expectRows({
        {"north", moving(10.0, 0.0), "course_deg", "0d"},
        {"east", moving(0.0, 10.0), "course_deg", "90d"},
        {"south-west", moving(-1.0, -1.0), "course_deg", "225d"},
        {"west", moving(0.0, -3.0), "course_deg", "270d"},
        {"north, from the west", moving(1.0, -1e-30), "course_deg", "0d"},
        {"standing", moving(0.0, 0.0), "course_deg", "none"},
        {"standing has a speed", moving(0.0, 0.0), "speed_mps", "0d"},
        {"speed", moving(3.0, -4.0), "speed_mps", "5d"},
        {"of a derived key", moving(0.0, 463.0), "speed_kt", "900d"},
        {"point of a derived key", moving(-1.0, -1.0), "course_compass", "'SW'"},
        {"digits of a derived key", moving(-1.0, -1.0), "course_3digits", "'225'"},
        {"half a velocity", {{"velocity_north_mps", 1.0}}, "speed_mps", "none"},
    });
}

TEST(DerivedKeys, Times)
{
    auto const utc = [](std::int64_t stamp) { return SwJsonObject{{"utc_timestamp_us", stamp}}; };
    auto const video = [](double seconds) { return SwJsonObject{{"video_time_s", seconds}}; };
    std::int64_t const june = 1749893404123999;
    expectRows({
        {"whole", utc(june), "utc_iso_ms", "'2025-06-14T09:30:04.123Z'"},
        {"group", utc(june), "utc_dtg", "'140930ZJUN25'"},
        {"day", utc(june), "utc_date", "'2025-06-14'"},
        {"clock", utc(june), "utc_clock_ms", "'09:30:04.123'"},
        {"worked example", utc(1224807209913000), "utc_iso_ms", "'2008-10-24T00:13:29.913Z'"},
        {"leap day", utc(1709164800000000), "utc_dtg", "'290000ZFEB24'"},
        {"last of a year", utc(1767225599999999), "utc_iso_ms", "'2025-12-31T23:59:59.999Z'"},
        {"first microsecond", utc(1), "utc_iso_ms", "'1970-01-01T00:00:00.000Z'"},
        {"no stamp", utc(0), "utc_iso_ms", "none"},
        {"before all", utc(-1), "utc_date", "none"},
        {"last year", utc(253402300799000000), "utc_date", "'9999-12-31'"},
        {"beyond it", utc(253402300800000000), "utc_date", "none"},
        {"far beyond it", utc(std::numeric_limits<std::int64_t>::max()), "utc_dtg", "none"},
        {"video", video(67.433), "video_time_text", "'00:01:07.433'"},
        {"begin", video(0.0), "video_time_text", "'00:00:00.000'"},
        {"not yet", video(0.0009), "video_time_text", "'00:00:00.000'"},
        {"hours", video(3600.0 * 123 + 59.9995), "video_time_text", "'123:00:59.999'"},
        {"before the begin", video(-0.001), "video_time_text", "none"},
        {"no time", video(kNaN), "video_time_text", "none"},
    });
}

SwJsonObject corners(std::vector<double> const& places)
{
    SwJsonObject payload;
    for (std::size_t i = 0; i < places.size(); ++i) {
        payload.insertOrAssign("corner" + std::to_string(i / 2 + 1) + (i % 2 == 0 ? "_lat_deg" : "_lon_deg"),
                               SwJsonValue(places[i]));
    }
    return payload;
}

TEST(DerivedKeys, North)
{
    SwJsonObject const up = corners({1, 0, 1, 1, 0, 1, 0, 0});
    SwJsonObject withAttitude = corners({1, 0, 1, 1, 0, 1});
    withAttitude.insertOrAssign("heading_deg", 200.0);
    withAttitude.insertOrAssign("pan_deg", 70.0);
    SwJsonObject bothWays = up;
    bothWays.insertOrAssign("heading_deg", 200.0);
    bothWays.insertOrAssign("pan_deg", 70.0);
    SwJsonObject noPicture = corners({5, 5, 5, 5, 5, 5, 5, 5});
    noPicture.insertOrAssign("heading_deg", 0.0);
    noPicture.insertOrAssign("pan_deg", 0.0);
    expectRows({
        {"up", up, "north_angle_deg", "0d"},
        {"up", up, "north_arrow", "'\u2191'"},
        {"upside down", corners({0, 1, 0, 0, 1, 0, 1, 1}), "north_angle_deg", "180d"},
        {"upside down", corners({0, 1, 0, 0, 1, 0, 1, 1}), "north_arrow", "'\u2193'"},
        {"upper edge to the east", corners({0.001, 1, -0.001, 1, -0.001, 0, 0.001, 0}), "north_angle_deg", "270d"},
        {"upper edge to the east", corners({0.001, 1, -0.001, 1, -0.001, 0, 0.001, 0}), "north_arrow", "'\u2190'"},
        {"degrees of longitude are shorter", corners({60.001, 0.001, 60.001, 0.003, 59.999, 0.001, 59.999, -0.001}),
         "north_arrow", "'\u2196'"},
        {"over 180 degrees", corners({1, 179.5, 1, -179.5, 0, -179.5, 0, 179.5}), "north_angle_deg", "0d"},
        {"no picture", corners({5, 5, 5, 5, 5, 5, 5, 5}), "north_angle_deg", "none"},
        {"beyond the pole", corners({91, 0, 91, 1, 0, 1, 0, 0}), "north_angle_deg", "none"},
        {"corners win", bothWays, "north_angle_deg", "0d"},
        {"a corner is missing", withAttitude, "north_angle_deg", "90d"},
        {"corners that tell nothing", noPicture, "north_angle_deg", "0d"},
        {"attitude", {{"heading_deg", 200.0}, {"pan_deg", 70.0}}, "north_angle_deg", "90d"},
        {"attitude", {{"heading_deg", 200.0}, {"pan_deg", 70.0}}, "north_arrow", "'\u2192'"},
        {"over the circle", {{"heading_deg", 207.5}, {"pan_deg", 284.0}}, "north_angle_deg", "228.5d"},
        {"border", {{"heading_deg", 337.5}, {"pan_deg", 0.0}}, "north_arrow", "'\u2197'"},
        {"heading alone", {{"heading_deg", 200.0}}, "north_angle_deg", "none"},
        {"heading beyond the circle", {{"heading_deg", 400.0}, {"pan_deg", 0.0}}, "north_angle_deg", "none"},
    });
}

TEST(DerivedKeys, AreMadeOnlyForThoseWhoNameThem)
{
    struct Case {
        char const* config;
        char const* expected;
    };
    Case const cases[] = {
        {R"({"overlay":[{"formatString":"%heading_deg"}]})", "heading_deg=90d sensor_alt_m=0d velocity_east_mps=0d "
                                                             "velocity_north_mps=463d"},
        {R"({"overlay":[{"formatString":"%{heading_compass}"}]})",
         "heading_compass='E' heading_deg=90d sensor_alt_m=0d velocity_east_mps=0d velocity_north_mps=463d"},
        {R"({"overlay":[{"formatString":"x","condition":{"key":"speed_kt"}}]})",
         "heading_deg=90d sensor_alt_m=0d speed_kt=900d speed_mps=463d velocity_east_mps=0d velocity_north_mps=463d"},
        {R"({"overlay":[{}]})", "heading_deg=90d sensor_alt_m=0d velocity_east_mps=0d velocity_north_mps=463d"},
        {R"({"overlay":[{},{"formatString":"%sensor_alt_ft"}]})",
         "heading_deg=90d sensor_alt_ft=0d sensor_alt_m=0d velocity_east_mps=0d velocity_north_mps=463d"},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(each.config);
        SwJsonObject payload{
            {"heading_deg", 90.0}, {"sensor_alt_m", 0.0}, {"velocity_north_mps", 463.0}, {"velocity_east_mps", 0.0}};
        DerivedKeyMaker maker(KeySelection::namedIn(each.config));
        maker.addTo(payload);
        EXPECT_EQ(payloadText(payload), each.expected);
    }
}

TEST(DerivedKeys, LearnFromEveryPayload)
{
    DerivedKeyMaker maker(KeySelection::withDerived());
    SwJsonObject first{{"a_m", 0.3048}};
    SwJsonObject second{{"b_m", 0.6096}};
    SwJsonObject third{{"a_m", "far"}, {"b_m", 0.3048}};
    maker.addTo(first);
    maker.addTo(second);
    maker.addTo(third);
    EXPECT_EQ(valueText(std::as_const(first)["a_ft"]), "1d");
    EXPECT_EQ(valueText(std::as_const(second)["b_ft"]), "2d");
    EXPECT_FALSE(second.contains("a_ft"));
    EXPECT_EQ(valueText(std::as_const(third)["b_ft"]), "1d");
    EXPECT_FALSE(third.contains("a_ft"));
}

// Once a packet had brought the key itself, it was never made again.
TEST(DerivedKeys, KeyThatAPacketBringsStaysInThatPacketOnly)
{
    DerivedKeyMaker maker(KeySelection::namedIn(R"({"overlay":[{"formatString":"%speed_mps"}]})"));
    SwJsonObject const moving{{"velocity_north_mps", 3.0}, {"velocity_east_mps", 4.0}};
    SwJsonObject first = moving;
    SwJsonObject second = moving;
    second.insertOrAssign("speed_mps", 7.0);
    SwJsonObject third = moving;
    for (SwJsonObject* const payload : {&first, &second, &third}) {
        maker.addTo(*payload);
    }
    EXPECT_EQ(valueText(std::as_const(first)["speed_mps"]), "5d");
    EXPECT_EQ(valueText(std::as_const(second)["speed_mps"]), "7d");
    EXPECT_EQ(valueText(std::as_const(third)["speed_mps"]), "5d");
}

TEST(DerivedKeys, KeyInALongerNameIsNotNamed)
{
    auto const names = [](std::string const& text) {
        return KeySelection::namedIn(R"({"overlay":[{"formatString":")" + text + R"("}]})").names("speed_mps");
    };
    EXPECT_FALSE(names("%ground_speed_mps"));
    EXPECT_TRUE(names("%speed_mps"));
    EXPECT_TRUE(names("%{speed_mps}x"));
    EXPECT_TRUE(names("%ground_speed_mps %speed_mpsx")) << "rather more: the text may go on with other letters";
}

TEST(DerivedKeys, SourcesOfNamedOnesAreWanted)
{
    struct Case {
        char const* named;
        char const* wanted;
    };
    Case const cases[] = {
        {"sensor_mgrs", "sensor_lon_deg"},       {"sensor_alt_ft", "sensor_alt_m"},
        {"speed_kt", "velocity_east_mps"},       {"north_arrow", "corner_3_lon_offset_deg"},
        {"north_arrow", "frame_center_lat_deg"}, {"north_arrow", "pan_deg"},
        {"corner1_mgrs", "corner_1_lon_deg"},    {"yaw_compass", "yaw_deg"},
        {"takeoff_lat_dms", "takeoff_lat_deg"},  {"utc_dtg", "utc_timestamp_us"},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(each.named);
        KeySelection const keys =
            KeySelection::namedIn(std::string(R"({"overlay":[{"formatString":"%{)") + each.named + R"(}"}]})");
        EXPECT_TRUE(keys.wants(each.wanted));
        EXPECT_TRUE(keys.names(each.named));
        EXPECT_FALSE(keys.wants("mission_id"));
    }
    EXPECT_FALSE(KeySelection().names("sensor_mgrs"));
    EXPECT_TRUE(KeySelection().wants("sensor_mgrs"));
    EXPECT_TRUE(KeySelection::withDerived().names("sensor_mgrs"));
}

std::string joined(std::vector<std::string> const& texts)
{
    std::string all;
    for (std::string const& text : texts) {
        all += (all.empty() ? "" : " ") + text;
    }
    return all;
}

TEST(DerivedKeys, WhatAMissingOneWouldNeed)
{
    struct Case {
        char const* key;
        std::set<std::string> keys;
        char const* missing;
    };
    Case const cases[] = {
        {"sensor_mgrs", {}, "sensor_lat_deg sensor_lon_deg"},
        {"sensor_mgrs", {"sensor_lat_deg"}, "sensor_lon_deg"},
        {"speed_kt", {"velocity_north_mps"}, "speed_mps"},
        {"speed_mps", {"velocity_north_mps"}, "velocity_east_mps"},
        {"heading_compass", {}, "heading_deg"},
        {"north_angle_deg", {"heading_deg"}, "pan_deg"},
        {"pitch_compass", {}, ""},
        {"sensor_lat_deg", {}, ""},
        {"_ft", {}, ""},
    };
    for (Case const& each : cases) {
        EXPECT_EQ(joined(missingSources(each.key, each.keys)), each.missing) << each.key;
    }
}

TEST(DerivedKeys, StandBehindThoseOfWhichTheyAreMade)
{
    std::set<std::string> known = {"velocity_north_mps", "velocity_east_mps", "heading_deg", "pan_deg",
                                   "sensor_lat_deg",     "sensor_lon_deg",    "sensor_alt_m"};
    std::set<std::string> names;
    for (DerivedKey const& each : derivableFrom(known)) {
        for (std::string const& source : each.sources) {
            EXPECT_TRUE(known.count(source) == 1) << each.key << " from " << source;
        }
        known.insert(each.key);
        names.insert(each.key);
    }
    for (char const* const key : {"speed_kt", "course_compass", "north_arrow", "sensor_mgrs", "sensor_lat_dms",
                                  "sensor_alt_ft", "sensor_alt_km", "sensor_alt_nmi", "heading_3digits"}) {
        EXPECT_EQ(names.count(key), 1U) << key;
    }
    EXPECT_EQ(names.count("speed_mps_kt"), 0U);
}

}  // namespace
}  // namespace telemetry
