// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The brushes that paint the map of the made flight's ground.
#pragma once

#include "flight/ground_texture.h"

#include <cstddef>
#include <vector>

namespace flight {

/// A square map under work. Map coordinates are meters from its middle, x east and y north; everything
/// repeats at its edges.
class GroundPaint {
public:
    GroundPaint(int size, double texelM);

    void paintFields();
    void paintRiver();
    void paintRoads();
    void paintSolarFarm();
    void paintYards();   ///< with the houses' shadows
    void paintTarget();  ///< a landing mark in the middle of the map
    void plantTrees();   ///< along hedges, river and roads; paints their shadows

    /// The trees that plantTrees has planted, from north to south.
    std::vector<Tree> const& trees() const { return trees_; }

    /// The color of a texel, column from the west and row from the north.
    Rgb const& at(int column, int row) const { return texels_[indexOf_(column, row)]; }

private:
    std::size_t indexOf_(int column, int row) const;
    double eastOf_(int column) const { return (column + 0.5 - size_ / 2.0) * texelM_; }
    double northOf_(int row) const { return (size_ / 2.0 - row - 0.5) * texelM_; }
    template <typename Shade>
    void forEachAround_(double x, double y, double reachM, Shade&& shade);
    bool mayGrow_(double x, double y) const;
    void plant_(Tree const& tree);

    int size_;
    double texelM_;
    std::vector<Rgb> texels_;
    std::vector<float> wood_;  ///< how likely a tree is, by texel
    std::vector<Tree> trees_;
};

}  // namespace flight
