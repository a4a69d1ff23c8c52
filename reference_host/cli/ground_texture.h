// The made flight's ground: a map of fields, roads, a river and a village, painted once and then sampled by
// every picture.
#pragma once

#include <cstdint>
#include <vector>

namespace flight {

struct Yuv {
    std::uint8_t y = 16;
    std::uint8_t u = 128;
    std::uint8_t v = 128;
};

/// Red, green and blue from 0 to 1 as limited-range BT.709.
Yuv toYuv(double red, double green, double blue);

/// A square map that repeats in both directions, with its smaller copies.
class GroundTexture {
public:
    static constexpr double kTexelM = 0.5;  ///< meters of a texel of level 0
    static constexpr int kSizeBits = 11;    ///< level 0 has 2^11 texels a side
    static constexpr int kLevels = 7;

    struct Level {
        int sizeBits = 0;
        std::vector<std::uint8_t> luma;    ///< 2^sizeBits a side
        std::vector<std::uint8_t> chroma;  ///< Cb Cr pairs, 2^(sizeBits - 1) a side
    };

    /// The one map of the process; painted by the first caller, which takes a fraction of a second.
    static GroundTexture const& shared();

    Level const& level(int index) const { return levels_[static_cast<std::size_t>(index)]; }

private:
    GroundTexture();
    std::vector<Level> levels_;
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
