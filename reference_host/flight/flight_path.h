// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the made flight's drone is and where its camera looks, as a pure function of the time. Both the
// telemetry and the picture are made from it.
#pragma once

namespace flight {

/// Meters in a local frame around the target: x east, y north, z up.
struct Vec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

inline Vec3 operator+(Vec3 a, Vec3 b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator-(Vec3 a, Vec3 b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3 operator*(Vec3 a, double k)
{
    return {a.x * k, a.y * k, a.z * k};
}
inline double dot(Vec3 a, Vec3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 cross(Vec3 a, Vec3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double length(Vec3 a);

struct GeoPoint {
    double latDeg = 0.0;
    double lonDeg = 0.0;
    double altM = 0.0;  ///< above mean sea level
};

/// Three axes at right angles, unit length.
struct Axes {
    Vec3 forward;
    Vec3 right;
    Vec3 down;
};

struct Pose {
    Vec3 position;
    Vec3 velocity;  ///< m/s
    double headingDeg = 0.0;
    double pitchDeg = 0.0;
    double rollDeg = 0.0;
    Axes camera;              ///< its right axis is level: the picture's horizon is
    Vec3 lookAt;              ///< the ground point on the camera's axis
    double panDeg = 0.0;      ///< camera against the platform: azimuth 0 to 360
    double tiltDeg = 0.0;     ///< elevation, negative down
    double relRollDeg = 0.0;  ///< roll 0 to 360
    double hfovDeg = 0.0;
};

Pose poseAt(double seconds);

/// Degrees a second of the camera's three angles.
struct Rates {
    double pan = 0.0;
    double tilt = 0.0;
    double roll = 0.0;
};
Rates ratesAt(double seconds);

/// The place of a local point on the ellipsoid of WGS 84 (tangent plane: good to a meter over this valley).
GeoPoint toGeo(Vec3 point);

}  // namespace flight
