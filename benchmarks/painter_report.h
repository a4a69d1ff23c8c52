// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a benchmark run leaves behind: the table, the plot, one picture of each painter.
#pragma once

#include "Picture.h"

#include <string>
#include <vector>

namespace painter_bench {

/// Times of one painter in one scene, in milliseconds a frame.
struct Timing {
    std::string scene;
    std::string painter;
    double median = 0;
    double fastest = 0;  ///< the 2nd percentile: least disturbed by whatever else runs
};

/// The median of `painter` in `scene`; 0 when it was not measured.
double medianOf(std::vector<Timing> const& timings, std::string const& scene, std::string const& painter);

/// Writes painter.md: ratios first, then times.
void writeTable(std::string const& path, std::vector<Timing> const& timings);
/// Writes painter.svg: milliseconds a frame on a logarithmic scale.
void writePlot(std::string const& path, std::vector<Timing> const& timings);
/// Writes a part of a picture of BT.709 limited range as PNG.
void writePicture(std::string const& path, MappedNV12 const& planes, int left, int top, int width, int height);

}  // namespace painter_bench
