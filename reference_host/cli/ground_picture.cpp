// The made flight's picture: the map seen in perspective, row by row, and the houses over it. The camera's
// horizon is level, so a row of the picture lies at one distance and is a straight line on the map.
#include "flight_model.h"
#include "flight_path.h"
#include "ground_objects.h"
#include "ground_texture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace flight {
namespace {

/// A picture plane: luma, or chroma with two bytes a sample.
struct Plane {
    std::uint8_t* data = nullptr;
    int width = 0;  ///< samples
    int height = 0;
    std::ptrdiff_t stride = 0;
};

/// The camera over a plane of samples.
struct View {
    Pose pose;
    double focal = 1.0;  ///< in samples
    double centerX = 0.0;
    double centerY = 0.0;
};

/// A straight line over the map in texels of one level, with 16 bits of fraction; it wraps around.
struct MapLine {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t stepX = 0;
    std::uint32_t stepY = 0;
};

/// The low 32 bits of a texel coordinate with 16 bits of fraction.
std::uint32_t toFixed(double texels)
{
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::llround(texels * 65536.0)) & 0xFFFFFFFFU);
}

/// A row of the picture on the ground: its first sample's place, the step to the next sample, and how far
/// the next row is.
struct GroundRow {
    bool sky = false;
    Vec3 start;
    Vec3 step;
    double rowStepM = 0.0;
    double distanceM = 0.0;
};

GroundRow groundRow(View const& view, int row)
{
    constexpr double kFarM = 60000.0;
    double const v = (row + 0.5 - view.centerY) / view.focal;
    Axes const& camera = view.pose.camera;
    Vec3 const ray = camera.forward + camera.down * v;
    double const reach = ray.z < 0.0 ? -view.pose.position.z / ray.z : kFarM;
    GroundRow ground;
    ground.distanceM = reach * length(ray);
    if (ray.z >= 0.0 || ground.distanceM >= kFarM) {
        ground.sky = true;
        return ground;
    }
    double const u = (0.5 - view.centerX) / view.focal;
    ground.start = view.pose.position + (ray + camera.right * u) * reach;
    ground.step = camera.right * (reach / view.focal);
    ground.rowStepM = reach / view.focal * length(ray) / std::max(1e-6, -ray.z / length(ray));
    return ground;
}

/// `texelM` is the size of a texel of the plane that is sampled.
MapLine mapLine(GroundRow const& ground, double texelM, int sizeBits)
{
    double const half = std::ldexp(0.5, sizeBits);
    return {toFixed(ground.start.x / texelM + half - 0.5), toFixed(half - ground.start.y / texelM - 0.5),
            toFixed(ground.step.x / texelM), toFixed(-ground.step.y / texelM)};
}

/// Between four neighbours of one channel; fx and fy from 0 to 256.
template <int Channels>
unsigned between(std::uint8_t const* texels, MapLine const& line, unsigned sizeBits, int channel)
{
    unsigned const mask = (1U << sizeBits) - 1U;
    unsigned const x0 = (line.x >> 16U) & mask;
    unsigned const y0 = (line.y >> 16U) & mask;
    unsigned const x1 = (x0 + 1U) & mask;
    unsigned const y1 = (y0 + 1U) & mask;
    unsigned const fx = (line.x >> 8U) & 0xFFU;
    unsigned const fy = (line.y >> 8U) & 0xFFU;
    auto const at = [&](unsigned x, unsigned y) -> unsigned {
        return texels[((y << sizeBits) + x) * Channels + static_cast<unsigned>(channel)];
    };
    unsigned const upper = at(x0, y0) * (256U - fx) + at(x1, y0) * fx;
    unsigned const lower = at(x0, y1) * (256U - fx) + at(x1, y1) * fx;
    return (upper * (256U - fy) + lower * fy + 0x8000U) >> 16U;
}

/// Mixes a row of samples towards the haze; `weight` from 0 to 256.
struct Haze {
    unsigned weight = 0;
    std::array<unsigned, 2> color{};
    std::uint8_t over(unsigned value, int channel) const
    {
        return static_cast<std::uint8_t>(
            (value * (256U - weight) + color[static_cast<std::size_t>(channel)] * weight) >> 8U);
    }
};

constexpr Yuv kHaze{178, 131, 124};

Haze hazeAt(double distanceM, bool chroma)
{
    double const share = 1.0 - std::exp(-distanceM / 9000.0);
    Haze haze;
    haze.weight = static_cast<unsigned>(256.0 * share);
    haze.color = chroma ? std::array<unsigned, 2>{kHaze.u, kHaze.v} : std::array<unsigned, 2>{kHaze.y, kHaze.y};
    return haze;
}

/// The two levels of the map around a sample spacing, and the share of the smaller one from 0 to 256.
struct LevelChoice {
    int fine = 0;
    unsigned coarseShare = 0;
};

LevelChoice chooseLevel(GroundRow const& ground)
{
    // Between the row's and the column's spacing: a little blur in one, a little sparkle in the other.
    double const spacing = std::sqrt(length(ground.step) * ground.rowStepM);
    double const ideal = std::log2(std::max(spacing, 1e-6) / GroundTexture::kTexelM);
    double const level = std::clamp(ideal, 0.0, static_cast<double>(GroundTexture::kLevels - 1));
    LevelChoice choice;
    choice.fine = std::min(static_cast<int>(level), GroundTexture::kLevels - 2);
    choice.coarseShare = static_cast<unsigned>((level - choice.fine) * 256.0);
    return choice;
}

template <int Channels>
void paintRow(std::uint8_t* out, int width, GroundRow const& ground)
{
    constexpr bool kChroma = Channels == 2;
    GroundTexture const& map = GroundTexture::shared();
    LevelChoice const choice = chooseLevel(ground);
    Haze const haze = hazeAt(ground.distanceM, kChroma);
    auto const lineOf = [&](int level) {
        double const texelM = std::ldexp(GroundTexture::kTexelM, level + (kChroma ? 1 : 0));
        return mapLine(ground, texelM, map.level(level).sizeBits - (kChroma ? 1 : 0));
    };
    GroundTexture::Level const& fine = map.level(choice.fine);
    GroundTexture::Level const& coarse = map.level(choice.fine + 1);
    std::uint8_t const* const fineTexels = kChroma ? fine.chroma.data() : fine.luma.data();
    std::uint8_t const* const coarseTexels = kChroma ? coarse.chroma.data() : coarse.luma.data();
    auto const bits = static_cast<unsigned>(fine.sizeBits - (kChroma ? 1 : 0));
    MapLine fineLine = lineOf(choice.fine);
    MapLine coarseLine = lineOf(choice.fine + 1);
    for (int i = 0; i < width; ++i) {
        for (int channel = 0; channel < Channels; ++channel) {
            unsigned value = between<Channels>(fineTexels, fineLine, bits, channel);
            if (choice.coarseShare != 0) {
                unsigned const other = between<Channels>(coarseTexels, coarseLine, bits - 1U, channel);
                value = (value * (256U - choice.coarseShare) + other * choice.coarseShare + 128U) >> 8U;
            }
            *out++ = haze.over(value, channel);
        }
        fineLine.x += fineLine.stepX;
        fineLine.y += fineLine.stepY;
        coarseLine.x += coarseLine.stepX;
        coarseLine.y += coarseLine.stepY;
    }
}

template <int Channels>
void paintPlane(Plane const& plane, View const& view)
{
    for (int row = 0; row < plane.height; ++row) {
        std::uint8_t* const out = plane.data + row * plane.stride;
        GroundRow const ground = groundRow(view, row);
        if (!ground.sky) {
            paintRow<Channels>(out, plane.width, ground);
            continue;
        }
        for (int i = 0; i < plane.width; ++i) {
            out[i * Channels] = Channels == 1 ? kHaze.y : kHaze.u;
            out[i * Channels + Channels - 1] = Channels == 1 ? kHaze.y : kHaze.v;
        }
    }
}

struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// A face in the picture, corners clockwise or not; 0 corners when it is not in front of the camera.
struct FlatFace {
    std::array<Point, 4> corners;
    int count = 0;
    double distanceM = 0.0;
};

FlatFace project(Face const& face, View const& view)
{
    FlatFace flat;
    for (int i = 0; i < face.count; ++i) {
        Vec3 const ray = face.corners[static_cast<std::size_t>(i)] - view.pose.position;
        double const depth = dot(ray, view.pose.camera.forward);
        if (depth < 1.0) {
            return {};
        }
        flat.corners[static_cast<std::size_t>(i)] = {
            view.centerX + view.focal * dot(ray, view.pose.camera.right) / depth,
            view.centerY + view.focal * dot(ray, view.pose.camera.down) / depth};
        flat.distanceM = depth;
    }
    flat.count = face.count;
    return flat;
}

/// How much of a sample at (x, y) a convex face covers, 0 to 1; its edges reach a quarter of a sample too
/// far, so that no ground shows between two faces of a house.
double coverage(FlatFace const& face, double orientation, double x, double y)
{
    double nearest = 1.0;
    for (int i = 0; i < face.count; ++i) {
        Point const& a = face.corners[static_cast<std::size_t>(i)];
        Point const& b = face.corners[static_cast<std::size_t>((i + 1) % face.count)];
        double const dx = b.x - a.x;
        double const dy = b.y - a.y;
        double const size = std::max(1e-9, std::hypot(dx, dy));
        nearest = std::min(nearest, orientation * (dx * (y - a.y) - dy * (x - a.x)) / size + 0.75);
    }
    return std::max(0.0, nearest);
}

template <int Channels>
void paintFace(Plane const& plane, FlatFace const& face, Yuv const& color)
{
    double area = 0.0;
    Point low{1e9, 1e9};
    Point high{-1e9, -1e9};
    for (int i = 0; i < face.count; ++i) {
        Point const& a = face.corners[static_cast<std::size_t>(i)];
        Point const& b = face.corners[static_cast<std::size_t>((i + 1) % face.count)];
        area += a.x * b.y - a.y * b.x;
        low = {std::min(low.x, a.x), std::min(low.y, a.y)};
        high = {std::max(high.x, a.x), std::max(high.y, a.y)};
    }
    auto const limit = [](double value, int most) {
        return static_cast<int>(std::clamp(value, 0.0, double{1} * most));
    };
    Haze const haze = hazeAt(face.distanceM, Channels == 2);
    std::array<unsigned, 2> const paint = {haze.over(Channels == 2 ? color.u : color.y, 0), haze.over(color.v, 1)};
    for (int row = limit(low.y - 1.0, plane.height); row < limit(high.y + 2.0, plane.height); ++row) {
        for (int i = limit(low.x - 1.0, plane.width); i < limit(high.x + 2.0, plane.width); ++i) {
            auto const share =
                static_cast<unsigned>(256.0 * coverage(face, area < 0.0 ? -1.0 : 1.0, i + 0.5, row + 0.5));
            for (int channel = 0; channel < Channels; ++channel) {
                std::uint8_t& sample = plane.data[row * plane.stride + i * Channels + channel];
                sample = static_cast<std::uint8_t>(
                    (sample * (256U - share) + paint[static_cast<std::size_t>(channel)] * share + 128U) >> 8U);
            }
        }
    }
}

template <int Channels>
void paintScene(Plane const& plane, View const& view, std::vector<Face> const& faces)
{
    paintPlane<Channels>(plane, view);
    for (Face const& face : faces) {
        FlatFace const flat = project(face, view);
        if (flat.count > 0) {
            paintFace<Channels>(plane, flat, face.color);
        }
    }
}

}  // namespace

void paintGround(double seconds, MappedNV12 const& planes)
{
    if (planes.y == nullptr || planes.uv == nullptr || planes.width < 1 || planes.height < 1) {
        return;
    }
    Pose const pose = poseAt(seconds);
    double const halfWidth = planes.width / 2.0;
    double const focal = halfWidth / std::tan(pose.hfovDeg * std::numbers::pi / 360.0);
    std::vector<Face> const faces = facesTowards(pose.position, seconds);
    int const pairs = (planes.width + 1) / 2;
    Plane const luma{planes.y, planes.width, planes.height, planes.yStride == 0 ? planes.width : planes.yStride};
    Plane const chroma{planes.uv, pairs, (planes.height + 1) / 2, planes.uvStride == 0 ? 2 * pairs : planes.uvStride};
    paintScene<1>(luma, {pose, focal, halfWidth, planes.height / 2.0}, faces);
    paintScene<2>(chroma, {pose, focal / 2.0, halfWidth / 2.0, planes.height / 4.0}, faces);
}

}  // namespace flight
