// Draws background boxes: the straight inside as rectangles, corners and odd edges by coverage.
#include "rounded_box.h"

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
    corner_.clear();
    if (cornerSize_ <= kLargestKeptCorner) {
        for (std::int64_t y = 0; y < cornerSize_; ++y) {
            for (std::int64_t x = 0; x < cornerSize_; ++x) {
                corner_.push_back(cornerCoverage(radius, x, y));
            }
        }
    }
}

/// What a corner takes from the pixel x columns and y rows away from it.
int BoxRenderer::cornerLoss(std::int64_t x, std::int64_t y) const
{
    if (x >= cornerSize_ || y >= cornerSize_) {
        return 0;
    }
    return 255 -
           (corner_.empty() ? cornerCoverage(radius_, x, y) : corner_[static_cast<std::size_t>(y * cornerSize_ + x)]);
}

std::uint8_t BoxRenderer::coverageAt(Box const& box, std::int64_t x, std::int64_t y) const
{
    if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) {
        return 0;
    }
    std::int64_t const fromLeft = x - box.left;
    std::int64_t const fromRight = box.right - 1 - x;
    std::int64_t const fromTop = y - box.top;
    std::int64_t const fromBottom = box.bottom - 1 - y;
    int const loss = cornerLoss(fromLeft, fromTop) + cornerLoss(fromRight, fromTop) + cornerLoss(fromLeft, fromBottom) +
                     cornerLoss(fromRight, fromBottom);
    return static_cast<std::uint8_t>(std::max(0, 255 - loss));
}

bool BoxRenderer::isCornerRow(Box const& box, std::int64_t y) const
{
    return y >= box.top && y < box.bottom && (y < box.top + cornerSize_ || y >= box.bottom - cornerSize_);
}

void BoxRenderer::drawLuma(Job const& job) const
{
    Box const& box = job.box;
    Box const& visible = job.visible;
    for (std::int64_t y = visible.top; y < visible.bottom;) {
        // Straight rows are drawn together, a corner row is drawn in three parts.
        bool const isCorner = isCornerRow(box, y);
        std::int64_t const inset = isCorner ? cornerSize_ : 0;
        std::int64_t const end = isCorner ? y + 1 : std::min(visible.bottom, box.bottom - cornerSize_);
        std::int64_t const from = std::clamp(box.left + inset, visible.left, visible.right);
        std::int64_t const to = std::clamp(box.right - inset, from, visible.right);
        blendLumaRect(job.target.y + y * job.target.yStride + from, job.target.yStride,
                      static_cast<std::size_t>(to - from), static_cast<std::size_t>(end - y), job.color.y, job.weight);
        drawLumaPart(job, y, visible.left, from);
        drawLumaPart(job, y, to, visible.right);
        y = end;
    }
}

/// Pixels `from` to `to` of a corner row.
void BoxRenderer::drawLumaPart(Job const& job, std::int64_t y, std::int64_t from, std::int64_t to) const
{
    auto* const luma = job.target.y + y * job.target.yStride;
    for (std::int64_t x = from; x < to; ++x) {
        luma[x] = blendLevel(luma[x], job.color.y, partialWeight(coverageAt(job.box, x, y), job.weight));
    }
}

void BoxRenderer::drawChroma(Job const& job) const
{
    std::int64_t const end = (job.visible.bottom + 1) / 2;
    for (std::int64_t row = job.visible.top / 2; row < end;) {
        row += drawChromaRows(job, row, end);
    }
}

/// Draws the samples of `row` and of those below it, before `end`, that look the same; returns how many rows.
std::int64_t BoxRenderer::drawChromaRows(Job const& job, std::int64_t row, std::int64_t end) const
{
    Box const& box = job.box;
    MappedNV12 const& target = job.target;
    // A pixel that the picture lacks is represented by its neighbour inside.
    std::int64_t const upper = 2 * row;
    std::int64_t const lower = std::min<std::int64_t>(2 * row + 1, target.height - 1);
    std::int64_t const inset = isCornerRow(box, upper) || isCornerRow(box, lower) ? cornerSize_ : 0;
    int const upperCoverage = upper >= box.top && upper < box.bottom ? 255 : 0;
    int const lowerCoverage = lower >= box.top && lower < box.bottom ? 255 : 0;
    auto const coverage = meanOfFour(upperCoverage, upperCoverage, lowerCoverage, lowerCoverage);
    bool const isStraight = inset == 0 && coverage == 255;
    std::int64_t const rows =
        isStraight ? std::max<std::int64_t>(std::min(end, (box.bottom - cornerSize_) / 2) - row, 1) : 1;

    std::int64_t const firstPair = job.visible.left / 2;
    std::int64_t const endPair = (job.visible.right + 1) / 2;
    std::int64_t const straightEnd = box.right - inset;
    std::int64_t const from = std::clamp((std::max<std::int64_t>(box.left + inset, 0) + 1) / 2, firstPair, endPair);
    std::int64_t const to =
        straightEnd >= target.width ? endPair : std::clamp(std::max<std::int64_t>(straightEnd, 0) / 2, from, endPair);
    blendChromaRect(target.uv + row * target.uvStride + 2 * from, target.uvStride, static_cast<std::size_t>(to - from),
                    static_cast<std::size_t>(rows), job.color.cb, job.color.cr, partialWeight(coverage, job.weight));
    for (std::int64_t i = row; i < row + rows; ++i) {
        drawChromaPart(job, i, firstPair, from);
        drawChromaPart(job, i, to, endPair);
    }
    return rows;
}

/// Samples `from` to `to`, each by its own pixels.
void BoxRenderer::drawChromaPart(Job const& job, std::int64_t row, std::int64_t from, std::int64_t to) const
{
    auto const at = [&](std::int64_t x, std::int64_t y) {
        return coverageAt(job.box, std::min<std::int64_t>(x, job.target.width - 1),
                          std::min<std::int64_t>(y, job.target.height - 1));
    };
    auto* const chroma = job.target.uv + row * job.target.uvStride;
    for (std::int64_t pair = from; pair < to; ++pair) {
        auto const coverage = meanOfFour(at(2 * pair, 2 * row), at(2 * pair + 1, 2 * row), at(2 * pair, 2 * row + 1),
                                         at(2 * pair + 1, 2 * row + 1));
        int const weight = partialWeight(coverage, job.weight);
        chroma[2 * pair] = blendLevel(chroma[2 * pair], job.color.cb, weight);
        chroma[2 * pair + 1] = blendLevel(chroma[2 * pair + 1], job.color.cr, weight);
    }
}

}  // namespace imaging
