// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The made flight: values that agree with each other and with the picture, and survive the way through KLV.
#include "flight/flight_model.h"
#include "flight/flight_path.h"

#include "payload_text.h"
#include "telemetry/second_keys.h"
#include "telemetry/telemetry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace {

using telemetry::payloadText;

constexpr double kMoments[] = {0.0, 0.04, 1.7, 3.0, 5.0, 7.99, 8.0, 12.5, 31.3, 60.0, 99.9, 210.0, 3600.0};

double toRad(double deg)
{
    return deg * std::numbers::pi / 180.0;
}

double number(SwJsonObject const& payload, char const* key)
{
    SwJsonValue const& value = payload[key];
    EXPECT_TRUE(value.isInt() || value.isDouble()) << key;
    return value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
}

/// Geocentric WGS 84 meters, independent of the model's tangent plane.
flight::Vec3 geocentric(double latDeg, double lonDeg, double heightM)
{
    double const e2 = 6.69437999014e-3;
    double const s = std::sin(toRad(latDeg));
    double const n = 6378137.0 / std::sqrt(1.0 - e2 * s * s);
    double const c = std::cos(toRad(latDeg));
    return {(n + heightM) * c * std::cos(toRad(lonDeg)), (n + heightM) * c * std::sin(toRad(lonDeg)),
            (n * (1.0 - e2) + heightM) * s};
}

flight::Vec3 sensorPlace(SwJsonObject const& p)
{
    return geocentric(number(p, "sensor_lat_deg"), number(p, "sensor_lon_deg"), number(p, "sensor_alt_m"));
}

flight::Vec3 centerPlace(SwJsonObject const& p)
{
    return geocentric(number(p, "frame_center_lat_deg"), number(p, "frame_center_lon_deg"),
                      number(p, "frame_center_elev_m"));
}

TEST(FlightModel, SlantRangeIsTheDistanceToTheFrameCenter)
{
    for (double const seconds : kMoments) {
        SwJsonObject const p = flight::telemetryAt(seconds);
        double const distance = length(centerPlace(p) - sensorPlace(p));
        // The earth's curvature over 1.5 km is a few decimeters.
        EXPECT_NEAR(number(p, "measured_slant_range_m"), distance, 0.5) << seconds;
        EXPECT_NEAR(
            std::hypot(number(p, "ground_range_m"), number(p, "sensor_alt_m") - number(p, "frame_center_elev_m")),
            number(p, "measured_slant_range_m"), 1e-6)
            << seconds;
    }
}

TEST(FlightModel, VelocityIsTheDerivativeOfThePosition)
{
    constexpr double kStep = 0.01;
    for (double const seconds : kMoments) {
        SwJsonObject const before = flight::telemetryAt(seconds);
        SwJsonObject const now = flight::telemetryAt(seconds + kStep / 2.0);
        SwJsonObject const after = flight::telemetryAt(seconds + kStep);
        flight::Vec3 const way = sensorPlace(after) - sensorPlace(before);
        double const north = number(now, "velocity_north_mps");
        double const east = number(now, "velocity_east_mps");
        double const down = number(now, "velocity_down_mps");
        EXPECT_NEAR(length(way) / kStep, std::sqrt(north * north + east * east + down * down), 0.02) << seconds;
        double const metersPerDegree = 111200.0;
        EXPECT_NEAR((number(after, "sensor_lat_deg") - number(before, "sensor_lat_deg")) * metersPerDegree / kStep,
                    north, 0.1)
            << seconds;
        EXPECT_NEAR((number(before, "sensor_alt_m") - number(after, "sensor_alt_m")) / kStep, down, 0.001) << seconds;
        EXPECT_NEAR(number(now, "ground_speed_mps"), std::hypot(north, east), 0.5) << seconds;
        double const course = std::atan2(east, north) * 180.0 / std::numbers::pi;
        EXPECT_NEAR(std::remainder(number(now, "platform_course_deg") - course, 360.0), 0.0, 1.0 / 64) << seconds;
        EXPECT_LT(std::abs(std::remainder(number(now, "heading_deg") - course, 360.0)), 5.0) << seconds;
    }
}

/// Where the camera's axis goes, from the platform's attitude and the gimbal's angles alone.
flight::Vec3 axisFromAngles(SwJsonObject const& p)
{
    double const yaw = toRad(number(p, "heading_deg"));
    double const pitch = toRad(number(p, "pitch_deg"));
    double const roll = toRad(number(p, "roll_deg"));
    double const pan = toRad(number(p, "pan_deg"));
    double const tilt = toRad(number(p, "tilt_deg"));
    // In the platform's axes (forward, right, down), then turned by roll, pitch and yaw.
    double const f = std::cos(tilt) * std::cos(pan);
    double const r = std::cos(tilt) * std::sin(pan);
    double const d = -std::sin(tilt);
    double const r1 = r * std::cos(roll) - d * std::sin(roll);
    double const d1 = r * std::sin(roll) + d * std::cos(roll);
    double const f2 = f * std::cos(pitch) + d1 * std::sin(pitch);
    double const d2 = d1 * std::cos(pitch) - f * std::sin(pitch);
    return {f2 * std::sin(yaw) + r1 * std::cos(yaw), f2 * std::cos(yaw) - r1 * std::sin(yaw), -d2};
}

TEST(FlightModel, TheCameraLooksWhereItsAnglesSay)
{
    for (double const seconds : kMoments) {
        SwJsonObject const p = flight::telemetryAt(seconds);
        flight::Pose const pose = flight::poseAt(seconds);
        flight::Vec3 const axis = axisFromAngles(p);
        flight::Vec3 const hit = pose.position + axis * (-pose.position.z / axis.z);
        EXPECT_NEAR(length(hit - pose.lookAt), 0.0, 1e-6) << seconds;
        EXPECT_LT(number(p, "tilt_deg"), 0.0) << seconds;
        EXPECT_NEAR(pose.camera.right.z, 0.0, 1e-12) << "the horizon is level";
    }
}

TEST(FlightModel, RatesAreTheDerivativesOfTheAngles)
{
    constexpr double kStep = 0.02;
    for (double const seconds : kMoments) {
        SwJsonObject const before = flight::telemetryAt(seconds);
        SwJsonObject const now = flight::telemetryAt(seconds + kStep / 2.0);
        SwJsonObject const after = flight::telemetryAt(seconds + kStep);
        auto const rate = [&](char const* key) {
            return std::remainder(number(after, key) - number(before, key), 360.0) / kStep;
        };
        EXPECT_NEAR(number(now, "azimuth_rate_dps"), rate("pan_deg"), 0.001) << seconds;
        EXPECT_NEAR(number(now, "elevation_rate_dps"), rate("tilt_deg"), 0.001) << seconds;
        EXPECT_NEAR(number(now, "roll_rate_dps"), rate("sensor_rel_roll_deg"), 0.001) << seconds;
    }
}

TEST(FlightModel, TheLaserTogglesAndOnlyThenGivesATarget)
{
    struct Row {
        double seconds;
        bool on;
    };
    Row const rows[] = {{0.0, false}, {2.99, false}, {3.0, true},  {7.99, true},
                        {8.0, false}, {15.0, true},  {20.5, false}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.seconds);
        SwJsonObject const p = flight::telemetryAt(row.seconds);
        ASSERT_TRUE(p["laser_range_enabled"].isBool());
        EXPECT_EQ(p["laser_range_enabled"].toBool(), row.on);
        EXPECT_EQ(p["generic_flags"].toInt(), row.on ? 0x11 : 0);
        for (char const* const key :
             {"target_lrf_lat_deg", "target_lrf_lon_deg", "target_lrf_elev_m", "laser_prf_code"}) {
            EXPECT_EQ(p.contains(key), row.on) << key;
        }
    }
}

TEST(FlightModel, CornersSurroundTheCenterClockwise)
{
    SwJsonObject const p = flight::telemetryAt(4.0);
    flight::Vec3 const sensor = sensorPlace(p);
    double const upperLeft =
        length(geocentric(number(p, "corner_1_lat_deg"), number(p, "corner_1_lon_deg"), 96.0) - sensor);
    double const lowerRight =
        length(geocentric(number(p, "corner_3_lat_deg"), number(p, "corner_3_lon_deg"), 96.0) - sensor);
    EXPECT_GT(upperLeft, number(p, "measured_slant_range_m"));
    EXPECT_LT(lowerRight, number(p, "measured_slant_range_m"));
    // A picture so tall that its upper corners are in the sky has two corners.
    SwJsonObject const tall = flight::telemetryAt(4.0, 0.1);
    EXPECT_FALSE(tall.contains("corner_1_lat_deg"));
    EXPECT_TRUE(tall.contains("corner_3_lat_deg"));
}

TEST(FlightModel, FieldOfViewFollowsThePicture)
{
    for (double const aspect : {16.0 / 9.0, 4.0 / 3.0, 1.0, 0.5}) {
        SwJsonObject const p = flight::telemetryAt(9.0, aspect);
        EXPECT_NEAR(std::tan(toRad(number(p, "vfov_deg") / 2.0)) * aspect, std::tan(toRad(number(p, "hfov_deg") / 2.0)),
                    1e-9);
    }
}

TEST(FlightModel, TimeRunsFromAFixedStart)
{
    EXPECT_EQ(flight::telemetryAt(0.0)["utc_timestamp_us"].toInt(), 1749893400000000);
    EXPECT_EQ(flight::telemetryAt(1.04)["utc_timestamp_us"].toInt(), 1749893401040000);
    EXPECT_EQ(payloadText(flight::telemetryAt(17.3)), payloadText(flight::telemetryAt(17.3)));
}

/// Steps of the coarse KLV items, by key.
double klvTolerance(std::string const& key)
{
    static std::map<std::string, double> const steps = {
        {"heading_deg", 0.003},
        {"yaw_deg", 0.003},
        {"magnetic_heading_deg", 0.003},
        {"hfov_deg", 0.0014},
        {"vfov_deg", 0.0014},
        {"sensor_alt_m", 0.16},
        {"frame_center_elev_m", 0.16},
        {"target_lrf_elev_m", 0.16},
        {"target_width_m", 0.08},
        {"velocity_north_mps", 0.005},
        {"velocity_east_mps", 0.005},
        {"velocity_down_mps", 0.003},
        {"relative_humidity_percent", 0.2},
        {"measured_slant_range_m", 0.0006},
        {"ground_range_m", 0.0006},
    };
    auto const found = steps.find(key);
    return found == steps.end() ? 1e-7 : found->second;
}

/// Made of other items by the decoder: names of codes, flags one by one, the marking line.
bool isSecondKey(std::string const& key)
{
    if (key.rfind("security_", 0) == 0) {
        return true;
    }
    auto const& keys = telemetry::secondKeys();
    return std::any_of(keys.begin(), keys.end(),
                       [&key](telemetry::SecondKey const& second) { return second.key == key; });
}

TEST(FlightModel, SurvivesTheWayThroughKlv)
{
    for (double const seconds : kMoments) {
        SCOPED_TRACE(seconds);
        SwJsonObject const payload = flight::telemetryAt(seconds);
        telemetry::KlvDecoder decoder;
        auto const packets = decoder.decode(telemetry::encodeKlv(payload), seconds);
        ASSERT_EQ(packets.size(), 1U);
        SwJsonObject const& back = packets[0].payload;
        for (auto const& [key, value] : back) {
            EXPECT_TRUE(payload.contains(key) || isSecondKey(key)) << key;
        }
        for (auto const& [key, value] : payload) {
            SCOPED_TRACE(key);
            ASSERT_EQ(back[key].type(), value.type());
            if (value.isDouble()) {
                EXPECT_NEAR(back[key].toDouble(), value.toDouble(), klvTolerance(key));
            } else {
                EXPECT_EQ(back[key], value);
            }
        }
    }
}

TEST(FlightModel, IsMarked)
{
    telemetry::KlvDecoder decoder;
    auto const packets = decoder.decode(telemetry::encodeKlv(flight::telemetryAt(0.0)), 0.0);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].payload["security_line"].toString(), "UNCLASSIFIED//REL TO USA, GBR");
    EXPECT_EQ(packets[0].payload["security_object_country"].toString(), "FRA");
}

/// A picture whose planes lie between guard bytes.
struct Picture {
    Picture(int width, int height, int padding)
        : yStride(width + padding)
        , uvStride((width + 1) / 2 * 2 + padding)
        , y(static_cast<std::size_t>(yStride * height + 2 * kGuard), 0xA5)
        , uv(static_cast<std::size_t>(uvStride * ((height + 1) / 2) + 2 * kGuard), 0xA5)
        , planes{y.data() + kGuard, uv.data() + kGuard, width, height, yStride, uvStride}
    {
    }
    /// Whether every byte outside the rows is as it was.
    bool guardsHold() const
    {
        return holds(y, yStride, planes.width, planes.height) &&
               holds(uv, uvStride, (planes.width + 1) / 2 * 2, (planes.height + 1) / 2);
    }
    static bool holds(std::vector<std::uint8_t> const& bytes, int stride, int width, int height)
    {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            int const at = static_cast<int>(i) - kGuard;
            bool const inside = at >= 0 && at < stride * height && at % stride < width;
            if (!inside && bytes[i] != 0xA5) {
                return false;
            }
        }
        return true;
    }

    static constexpr int kGuard = 64;
    int yStride;
    int uvStride;
    std::vector<std::uint8_t> y;
    std::vector<std::uint8_t> uv;
    MappedNV12 planes;
};

TEST(GroundPicture, AnySizeStaysInsideItsPlanes)
{
    struct Size {
        int width;
        int height;
    };
    for (Size const size : {Size{1, 1}, {2, 2}, {3, 5}, {17, 9}, {64, 1}, {1, 64}, {321, 181}, {40, 400}}) {
        SCOPED_TRACE(std::to_string(size.width) + "x" + std::to_string(size.height));
        Picture picture(size.width, size.height, 13);
        flight::paintGround(2.0, picture.planes);
        EXPECT_TRUE(picture.guardsHold());
        for (int row = 0; row < size.height; ++row) {
            for (int column = 0; column < size.width; ++column) {
                ASSERT_GE(picture.planes.y[row * picture.yStride + column], 16);
                ASSERT_LE(picture.planes.y[row * picture.yStride + column], 240);
            }
        }
    }
}

TEST(GroundPicture, SameSecondSamePixelsAndAnotherSecondOthers)
{
    Picture first(160, 90, 0);
    Picture second(160, 90, 0);
    flight::paintGround(5.0, first.planes);
    flight::paintGround(5.0, second.planes);
    EXPECT_EQ(first.y, second.y);
    EXPECT_EQ(first.uv, second.uv);
    flight::paintGround(5.5, second.planes);
    EXPECT_NE(first.y, second.y);
}

TEST(GroundPicture, StridesOfZeroMeanPackedRows)
{
    Picture padded(33, 17, 0);
    std::vector<std::uint8_t> y(std::size_t{33} * 17);
    std::vector<std::uint8_t> uv(std::size_t{34} * 9);
    flight::paintGround(1.0, padded.planes);
    flight::paintGround(1.0, {y.data(), uv.data(), 33, 17, 0, 0});
    EXPECT_TRUE(std::equal(y.begin(), y.end(), padded.planes.y));
    EXPECT_TRUE(std::equal(uv.begin(), uv.end(), padded.planes.uv));
}

TEST(GroundPicture, NothingIsPaintedWithoutPlanes)
{
    std::uint8_t byte = 7;
    flight::paintGround(0.0, {});
    flight::paintGround(0.0, {&byte, &byte, 0, 1, 0, 0});
    flight::paintGround(0.0, {nullptr, &byte, 1, 1, 0, 0});
    EXPECT_EQ(byte, 7);
}

/// The landing mark's white ring stands around the target, wherever the camera looks just then: the picture
/// shows what the telemetry says.
TEST(GroundPicture, TheTargetIsWhereTheTelemetryPutsIt)
{
    constexpr int kWidth = 640;
    constexpr int kHeight = 360;
    for (double const seconds : {0.0, 6.0, 14.0, 22.0, 45.0, 100.0}) {
        SCOPED_TRACE(seconds);
        Picture picture(kWidth, kHeight, 0);
        flight::paintGround(seconds, picture.planes);
        flight::Pose const pose = flight::poseAt(seconds);
        double const focal = kWidth / 2.0 / std::tan(toRad(pose.hfovDeg) / 2.0);
        auto const lumaAt = [&](flight::Vec3 place) {
            flight::Vec3 const ray = place - pose.position;
            double const depth = dot(ray, pose.camera.forward);
            int const x = static_cast<int>(kWidth / 2.0 + focal * dot(ray, pose.camera.right) / depth);
            int const y = static_cast<int>(kHeight / 2.0 + focal * dot(ray, pose.camera.down) / depth);
            return x < 0 || y < 0 || x >= kWidth || y >= kHeight ? 0 : int{picture.planes.y[y * kWidth + x]};
        };
        EXPECT_GT(lumaAt({0.0, 0.0, 0.0}), 180) << "the cross in the middle";
        for (int i = 0; i < 8; ++i) {
            double const angle = i * std::numbers::pi / 4.0;
            flight::Vec3 const around{std::sin(angle), std::cos(angle), 0.0};
            EXPECT_GT(lumaAt(around * 10.3), 165) << "ring at " << i;
            EXPECT_LT(lumaAt(around * 13.0), lumaAt(around * 10.3)) << "orange at " << i;
        }
        EXPECT_LT(lumaAt({4.0, 8.0 - 2.0, 0.0}), 165) << "grey between cross and ring";
    }
}

}  // namespace
