// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The picture under work, and the shapes that are drawn over the map: flat faces and crowns of trees.
#pragma once

#include "flight/flight_path.h"
#include "flight/ground_objects.h"
#include "flight/ground_texture.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace flight {

/// A picture plane: luma, or chroma with two bytes a sample.
struct Plane {
    std::uint8_t* data = nullptr;
    int width = 0;  ///< samples
    int height = 0;
    std::ptrdiff_t stride = 0;
    std::uint8_t* row(int y) const { return data + y * stride; }
};

/// The camera over a plane of samples.
struct View {
    Pose pose;
    double focal = 1.0;  ///< in samples
    double centerX = 0.0;
    double centerY = 0.0;
};

struct Canvas {
    Plane luma;
    Plane chroma;
    View lumaView;
    View chromaView;
};

/// The color of the far distance and of the sky.
inline constexpr Yuv kHazeColor{178, 131, 124};

/// What the air does to a color at a distance.
class Haze {
public:
    explicit Haze(double distanceM);
    std::uint8_t overLuma(unsigned value) const { return over_(value, lumaPart_); }
    std::uint8_t overCb(unsigned value) const { return over_(value, cbPart_); }
    std::uint8_t overCr(unsigned value) const { return over_(value, crPart_); }
    Yuv over(Yuv color) const { return {overLuma(color.y), overCb(color.u), overCr(color.v)}; }

private:
    std::uint8_t over_(unsigned value, unsigned part) const
    {
        return static_cast<std::uint8_t>((value * clear_ + part) >> 8U);
    }
    unsigned clear_ = 256;
    unsigned lumaPart_ = 0;
    unsigned cbPart_ = 0;
    unsigned crPart_ = 0;
};

/// A tree's crown as a lit ball.
struct Crown {
    Vec3 middle;
    double radiusM = 0.0;
    double tone = 1.0;
    double distanceM = 0.0;
};

/// The crowns that the picture shows, the far ones first: those of the map around the target, not of its
/// repetitions, where only their shadows are seen.
std::vector<Crown> crownsInView(View const& view, Plane const& plane);

void paintFace(Canvas const& canvas, Face const& face);
void paintCrown(Canvas const& canvas, Crown const& crown);

}  // namespace flight
