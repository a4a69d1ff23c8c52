// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The table of ST 0601 items. mapping.cpp and klv_writer.cpp walk it in opposite directions.
#include "telemetry/st0601_table.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace telemetry {
namespace {

using enum Rule;

// Ranges and widths: MISB ST 0601; Imapb: MISB ST 1201. In the order of the tags.
constexpr TableRow kTable[] = {
    {2, "utc_timestamp_us", "precision time stamp, microseconds since 1970", Count, 8},
    {3, "mission_id", "mission id", Text},
    {4, "platform_tail_number", "platform tail number", Text},
    {5, kHeadingKey, "platform heading", Range, 2, 0, 360},
    {6, kPitchKey, "platform pitch", Symmetric, 2, -20, 20},
    {7, kRollKey, "platform roll", Symmetric, 2, -50, 50},
    {8, "true_airspeed_mps", "true airspeed", Whole, 1, 0, 255},
    {9, "indicated_airspeed_mps", "indicated airspeed", Whole, 1, 0, 255},
    {10, "platform_designation", "platform designation", Text},
    {11, "camera_name", "image source sensor", Text},
    {12, "image_coordinate_system", "image coordinate system", Text},
    {13, "sensor_lat_deg", "sensor latitude", Symmetric, 4, -90, 90},
    {14, "sensor_lon_deg", "sensor longitude", Symmetric, 4, -180, 180},
    {15, "sensor_alt_m", "sensor altitude above mean sea level", Range, 2, -900, 19000},
    {16, "hfov_deg", "sensor horizontal field of view", Range, 2, 0, 180},
    {17, "vfov_deg", "sensor vertical field of view", Range, 2, 0, 180},
    {18, "pan_deg", "sensor azimuth relative to the platform", Range, 4, 0, 360},
    {19, "tilt_deg", "sensor elevation relative to the platform", Symmetric, 4, -180, 180},
    {20, "sensor_rel_roll_deg", "sensor roll relative to the platform", Range, 4, 0, 360},
    {21, "measured_slant_range_m", "slant range", Range, 4, 0, 5000000},
    {22, "target_width_m", "target width", Range, 2, 0, 10000},
    {23, "frame_center_lat_deg", "frame center latitude", Symmetric, 4, -90, 90},
    {24, "frame_center_lon_deg", "frame center longitude", Symmetric, 4, -180, 180},
    {25, "frame_center_elev_m", "frame center elevation above mean sea level", Range, 2, -900, 19000},
    {26, "corner_1_lat_offset_deg", "corner 1 latitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {27, "corner_1_lon_offset_deg", "corner 1 longitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {28, "corner_2_lat_offset_deg", "corner 2 latitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {29, "corner_2_lon_offset_deg", "corner 2 longitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {30, "corner_3_lat_offset_deg", "corner 3 latitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {31, "corner_3_lon_offset_deg", "corner 3 longitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {32, "corner_4_lat_offset_deg", "corner 4 latitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {33, "corner_4_lon_offset_deg", "corner 4 longitude from the frame center", Symmetric, 2, -0.075, 0.075},
    {34, "icing_detected", "icing detected, code", Count, 1},
    {35, "wind_direction_deg", "wind direction", Range, 2, 0, 360},
    {36, "wind_speed_mps", "wind speed", Range, 1, 0, 100},
    {37, "static_pressure_mbar", "static pressure", Range, 2, 0, 5000},
    {38, "density_altitude_m", "density altitude", Range, 2, -900, 19000},
    {39, "outside_air_temperature_c", "outside air temperature", SignedWhole, 1, -128, 127},
    {40, "target_lrf_lat_deg", "target location latitude", Symmetric, 4, -90, 90},
    {41, "target_lrf_lon_deg", "target location longitude", Symmetric, 4, -180, 180},
    {42, "target_lrf_elev_m", "target location elevation above mean sea level", Range, 2, -900, 19000},
    {43, "target_track_gate_width_px", "target track gate width", TwiceCount, 1},
    {44, "target_track_gate_height_px", "target track gate height", TwiceCount, 1},
    {45, "target_error_ce90_m", "target error estimate, horizontal (CE90)", Range, 2, 0, 4095},
    {46, "target_error_le90_m", "target error estimate, vertical (LE90)", Range, 2, 0, 4095},
    {47, kFlagsKey, "generic flags, bits", Count, 1},
    {49, "differential_pressure_mbar", "differential pressure", Range, 2, 0, 5000},
    {50, "angle_of_attack_deg", "angle of attack", Symmetric, 2, -20, 20},
    {51, "velocity_down_mps", "vertical speed, negated: positive down", Symmetric, 2, 180, -180},
    {52, "sideslip_deg", "sideslip", Symmetric, 2, -20, 20},
    {53, "airfield_pressure_mbar", "airfield barometric pressure", Range, 2, 0, 5000},
    {54, "airfield_elevation_m", "airfield elevation", Range, 2, -900, 19000},
    {55, "relative_humidity_percent", "relative humidity", Range, 1, 0, 100},
    {56, "ground_speed_mps", "ground speed", Whole, 1, 0, 255},
    {57, "ground_range_m", "ground range", Range, 4, 0, 5000000},
    {58, "fuel_remaining_kg", "fuel remaining", Range, 2, 0, 10000},
    {59, "platform_call_sign", "platform call sign", Text},
    {60, "weapon_load", "weapon load, code", Count, 2},
    {61, "weapon_fired", "weapon fired, code", Count, 1},
    {62, "laser_prf_code", "laser pulse repetition code", Count, 2},
    {63, "sensor_fov_name", "sensor field of view name, code", Count, 1},
    {64, "magnetic_heading_deg", "platform magnetic heading", Range, 2, 0, 360},
    {65, "klv_version", "version of ST 0601 used", Count, 1},
    {67, "alternate_platform_lat_deg", "alternate platform latitude", Symmetric, 4, -90, 90},
    {68, "alternate_platform_lon_deg", "alternate platform longitude", Symmetric, 4, -180, 180},
    {69, "alternate_platform_alt_m", "alternate platform altitude", Range, 2, -900, 19000},
    {70, "alternate_platform_name", "alternate platform name", Text},
    {71, "alternate_platform_heading_deg", "alternate platform heading", Range, 2, 0, 360},
    {72, "event_start_time_us", "event start time, microseconds since 1970", Count, 8},
    {75, "sensor_ellipsoid_height_m", "sensor height above the ellipsoid", Range, 2, -900, 19000},
    {76, "alternate_platform_ellipsoid_height_m", "alternate platform height above the ellipsoid", Range, 2, -900,
     19000},
    {77, "operational_mode", "operational mode, code", Count, 1},
    {78, "frame_center_ellipsoid_height_m", "frame center height above the ellipsoid", Range, 2, -900, 19000},
    {79, "velocity_north_mps", "sensor north velocity", Symmetric, 2, -327, 327},
    {80, "velocity_east_mps", "sensor east velocity", Symmetric, 2, -327, 327},
    {82, "corner_1_lat_deg", "corner 1 latitude", Symmetric, 4, -90, 90},
    {83, "corner_1_lon_deg", "corner 1 longitude", Symmetric, 4, -180, 180},
    {84, "corner_2_lat_deg", "corner 2 latitude", Symmetric, 4, -90, 90},
    {85, "corner_2_lon_deg", "corner 2 longitude", Symmetric, 4, -180, 180},
    {86, "corner_3_lat_deg", "corner 3 latitude", Symmetric, 4, -90, 90},
    {87, "corner_3_lon_deg", "corner 3 longitude", Symmetric, 4, -180, 180},
    {88, "corner_4_lat_deg", "corner 4 latitude", Symmetric, 4, -90, 90},
    {89, "corner_4_lon_deg", "corner 4 longitude", Symmetric, 4, -180, 180},
    {90, kPitchKey, "platform pitch, full range", Symmetric, 4, -90, 90},
    {91, kRollKey, "platform roll, full range", Symmetric, 4, -90, 90},
    {92, "angle_of_attack_full_deg", "angle of attack, full range", Symmetric, 4, -90, 90},
    {93, "sideslip_full_deg", "sideslip, full range", Symmetric, 4, -180, 180},
    {96, "target_width_extended_m", "target width, extended range", Imapb, 3, 0, 1500000},
    {103, "density_altitude_extended_m", "density altitude, extended range", Imapb, 3, -900, 40000},
    {104, "sensor_ellipsoid_height_extended_m", "sensor height above the ellipsoid, extended range", Imapb, 3, -900,
     40000},
    {105, "alternate_platform_ellipsoid_height_extended_m",
     "alternate platform height above the ellipsoid, extended range", Imapb, 3, -900, 40000},
    {106, "stream_designator", "stream designator", Text},
    {107, "operational_base", "operational base", Text},
    {108, "broadcast_source", "broadcast source", Text},
    {109, "range_to_recovery_km", "range to recovery location", Imapb, 3, 0, 21000},
    {110, "time_airborne_s", "time airborne", Count},
    {111, "propulsion_speed_rpm", "propulsion unit speed", Count},
    {112, "platform_course_deg", "platform course", Imapb, 2, 0, 360},
    {113, "altitude_agl_m", "altitude above ground", Imapb, 3, -900, 40000},
    {114, "radar_altimeter_m", "radar altimeter", Imapb, 3, -900, 40000},
    {117, "azimuth_rate_dps", "sensor azimuth rate", Imapb, 3, -1000, 1000},
    {118, "elevation_rate_dps", "sensor elevation rate", Imapb, 3, -1000, 1000},
    {119, "roll_rate_dps", "sensor roll rate", Imapb, 3, -1000, 1000},
    {120, "storage_full_percent", "on-board image storage in use", Imapb, 2, 0, 100},
    {123, "nav_sat_count", "number of navigation satellites in view", Count, 1},
    {124, "positioning_method_source", "positioning method source, bits", Count, 1},
    {125, "platform_status", "platform status, code", Count, 1},
    {126, "sensor_control_mode", "sensor control mode, code", Count, 1},
    {129, "target_id", "target id", Text},
    {131, "takeoff_time_us", "take-off time, microseconds since 1970", Count},
    {132, "transmission_frequency_mhz", "transmission frequency", Imapb, 3, 1, 99999},
    {133, "storage_capacity_gb", "on-board image storage capacity", Count},
    {134, "zoom_percent", "zoom percentage", Imapb, 2, 0, 100},
    {135, "communications_method", "communications method", Text},
    {136, "leap_seconds_s", "leap seconds", SignedCount},
    {137, "correction_offset_us", "correction offset of the time stamp", SignedCount},
};

static_assert(std::is_sorted(std::begin(kTable), std::end(kTable),
                             [](TableRow const& a, TableRow const& b) { return a.tag < b.tag; }),
              "the last row has the highest tag");

constexpr auto kRowOfTag = [] {
    std::array<TableRow const*, std::rbegin(kTable)->tag + 1> rows{};
    for (TableRow const& row : kTable) {
        rows[row.tag] = &row;
    }
    return rows;
}();

}  // namespace

std::span<TableRow const> st0601Table()
{
    return kTable;
}

TableRow const* findRow(std::uint32_t tag)
{
    return tag < kRowOfTag.size() ? kRowOfTag[tag] : nullptr;
}

}  // namespace telemetry
