// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands up from the made flight's ground: houses, and cars on the paved road.
#pragma once

#include "flight/flight_path.h"
#include "flight/ground_texture.h"

#include <array>
#include <vector>

namespace flight {

/// A flat convex face in the local frame, corners in order around it.
struct Face {
    std::array<Vec3, 4> corners;
    int count = 4;  ///< 3 or 4
    Yuv color;
    double distanceM = 0.0;  ///< of the object's place from the eye
};

/// Towards the sun, unit length: in the west-south-west, against the shadows on the map.
inline constexpr Vec3 kSun{-0.66, -0.24, 0.71};

/// All faces at a moment that look towards `eye`, the far objects first.
std::vector<Face> facesTowards(Vec3 eye, double seconds);

}  // namespace flight
