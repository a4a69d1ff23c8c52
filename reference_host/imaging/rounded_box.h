// The background box: one colour, one opacity, rounded corners.
#pragma once

#include "Picture.h"
#include "color.h"
#include "geometry.h"
#include "nv12_blend.h"

#include <cstdint>
#include <vector>

namespace imaging {

/// The share of a pixel inside a circle of `radius` around (radius, radius), 0 to 255, for pixel (x, y) of the
/// square's top-left quarter.
std::uint8_t cornerCoverage(double radius, std::int64_t x, std::int64_t y);

/// Blends boxes. Keeps the shape of the last small corner, since a frame's boxes share it.
class BoxRenderer {
public:
    /// Blends `box` clipped to the target. `opacity` is held to 0..1 and `radius` in pixels to 0..half of the
    /// shorter side; not-a-number is 0. A chroma sample has the mean coverage of its pixels inside the picture.
    /// `target` has planes, sizes above 0 and strides filled in.
    void draw(MappedNV12 const& target, Box const& box, float opacity, float radius, YCbCr const& color);

private:
    /// What is being drawn.
    struct Job {
        MappedNV12 target;
        Box box;
        Box visible;
        YCbCr color;
        int weight = 0;
    };

    void setRadius(double radius);
    int cornerLoss(std::int64_t x, std::int64_t y) const;
    std::uint8_t coverageAt(Box const& box, std::int64_t x, std::int64_t y) const;
    bool isCornerRow(Box const& box, std::int64_t y) const;
    void drawLuma(Job const& job) const;
    void drawLumaPart(Job const& job, std::int64_t y, std::int64_t from, std::int64_t to) const;
    void drawChroma(Job const& job) const;
    std::int64_t drawChromaRows(Job const& job, std::int64_t row, std::int64_t end) const;
    void drawChromaPart(Job const& job, std::int64_t row, std::int64_t from, std::int64_t to) const;

    double radius_ = 0;
    std::int64_t cornerSize_ = 0;       ///< side of the square that a corner may leave uncovered, in pixels
    std::vector<std::uint8_t> corner_;  ///< the square's coverage row by row; empty for a large corner
};

}  // namespace imaging
