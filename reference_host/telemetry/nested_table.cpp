// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The keys of nested items: ranges and widths from MISB ST 0601 and the standards named below.
#include "telemetry/nested_sets.h"

#include <algorithm>
#include <iterator>

namespace telemetry {
namespace {

using enum Rule;

constexpr std::string_view kTarget = "first target";

constexpr NestedRow kTable[] = {
    // Remote video terminal (MISB ST 0806).
    {73, "", {2, "rvt_time_us", "time stamp of the remote video terminal, microseconds since 1970", Count, 8}},
    {73, "", {3, "rvt_true_airspeed_mps", "platform true airspeed", Whole, 2, 0, 65535}},
    {73, "", {4, "rvt_indicated_airspeed_mps", "platform indicated airspeed", Whole, 2, 0, 65535}},
    {73, "", {6, "rvt_frag_circle_m", "radius of the fragmentation circle", Whole, 2, 0, 65535}},
    {73, "", {7, "rvt_frame_code", "frame code", Count, 4}},
    {73, "", {8, "rvt_version", "version of ST 0806 used", Count, 1}},
    {73, "", {9, "rvt_video_data_rate", "video data rate, analog in hertz or digital in bits per second", Count, 4}},
    {73, "", {10, "rvt_video_format", "digital video file format", Text}},
    // Moving targets (MISB ST 0903).
    {74, "", {2, "vmti_time_us", "time stamp of the moving targets, microseconds since 1970", Count, 8}},
    {74, "", {3, "vmti_system_name", "system that found the targets", Text}},
    {74, "", {4, "vmti_version", "version of ST 0903 used", Count, 2}},
    {74, "", {5, "vmti_target_count", "number of targets found", Count, 3}},
    {74, "", {6, "vmti_reported_count", "number of targets in the set", Count, 3}},
    {74, "", {7, "vmti_frame_number", "number of the picture", Count, 3}},
    {74, "", {8, "vmti_frame_width_px", "width of the picture", Count, 3}},
    {74, "", {9, "vmti_frame_height_px", "height of the picture", Count, 3}},
    {74, "", {10, "vmti_camera_name", "image source sensor", Text}},
    {74, "", {11, "vmti_hfov_deg", "sensor horizontal field of view", Imapb, 2, 0, 180}},
    {74, "", {12, "vmti_vfov_deg", "sensor vertical field of view", Imapb, 2, 0, 180}},
    {74, kTarget, {0, "vmti_target_id", "number of the target", Count}},
    {74, kTarget, {1, "vmti_target_pixel", "pixel of its centroid, counted row by row from 1", Count, 6}},
    {74, kTarget, {4, "vmti_target_priority", "priority, 1 is the highest", Count, 1}},
    {74, kTarget, {5, "vmti_target_confidence_percent", "confidence of the detection", Whole, 1, 0, 255}},
    {74, kTarget, {10, "vmti_target_lat_offset_deg", "latitude from the frame center", Imapb, 3, -19.2, 19.2}},
    {74, kTarget, {11, "vmti_target_lon_offset_deg", "longitude from the frame center", Imapb, 3, -19.2, 19.2}},
    {74, kTarget, {12, "vmti_target_hae_m", "height above the ellipsoid", Imapb, 2, -900, 19000}},
    {74, "first target, item 17", {0, "vmti_target_lat_deg", "latitude", Imapb, 4, -90, 90}},
    {74, "first target, item 17", {0, "vmti_target_lon_deg", "longitude", Imapb, 4, -180, 180}},
    // Where the horizon crosses the edge of the picture.
    {81, "", {0, "horizon_start_x_percent", "first point of the horizon, from the left", Whole, 1, 0, 255}},
    {81, "", {0, "horizon_start_y_percent", "first point of the horizon, from the top", Whole, 1, 0, 255}},
    {81, "", {0, "horizon_end_x_percent", "second point of the horizon, from the left", Whole, 1, 0, 255}},
    {81, "", {0, "horizon_end_y_percent", "second point of the horizon, from the top", Whole, 1, 0, 255}},
    {81, "", {0, "horizon_start_lat_deg", "first point of the horizon, latitude", Symmetric, 4, -90, 90}},
    {81, "", {0, "horizon_start_lon_deg", "first point of the horizon, longitude", Symmetric, 4, -180, 180}},
    {81, "", {0, "horizon_end_lat_deg", "second point of the horizon, latitude", Symmetric, 4, -90, 90}},
    {81, "", {0, "horizon_end_lon_deg", "second point of the horizon, longitude", Symmetric, 4, -180, 180}},
    // Motion imagery identification (MISB ST 1204).
    {94, "", {0, "core_identifier", "core identifier: version and usage, then the identifiers, parted by /", Text}},
    // Radar pictures (MISB ST 1206).
    {95, "", {1, "sar_grazing_angle_deg", "grazing angle", Imapb, 2, 0, 90}},
    {95, "", {2, "sar_squint_angle_deg", "ground plane squint angle", Imapb, 2, -90, 90}},
    {95, "", {3, "sar_look_direction", "look direction, 0 left, 1 right", Count, 1}},
    {95, "", {4, "sar_image_rotation_deg", "image rotation", Imapb, 2, 0, 360}},
    {95, "", {5, "sar_range_resolution_m", "range resolution", Imapb, 4, 0, 1000000}},
    {95, "", {6, "sar_cross_range_resolution_m", "cross-range resolution", Imapb, 4, 0, 1000000}},
    {95, "", {9, "sar_image_rows", "rows of the image", Count, 2}},
    {95, "", {10, "sar_image_columns", "columns of the image", Count, 2}},
    {95, "", {11, "sar_range_direction_deg", "range direction angle", Imapb, 2, 0, 360}},
    {95, "", {12, "sar_true_north_deg", "direction of true north", Imapb, 2, 0, 360}},
    {95, "", {13, "sar_range_layover_deg", "range layover angle", Imapb, 2, 0, 360}},
    {95, "", {14, "sar_aperture_angle_deg", "angular extent of the aperture", Imapb, 2, 0, 90}},
    {95, "", {15, "sar_aperture_duration_us", "duration of the aperture, microseconds", Count, 4}},
    {95, "", {16, "sar_ground_track_deg", "ground track angle", Imapb, 2, 0, 360}},
    {95, "", {17, "sar_min_velocity_mps", "smallest velocity that is detected", Imapb, 2, 0, 100}},
    {95, "", {28, "sar_version", "version of ST 1206 used", Count, 1}},
    // Range pictures (MISB ST 1002).
    {97, "", {1, "range_image_time_us", "time stamp of the range image, microseconds since 1970", Count, 8}},
    {97, "", {11, "range_image_version", "version of ST 1002 used", Count, 1}},
    {97, "", {13, "range_image_range_m", "range measured at one point", Float, 4}},
    {97, "", {14, "range_image_uncertainty_m", "uncertainty of that range", Float, 4}},
    {97, "", {15, "range_image_row", "row of that point", Float, 4}},
    {97, "", {16, "range_image_column", "column of that point", Float, 4}},
    // Registration to the ground (MISB ST 1601).
    {98, "", {1, "georegistration_version", "version of ST 1601 used", Count, 1}},
    {98, "", {2, "georegistration_algorithm", "algorithm of the registration", Text}},
    {98, "", {3, "georegistration_algorithm_version", "version of that algorithm", Text}},
    // Composite pictures (MISB ST 1602).
    {99, "", {1, "composite_time_us", "time stamp of the composite image, microseconds since 1970", Count, 8}},
    {99, "", {2, "composite_version", "version of ST 1602 used", Count, 1}},
    {99, "", {3, "composite_source_rows", "rows of the source image", Count, 2}},
    {99, "", {4, "composite_source_columns", "columns of the source image", Count, 2}},
    {99, "", {9, "composite_rows", "rows of the part that is shown", Count, 2}},
    {99, "", {10, "composite_columns", "columns of the part that is shown", Count, 2}},
    // Packs of ST 0601 itself.
    {115, "", {0, "command_id", "command, number", Count}},
    {115, "", {0, "command_text", "command", Text}},
    {115, "", {0, "command_time_us", "time of the command, microseconds since 1970", Count, 8}},
    {116, "", {0, "commands_verified", "numbers of the commands that were carried out, parted by commas", Text}},
    {121, "", {0, "active_wavelengths", "numbers of the active wavelengths, parted by commas", Text}},
    {122, "", {0, "country_coding_method", "coding of the countries below, code", Count, 1}},
    {122, "", {0, "overflight_country", "country that is flown over", Text}},
    {122, "", {0, "operator_country", "country of the operator", Text}},
    {122, "", {0, "manufacture_country", "country of manufacture", Text}},
    {127, "", {0, "sensor_frame_rate_hz", "frame rate of the sensor", Float}},
    {128, "", {0, "wavelengths", "names of the wavelengths and their bounds, parted by commas", Text}},
    {130, "", {0, "takeoff_lat_deg", "take-off location latitude", Imapb, 4, -90, 90}},
    {130, "", {0, "takeoff_lon_deg", "take-off location longitude", Imapb, 4, -180, 180}},
    {130, "", {0, "takeoff_hae_m", "take-off location height above the ellipsoid", Imapb, 3, -900, 9000}},
    {130, "", {0, "recovery_lat_deg", "recovery location latitude", Imapb, 4, -90, 90}},
    {130, "", {0, "recovery_lon_deg", "recovery location longitude", Imapb, 4, -180, 180}},
    {130, "", {0, "recovery_hae_m", "recovery location height above the ellipsoid", Imapb, 3, -900, 9000}},
    {138, "", {0, "payload_count", "number of payloads", Count}},
    {138, "", {0, "payloads", "names of the payloads, parted by commas", Text}},
    {139, "", {0, "active_payloads", "numbers of the active payloads, parted by commas", Text}},
    {140, "", {0, "weapon_count", "number of weapon stores", Count}},
    {140, "", {0, "weapons", "types of the weapon stores, parted by commas", Text}},
    {141, "", {0, "waypoint_count", "number of waypoints", Count}},
    {141, "", {0, "waypoints", "numbers of the waypoints, parted by commas", Text}},
    {141, "first waypoint", {0, "waypoint_lat_deg", "latitude", Imapb, 4, -90, 90}},
    {141, "first waypoint", {0, "waypoint_lon_deg", "longitude", Imapb, 4, -180, 180}},
    {141, "first waypoint", {0, "waypoint_hae_m", "height above the ellipsoid", Imapb, 3, -900, 9000}},
    {142, "", {0, "view_azimuth_start_deg", "where the view can begin, azimuth", Imapb, 3, 0, 360}},
    {142, "", {0, "view_azimuth_range_deg", "how far it reaches from there clockwise", Imapb, 3, 0, 360}},
    {142, "", {0, "view_elevation_start_deg", "where the view can begin, elevation", Imapb, 3, -180, 180}},
    {142, "", {0, "view_elevation_range_deg", "how far it reaches from there upwards", Imapb, 3, 0, 360}},
    {142, "", {0, "view_roll_start_deg", "where the view can begin, roll", Imapb, 3, 0, 360}},
    {142, "", {0, "view_roll_range_deg", "how far it reaches from there clockwise", Imapb, 3, 0, 360}},
};

static_assert(std::is_sorted(std::begin(kTable), std::end(kTable),
                             [](NestedRow const& a, NestedRow const& b) { return a.item < b.item; }));

}  // namespace

std::span<NestedRow const> nestedTable()
{
    return kTable;
}

}  // namespace telemetry
