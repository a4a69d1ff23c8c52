// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The made flight's picture: the map seen in perspective, row by row, and what stands on it. The camera's
// horizon is level, so a row of the picture lies at one distance and is a straight line on the map.
#include "flight/flight_model.h"
#include "flight/flight_path.h"
#include "flight/ground_canvas.h"
#include "flight/ground_objects.h"
#include "flight/ground_texture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace flight {
namespace {

/// A straight line over the map in texels of one level, with 16 bits of fraction; it wraps around.
struct MapLine {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t stepX = 0;
    std::uint32_t stepY = 0;
    void advance()
    {
        x += stepX;
        y += stepY;
    }
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
    ground.rowStepM = reach / view.focal * dot(ray, ray) / -ray.z;
    return ground;
}

/// `texelM` is the size of a texel of the plane that is sampled.
MapLine mapLine(GroundRow const& ground, double texelM, int sizeBits)
{
    double const half = std::ldexp(0.5, sizeBits);
    return {toFixed(ground.start.x / texelM + half - 0.5), toFixed(half - ground.start.y / texelM - 0.5),
            toFixed(ground.step.x / texelM), toFixed(-ground.step.y / texelM)};
}

/// One plane of one level and a line over it.
class Sampler {
public:
    Sampler(GroundRow const& ground, int level, bool chroma)
    {
        GroundTexture::Level const& texture = GroundTexture::shared().level(level);
        int const sizeBits = texture.sizeBits - (chroma ? 1 : 0);
        mask_ = (1U << static_cast<unsigned>(sizeBits)) - 1U;
        pitch_ = GroundTexture::Level::pitchOf(std::size_t{mask_} + 1U);
        texels_ = chroma ? texture.chroma.data() : texture.luma.data();
        line_ = mapLine(ground, std::ldexp(GroundTexture::kTexelM, level + (chroma ? 1 : 0)), sizeBits);
    }

    /// The luma between four texels; two products at once, in the halves of a number.
    unsigned luma() const
    {
        std::uint16_t const* const at = place_();
        unsigned const four = at[0] | (static_cast<unsigned>(at[1]) << 16U);
        return across_(down_(four & kLanes, (four >> 8U) & kLanes));
    }

    /// Cb in the low byte and Cr above it.
    unsigned chroma() const
    {
        std::uint16_t const* const at = place_();
        std::uint16_t const* const below = at + pitch_;
        unsigned const upper = at[0] | (static_cast<unsigned>(at[1]) << 16U);
        unsigned const lower = below[0] | (static_cast<unsigned>(below[1]) << 16U);
        return across_(down_(upper & kLanes, lower & kLanes)) |
               (across_(down_((upper >> 8U) & kLanes, (lower >> 8U) & kLanes)) << 8U);
    }

    void advance() { line_.advance(); }

private:
    static constexpr unsigned kLanes = 0x00FF00FFU;

    std::uint16_t const* place_() const
    {
        unsigned const x = (line_.x >> 16U) & mask_;
        unsigned const y = (line_.y >> 16U) & mask_;
        return texels_ + (y * pitch_ + x);
    }
    unsigned down_(unsigned upper, unsigned lower) const
    {
        unsigned const share = (line_.y >> 8U) & 0xFFU;
        return upper * (256U - share) + lower * share;
    }
    unsigned across_(unsigned both) const
    {
        unsigned const share = (line_.x >> 8U) & 0xFFU;
        return ((both & 0xFFFFU) * (256U - share) + (both >> 16U) * share + 0x8000U) >> 16U;
    }

    std::uint16_t const* texels_ = nullptr;
    unsigned mask_ = 0;
    std::size_t pitch_ = 0;
    MapLine line_;
};

/// The two levels of the map around a sample spacing, and the share of the smaller one from 0 to 256.
struct LevelChoice {
    int fine = 0;
    unsigned coarseShare = 0;
};

LevelChoice chooseLevel(GroundRow const& ground)
{
    // Between the row's and the column's spacing, and a little sharper than exact: what sparkles then is less
    // than what blurs otherwise.
    constexpr double kSharper = 0.35;
    double const spacing = std::sqrt(length(ground.step) * ground.rowStepM);
    double const ideal = std::log2(std::max(spacing, 1e-6) / GroundTexture::kTexelM) - kSharper;
    double const level = std::clamp(ideal, 0.0, static_cast<double>(GroundTexture::kLevels - 1));
    LevelChoice choice;
    choice.fine = std::min(static_cast<int>(level), GroundTexture::kLevels - 2);
    choice.coarseShare = static_cast<unsigned>((level - choice.fine) * 256.0);
    return choice;
}

unsigned blend(unsigned fine, unsigned coarse, unsigned coarseShare)
{
    return (fine * (256U - coarseShare) + coarse * coarseShare + 128U) >> 8U;
}

void paintLumaRow(std::uint8_t* out, int width, GroundRow const& ground)
{
    LevelChoice const choice = chooseLevel(ground);
    Haze const haze(ground.distanceM);
    Sampler fine(ground, choice.fine, false);
    if (choice.coarseShare == 0) {
        for (int i = 0; i < width; ++i, fine.advance()) {
            out[i] = haze.overLuma(fine.luma());
        }
        return;
    }
    Sampler coarse(ground, choice.fine + 1, false);
    for (int i = 0; i < width; ++i, fine.advance(), coarse.advance()) {
        out[i] = haze.overLuma(blend(fine.luma(), coarse.luma(), choice.coarseShare));
    }
}

/// One level is enough for colors.
void paintChromaRow(std::uint8_t* out, int pairs, GroundRow const& ground)
{
    LevelChoice const choice = chooseLevel(ground);
    Haze const haze(ground.distanceM);
    // A chroma sample is twice as wide as a luma one, and so is a chroma texel of the same level.
    Sampler sampler(ground, std::max(0, choice.fine - 1), true);
    for (int i = 0; i < pairs; ++i, out += 2, sampler.advance()) {
        unsigned const both = sampler.chroma();
        out[0] = haze.overCb(both & 0xFFU);
        out[1] = haze.overCr(both >> 8U);
    }
}

void paintMap(Canvas const& canvas)
{
    for (int row = 0; row < canvas.luma.height; ++row) {
        std::uint8_t* const out = canvas.luma.row(row);
        GroundRow const ground = groundRow(canvas.lumaView, row);
        if (ground.sky) {
            std::fill_n(out, canvas.luma.width, kHazeColor.y);
        } else {
            paintLumaRow(out, canvas.luma.width, ground);
        }
    }
    for (int row = 0; row < canvas.chroma.height; ++row) {
        std::uint8_t* out = canvas.chroma.row(row);
        GroundRow const ground = groundRow(canvas.chromaView, row);
        if (!ground.sky) {
            paintChromaRow(out, canvas.chroma.width, ground);
            continue;
        }
        for (int i = 0; i < canvas.chroma.width; ++i, out += 2) {
            out[0] = kHazeColor.u;
            out[1] = kHazeColor.v;
        }
    }
}

/// Houses, cars and trees, the far ones first.
void paintStanding(Canvas const& canvas, double seconds)
{
    Vec3 const eye = canvas.lumaView.pose.position;
    std::vector<Face> const faces = facesTowards(eye, seconds);
    std::vector<Crown> const crowns = crownsInView(canvas.lumaView, canvas.luma);
    auto crown = crowns.begin();
    for (Face const& face : faces) {
        for (; crown != crowns.end() && crown->distanceM > face.distanceM; ++crown) {
            paintCrown(canvas, *crown);
        }
        paintFace(canvas, face);
    }
    for (; crown != crowns.end(); ++crown) {
        paintCrown(canvas, *crown);
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
    int const pairs = (planes.width + 1) / 2;
    Canvas const canvas{{planes.y, planes.width, planes.height, planes.yStride == 0 ? planes.width : planes.yStride},
                        {planes.uv, pairs, (planes.height + 1) / 2, planes.uvStride == 0 ? 2 * pairs : planes.uvStride},
                        {pose, focal, halfWidth, planes.height / 2.0},
                        {pose, focal / 2.0, halfWidth / 2.0, planes.height / 4.0}};
    paintMap(canvas);
    paintStanding(canvas, seconds);
}

}  // namespace flight
