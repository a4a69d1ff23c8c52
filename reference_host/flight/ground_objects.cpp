// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Houses and cars as lit faces. ground_picture.cpp draws them over the map.
#include "flight/ground_objects.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace flight {
namespace {

/// A box with an optional gable roof along its length.
struct Block {
    Vec3 place;
    double turnRad = 0.0;
    double halfLength = 0.0;
    double halfWidth = 0.0;
    double wallM = 0.0;
    double roofM = 0.0;
    Rgb wall;
    Rgb roof;
};

class FaceMaker {
public:
    FaceMaker(Block const& block, Vec3 eye, std::vector<Face>& faces) : block_(block), eye_(eye), faces_(faces) {}

    void addAll()
    {
        double const l = block_.halfLength;
        double const w = block_.halfWidth;
        double const h = block_.wallM;
        double const top = h + block_.roofM;
        add_(block_.wall, {at_(-l, -w, 0), at_(l, -w, 0), at_(l, -w, h), at_(-l, -w, h)}, 4);
        add_(block_.wall, {at_(l, w, 0), at_(-l, w, 0), at_(-l, w, h), at_(l, w, h)}, 4);
        add_(block_.wall, {at_(l, -w, 0), at_(l, w, 0), at_(l, w, h), at_(l, -w, h)}, 4);
        add_(block_.wall, {at_(-l, w, 0), at_(-l, -w, 0), at_(-l, -w, h), at_(-l, w, h)}, 4);
        add_(block_.wall, {at_(l, -w, h), at_(l, w, h), at_(l, 0, top), {}}, 3);
        add_(block_.wall, {at_(-l, w, h), at_(-l, -w, h), at_(-l, 0, top), {}}, 3);
        add_(block_.roof, {at_(-l, -w, h), at_(l, -w, h), at_(l, 0, top), at_(-l, 0, top)}, 4);
        add_(block_.roof, {at_(l, w, h), at_(-l, w, h), at_(-l, 0, top), at_(l, 0, top)}, 4);
    }

private:
    Vec3 at_(double along, double across, double up) const
    {
        double const c = std::cos(block_.turnRad);
        double const s = std::sin(block_.turnRad);
        return block_.place + Vec3{along * c - across * s, along * s + across * c, up};
    }

    void add_(Rgb color, std::array<Vec3, 4> const& corners, int count)
    {
        Vec3 const outward = cross(corners[1] - corners[0], corners[2] - corners[0]);
        if (dot(outward, eye_ - corners[0]) <= 0.0 || length(outward) <= 0.0) {
            return;
        }
        double const light = 0.52 + 0.52 * std::max(0.0, dot(outward, kSun) / length(outward));
        auto const lit = [light](float part) { return static_cast<float>(static_cast<double>(part) * light); };
        faces_.push_back(
            {corners, count, toYuv({lit(color.r), lit(color.g), lit(color.b)}), length(block_.place - eye_)});
    }

    Block const& block_;
    Vec3 eye_;
    std::vector<Face>& faces_;
};

Block toBlock(House const& house)
{
    constexpr std::array<Rgb, 4> kRoofs{
        {{0.78F, 0.38F, 0.24F}, {0.66F, 0.30F, 0.22F}, {0.42F, 0.43F, 0.48F}, {0.62F, 0.60F, 0.57F}}};
    constexpr Rgb kPlaster{0.92F, 0.88F, 0.80F};
    return {{house.x, house.y, 0.0},
            house.turnDeg * std::numbers::pi / 180.0,
            house.halfLength,
            house.halfWidth,
            house.wallM,
            house.roofM,
            kPlaster,
            kRoofs[static_cast<std::size_t>(house.color)]};
}

/// A car on the paved road's right lane; it comes back at the far end of the map.
Block carAt(double startM, double speedMps, Rgb color, double seconds)
{
    constexpr double kRoadM = 1024.0;
    bool const eastward = speedMps > 0.0;
    double const run = std::fmod(startM + speedMps * seconds, kRoadM);
    double const x = (run < 0.0 ? run + kRoadM : run) - kRoadM / 2.0;
    double const slope = (pavedRoadY(x + 1.0) - pavedRoadY(x - 1.0)) / 2.0;
    double const lane = eastward ? -1.8 : 1.8;
    return {{x, pavedRoadY(x) + lane, 0.3}, std::atan(slope), 2.3, 0.95, 0.9, 0.55, color, color};
}

}  // namespace

std::vector<Face> facesTowards(Vec3 eye, double seconds)
{
    std::vector<Block> blocks;
    for (House const& house : houses()) {
        blocks.push_back(toBlock(house));
    }
    blocks.push_back(carAt(430.0, 13.0, {0.85F, 0.12F, 0.10F}, seconds));
    blocks.push_back(carAt(60.0, 15.0, {0.93F, 0.93F, 0.95F}, seconds));
    blocks.push_back(carAt(650.0, -14.0, {0.15F, 0.25F, 0.60F}, seconds));
    blocks.push_back(carAt(900.0, -12.0, {0.88F, 0.75F, 0.15F}, seconds));
    std::sort(blocks.begin(), blocks.end(),
              [eye](Block const& a, Block const& b) { return length(a.place - eye) > length(b.place - eye); });
    std::vector<Face> faces;
    for (Block const& block : blocks) {
        FaceMaker(block, eye, faces).addAll();
    }
    return faces;
}

}  // namespace flight
