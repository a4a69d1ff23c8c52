// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Draws faces and crowns with soft edges into both planes. ground_picture.cpp calls it from far to near.
#include "flight/ground_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace flight {
namespace {

struct Point {
    double x = 0.0;
    double y = 0.0;
    double depth = -1.0;  ///< along the camera's axis; not in front of it when below 1
};

Point project(Vec3 place, View const& view)
{
    Vec3 const ray = place - view.pose.position;
    double const depth = dot(ray, view.pose.camera.forward);
    if (depth < 1.0) {
        return {};
    }
    return {view.centerX + view.focal * dot(ray, view.pose.camera.right) / depth,
            view.centerY + view.focal * dot(ray, view.pose.camera.down) / depth, depth};
}

/// Samples from `first` up to but without `end`.
struct Span {
    int first = 0;
    int end = 0;
};

Span spanOf(double low, double high, int size)
{
    auto const limit = [size](double value) { return static_cast<int>(std::clamp(value, 0.0, size * 1.0)); };
    return {limit(std::floor(low)), limit(std::ceil(high) + 1.0)};
}

std::uint8_t mixed(std::uint8_t under, unsigned over, unsigned share)
{
    return static_cast<std::uint8_t>((under * (256U - share) + over * share + 128U) >> 8U);
}

/// A share of 0 to 256 from a coverage that may lie outside 0 to 1.
unsigned toShare(float coverage)
{
    return static_cast<unsigned>(256.0F * std::clamp(coverage, 0.0F, 1.0F));
}

/// A convex shape in a plane: every edge as the signed distance from it, positive inside.
class ConvexShape {
public:
    ConvexShape(Face const& face, View const& view)
    {
        std::array<Point, 4> points;
        for (int i = 0; i < face.count; ++i) {
            Point const& point = points[index_(i)] = project(face.corners[index_(i)], view);
            if (point.depth < 1.0) {
                return;
            }
            low_ = {std::min(low_.x, point.x), std::min(low_.y, point.y)};
            high_ = {std::max(high_.x, point.x), std::max(high_.y, point.y)};
        }
        double area = 0.0;
        for (int i = 0; i < face.count; ++i) {
            Point const& b = points[index_((i + 1) % face.count)];
            area += points[index_(i)].x * b.y - points[index_(i)].y * b.x;
        }
        for (int i = 0; i < face.count; ++i) {
            Point const& a = points[index_(i)];
            Point const& b = points[index_((i + 1) % face.count)];
            double const size = std::copysign(std::max(1e-9, std::hypot(b.x - a.x, b.y - a.y)), area);
            double const nx = (a.y - b.y) / size;
            double const ny = (b.x - a.x) / size;
            edges_[index_(i)] = {static_cast<float>(nx), static_cast<float>(ny),
                                 static_cast<float>(-nx * a.x - ny * a.y)};
        }
        count_ = face.count;
    }

    Span rows(int height) const { return count_ == 0 ? Span{} : spanOf(low_.y - 1.0, high_.y + 1.0, height); }
    Span columns(int width) const { return spanOf(low_.x - 1.0, high_.x + 1.0, width); }

    /// How much of the sample is covered, 0 to 256. The edges reach a quarter of a sample too far, so that
    /// no ground shows between two faces of a house.
    unsigned share(int column, int row) const
    {
        float nearest = 1.0F;
        for (int i = 0; i < count_; ++i) {
            Edge const& edge = edges_[index_(i)];
            nearest = std::min(nearest, edge.x * (static_cast<float>(column) + 0.5F) +
                                            edge.y * (static_cast<float>(row) + 0.5F) + edge.offset + 0.75F);
        }
        return toShare(nearest);
    }

private:
    struct Edge {
        float x = 0.0F;
        float y = 0.0F;
        float offset = 0.0F;
    };
    static std::size_t index_(int i) { return static_cast<std::size_t>(i); }

    std::array<Edge, 4> edges_;
    int count_ = 0;
    Point low_{1e9, 1e9};
    Point high_{-1e9, -1e9};
};

/// A ball in a plane. Its light falls off from the sun's side; its edge and its leaves are ragged.
class Ball {
public:
    Ball(Crown const& crown, View const& view) : middle_(project(crown.middle, view))
    {
        radius_ = middle_.depth < 1.0 ? 0.0 : view.focal * crown.radiusM / middle_.depth;
        seed_ = static_cast<std::uint32_t>(std::llround(crown.middle.x * 16.0)) * 2654435761U;
        Axes const& camera = view.pose.camera;
        sunRight_ = static_cast<float>(dot(kSun, camera.right));
        sunDown_ = static_cast<float>(dot(kSun, camera.down));
        sunTowards_ = static_cast<float>(-dot(kSun, camera.forward));
    }

    Span rows(int height) const
    {
        return radius_ <= 0.0 ? Span{} : spanOf(middle_.y - reach_(), middle_.y + reach_(), height);
    }
    Span columns(int width) const { return spanOf(middle_.x - reach_(), middle_.x + reach_(), width); }

    struct Sample {
        unsigned share = 0;
        float light = 1.0F;
    };
    Sample at(int column, int row) const
    {
        auto const radius = static_cast<float>(radius_);
        float const x = (static_cast<float>(column) + 0.5F - static_cast<float>(middle_.x)) / radius;
        float const y = (static_cast<float>(row) + 0.5F - static_cast<float>(middle_.y)) / radius;
        float const away = std::sqrt(x * x + y * y);
        if (away > 1.3F) {
            return {};
        }
        float const leaves = leavesAt_(x, y);
        float const edge = 0.88F + 0.24F * leaves;
        float const up = std::sqrt(std::max(0.0F, 1.0F - away * away));
        float const facing = std::max(0.0F, x * sunRight_ + y * sunDown_ + up * sunTowards_);
        return {toShare((edge - away) * radius + 0.5F), (0.55F + 0.65F * facing) * (0.78F + 0.44F * leaves)};
    }

private:
    double reach_() const { return radius_ * 1.15 + 1.0; }

    /// Smooth noise over the ball, 0 to 1.
    float leavesAt_(float x, float y) const
    {
        float const u = (x + 2.0F) * 2.7F;
        float const v = (y + 2.0F) * 2.7F;
        auto const column = static_cast<std::uint32_t>(u);
        auto const row = static_cast<std::uint32_t>(v);
        float const fx = u - static_cast<float>(column);
        float const fy = v - static_cast<float>(row);
        auto const corner = [this](std::uint32_t i, std::uint32_t j) {
            std::uint32_t h = (i * 0x9E3779B1U) ^ (j * 0x85EBCA77U) ^ seed_;
            h = (h ^ (h >> 15U)) * 0x2C1B3C6DU;
            return static_cast<float>(h >> 16U) * (1.0F / 65536.0F);
        };
        float const upper = corner(column, row) + (corner(column + 1, row) - corner(column, row)) * fx;
        float const lower = corner(column, row + 1) + (corner(column + 1, row + 1) - corner(column, row + 1)) * fx;
        return upper + (lower - upper) * fy;
    }

    Point middle_;
    double radius_ = 0.0;
    std::uint32_t seed_ = 0;
    float sunRight_ = 0.0F;
    float sunDown_ = 0.0F;
    float sunTowards_ = 0.0F;
};

}  // namespace

Haze::Haze(double distanceM)
{
    auto const weight = static_cast<unsigned>(256.0 * (1.0 - std::exp(-distanceM / 9000.0)));
    clear_ = 256U - weight;
    lumaPart_ = kHazeColor.y * weight + 128U;
    cbPart_ = kHazeColor.u * weight + 128U;
    crPart_ = kHazeColor.v * weight + 128U;
}

std::vector<Crown> crownsInView(View const& view, Plane const& plane)
{
    std::vector<Crown> crowns;
    for (Tree const& tree : GroundTexture::shared().trees()) {
        Vec3 const middle{tree.x, tree.y, tree.heightM()};
        Point const point = project(middle, view);
        double const reach = view.focal * tree.radiusM * 1.2 / point.depth + 1.0;
        bool const shown = point.depth >= 1.0 && point.x > -reach && point.x < plane.width + reach &&
                           point.y > -reach && point.y < plane.height + reach;
        if (shown) {
            crowns.push_back({middle, tree.radiusM, tree.tone, length(middle - view.pose.position)});
        }
    }
    std::sort(crowns.begin(), crowns.end(), [](Crown const& a, Crown const& b) { return a.distanceM > b.distanceM; });
    return crowns;
}

void paintFace(Canvas const& canvas, Face const& face)
{
    Yuv const color = Haze(face.distanceM).over(face.color);
    ConvexShape const onLuma(face, canvas.lumaView);
    Span const rows = onLuma.rows(canvas.luma.height);
    Span const columns = onLuma.columns(canvas.luma.width);
    for (int row = rows.first; row < rows.end; ++row) {
        std::uint8_t* const out = canvas.luma.row(row);
        for (int i = columns.first; i < columns.end; ++i) {
            out[i] = mixed(out[i], color.y, onLuma.share(i, row));
        }
    }
    ConvexShape const onChroma(face, canvas.chromaView);
    Span const chromaRows = onChroma.rows(canvas.chroma.height);
    Span const pairs = onChroma.columns(canvas.chroma.width);
    for (int row = chromaRows.first; row < chromaRows.end; ++row) {
        std::uint8_t* out = canvas.chroma.row(row) + std::ptrdiff_t{2} * pairs.first;
        for (int i = pairs.first; i < pairs.end; ++i, out += 2) {
            unsigned const share = onChroma.share(i, row);
            out[0] = mixed(out[0], color.u, share);
            out[1] = mixed(out[1], color.v, share);
        }
    }
}

void paintCrown(Canvas const& canvas, Crown const& crown)
{
    auto const tone = static_cast<float>(crown.tone);
    Yuv const green = toYuv({0.24F * tone, 0.39F * tone, 0.15F * tone});
    Haze const haze(crown.distanceM);
    Yuv const color = haze.over(green);
    Ball const onLuma(crown, canvas.lumaView);
    Span const rows = onLuma.rows(canvas.luma.height);
    Span const columns = onLuma.columns(canvas.luma.width);
    for (int row = rows.first; row < rows.end; ++row) {
        std::uint8_t* const out = canvas.luma.row(row);
        for (int i = columns.first; i < columns.end; ++i) {
            Ball::Sample const sample = onLuma.at(i, row);
            float const lit = 16.0F + static_cast<float>(green.y - 16) * sample.light;
            out[i] = mixed(out[i], haze.overLuma(static_cast<unsigned>(std::min(lit, 235.0F))), sample.share);
        }
    }
    Ball const onChroma(crown, canvas.chromaView);
    Span const chromaRows = onChroma.rows(canvas.chroma.height);
    Span const pairs = onChroma.columns(canvas.chroma.width);
    for (int row = chromaRows.first; row < chromaRows.end; ++row) {
        std::uint8_t* out = canvas.chroma.row(row) + std::ptrdiff_t{2} * pairs.first;
        for (int i = pairs.first; i < pairs.end; ++i, out += 2) {
            unsigned const share = onChroma.at(i, row).share;
            out[0] = mixed(out[0], color.u, share);
            out[1] = mixed(out[1], color.v, share);
        }
    }
}

}  // namespace flight
