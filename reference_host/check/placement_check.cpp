// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Boxes against the picture and against each other; the check command shows what comes out.
#include "check/placement_check.h"

#include "sw_number_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace check {
namespace {

/// Lower letters are no letters any more.
constexpr int kLeastTextHeight = 9;
/// Picture lines on which sizes of the configuration are pixels.
constexpr int kReferenceLines = 1080;

/// One axis of a block and its picture.
struct Axis {
    char const* name;
    int anchor;
    int begin;
    int end;
    int length;  ///< of the picture
};

Axis horizontal(PlacedBlock const& block, PictureSize const& picture)
{
    return {"x", block.anchorX, block.left, block.right, picture.width};
}

Axis vertical(PlacedBlock const& block, PictureSize const& picture)
{
    return {"y", block.anchorY, block.top, block.bottom, picture.height};
}

bool fits(Axis const& axis)
{
    return axis.end - axis.begin <= axis.length;
}

/// Four digits tell neighbouring pixels apart on the largest pictures.
std::string fractionText(double pixels, int length)
{
    constexpr double kSteps = 1e4;
    return sw_text::numberText(std::round(pixels / length * kSteps) / kSteps);
}

/// `"x": 0.3734`, with which the box begins at `begin`. The plugin cuts the product to whole pixels and makes it even,
/// so that all values from one below to one above lead to the same place.
std::string positionText(Axis const& axis, int begin)
{
    int const anchor = axis.anchor + begin - axis.begin;
    return "\"" + std::string(axis.name) + "\": " + fractionText(anchor, axis.length);
}

int centred(Axis const& axis)
{
    return (axis.length - (axis.end - axis.begin)) / 2;
}

/// As far from the end as the box now is from the nearer side, but a tenth at most: what stands in the middle has no
/// margin to keep.
int flushEnd(Axis const& axis)
{
    int const margin = std::clamp(std::min(axis.begin, axis.length - axis.end), 0, axis.length / 10);
    return axis.length - margin - (axis.end - axis.begin);
}

std::string sizeText(PictureSize const& picture)
{
    return std::to_string(picture.width) + "x" + std::to_string(picture.height);
}

std::string cornerText(int x, int y)
{
    return std::to_string(x) + "," + std::to_string(y);
}

void checkEdges(PlacedBlock const& block, PictureSize const& picture, Findings& findings)
{
    struct Edge {
        char const* name;
        int cut;
    };
    std::string cuts;
    for (Edge const& edge :
         {Edge{"left", -block.left}, Edge{"top", -block.top}, Edge{"right", block.right - picture.width},
          Edge{"bottom", block.bottom - picture.height}}) {
        if (edge.cut > 0) {
            cuts += (cuts.empty() ? "" : ", ") +
                    sw_text::counted(static_cast<std::uint64_t>(edge.cut), "pixel", "pixels") + " at the " + edge.name;
        }
    }
    if (!cuts.empty()) {
        findings.push_back(
            {placeOf(block), "the box reaches beyond the picture of " + sizeText(picture) + ": " + cuts});
    }
}

void checkHeight(PlacedBlock const& block, PictureSize const& picture, Findings& findings)
{
    if (block.textHeight < kLeastTextHeight) {
        int const needed = (kLeastTextHeight * kReferenceLines + picture.height - 1) / picture.height;
        findings.push_back(
            {placeOf(block),
             "the text is " +
                 sw_text::counted(static_cast<std::uint64_t>(std::max(block.textHeight, 0)), "pixel", "pixels") +
                 " high on " + std::to_string(picture.height) + " lines, too small to read; \"textSize\" " +
                 std::to_string(needed) + " makes it " + std::to_string(kLeastTextHeight)});
    }
}

void checkOverlap(PlacedBlock const& block, PlacedBlock const& earlier, Findings& findings)
{
    int const left = std::max(block.left, earlier.left);
    int const top = std::max(block.top, earlier.top);
    int const right = std::min(block.right, earlier.right);
    int const bottom = std::min(block.bottom, earlier.bottom);
    if (left < right && top < bottom) {
        findings.push_back({placeOf(block), "overlaps " + placeOf(earlier) + " at " + cornerText(left, top) + " to " +
                                                cornerText(right, bottom)});
    }
}

}  // namespace

std::string placeOf(PlacedBlock const& block)
{
    return "overlay[" + std::to_string(block.number) + "]";
}

std::string boxText(PlacedBlock const& block, PictureSize const& picture)
{
    Axis const x = horizontal(block, picture);
    Axis const y = vertical(block, picture);
    std::string text = "box " + cornerText(block.left, block.top) + " to " + cornerText(block.right, block.bottom) +
                       " of " + sizeText(picture) + " (" + fractionText(block.left, picture.width) + "," +
                       fractionText(block.top, picture.height) + " to " + fractionText(block.right, picture.width) +
                       "," + fractionText(block.bottom, picture.height) + ")";
    if (fits(x) || fits(y)) {
        text += "; centred ";
        text += fits(x) ? positionText(x, centred(x)) : "";
        text += fits(x) && fits(y) ? ", " : "";
        text += fits(y) ? positionText(y, centred(y)) : "";
    }
    if (fits(x)) {
        text += "; flush right " + positionText(x, flushEnd(x));
    }
    if (fits(y)) {
        text += "; at the bottom " + positionText(y, flushEnd(y));
    }
    return text;
}

Findings checkPlacement(std::vector<PlacedBlock> const& blocks, PictureSize const& picture)
{
    Findings findings;
    for (auto block = blocks.begin(); block != blocks.end(); ++block) {
        checkEdges(*block, picture, findings);
        checkHeight(*block, picture, findings);
        std::for_each(blocks.begin(), block,
                      [&](PlacedBlock const& earlier) { checkOverlap(*block, earlier, findings); });
    }
    return findings;
}

}  // namespace check
