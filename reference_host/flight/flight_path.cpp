// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The made flight's orbit and camera. flight_model.cpp turns it into telemetry, ground_picture.cpp into
// pixels.
#include "flight/flight_path.h"

#include <cmath>
#include <numbers>

namespace flight {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kGravity = 9.80665;
constexpr GeoPoint kTarget{47.3128, 0.6417, 96.0};

double toRad(double deg)
{
    return deg * kPi / 180.0;
}
double toDeg(double rad)
{
    return rad * 180.0 / kPi;
}

/// An angle in [0, 360).
double wrap360(double deg)
{
    double const turned = std::fmod(deg, 360.0);
    double const wrapped = turned < 0.0 ? turned + 360.0 : turned;
    return wrapped >= 360.0 ? 0.0 : wrapped;
}

Vec3 normalized(Vec3 a)
{
    return a * (1.0 / length(a));
}

/// A value that swings as a sine, with its derivative.
struct Swing {
    double value = 0.0;
    double perSecond = 0.0;
};

Swing swing(double mean, double amplitude, double radPerSecond, double phase, double seconds)
{
    double const angle = radPerSecond * seconds + phase;
    return {mean + amplitude * std::sin(angle), amplitude * radPerSecond * std::cos(angle)};
}

/// The orbit: clockwise seen from above, with a slowly breathing radius and height.
void placeOnOrbit(Pose& pose, double seconds)
{
    constexpr double kTurnRate = 0.03;  // rad/s, a circle in three and a half minutes
    constexpr double kStartBearing = 3.6;
    Swing const radius = swing(1250.0, 40.0, 0.05, 0.0, seconds);
    Swing const height = swing(870.0, 12.0, 0.09, 0.4, seconds);
    double const bearing = kStartBearing + kTurnRate * seconds;
    double const s = std::sin(bearing);
    double const c = std::cos(bearing);
    pose.position = {radius.value * s, radius.value * c, height.value};
    pose.velocity = {radius.perSecond * s + radius.value * kTurnRate * c,
                     radius.perSecond * c - radius.value * kTurnRate * s, height.perSecond};
}

/// Attitude of a coordinated turn, with a little turbulence.
void setAttitude(Pose& pose, double seconds)
{
    double const speed = std::hypot(pose.velocity.x, pose.velocity.y);
    double const radius = std::hypot(pose.position.x, pose.position.y);
    double const track = toDeg(std::atan2(pose.velocity.x, pose.velocity.y));
    double const climb = toDeg(std::atan2(pose.velocity.z, speed));
    pose.headingDeg = wrap360(track + swing(2.0, 0.6, 0.31, 0.0, seconds).value);
    pose.pitchDeg = climb + swing(1.8, 0.35, 0.83, 1.0, seconds).value;
    pose.rollDeg = toDeg(std::atan(speed * speed / (kGravity * radius))) + swing(0.0, 0.9, 0.57, 2.0, seconds).value;
}

Axes bodyAxes(Pose const& pose)
{
    double const yaw = toRad(pose.headingDeg);
    double const pitch = toRad(pose.pitchDeg);
    double const roll = toRad(pose.rollDeg);
    Vec3 const forward{std::sin(yaw) * std::cos(pitch), std::cos(yaw) * std::cos(pitch), std::sin(pitch)};
    Vec3 const level{std::cos(yaw), -std::sin(yaw), 0.0};
    Vec3 const down = cross(forward, level);
    return {forward, level * std::cos(roll) + down * std::sin(roll), down * std::cos(roll) - level * std::sin(roll)};
}

/// A vector's parts along the axes.
Vec3 inAxes(Axes const& axes, Vec3 v)
{
    return {dot(v, axes.forward), dot(v, axes.right), dot(v, axes.down)};
}

/// The camera follows a point that wanders around the target, with a level horizon.
void pointCamera(Pose& pose, double seconds)
{
    pose.lookAt = {swing(0.0, 26.0, 0.21, 0.3, seconds).value, swing(0.0, 18.0, 0.17, 1.1, seconds).value, 0.0};
    Vec3 const forward = normalized(pose.lookAt - pose.position);
    Vec3 const right = normalized({forward.y, -forward.x, 0.0});
    pose.camera = {forward, right, cross(forward, right)};
    pose.hfovDeg = swing(15.0, 5.0, 2.0 * kPi / 45.0, kPi / 2.0, seconds).value;

    // Gimbal angles: azimuth, then elevation, then roll (the order of MISB ST 0601).
    Axes const body = bodyAxes(pose);
    Vec3 const axis = inAxes(body, forward);
    double const pan = std::atan2(axis.y, axis.x);
    double const tilt = std::asin(-axis.z);
    Vec3 const unrolledRight{-std::sin(pan), std::cos(pan), 0.0};
    Vec3 const unrolledDown = cross(axis, unrolledRight);
    Vec3 const levelRight = inAxes(body, right);
    pose.panDeg = wrap360(toDeg(pan));
    pose.tiltDeg = toDeg(tilt);
    pose.relRollDeg = wrap360(toDeg(std::atan2(dot(levelRight, unrolledDown), dot(levelRight, unrolledRight))));
}

/// The shorter way from one angle to another, in degrees.
double turn(double from, double to)
{
    return std::remainder(to - from, 360.0);
}

}  // namespace

double length(Vec3 a)
{
    return std::sqrt(dot(a, a));
}

Pose poseAt(double seconds)
{
    Pose pose;
    placeOnOrbit(pose, seconds);
    setAttitude(pose, seconds);
    pointCamera(pose, seconds);
    return pose;
}

Rates ratesAt(double seconds)
{
    constexpr double kStep = 0.005;
    Pose const before = poseAt(seconds - kStep);
    Pose const after = poseAt(seconds + kStep);
    double const perSecond = 1.0 / (2.0 * kStep);
    return {turn(before.panDeg, after.panDeg) * perSecond, turn(before.tiltDeg, after.tiltDeg) * perSecond,
            turn(before.relRollDeg, after.relRollDeg) * perSecond};
}

GeoPoint toGeo(Vec3 point)
{
    constexpr double kSemiMajor = 6378137.0;
    constexpr double kEccentricitySquared = 6.69437999014e-3;
    double const lat = toRad(kTarget.latDeg);
    double const w = 1.0 - kEccentricitySquared * std::sin(lat) * std::sin(lat);
    double const northRadius = kSemiMajor * (1.0 - kEccentricitySquared) / (w * std::sqrt(w)) + kTarget.altM;
    double const eastRadius = (kSemiMajor / std::sqrt(w) + kTarget.altM) * std::cos(lat);
    return {kTarget.latDeg + toDeg(point.y / northRadius), kTarget.lonDeg + toDeg(point.x / eastRadius),
            kTarget.altM + point.z};
}

}  // namespace flight
