// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Paints fields, water, roads, yards and trees texel by texel. ground_texture.cpp calls the brushes in the
// order of their layers and turns the map into samples.
#include "flight/ground_paint.h"

#include "flight/ground_texture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace flight {
namespace {

constexpr double kMapM = 1024.0;
constexpr double kTurn = 2.0 * std::numbers::pi / kMapM;

/// Shadows fall to the east-north-east; meters along the ground for a meter of height.
constexpr double kShadowEast = 0.95;
constexpr double kShadowNorth = 0.35;

std::uint32_t hash(std::uint32_t a, std::uint32_t b)
{
    std::uint32_t h = a * 0x9E3779B1U + b * 0x85EBCA77U + 0x165667B1U;
    h = (h ^ (h >> 15U)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12U)) * 0x297A2D39U;
    return h ^ (h >> 15U);
}

float unit(std::uint32_t h)
{
    return static_cast<float>(h >> 8U) * (1.0F / 16777216.0F);
}

/// Smooth noise from 0 to 1 with `cells` cells over the map's width.
float noise(double x, double y, std::uint32_t cells, std::uint32_t seed)
{
    double const u = (x / kMapM + 8.0) * cells;
    double const v = (y / kMapM + 8.0) * cells;
    auto const column = static_cast<std::uint32_t>(u);
    auto const row = static_cast<std::uint32_t>(v);
    auto const fx = static_cast<float>(u - column);
    auto const fy = static_cast<float>(v - row);
    float const sx = fx * fx * (3.0F - 2.0F * fx);
    float const sy = fy * fy * (3.0F - 2.0F * fy);
    auto const corner = [&](std::uint32_t dx, std::uint32_t dy) {
        return unit(hash((column + dx) % cells + seed * 7919U, (row + dy) % cells));
    };
    float const north = std::lerp(corner(0, 0), corner(1, 0), sx);
    float const south = std::lerp(corner(0, 1), corner(1, 1), sx);
    return std::lerp(north, south, sy);
}

Rgb scaled(Rgb c, float k)
{
    return {c.r * k, c.g * k, c.b * k};
}

Rgb mix(Rgb a, Rgb b, float k)
{
    return {std::lerp(a.r, b.r, k), std::lerp(a.g, b.g, k), std::lerp(a.b, b.b, k)};
}

/// 1 inside an edge, 0 outside, soft over a texel: `distance` in meters beyond the edge.
float inside(double distance)
{
    return static_cast<float>(std::clamp(0.5 - distance / 0.6, 0.0, 1.0));
}

enum class Crop { Meadow, Wheat, Rape, Ploughed, Maize, Orchard };

struct Field {
    Crop crop = Crop::Meadow;
    double toEdgeM = 0.0;  ///< to the nearest border
    bool alongX = true;    ///< direction of its rows
    float tone = 1.0F;
};

/// The meandering of field borders, meters; its sines are taken once for every row and column.
class Meander {
public:
    Meander(int size, double texelM)
    {
        for (int i = 0; i < size; ++i) {
            double const m = (i + 0.5 - size / 2.0) * texelM * kTurn;
            waves_.push_back({std::sin(m + 2.0), std::sin(2.0 * m + 1.0), std::sin(2.0 * m), std::cos(2.0 * m),
                              std::sin(3.0 * m), std::cos(3.0 * m), std::sin(4.0 * m), std::cos(4.0 * m),
                              std::sin(5.0 * m), std::cos(5.0 * m)});
        }
    }
    /// Indices from the west and from the south.
    double east(std::size_t x, std::size_t y) const
    {
        return 16.0 * waves_[y].sin2Late + 5.0 * (waves_[y].sin5 * waves_[x].cos2 + waves_[y].cos5 * waves_[x].sin2);
    }
    double north(std::size_t x, std::size_t y) const
    {
        return 20.0 * waves_[x].sin1Late + 6.0 * (waves_[x].sin4 * waves_[y].cos3 - waves_[x].cos4 * waves_[y].sin3);
    }

private:
    struct Waves {
        double sin1Late, sin2Late, sin2, cos2, sin3, cos3, sin4, cos4, sin5, cos5;
    };
    std::vector<Waves> waves_;
};

/// Strips of fields across the map, each strip cut at its own places. Takes the place after meandering.
Field fieldAt(double wx, double wy)
{
    constexpr int kStrips = 9;
    double const strip = (wy / kMapM + 8.0) * kStrips;
    auto const row = static_cast<std::uint32_t>(strip) % kStrips;
    double const inStrip = strip - std::floor(strip);
    double const stripM = kMapM / kStrips;
    std::uint32_t const shape = hash(row, 77U);
    double const cuts = 6.0 + shape % 5U;
    double const cell = (wx / kMapM + 8.0 + static_cast<double>(unit(shape))) * cuts;
    auto const column = static_cast<std::uint32_t>(cell) % static_cast<std::uint32_t>(cuts);
    double const inCell = cell - std::floor(cell);
    double const cellM = kMapM / cuts;
    std::uint32_t const id = hash(row * 31U + 5U, column + 101U);
    constexpr std::array<Crop, 10> kCrops{Crop::Meadow, Crop::Wheat, Crop::Ploughed, Crop::Maize, Crop::Rape,
                                          Crop::Meadow, Crop::Wheat, Crop::Orchard,  Crop::Maize, Crop::Meadow};
    Field field;
    field.crop = kCrops[id % kCrops.size()];
    field.alongX = (id & 0x100U) != 0;
    field.tone = 0.9F + 0.2F * unit(hash(id, 3U));
    field.toEdgeM = std::min(std::min(inStrip, 1.0 - inStrip) * stripM, std::min(inCell, 1.0 - inCell) * cellM);
    return field;
}

/// The color of a crop; `across` runs over its rows.
Rgb cropColor(Field const& field, double across, double along)
{
    auto const rows = [across](double everyM) {
        return static_cast<float>(0.5 + 0.5 * std::sin(2.0 * std::numbers::pi * across / everyM));
    };
    switch (field.crop) {
    case Crop::Wheat:
        // Tramlines of the tractor every 18 m.
        return std::fmod(std::abs(across), 18.0) < 1.2 ? Rgb{0.60F, 0.53F, 0.30F}
                                                       : scaled({0.77F, 0.68F, 0.40F}, 0.97F + 0.04F * rows(4.0));
    case Crop::Rape:
        return scaled({0.78F, 0.74F, 0.20F}, 0.95F + 0.06F * rows(6.0));
    case Crop::Ploughed:
        return scaled({0.50F, 0.38F, 0.28F}, 0.88F + 0.16F * rows(3.2));
    case Crop::Maize:
        return scaled({0.28F, 0.43F, 0.17F}, 0.82F + 0.22F * rows(3.0));
    case Crop::Orchard: {
        double const treeAcross = std::remainder(across, 8.0);
        double const treeAlong = std::remainder(along, 7.0);
        float const crown = inside(std::hypot(treeAcross, treeAlong) - 2.4);
        float const shadow = inside(std::hypot(treeAcross - 1.6, treeAlong - 1.0) - 2.3);
        Rgb const grass = scaled({0.47F, 0.56F, 0.27F}, 1.0F - 0.42F * shadow);
        float const light = static_cast<float>(1.0 - 0.16 * (treeAcross + treeAlong) / 2.4);
        return mix(grass, scaled({0.20F, 0.36F, 0.14F}, light), crown);
    }
    default:
        return scaled({0.42F, 0.56F, 0.24F}, 0.98F + 0.03F * rows(9.0));
    }
}

double riverX(double y)
{
    return 372.0 + 46.0 * std::sin(kTurn * y + 0.5) + 13.0 * std::sin(3.0 * kTurn * y + 2.0);
}

/// A road's middle at a place along it, and how much its slope stretches distances across it.
struct RoadPoint {
    double middle = 0.0;
    double stretch = 1.0;
    double away(double across) const { return std::abs(across - middle) / stretch; }
};

RoadPoint roadPoint(double (*middle)(double), double along)
{
    return {middle(along), std::hypot(1.0, (middle(along + 1.0) - middle(along - 1.0)) / 2.0)};
}

/// A turned rectangle on the map.
class Plot {
public:
    Plot(double x, double y, double turnDeg, double halfLength, double halfWidth)
        : x_(x)
        , y_(y)
        , cos_(std::cos(turnDeg * std::numbers::pi / 180.0))
        , sin_(std::sin(turnDeg * std::numbers::pi / 180.0))
        , halfLength_(halfLength)
        , halfWidth_(halfWidth)
    {
    }
    explicit Plot(House const& house) : Plot(house.x, house.y, house.turnDeg, house.halfLength, house.halfWidth) {}

    double along(double x, double y) const { return (x - x_) * cos_ + (y - y_) * sin_; }
    double across(double x, double y) const { return (y - y_) * cos_ - (x - x_) * sin_; }
    /// Meters outside, negative inside.
    double outside(double x, double y) const
    {
        return std::max(std::abs(along(x, y)) - halfLength_, std::abs(across(x, y)) - halfWidth_);
    }

private:
    double x_, y_, cos_, sin_, halfLength_, halfWidth_;
};

Plot const kSolarFarm(190.0, -92.0, 9.0, 62.0, 46.0);
Plot const kApron(0.0, 0.0, 12.0, 24.0, 19.0);

}  // namespace

GroundPaint::GroundPaint(int size, double texelM)
    : size_(size)
    , texelM_(texelM)
    , texels_(static_cast<std::size_t>(size) * static_cast<std::size_t>(size))
    , wood_(texels_.size(), 0.0F)
{
}

std::size_t GroundPaint::indexOf_(int column, int row) const
{
    int const mask = size_ - 1;
    return static_cast<std::size_t>(row & mask) * static_cast<std::size_t>(size_) +
           static_cast<std::size_t>(column & mask);
}

template <typename Shade>
void GroundPaint::forEachAround_(double x, double y, double reachM, Shade&& shade)
{
    int const reach = static_cast<int>(reachM / texelM_) + 2;
    int const column = static_cast<int>(std::floor(x / texelM_ + size_ / 2.0));
    int const row = static_cast<int>(std::floor(size_ / 2.0 - y / texelM_));
    for (int r = row - reach; r <= row + reach; ++r) {
        for (int c = column - reach; c <= column + reach; ++c) {
            shade(texels_[indexOf_(c, r)], eastOf_(c), northOf_(r));
        }
    }
}

void GroundPaint::paintFields()
{
    Meander const meander(size_, texelM_);
    for (int row = 0; row < size_; ++row) {
        double const y = northOf_(row);
        auto const fromSouth = static_cast<std::size_t>(size_ - 1 - row);
        for (int column = 0; column < size_; ++column) {
            double const x = eastOf_(column);
            auto const fromWest = static_cast<std::size_t>(column);
            Field const field = fieldAt(x + meander.east(fromWest, fromSouth), y + meander.north(fromWest, fromSouth));
            float const patches = noise(x, y, 23, 1) * 0.6F + noise(x, y, 90, 2) * 0.4F;
            float const grain = unit(hash(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row)));
            Rgb color = field.alongX ? cropColor(field, y, x) : cropColor(field, x, y);
            color = scaled(color, field.tone * (0.86F + 0.22F * patches + 0.07F * (grain - 0.5F)));
            std::size_t const texel = indexOf_(column, row);
            if (field.toEdgeM < 4.0) {
                double const ragged = 1.2 + 1.3 * static_cast<double>(noise(x, y, 150, 5));
                Rgb const hedge = scaled({0.22F, 0.33F, 0.14F}, 0.75F + 0.5F * noise(x, y, 400, 6));
                color = mix(color, hedge, inside(field.toEdgeM - ragged));
                wood_[texel] = 0.34F * noise(x, y, 14, 9);
            }
            texels_[texel] = color;
        }
    }
}

void GroundPaint::paintRiver()
{
    for (int row = 0; row < size_; ++row) {
        double const y = northOf_(row);
        double const middle = riverX(y);
        for (int column = 0; column < size_; ++column) {
            double const x = eastOf_(column);
            double const away = std::abs(x - middle);
            if (away > 34.0) {
                continue;
            }
            std::size_t const texel = indexOf_(column, row);
            double const ragged = 2.0 * static_cast<double>(noise(x, y, 120, 11));
            Rgb const meadow = scaled({0.36F, 0.50F, 0.22F}, 0.85F + 0.3F * noise(x, y, 60, 12));
            Rgb const sand{0.70F, 0.64F, 0.48F};
            Rgb const water = scaled({0.20F, 0.33F, 0.36F}, 0.85F + 0.3F * noise(x, y, 200, 13));
            Rgb color = mix(texels_[texel], meadow, inside(away - 24.0 - 3.0 * ragged));
            color = mix(color, sand, inside(away - 13.0 - ragged));
            texels_[texel] = mix(color, water, inside(away - 10.5 - 0.6 * ragged));
            wood_[texel] = away > 14.0 && away < 30.0 ? 0.55F : 0.0F;
        }
    }
}

void GroundPaint::paintRoads()
{
    std::vector<RoadPoint> pavedAt;
    pavedAt.reserve(static_cast<std::size_t>(size_));
    for (int column = 0; column < size_; ++column) {
        pavedAt.push_back(roadPoint(pavedRoadY, eastOf_(column)));
    }
    for (int row = 0; row < size_; ++row) {
        double const y = northOf_(row);
        RoadPoint const trackAt = roadPoint(trackX, y);
        for (int column = 0; column < size_; ++column) {
            double const x = eastOf_(column);
            double const paved = pavedAt[static_cast<std::size_t>(column)].away(y);
            double const track = trackAt.away(x);
            if (paved > 12.0 && track > 9.0) {
                continue;
            }
            std::size_t const texel = indexOf_(column, row);
            float const wear = 0.92F + 0.16F * noise(x, y, 300, 21);
            Rgb color = texels_[texel];
            color = mix(color, scaled({0.66F, 0.57F, 0.43F}, wear), inside(track - 2.4));
            color = mix(color, scaled({0.48F, 0.53F, 0.28F}, wear), inside(track - 0.5));
            color = mix(color, scaled({0.56F, 0.58F, 0.38F}, wear), inside(paved - 6.0));
            color = mix(color, scaled({0.40F, 0.40F, 0.41F}, wear), inside(paved - 3.9));
            color = mix(color, {0.84F, 0.84F, 0.82F}, 0.8F * inside(std::abs(paved - 3.5) - 0.15));
            bool const dash = std::fmod(x + kMapM, 12.0) < 5.0;
            color = mix(color, {0.92F, 0.92F, 0.90F}, dash ? inside(paved - 0.22) : 0.0F);
            texels_[texel] = color;
            wood_[texel] = paved > 8.0 ? 0.10F : 0.0F;
        }
    }
}

void GroundPaint::paintSolarFarm()
{
    forEachAround_(190.0, -92.0, 84.0, [&](Rgb& texel, double x, double y) {
        double const u = kSolarFarm.along(x, y);
        double const v = kSolarFarm.across(x, y);
        float const gravel = 0.9F + 0.2F * noise(x, y, 256, 31);
        texel = mix(texel, scaled({0.55F, 0.56F, 0.42F}, gravel), inside(kSolarFarm.outside(x, y)));
        double const row = std::abs(std::remainder(v, 7.0));
        double const aisle = std::abs(std::remainder(u, 31.0));
        double const rim = std::max(std::abs(u) - 58.0, std::abs(v) - 42.0);
        float const panel = inside(std::max({row - 2.2, 2.0 - aisle, rim}));
        bool const frame = std::abs(std::remainder(u, 4.0)) < 0.3 || row < 0.25;
        texel = mix(texel, frame ? Rgb{0.42F, 0.48F, 0.58F} : Rgb{0.13F, 0.19F, 0.36F}, panel);
    });
}

void GroundPaint::paintYards()
{
    for (House const& house : houses()) {
        Plot const plot(house);
        float const tone = 0.9F + 0.2F * unit(hash(static_cast<std::uint32_t>(house.x + 999.0), 5U));
        forEachAround_(house.x, house.y, house.halfLength + 16.0, [&](Rgb& texel, double x, double y) {
            double const ragged = 3.0 * static_cast<double>(noise(x, y, 180, 41));
            double const outside = plot.outside(x, y);
            Rgb const garden = scaled({0.40F, 0.54F, 0.25F}, tone * (0.9F + 0.2F * noise(x, y, 220, 42)));
            Rgb const gravel = scaled({0.68F, 0.64F, 0.56F}, tone);
            texel = mix(texel, garden, inside(outside - 6.0 - ragged));
            texel = mix(texel, gravel, inside(outside - 1.6 - 0.4 * ragged));
            float shadow = 0.0F;
            int const halfMeters = static_cast<int>(2.0 * (house.wallM + house.roofM * 0.7));
            for (int i = 1; i <= halfMeters; ++i) {
                double const height = i * 0.5;
                shadow = std::max(shadow, inside(plot.outside(x - kShadowEast * height, y - kShadowNorth * height)));
            }
            texel = scaled(texel, 1.0F - 0.5F * shadow);
        });
    }
}

void GroundPaint::paintTarget()
{
    forEachAround_(0.0, 0.0, 34.0, [&](Rgb& texel, double x, double y) {
        float const wear = 0.94F + 0.12F * noise(x, y, 260, 51);
        texel = mix(texel, scaled({0.62F, 0.61F, 0.58F}, wear), inside(kApron.outside(x, y)));
        double const joint =
            std::min(std::abs(std::remainder(x + 0.2 * y, 8.0)), std::abs(std::remainder(y - 0.2 * x, 8.0)));
        texel = scaled(texel, 1.0F - 0.10F * inside(joint - 0.1) * inside(kApron.outside(x, y) + 0.5));
        double const away = std::hypot(x, y);
        Rgb const orange{0.88F, 0.36F, 0.12F};
        Rgb const white{0.95F, 0.95F, 0.93F};
        texel = mix(texel, orange, inside(away - 13.0));
        texel = mix(texel, white, inside(away - 11.2));
        texel = mix(texel, scaled({0.50F, 0.50F, 0.49F}, wear), inside(away - 9.4));
        double const arm = std::min(std::abs(x), std::abs(y));
        texel = mix(texel, white, inside(arm - 1.1) * inside(std::max(std::abs(x), std::abs(y)) - 6.5));
    });
}

void GroundPaint::plant_(Tree const& tree)
{
    // The crown stands clear of the ground, and so does its shadow of the trunk.
    double const x = tree.x + kShadowEast * tree.heightM();
    double const y = tree.y + kShadowNorth * tree.heightM();
    forEachAround_(x, y, tree.radiusM, [&](Rgb& texel, double east, double north) {
        double const away = std::hypot(east - x, north - y);
        double const ragged = tree.radiusM * (0.85 + 0.3 * static_cast<double>(noise(east, north, 512, 61)));
        texel = scaled(texel, 1.0F - 0.42F * inside(away - ragged));
    });
    trees_.push_back(tree);
}

bool GroundPaint::mayGrow_(double x, double y) const
{
    constexpr double kClearM = 4.0;
    return kApron.outside(x, y) > kClearM && kSolarFarm.outside(x, y) > kClearM &&
           roadPoint(pavedRoadY, x).away(y) > 7.5 && roadPoint(trackX, y).away(x) > 5.0 &&
           std::none_of(houses().begin(), houses().end(),
                        [x, y](House const& house) { return Plot(house).outside(x, y) < kClearM; });
}

void GroundPaint::plantTrees()
{
    constexpr double kCellM = 7.0;
    constexpr auto kCells = static_cast<std::uint32_t>(kMapM / kCellM);
    for (std::uint32_t row = 0; row < kCells; ++row) {
        for (std::uint32_t column = 0; column < kCells; ++column) {
            std::uint32_t const id = hash(row + 4001U, column + 9001U);
            double const x = (column + static_cast<double>(unit(id))) * kCellM - kMapM / 2.0;
            double const y = kMapM / 2.0 - (row + static_cast<double>(unit(hash(id, 1U)))) * kCellM;
            int const texelColumn = static_cast<int>(std::floor(x / texelM_ + size_ / 2.0));
            int const texelRow = static_cast<int>(std::floor(size_ / 2.0 - y / texelM_));
            float const likely = wood_[indexOf_(texelColumn, texelRow)];
            // A few single trees stand in gardens and meadows.
            float const chance = std::max(likely, std::hypot(x + 40.0, y - 40.0) < 150.0 ? 0.03F : 0.004F);
            if (unit(hash(id, 2U)) < chance && mayGrow_(x, y)) {
                plant_({x, y, 2.0 + 2.4 * static_cast<double>(unit(hash(id, 3U))),
                        0.8 + 0.4 * static_cast<double>(unit(hash(id, 4U)))});
            }
        }
    }
}

}  // namespace flight
