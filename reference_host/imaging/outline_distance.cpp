// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Flattens an outline and measures the pixels around each of its segments; used to stroke glyphs.
#include "imaging/outline_distance.h"

#include <algorithm>
#include <cmath>

namespace imaging {
namespace {

/// Curves are replaced by segments that stay this close to them, in pixels.
constexpr float kFlatness = 0.03F;
constexpr float kUnitsPerPixel = 64.0F;

struct Point {
    float x = 0;
    float y = 0;
};

Point operator+(Point a, Point b)
{
    return {a.x + b.x, a.y + b.y};
}
Point operator-(Point a, Point b)
{
    return {a.x - b.x, a.y - b.y};
}
Point operator*(float factor, Point p)
{
    return {factor * p.x, factor * p.y};
}

class DistanceField {
public:
    DistanceField(std::size_t width, std::size_t height, float reach)
        : width_(static_cast<std::ptrdiff_t>(width))
        , height_(static_cast<std::ptrdiff_t>(height))
        , reach_(reach)
        , squares_(width * height, (reach + 1) * (reach + 1))
    {
    }

    void moveTo(Point to) { pen_ = to; }

    void lineTo(Point to)
    {
        measure(pen_, to);
        pen_ = to;
    }

    void conicTo(Point control, Point to)
    {
        Point const from = pen_;
        Point const bend = from - 2 * control + to;
        int const parts = partsFor(std::hypot(bend.x, bend.y) / 4);
        for (int i = 1; i <= parts; ++i) {
            float const t = static_cast<float>(i) / static_cast<float>(parts);
            lineTo((1 - t) * (1 - t) * from + 2 * t * (1 - t) * control + t * t * to);
        }
    }

    void cubicTo(Point first, Point second, Point to)
    {
        Point const from = pen_;
        Point const bend1 = from - 2 * first + second;
        Point const bend2 = first - 2 * second + to;
        int const parts = partsFor(0.75F * std::max(std::hypot(bend1.x, bend1.y), std::hypot(bend2.x, bend2.y)));
        for (int i = 1; i <= parts; ++i) {
            float const t = static_cast<float>(i) / static_cast<float>(parts);
            float const s = 1 - t;
            lineTo(s * s * s * from + 3 * s * s * t * first + 3 * s * t * t * second + t * t * t * to);
        }
    }

    std::vector<float> distances() &&
    {
        std::transform(squares_.begin(), squares_.end(), squares_.begin(),
                       [](float square) { return std::sqrt(square); });
        return std::move(squares_);
    }

private:
    static int partsFor(float deviation)
    {
        return std::clamp(static_cast<int>(std::ceil(std::sqrt(deviation / kFlatness))), 1, 1000);
    }

    /// The pixels whose centres lie between `low` and `high`, at most `count`.
    static std::pair<std::ptrdiff_t, std::ptrdiff_t> centresBetween(float low, float high, std::ptrdiff_t count)
    {
        auto const limit = static_cast<float>(count);
        return {static_cast<std::ptrdiff_t>(std::clamp(std::floor(low - 0.5F), 0.0F, limit)),
                static_cast<std::ptrdiff_t>(std::clamp(std::ceil(high + 0.5F), 0.0F, limit))};
    }

    void measure(Point from, Point to)
    {
        auto const [left, right] =
            centresBetween(std::min(from.x, to.x) - reach_, std::max(from.x, to.x) + reach_, width_);
        auto const [top, bottom] =
            centresBetween(std::min(from.y, to.y) - reach_, std::max(from.y, to.y) + reach_, height_);
        Point const along = to - from;
        float const square = along.x * along.x + along.y * along.y;
        float const scale = square > 0 ? 1 / square : 0;
        for (std::ptrdiff_t row = top; row < bottom; ++row) {
            float* const squares = squares_.data() + row * width_;
            float const dy = static_cast<float>(row) + 0.5F - from.y;
            for (std::ptrdiff_t column = left; column < right; ++column) {
                float const dx = static_cast<float>(column) + 0.5F - from.x;
                float const t = std::min(std::max((dx * along.x + dy * along.y) * scale, 0.0F), 1.0F);
                float const restX = dx - t * along.x;
                float const restY = dy - t * along.y;
                squares[column] = std::min(squares[column], restX * restX + restY * restY);
            }
        }
    }

    std::ptrdiff_t width_;
    std::ptrdiff_t height_;
    float reach_;
    Point pen_;
    std::vector<float> squares_;
};

/// FreeType calls back with the outline's parts; y is turned to count downwards.
struct Visit {
    DistanceField field;
    float height;

    Point point(FT_Vector const* v) const
    {
        return {static_cast<float>(v->x) / kUnitsPerPixel, height - static_cast<float>(v->y) / kUnitsPerPixel};
    }
    static Visit& of(void* user) { return *static_cast<Visit*>(user); }
};

}  // namespace

std::vector<float> distancesTo(FT_Outline const& outline, std::size_t width, std::size_t height, float reach)
{
    Visit visit{DistanceField(width, height, reach), static_cast<float>(height)};
    FT_Outline_Funcs calls{};
    calls.move_to = [](FT_Vector const* to, void* user) {
        Visit::of(user).field.moveTo(Visit::of(user).point(to));
        return 0;
    };
    calls.line_to = [](FT_Vector const* to, void* user) {
        Visit::of(user).field.lineTo(Visit::of(user).point(to));
        return 0;
    };
    calls.conic_to = [](FT_Vector const* control, FT_Vector const* to, void* user) {
        Visit::of(user).field.conicTo(Visit::of(user).point(control), Visit::of(user).point(to));
        return 0;
    };
    calls.cubic_to = [](FT_Vector const* first, FT_Vector const* second, FT_Vector const* to, void* user) {
        Visit::of(user).field.cubicTo(Visit::of(user).point(first), Visit::of(user).point(second),
                                      Visit::of(user).point(to));
        return 0;
    };
    // The outline is only read; FreeType's signature predates const.
    FT_Outline copy = outline;
    FT_Outline_Decompose(&copy, &calls, &visit);
    return std::move(visit.field).distances();
}

}  // namespace imaging
