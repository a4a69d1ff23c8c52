// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The made flight's telemetry: what a drone on flight_path.cpp's orbit would send. Used by the sample
// command, which encodes it as KLV beside the picture of ground_picture.cpp.
#include "flight/flight_model.h"

#include "flight/flight_path.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <string>

namespace flight {
namespace {

constexpr std::int64_t kStartUs = 1749893400000000;  // 2025-06-14 09:30:00 UTC
constexpr double kMagneticDeclinationDeg = 1.6;

double toRad(double deg)
{
    return deg * std::numbers::pi / 180.0;
}
double toDeg(double rad)
{
    return rad * 180.0 / std::numbers::pi;
}

/// Rates and percentages leave the platform in steps of 1/`stepsPerUnit`: their KLV items stay short.
double inSteps(double value, double stepsPerUnit)
{
    return std::round(value * stepsPerUnit) / stepsPerUnit;
}

/// The laser ranges for five seconds out of twelve.
bool laserOn(double seconds)
{
    double const phase = std::fmod(seconds, 12.0);
    return phase >= 3.0 && phase < 8.0;
}

void addIdentity(SwJsonObject& payload, double seconds)
{
    payload.insertOrAssign("utc_timestamp_us", kStartUs + std::llround(seconds * 1e6));
    payload.insertOrAssign("mission_id", "VALLEY-07");
    payload.insertOrAssign("platform_tail_number", "D-204");
    payload.insertOrAssign("platform_designation", "Survey drone");
    payload.insertOrAssign("platform_call_sign", "HERON 21");
    payload.insertOrAssign("camera_name", "EO zoom");
    payload.insertOrAssign("image_coordinate_system", "Geodetic WGS84");
    payload.insertOrAssign("klv_version", 17);
    payload.insertOrAssign("operational_mode", 2);
    payload.insertOrAssign("platform_status", 7);
    payload.insertOrAssign("sensor_control_mode", 5);
    payload.insertOrAssign("positioning_method_source", 3);
    payload.insertOrAssign("nav_sat_count", 14 + std::lround(2.0 * std::sin(0.05 * seconds)));
    payload.insertOrAssign("time_airborne_s", 1860 + static_cast<std::int64_t>(seconds));
}

/// Marked as "UNCLASSIFIED//REL TO USA, GBR", and what the picture shows lies in France.
void addMarking(SwJsonObject& payload)
{
    constexpr int kThreeLetters = 2;  // ISO 3166, for both kinds of country
    payload.insertOrAssign("security_classification_code", 1);
    payload.insertOrAssign("security_country_method", kThreeLetters);
    payload.insertOrAssign("security_country", "//USA");
    payload.insertOrAssign("security_releasing", "USA GBR");
    payload.insertOrAssign("security_object_country_method", kThreeLetters);
    payload.insertOrAssign("security_object_country", "FRA");
    payload.insertOrAssign("security_version", 12);
}

void addPlatform(SwJsonObject& payload, Pose const& pose)
{
    double const speed = std::hypot(pose.velocity.x, pose.velocity.y);
    double const course = toDeg(std::atan2(pose.velocity.x, pose.velocity.y));
    payload.insertOrAssign("heading_deg", pose.headingDeg);
    payload.insertOrAssign("yaw_deg", pose.headingDeg);
    payload.insertOrAssign("pitch_deg", pose.pitchDeg);
    payload.insertOrAssign("roll_deg", pose.rollDeg);
    payload.insertOrAssign("magnetic_heading_deg", std::fmod(pose.headingDeg - kMagneticDeclinationDeg + 360.0, 360.0));
    payload.insertOrAssign("platform_course_deg", inSteps(course < 0.0 ? course + 360.0 : course, 64.0));
    payload.insertOrAssign("velocity_north_mps", pose.velocity.y);
    payload.insertOrAssign("velocity_east_mps", pose.velocity.x);
    payload.insertOrAssign("velocity_down_mps", -pose.velocity.z);
    payload.insertOrAssign("ground_speed_mps", std::round(speed));
    payload.insertOrAssign("altitude_agl_m", inSteps(pose.position.z, 128.0));
    payload.insertOrAssign("outside_air_temperature_c", 17.0);
    payload.insertOrAssign("relative_humidity_percent", 54.0);
}

void addCamera(SwJsonObject& payload, Pose const& pose, Rates const& rates)
{
    constexpr double kWideDeg = 24.0;
    constexpr double kTeleDeg = 4.0;
    GeoPoint const sensor = toGeo(pose.position);
    payload.insertOrAssign("sensor_lat_deg", sensor.latDeg);
    payload.insertOrAssign("sensor_lon_deg", sensor.lonDeg);
    payload.insertOrAssign("sensor_alt_m", sensor.altM);
    payload.insertOrAssign("hfov_deg", pose.hfovDeg);
    payload.insertOrAssign("pan_deg", pose.panDeg);
    payload.insertOrAssign("tilt_deg", pose.tiltDeg);
    payload.insertOrAssign("sensor_rel_roll_deg", pose.relRollDeg);
    payload.insertOrAssign("azimuth_rate_dps", inSteps(rates.pan, 4096.0));
    payload.insertOrAssign("elevation_rate_dps", inSteps(rates.tilt, 4096.0));
    payload.insertOrAssign("roll_rate_dps", inSteps(rates.roll, 4096.0));
    payload.insertOrAssign("zoom_percent", inSteps(100.0 * (kWideDeg - pose.hfovDeg) / (kWideDeg - kTeleDeg), 256.0));
}

/// Where the ray through a picture point meets the ground; `u` and `v` in units of the focal length, right
/// and down. Empty when it goes to the sky.
std::optional<Vec3> onGround(Pose const& pose, double u, double v)
{
    Vec3 const ray = pose.camera.forward + pose.camera.right * u + pose.camera.down * v;
    if (ray.z > -1e-3) {
        return std::nullopt;
    }
    return pose.position + ray * (-pose.position.z / ray.z);
}

/// Corners clockwise from the upper left, as seen in the picture.
void addCorners(SwJsonObject& payload, Pose const& pose, double aspect)
{
    double const u = std::tan(toRad(pose.hfovDeg) / 2.0);
    double const v = u / aspect;
    std::array<std::array<double, 2>, 4> const corners{{{-u, -v}, {u, -v}, {u, v}, {-u, v}}};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        if (auto const point = onGround(pose, corners[i][0], corners[i][1])) {
            std::string const name = "corner_" + std::to_string(i + 1);
            GeoPoint const corner = toGeo(*point);
            payload.insertOrAssign(name + "_lat_deg", corner.latDeg);
            payload.insertOrAssign(name + "_lon_deg", corner.lonDeg);
        }
    }
}

void addTarget(SwJsonObject& payload, Pose const& pose, double aspect, bool laser)
{
    GeoPoint const center = toGeo(pose.lookAt);
    Vec3 const line = pose.lookAt - pose.position;
    double const slant = length(line);
    payload.insertOrAssign("vfov_deg", 2.0 * toDeg(std::atan(std::tan(toRad(pose.hfovDeg) / 2.0) / aspect)));
    payload.insertOrAssign("measured_slant_range_m", slant);
    payload.insertOrAssign("ground_range_m", std::hypot(line.x, line.y));
    payload.insertOrAssign("target_width_m", 2.0 * slant * std::tan(toRad(pose.hfovDeg) / 2.0));
    payload.insertOrAssign("frame_center_lat_deg", center.latDeg);
    payload.insertOrAssign("frame_center_lon_deg", center.lonDeg);
    payload.insertOrAssign("frame_center_elev_m", center.altM);
    // Bit 0: the laser ranges; bit 4: the slant range is measured, not computed.
    payload.insertOrAssign("generic_flags", laser ? 0x11 : 0x00);
    payload.insertOrAssign("laser_range_enabled", laser);
    if (laser) {
        payload.insertOrAssign("laser_prf_code", 1688);
        payload.insertOrAssign("target_lrf_lat_deg", center.latDeg);
        payload.insertOrAssign("target_lrf_lon_deg", center.lonDeg);
        payload.insertOrAssign("target_lrf_elev_m", center.altM);
    }
}

}  // namespace

SwJsonObject telemetryAt(double seconds, double aspect)
{
    Pose const pose = poseAt(seconds);
    SwJsonObject payload;
    addIdentity(payload, seconds);
    addMarking(payload);
    addPlatform(payload, pose);
    addCamera(payload, pose, ratesAt(seconds));
    addTarget(payload, pose, aspect, laserOn(seconds));
    addCorners(payload, pose, aspect);
    return payload;
}

}  // namespace flight
