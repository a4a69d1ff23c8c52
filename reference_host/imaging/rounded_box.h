// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The background box: one colour, one opacity, rounded corners.
#pragma once

#include "Picture.h"
#include "imaging/color.h"
#include "imaging/geometry.h"
#include "imaging/nv12_blend.h"

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

    /// A row of pixels, by its distances from the box's nearer and farther horizontal edge.
    struct Row {
        bool isInside = false;
        std::int64_t near = 0;
        std::int64_t far = 0;
    };

    /// In one direction: the first corner's square, the straight part from `near` to `far`, the second square.
    struct Cuts {
        std::int64_t first = 0;
        std::int64_t near = 0;
        std::int64_t far = 0;
        std::int64_t end = 0;
    };
    /// Rows of chroma samples; those from `from` to `to` are `coverage` / 255 inside.
    struct ChromaBand {
        std::int64_t row = 0;
        std::int64_t rows = 1;
        std::int64_t from = 0;
        std::int64_t to = 0;
        int coverage = 0;
        bool isCorner = false;
    };

    void setRadius(double radius);
    int cornerLoss(std::int64_t x, std::int64_t y) const;
    static Row rowAt(Box const& box, std::int64_t y);
    int coverageAt(Box const& box, Row const& row, std::int64_t x) const;
    Cuts cutsOf(std::int64_t first, std::int64_t end) const;
    void drawLuma(Job const& job) const;
    static void fillLuma(Job const& job, Box const& piece);
    void drawLumaCorner(Job const& job, Box const& square) const;
    void drawChroma(Job const& job) const;
    ChromaBand chromaBandAt(Job const& job, std::int64_t row, std::int64_t end) const;
    static void fillChroma(Job const& job, ChromaBand const& band);
    void drawChromaPart(Job const& job, std::int64_t row, std::int64_t rows, std::int64_t from, std::int64_t to) const;

    double radius_ = 0;
    std::int64_t cornerSize_ = 0;           ///< side of the square that a corner may leave uncovered, in pixels
    std::vector<std::uint8_t> cornerLoss_;  ///< 255 minus the square's coverage, by rows; empty for a large corner
};

}  // namespace imaging
