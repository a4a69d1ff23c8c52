// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The made flight's ground: a map of fields, roads, a river and a village, painted once and then sampled by
// every picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace flight {

struct Yuv {
    std::uint8_t y = 16;
    std::uint8_t u = 128;
    std::uint8_t v = 128;
};

/// A color, each part from 0 to 1.
struct Rgb {
    float r = 0.0F;
    float g = 0.0F;
    float b = 0.0F;
};

/// As limited-range BT.709; parts above 1 are white.
Yuv toYuv(Rgb color);

struct Tree {
    double x = 0.0;  ///< meters east of the target
    double y = 0.0;  ///< meters north
    double radiusM = 3.0;
    double tone = 1.0;                                 ///< its lightness against the others
    double heightM() const { return radiusM * 1.25; }  ///< of the crown's middle
};

/// A square map that repeats in both directions, with its smaller copies.
class GroundTexture {
public:
    static constexpr double kTexelM = 0.5;  ///< meters of a texel of level 0
    static constexpr int kSizeBits = 11;    ///< level 0 has 2^11 texels a side
    static constexpr int kLevels = 7;

    /// A texel with its lower neighbour (luma) or with its other channel (chroma) in one number, the first
    /// in the low byte. Behind a row stands its first texel again, so that the right neighbour always follows.
    struct Level {
        /// Numbers from one row to the next for rows of `size` texels. The extra ones keep rows from falling
        /// onto the same lines of the processor's cache, which a power of two would.
        static constexpr std::size_t pitchOf(std::size_t size) { return size + 80U; }

        int sizeBits = 0;
        std::vector<std::uint16_t> luma;    ///< 2^sizeBits rows
        std::vector<std::uint16_t> chroma;  ///< Cb and Cr, 2^(sizeBits - 1) + 1 rows, the last the first again
    };

    /// The one map of the process; painted by the first caller, which takes a fraction of a second.
    static GroundTexture const& shared();

    Level const& level(int index) const { return levels_[static_cast<std::size_t>(index)]; }
    std::vector<Tree> const& trees() const { return trees_; }

private:
    GroundTexture();
    std::vector<Level> levels_;
    std::vector<Tree> trees_;
};

/// The village's houses; the map holds their shadows, ground_objects.cpp their walls and roofs.
struct House {
    double x = 0.0;  ///< meters east of the target
    double y = 0.0;  ///< meters north
    double turnDeg = 0.0;
    double halfLength = 6.0;
    double halfWidth = 4.0;
    double wallM = 4.5;
    double roofM = 2.6;
    int color = 0;  ///< of the roof, 0 to 3
};
std::vector<House> const& houses();

/// The two roads' center lines, meters: the paved one's y at x, the track's x at y.
double pavedRoadY(double x);
double trackX(double y);

}  // namespace flight
