// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Draws background boxes: the straight inside as rectangles, corners and odd edges by coverage.
#include "imaging/rounded_box.h"

#include <algorithm>
#include <cmath>

namespace imaging {
namespace {

/// Lines by which a pixel is measured; along them it is measured exactly.
constexpr int kLinesPerPixel = 32;
/// Larger corners are measured as they are drawn.
constexpr std::int64_t kLargestKeptCorner = 64;

int weightOfOpacity(float opacity)
{
    return opacity > 0 ? static_cast<int>(std::lround(std::min(opacity, 1.0F) * 256.0F)) : 0;
}

}  // namespace

std::uint8_t cornerCoverage(double radius, std::int64_t x, std::int64_t y)
{
    double const nearX = radius - static_cast<double>(x + 1);
    double const nearY = radius - static_cast<double>(y + 1);
    if (nearX > 0 && nearY > 0 && nearX * nearX + nearY * nearY >= radius * radius) {
        return 0;
    }
    if ((nearX + 1) * (nearX + 1) + (nearY + 1) * (nearY + 1) <= radius * radius) {
        return 255;
    }
    double inside = 0;
    for (int line = 0; line < kLinesPerPixel; ++line) {
        // Beyond the centre, which a corner's last pixel may reach, the edge is straight.
        double const height = std::max(nearY + 1 - (line + 0.5) / kLinesPerPixel, 0.0);
        double const halfChord = height < radius ? std::sqrt(radius * radius - height * height) : 0.0;
        inside += std::clamp(halfChord - nearX, 0.0, 1.0);
    }
    return static_cast<std::uint8_t>(std::lround(255 * inside / kLinesPerPixel));
}

void BoxRenderer::draw(MappedNV12 const& target, Box const& box, float opacity, float radius, YCbCr const& color)
{
    Job const job{target, box, intersectionOf(box, {0, 0, target.width, target.height}), color,
                  weightOfOpacity(opacity)};
    if (box.isEmpty() || job.visible.isEmpty() || job.weight == 0) {
        return;
    }
    double const largest = static_cast<double>(std::min(box.width(), box.height())) / 2;
    setRadius(radius > 0 ? std::min(static_cast<double>(radius), largest) : 0.0);
    drawLuma(job);
    drawChroma(job);
}

void BoxRenderer::setRadius(double radius)
{
    if (radius == radius_) {
        return;
    }
    radius_ = radius;
    cornerSize_ = static_cast<std::int64_t>(std::ceil(radius));
    cornerLoss_.clear();
    if (cornerSize_ <= kLargestKeptCorner) {
        for (std::int64_t y = 0; y < cornerSize_; ++y) {
            for (std::int64_t x = 0; x < cornerSize_; ++x) {
                cornerLoss_.push_back(static_cast<std::uint8_t>(255 - cornerCoverage(radius, x, y)));
            }
        }
    }
}

/// What a corner takes from the pixel x columns and y rows away from it.
inline int BoxRenderer::cornerLoss(std::int64_t x, std::int64_t y) const
{
    if (x >= cornerSize_ || y >= cornerSize_) {
        return 0;
    }
    return cornerLoss_.empty() ? 255 - cornerCoverage(radius_, x, y)
                               : cornerLoss_[static_cast<std::size_t>(y * cornerSize_ + x)];
}

inline BoxRenderer::Row BoxRenderer::rowAt(Box const& box, std::int64_t y)
{
    std::int64_t const fromTop = y - box.top;
    std::int64_t const fromBottom = box.bottom - 1 - y;
    return {fromTop >= 0 && fromBottom >= 0, std::min(fromTop, fromBottom), std::max(fromTop, fromBottom)};
}

inline int BoxRenderer::coverageAt(Box const& box, Row const& row, std::int64_t x) const
{
    std::int64_t const fromLeft = x - box.left;
    std::int64_t const fromRight = box.right - 1 - x;
    if (!row.isInside || fromLeft < 0 || fromRight < 0) {
        return 0;
    }
    std::int64_t const near = std::min(fromLeft, fromRight);
    std::int64_t const far = std::max(fromLeft, fromRight);
    int loss = cornerLoss(near, row.near);
    // Corners of a small box may share a pixel.
    if (far < cornerSize_ || row.far < cornerSize_) {
        loss += cornerLoss(far, row.near) + cornerLoss(near, row.far) + cornerLoss(far, row.far);
    }
    return std::max(0, 255 - loss);
}

/// The box cut at its corners' squares: the places where its pieces begin and end in one direction.
BoxRenderer::Cuts BoxRenderer::cutsOf(std::int64_t first, std::int64_t end) const
{
    std::int64_t const near = std::min(first + cornerSize_, end);
    return {first, near, std::max(end - cornerSize_, near), end};
}

void BoxRenderer::drawLuma(Job const& job) const
{
    Cuts const rows = cutsOf(job.box.top, job.box.bottom);
    Cuts const columns = cutsOf(job.box.left, job.box.right);
    fillLuma(job, {columns.near, rows.first, columns.far, rows.near});
    fillLuma(job, {columns.first, rows.near, columns.end, rows.far});
    fillLuma(job, {columns.near, rows.far, columns.far, rows.end});
    drawLumaCorner(job, {columns.first, rows.first, columns.near, rows.near});
    drawLumaCorner(job, {columns.far, rows.first, columns.end, rows.near});
    drawLumaCorner(job, {columns.first, rows.far, columns.near, rows.end});
    drawLumaCorner(job, {columns.far, rows.far, columns.end, rows.end});
}

void BoxRenderer::fillLuma(Job const& job, Box const& piece)
{
    Box const visible = intersectionOf(piece, job.visible);
    if (!visible.isEmpty()) {
        blendLumaRect(job.target.y + visible.top * job.target.yStride + visible.left, job.target.yStride,
                      static_cast<std::size_t>(visible.width()), static_cast<std::size_t>(visible.height()),
                      job.color.y, job.weight);
    }
}

void BoxRenderer::drawLumaCorner(Job const& job, Box const& square) const
{
    Box const visible = intersectionOf(square, job.visible);
    auto const level = job.color.y;
    for (std::int64_t y = visible.top; y < visible.bottom; ++y) {
        auto* const luma = job.target.y + y * job.target.yStride;
        Row const row = rowAt(job.box, y);
        for (std::int64_t x = visible.left; x < visible.right; ++x) {
            luma[x] = blendLevel(luma[x], level, partialWeight(coverageAt(job.box, row, x), job.weight));
        }
    }
}

void BoxRenderer::drawChroma(Job const& job) const
{
    // All of the straight inside first: a pixel that was written a moment ago together with its neighbours is slow
    // to read by itself.
    std::int64_t const first = job.visible.top / 2;
    std::int64_t const end = (job.visible.bottom + 1) / 2;
    for (auto row = first; row < end;) {
        ChromaBand const band = chromaBandAt(job, row, end);
        fillChroma(job, band);
        row += band.rows;
    }
    for (auto row = first; row < end;) {
        ChromaBand const band = chromaBandAt(job, row, end);
        // Beside the straight inside each row looks the same, beside corners each one looks different.
        std::int64_t const step = band.isCorner ? 1 : band.rows;
        for (std::int64_t i = 0; i < band.rows; i += step) {
            drawChromaPart(job, row + i, step, job.visible.left / 2, band.from);
            drawChromaPart(job, row + i, step, band.to, (job.visible.right + 1) / 2);
        }
        row += band.rows;
    }
}

/// The rows of samples from `row` on, before `end`, whose straight inside is alike.
BoxRenderer::ChromaBand BoxRenderer::chromaBandAt(Job const& job, std::int64_t row, std::int64_t end) const
{
    Box const& box = job.box;
    Cuts const cuts = cutsOf(box.top, box.bottom);
    // A pixel that the picture lacks is represented by its neighbour inside.
    std::int64_t const upper = 2 * row;
    std::int64_t const lower = std::min<std::int64_t>(upper + 1, job.target.height - 1);
    bool const hasUpper = upper >= cuts.first && upper < cuts.end;
    bool const hasLower = lower >= cuts.first && lower < cuts.end;
    ChromaBand band;
    band.row = row;
    band.coverage = hasUpper && hasLower ? 255 : 128;
    band.isCorner = (hasUpper && (upper < cuts.near || upper >= cuts.far)) ||
                    (hasLower && (lower < cuts.near || lower >= cuts.far));
    // Up to the next cut all rows of two pixels inside are alike.
    bool const isBelowNear = upper >= cuts.near;
    std::int64_t const cut = !isBelowNear ? cuts.near : upper >= cuts.far ? cuts.end : cuts.far;
    band.rows = hasUpper && hasLower ? std::clamp<std::int64_t>(cut / 2 - row, 1, end - row) : 1;

    std::int64_t const inset = band.isCorner ? cornerSize_ : 0;
    std::int64_t const firstPair = job.visible.left / 2;
    std::int64_t const endPair = (job.visible.right + 1) / 2;
    std::int64_t const straightEnd = box.right - inset;
    band.from = std::clamp((std::max<std::int64_t>(box.left + inset, 0) + 1) / 2, firstPair, endPair);
    band.to = straightEnd >= job.target.width
                  ? endPair
                  : std::clamp(std::max<std::int64_t>(straightEnd, 0) / 2, band.from, endPair);
    return band;
}

void BoxRenderer::fillChroma(Job const& job, ChromaBand const& band)
{
    MappedNV12 const& target = job.target;
    blendChromaRect(target.uv + band.row * target.uvStride + 2 * band.from, target.uvStride,
                    static_cast<std::size_t>(band.to - band.from), static_cast<std::size_t>(band.rows), job.color.cb,
                    job.color.cr, partialWeight(band.coverage, job.weight));
}

/// Samples `from` to `to` of `rows` rows that are all like the first, each sample by its own pixels.
void BoxRenderer::drawChromaPart(Job const& job, std::int64_t row, std::int64_t rows, std::int64_t from,
                                 std::int64_t to) const
{
    std::int64_t const lastColumn = job.target.width - 1;
    std::ptrdiff_t const stride = job.target.uvStride;
    YCbCr const color = job.color;
    Row const upper = rowAt(job.box, 2 * row);
    Row const lower = rowAt(job.box, std::min<std::int64_t>(2 * row + 1, job.target.height - 1));
    for (std::int64_t pair = from; pair < to; ++pair) {
        std::int64_t const left = 2 * pair;
        std::int64_t const right = std::min(left + 1, lastColumn);
        auto const coverage = meanOfFour(coverageAt(job.box, upper, left), coverageAt(job.box, upper, right),
                                         coverageAt(job.box, lower, left), coverageAt(job.box, lower, right));
        int const weight = partialWeight(coverage, job.weight);
        auto* chroma = job.target.uv + row * job.target.uvStride + left;
        for (std::int64_t i = 0; i < rows; ++i, chroma += stride) {
            chroma[0] = blendLevel(chroma[0], color.cb, weight);
            chroma[1] = blendLevel(chroma[1], color.cr, weight);
        }
    }
}

}  // namespace imaging
